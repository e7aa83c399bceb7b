#ifndef VANTIXTEST_ARTIFACTS_H
#define VANTIXTEST_ARTIFACTS_H

#include <QString>

struct Outcome;
struct Scenario;

/**
 * What is kept of a scenario that did not pass, in a folder of its own under
 * the --artifacts folder: result.txt (the outcome as reported), scenario.vsim
 * (the lines as sent), stdout.txt and stderr.txt of the application,
 * events.log, messages.log and, when one could be taken, state.json (the
 * dump after the failing line).
 */
namespace Artifacts {

/// The folder for @p scenario under @p root: its name without .vsim, "-2" for a second run.
QString folderFor(const QString &root, const Scenario &scenario);
/// Writes the files; false with a message when the folder or a file could not be written.
bool write(const QString &folder, const Scenario &scenario, const Outcome &outcome, QString *error);

} // namespace Artifacts

#endif
