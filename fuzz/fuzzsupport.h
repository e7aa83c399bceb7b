#ifndef VANTIX_FUZZSUPPORT_H
#define VANTIX_FUZZSUPPORT_H

// What every fuzz entry shares: one application object for the whole process,
// a quiet message log, and checks that stop the run with a report.

#include "systeminfostore_p.h"

#include <QCoreApplication>
#include <QDir>
#include <QString>
#include <QtGlobal>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace FuzzSupport {

/// The system information as a start-up fills it, from the files under the current root.
inline QVariantMap startedSystemInfo(TQ_SPAPI::System::PlatformType platform)
{
    QVariantMap map{{QStringLiteral("API_VERSION"), QStringLiteral("0.01")}};
    TQ_SPAPI::SystemInfoStore::fill(map, platform);
    return map;
}

inline void quiet(QtMsgType, const QMessageLogContext &, const QString &) { }

/**
 * Creates the process's application object, once. The library logs every
 * command it runs; that is silenced unless FUZZ_VERBOSE is set, so that
 * libFuzzer's own output stays readable.
 */
inline void startApplication(int *argc, char ***argv)
{
    if (QCoreApplication::instance()) {
        return;
    }
    new QCoreApplication(*argc, *argv);
    if (qEnvironmentVariableIsEmpty("FUZZ_VERBOSE")) {
        qInstallMessageHandler(quiet);
    }
}

/// Removes @p folder, the run's scratch folder, when the run ends normally; after a crash it stays for a look.
inline void removeAtExit(const QString &folder)
{
    static QString path;
    path = folder;
    std::atexit([] { QDir(path).removeRecursively(); });
}

/// Stops the run: an abort is what libFuzzer and the replay take as a failure.
[[noreturn]] inline void fail(const char *what, const QString &detail = QString())
{
    std::fprintf(stderr, "fuzz check failed: %s %s\n", what, qPrintable(detail));
    std::abort();
}

inline void check(bool condition, const char *what, const QString &detail = QString())
{
    if (!condition) {
        fail(what, detail);
    }
}

// The readers hand their parsing to Qt, which is not instrumented, so by its
// coverage alone every file would look alike to libFuzzer. observe() shows it
// the shape of what was read instead: per slot, how often each kind of
// character occurs and how long the text is. libFuzzer takes this section as
// extra coverage, so an input that reads as text of a new shape is kept.
enum { ShapeSlots = 4, CharacterKinds = 10, LengthBuckets = 10 };
#ifdef __clang__
__attribute__((section("__libfuzzer_extra_counters"), used))
#endif
static uint8_t shapeCounters[ShapeSlots][CharacterKinds + LengthBuckets];

inline int kindOf(QChar c)
{
    switch (c.category()) {
    case QChar::Letter_Uppercase:
        return 0;
    case QChar::Letter_Lowercase:
        return 1;
    case QChar::Number_DecimalDigit:
        return 2;
    case QChar::Separator_Space:
        return 3;
    case QChar::Punctuation_Other:
    case QChar::Punctuation_Dash:
        return 4;
    case QChar::Punctuation_Open:
    case QChar::Punctuation_Close:
    case QChar::Punctuation_InitialQuote:
    case QChar::Punctuation_FinalQuote:
        return 5;
    case QChar::Symbol_Math:
    case QChar::Symbol_Currency:
    case QChar::Symbol_Modifier:
    case QChar::Symbol_Other:
        return 6;
    case QChar::Other_Control:
    case QChar::Other_Format:
        return 7;
    case QChar::Other_Surrogate:
        return 8;
    default:
        return 9;
    }
}

inline void observe(int slot, const QString &text)
{
    uint8_t *row = shapeCounters[slot % ShapeSlots];
    for (const QChar c : text) {
        ++row[kindOf(c)];
    }
    ++row[CharacterKinds + qMin(text.size(), LengthBuckets - 1)];
}

} // namespace FuzzSupport

#endif
