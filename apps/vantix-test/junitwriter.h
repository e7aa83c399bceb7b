#ifndef VANTIXTEST_JUNITWRITER_H
#define VANTIXTEST_JUNITWRITER_H

#include "outcome.h"
#include "suite.h"

#include <QDateTime>
#include <QList>
#include <QString>

/**
 * The suite as JUnit XML, which GitLab, Jenkins and the GitHub test-report
 * actions show: a testsuite with a testcase per scenario run, its failure or
 * error with the message and the scenario's file and line, the event log as
 * system-out and the application's standard error as system-err. Runs that
 * Ctrl+C stopped or kept from starting are skipped ones.
 */
namespace JUnitWriter {

struct Entry
{
    Scenario scenario;
    Outcome outcome;
};

/// @p started and @p seconds: when the suite began and how long it ran.
bool write(const QString &path, const QList<Entry> &entries, const QDateTime &started, double seconds, QString *error);

} // namespace JUnitWriter

#endif
