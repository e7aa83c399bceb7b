#ifndef VANTIXTEST_OUTCOME_H
#define VANTIXTEST_OUTCOME_H

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

/// How one scenario ended, and everything kept of its run.
struct Outcome
{
    enum class Kind {
        Passed,
        Failed, ///< a line answered KO
        Error, ///< the application exited, crashed or never greeted, or the scenario outlived the timeout
        Interrupted, ///< stopped by Ctrl+C
    };
    Kind kind = Kind::Interrupted;
    /// Failed: "<file>:<line>: <command>: <reason>"; Error: what went wrong, with the application's exit.
    QString message;
    /// The line that failed, or that ran when the error came; 0 when none did.
    int line = 0;

    double seconds = 0; ///< wall time of the scenario's lines
    double simulatedSeconds = -1; ///< the same on the application's clock; below 0 when it could not be read
    double totalSeconds = 0; ///< with the application's start and stop

    QStringList events; ///< the event log, as vantix-sim prints it
    QStringList messages; ///< the application's message log
    QByteArray standardOutput;
    QByteArray standardError;
    QJsonObject dump; ///< the state after a failure; empty when none could be taken

    bool passed() const { return kind == Kind::Passed; }
};

#endif
