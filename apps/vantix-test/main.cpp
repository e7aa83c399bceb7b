// vantix-test: runs a folder of scenarios as a test suite, each against a
// fresh instance of the application, in parallel and, with --speed, in
// accelerated time; reports on the terminal and as JUnit XML.

#include "consoleprinter.h"
#include "interruptnotifier.h"
#include "options.h"
#include "report.h"
#include "suite.h"
#include "suiterunner.h"

#include <vantix/vantix_version.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <csignal>
#include <cstdio>
#include <unistd.h>

namespace {
int badInput(const QString &message)
{
    std::fprintf(stderr, "vantix-test: %s\n", qPrintable(message));
    return 2;
}

// Reports go where the user asked; a missing folder is bad input, found before anything starts.
bool checkOutputs(const Options &options, QString *error)
{
    if (!options.junitFile.isEmpty()) {
        const QFileInfo file(options.junitFile);
        if (!file.absoluteDir().exists()) {
            *error = QStringLiteral("cannot write %1: the folder %2 does not exist")
                         .arg(options.junitFile, file.absolutePath());
            return false;
        }
        if (file.isDir()) {
            *error = QStringLiteral("cannot write %1: it is a folder").arg(options.junitFile);
            return false;
        }
    }
    const QFileInfo artifacts(options.artifactsDir);
    if (!options.artifactsDir.isEmpty() && artifacts.exists() && !artifacts.isDir()) {
        *error = QStringLiteral("--artifacts %1 is not a folder").arg(options.artifactsDir);
        return false;
    }
    return true;
}
} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("vantix-test"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VANTIX_VERSION_STRING));

    Options options;
    QString error;
    if (Options::parse(QCoreApplication::arguments(), &options, &error) == Options::Parsed::Error) {
        return badInput(error);
    }
    QList<Scenario> scenarios;
    Suite::Selection selection;
    selection.shardIndex = options.shardIndex;
    selection.shardCount = options.shardCount;
    selection.repeat = options.repeat;
    if (!Suite::collect(options.paths, options.defines, selection, &scenarios, &error)) {
        return badInput(error);
    }
    if (options.list) {
        for (const Scenario &scenario : qAsConst(scenarios)) {
            std::printf("%s\n",
                qPrintable(scenario.run > 1 ? scenario.path + QStringLiteral(" #") + QString::number(scenario.run)
                                            : scenario.path));
        }
        return 0;
    }
    if (!checkOutputs(options, &error)) {
        return badInput(error);
    }

    Report report(stdout, ::isatty(STDOUT_FILENO), ConsolePrinter::wantsColour(STDOUT_FILENO));
    SuiteRunner runner(options, scenarios, &report);
    if (!runner.prepare(&error)) {
        return badInput(error);
    }
    // A CI job that is cancelled, or a closed terminal, stops the applications as Ctrl+C does.
    InterruptNotifier interrupt;
    interrupt.alsoOn(SIGTERM);
    interrupt.alsoOn(SIGHUP);
    QObject::connect(&interrupt, &InterruptNotifier::interrupted, &runner, &SuiteRunner::interrupt);
    QObject::connect(&runner, &SuiteRunner::finished, &app, &QCoreApplication::exit, Qt::QueuedConnection);
    runner.start();
    return QCoreApplication::exec();
}
