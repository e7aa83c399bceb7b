#ifndef VANTIX_TEST_PROGRAMRUN_H
#define VANTIX_TEST_PROGRAMRUN_H

#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

/// What a program run to its end left behind.
struct ProgramRun
{
    int exitCode = -1; ///< -1: did not start or did not end in time; -2: crashed
    QString out;
    QString err;
};

/**
 * Runs @p program to its end with @p input on its standard input. The event
 * loop runs meanwhile, so that processes the test itself started (and reads
 * from) keep going while the program talks to them.
 */
ProgramRun runProgram(const QString &program, const QStringList &arguments, const QProcessEnvironment &environment,
    const QByteArray &input = QByteArray(), const QString &folder = QString(), int timeoutMs = 60000);

#endif
