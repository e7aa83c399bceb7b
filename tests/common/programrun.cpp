#include "programrun.h"

#include <QProcess>
#include <QTest>

ProgramRun runProgram(const QString &program, const QStringList &arguments, const QProcessEnvironment &environment,
    const QByteArray &input, const QString &folder, int timeoutMs)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    if (!folder.isEmpty()) {
        process.setWorkingDirectory(folder);
    }
    process.start(program, arguments);
    ProgramRun run;
    if (!process.waitForStarted()) {
        return run;
    }
    process.write(input);
    process.closeWriteChannel();
    if (!QTest::qWaitFor([&process] { return process.state() == QProcess::NotRunning; }, timeoutMs)) {
        process.kill();
        process.waitForFinished();
        return run;
    }
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -2;
    run.out = QString::fromUtf8(process.readAllStandardOutput());
    run.err = QString::fromUtf8(process.readAllStandardError());
    return run;
}
