#ifndef VANTIXAPPS_FAKETIME_H
#define VANTIXAPPS_FAKETIME_H

#include <QProcessEnvironment>
#include <QString>

/**
 * Accelerated time through libfaketime: an application preloaded with it sees
 * its clocks, timers and sleeps run X times faster, so the library's delays
 * and a scenario's waits shrink together. The library is the one named by
 * VANTIX_FAKETIME_LIB, else Debian's (package faketime) at
 * /usr/lib/<multiarch>/faketime/libfaketime.so.1.
 */
namespace FakeTime {

/// Where the library is looked for (it may not exist).
QString libraryPath();
/// The library to preload; false with a message naming what to install when it is missing.
bool findLibrary(QString *path, QString *error);

/// A speed factor: a finite number above zero ("100", "0.5").
bool parseSpeed(const QString &text, double *speed, QString *error);
/// FAKETIME's value for @p speed: "+0 x100".
QString timeSetting(double speed);

/// @p base with the library preloaded at @p speed; ASan's link-order check is turned off, as a preload trips it.
QProcessEnvironment environment(const QProcessEnvironment &base, const QString &library, double speed);
/// Whether @p environment already runs at @p speed with @p library (a process re-executed by environment()).
bool isActive(const QProcessEnvironment &environment, const QString &library, double speed);

/**
 * Executes this program again with @p argv under libfaketime at the speed
 * @p speedText. Returns true only when it already runs so; false with a
 * message when the speed or the library is wrong or the program could not
 * be executed.
 */
bool restartAtSpeed(const QString &speedText, char *argv[], QString *error);

} // namespace FakeTime

#endif
