// vantix-ctl: drives the simulated hardware of a running application that
// uses Vantix (vantix-sim, or one's own), over its control socket.

#include "ctl.h"

#include <vantix/vantix_version.h>

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdio>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("vantix-ctl"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VANTIX_VERSION_STRING));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Drives the simulated hardware of a running application that uses Vantix.\n\n"
                       "  vantix-ctl list                       the running applications\n"
                       "  vantix-ctl [selector] COMMAND...      run one console command (help lists them)\n"
                       "  vantix-ctl [selector] --script FILE   run a scenario; the first KO ends it with exit code 1\n"
                       "  vantix-ctl [selector] --watch         show every event until Ctrl+C\n"
                       "  vantix-ctl [selector]                 an interactive console\n\n"
                       "With one application running no selector is needed. Exit codes: 0 OK, 1 KO, 2 no application "
                       "or no connection."));
    parser.addHelpOption();
    parser.addVersionOption();
    // "set gadget level -5": words after the command are the command's, dashes and all.
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    const QCommandLineOption scriptOption(QStringLiteral("script"),
        QStringLiteral("Run the commands of <file> (- for standard input)."), QStringLiteral("file"));
    const QCommandLineOption watchOption(QStringLiteral("watch"), QStringLiteral("Show the live event log."));
    const QCommandLineOption logOption(
        QStringLiteral("log"), QStringLiteral("With --watch: show the application's message log too."));
    const QCommandLineOption jsonOption(
        QStringLiteral("json"), QStringLiteral("Print the control protocol's JSON lines instead of text."));
    const QCommandLineOption quietOption(
        QStringLiteral("quiet"), QStringLiteral("Print only the answers, no events and no echo of script lines."));
    const QCommandLineOption describeOption(
        QStringLiteral("describe"), QStringLiteral("Print the application's schema: commands, devices, properties."));
    const QCommandLineOption completeOption(
        QStringLiteral("complete"), QStringLiteral("Print what may follow the given words (for shell completion)."));
    parser.addOptions(AppSelector::options());
    parser.addOptions({scriptOption, watchOption, logOption, jsonOption, quietOption, describeOption, completeOption});
    parser.addPositionalArgument(
        QStringLiteral("command"), QStringLiteral("A console command, or list."), QStringLiteral("[COMMAND...]"));
    parser.process(app);

    Ctl::Options options;
    options.words = parser.positionalArguments();
    options.json = parser.isSet(jsonOption);
    options.quiet = parser.isSet(quietOption);
    options.log = parser.isSet(logOption);
    QString error;
    if (!AppSelector::fromParser(parser, &options.selector, &error)) {
        std::fprintf(stderr, "vantix-ctl: %s\n", qPrintable(error));
        return 2;
    }

    if (parser.isSet(completeOption)) {
        options.mode = Ctl::Mode::Complete;
    } else if (options.words == QStringList{QStringLiteral("list")}) {
        int code = 0;
        Ctl::list(options.json, [&code](int exitCode) {
            code = exitCode;
            QCoreApplication::exit(exitCode);
        });
        QCoreApplication::exec();
        return code;
    } else if (parser.isSet(describeOption)) {
        options.mode = Ctl::Mode::Describe;
    } else if (parser.isSet(scriptOption)) {
        options.mode = Ctl::Mode::Script;
        options.script = parser.value(scriptOption);
    } else if (parser.isSet(watchOption)) {
        options.mode = Ctl::Mode::Watch;
    } else if (!options.words.isEmpty()) {
        options.mode = Ctl::Mode::Command;
    }
    if ((options.mode == Ctl::Mode::Script || options.mode == Ctl::Mode::Watch) && !options.words.isEmpty()) {
        std::fprintf(stderr, "vantix-ctl: --script and --watch take no command\n");
        return 2;
    }

    Ctl ctl(options);
    QObject::connect(&ctl, &Ctl::finished, &app, &QCoreApplication::exit, Qt::QueuedConnection);
    ctl.start();
    return QCoreApplication::exec();
}
