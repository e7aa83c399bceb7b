#include "options.h"

#include "faketime.h"

#include <vantix/platformnames.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QThread>

#include <cmath>

namespace {
const QString DefaultPlatform = QStringLiteral("tolvex-plus");

bool positiveInt(const QString &text, const char *option, int *value, QString *error)
{
    bool ok = false;
    const int number = text.toInt(&ok);
    if (!ok || number < 1) {
        *error = QStringLiteral("--%1 takes a whole number of at least 1, not \"%2\"").arg(QLatin1String(option), text);
        return false;
    }
    *value = number;
    return true;
}

bool parseShard(const QString &text, Options *options, QString *error)
{
    const QRegularExpressionMatch match =
        QRegularExpression(QStringLiteral("^(\\d{1,6})/(\\d{1,6})$")).match(text.trimmed());
    const int index = match.hasMatch() ? match.captured(1).toInt() : 0;
    const int count = match.hasMatch() ? match.captured(2).toInt() : 0;
    if (index < 1 || count < 1 || index > count) {
        *error =
            QStringLiteral("--shard takes I/N with I from 1 to N (2/3 runs the second of three shares), not \"%1\"")
                .arg(text);
        return false;
    }
    options->shardIndex = index;
    options->shardCount = count;
    return true;
}

bool parseDefine(const QString &text, Options *options, QString *error)
{
    const int equals = text.indexOf(QLatin1Char('='));
    const QString name = text.left(equals);
    if (equals < 0 || !QRegularExpression(QStringLiteral("^[A-Za-z_][A-Za-z0-9_]*$")).match(name).hasMatch()) {
        *error = QStringLiteral("--define takes NAME=VALUE, NAME made of letters, digits and _, not \"%1\"").arg(text);
        return false;
    }
    options->defines.insert(name, text.mid(equals + 1));
    return true;
}

// The program as the user named it: a path (made absolute here), or a name looked up on PATH.
bool resolveProgram(const QString &program, QString *resolved, QString *error)
{
    if (program.contains(QLatin1Char('/'))) {
        const QFileInfo info(program);
        if (!info.exists()) {
            *error = QStringLiteral("the application %1 does not exist").arg(program);
            return false;
        }
        if (!info.isFile() || !info.isExecutable()) {
            *error = QStringLiteral("the application %1 is not an executable file").arg(program);
            return false;
        }
        *resolved = info.absoluteFilePath();
        return true;
    }
    *resolved = QStandardPaths::findExecutable(program);
    if (resolved->isEmpty()) {
        *error = QStringLiteral("the application %1 is not an executable on PATH").arg(program);
        return false;
    }
    return true;
}

// Without a program after --, the simulator: the one installed beside this program first.
bool findSimulator(QString *resolved, QString *error)
{
    const QFileInfo beside(QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("vantix-sim")));
    if (beside.isFile() && beside.isExecutable()) {
        *resolved = beside.absoluteFilePath();
        return true;
    }
    *resolved = QStandardPaths::findExecutable(QStringLiteral("vantix-sim"));
    if (resolved->isEmpty()) {
        *error = QStringLiteral("vantix-sim is neither beside vantix-test nor on PATH; name the application after --");
        return false;
    }
    return true;
}
} // namespace

Options::Parsed Options::parse(const QStringList &arguments, Options *options, QString *error)
{
    // Everything after -- is the application's command line, dashes and all.
    const int separator = arguments.indexOf(QStringLiteral("--"));
    const QStringList own = separator < 0 ? arguments : QStringList(arguments.mid(0, separator));
    const QStringList command = separator < 0 ? QStringList() : QStringList(arguments.mid(separator + 1));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Runs each scenario against a fresh instance of an application that uses Vantix, in parallel, and reports\n"
        "PASS, FAIL (the first KO line) or ERROR (the application exited, crashed, never greeted, or the scenario\n"
        "outlived --timeout) for each. Folders are searched for *.vsim files. Without -- PROGRAM, the application\n"
        "is vantix-sim --platform NAME. Exit codes: 0 all passed, 1 a scenario failed or erred, 2 bad input\n"
        "(nothing started), 130 interrupted."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption jobsOption(QStringLiteral("jobs"),
        QStringLiteral("Run <n> scenarios at a time (default: the number of cores)."), QStringLiteral("n"));
    const QCommandLineOption speedOption(QStringLiteral("speed"),
        QStringLiteral("Run the application's time <x> times faster, under libfaketime (Debian package faketime)."),
        QStringLiteral("x"));
    const QCommandLineOption timeoutOption(QStringLiteral("timeout"),
        QStringLiteral("Give each application <s> seconds to greet, and each scenario <s> seconds to run (default "
                       "300)."),
        QStringLiteral("s"));
    const QCommandLineOption junitOption(
        QStringLiteral("junit"), QStringLiteral("Write a JUnit XML report to <file>."), QStringLiteral("file"));
    const QCommandLineOption artifactsOption(QStringLiteral("artifacts"),
        QStringLiteral("Keep, for each scenario that did not pass, a folder in <dir> with the application's output, "
                       "the event and message logs and the state."),
        QStringLiteral("dir"));
    const QCommandLineOption shardOption(QStringLiteral("shard"),
        QStringLiteral("Run the <i>-th of every <n> scenarios, in a stable order (for a CI matrix)."),
        QStringLiteral("i/n"));
    const QCommandLineOption repeatOption(
        QStringLiteral("repeat"), QStringLiteral("Run each scenario <n> times."), QStringLiteral("n"));
    const QCommandLineOption defineOption(QStringLiteral("define"),
        QStringLiteral("Replace ${NAME} in the scenarios' lines by VALUE; may be repeated."),
        QStringLiteral("name=value"));
    const QCommandLineOption listOption(QStringLiteral("list"), QStringLiteral("Print what would run, and exit."));
    const QCommandLineOption platformOption(QStringLiteral("platform"),
        QStringLiteral("Platform of vantix-sim when no PROGRAM is given: %1 (default %2).")
            .arg(TQ_SPAPI::PlatformNames::names().join(QStringLiteral(", ")), DefaultPlatform),
        QStringLiteral("name"));
    parser.addOptions({jobsOption, speedOption, timeoutOption, junitOption, artifactsOption, shardOption, repeatOption,
        defineOption, listOption, platformOption});
    parser.addPositionalArgument(QStringLiteral("scenarios"), QStringLiteral("Scenario files and folders of them."),
        QStringLiteral("SCENARIO|FOLDER..."));
    parser.addPositionalArgument(QStringLiteral("program"),
        QStringLiteral("The application and its arguments (default: vantix-sim --platform NAME)."),
        QStringLiteral("[-- PROGRAM [ARGS...]]"));

    if (!parser.parse(own)) {
        *error = parser.errorText();
        return Parsed::Error;
    }
    if (parser.isSet(QStringLiteral("help"))) {
        parser.showHelp(0);
    }
    if (parser.isSet(QStringLiteral("version"))) {
        parser.showVersion();
    }

    Options result;
    result.jobs = qMax(1, QThread::idealThreadCount());
    if (parser.isSet(jobsOption) && !positiveInt(parser.value(jobsOption), "jobs", &result.jobs, error)) {
        return Parsed::Error;
    }
    if (parser.isSet(repeatOption) && !positiveInt(parser.value(repeatOption), "repeat", &result.repeat, error)) {
        return Parsed::Error;
    }
    if (parser.isSet(shardOption) && !parseShard(parser.value(shardOption), &result, error)) {
        return Parsed::Error;
    }
    if (parser.isSet(timeoutOption)) {
        bool ok = false;
        result.timeoutSeconds = parser.value(timeoutOption).toDouble(&ok);
        if (!ok || !std::isfinite(result.timeoutSeconds) || result.timeoutSeconds <= 0) {
            *error = QStringLiteral("--timeout takes seconds above 0, not \"%1\"").arg(parser.value(timeoutOption));
            return Parsed::Error;
        }
    }
    for (const QString &define : parser.values(defineOption)) {
        if (!parseDefine(define, &result, error)) {
            return Parsed::Error;
        }
    }
    result.list = parser.isSet(listOption);
    result.junitFile = parser.value(junitOption);
    result.artifactsDir = parser.value(artifactsOption);
    result.paths = parser.positionalArguments();
    if (result.paths.isEmpty()) {
        *error = QStringLiteral("no scenario given; name scenario files or folders of them");
        return Parsed::Error;
    }

    result.platform = parser.isSet(platformOption) ? parser.value(platformOption) : DefaultPlatform;
    TQ_SPAPI::System::PlatformType platform;
    if (!TQ_SPAPI::PlatformNames::fromName(result.platform, &platform)) {
        *error = QStringLiteral("unknown platform \"%1\"; known: %2")
                     .arg(result.platform, TQ_SPAPI::PlatformNames::names().join(QStringLiteral(", ")));
        return Parsed::Error;
    }
    if (separator >= 0 && command.isEmpty()) {
        *error = QStringLiteral("-- must be followed by the application to start");
        return Parsed::Error;
    }
    if (!command.isEmpty() && parser.isSet(platformOption)) {
        *error = QStringLiteral("--platform chooses vantix-sim's platform; give %1 its own options after --")
                     .arg(command.first());
        return Parsed::Error;
    }

    // A listing starts nothing, so it needs neither the application nor libfaketime.
    if (parser.isSet(speedOption)) {
        if (!FakeTime::parseSpeed(parser.value(speedOption), &result.speed, error)) {
            return Parsed::Error;
        }
        if (!result.list && !FakeTime::findLibrary(&result.fakeTimeLibrary, error)) {
            return Parsed::Error;
        }
    }
    if (!result.list) {
        if (command.isEmpty()) {
            if (!findSimulator(&result.program, error)) {
                return Parsed::Error;
            }
            result.arguments = QStringList{QStringLiteral("--platform"), result.platform};
        } else {
            if (!resolveProgram(command.first(), &result.program, error)) {
                return Parsed::Error;
            }
            result.arguments = command.mid(1);
        }
    }
    *options = result;
    return Parsed::Run;
}
