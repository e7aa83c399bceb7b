#ifndef VANTIXCTL_CTL_H
#define VANTIXCTL_CTL_H

#include "appselector.h"
#include "consoleprinter.h"

#include <vantixcontrol/client/client.h>

#include <QObject>
#include <QStringList>
#include <QTextStream>

namespace VantixControl {
class ScriptRunner;
}

/**
 * vantix-ctl's modes against one application: one command, a script, the
 * live event log, an interactive console, the schema, and completion.
 * Exit codes: 0 OK, 1 KO (a failed command or script), 2 no application, or
 * no connection.
 */
class Ctl : public QObject
{
    Q_OBJECT

public:
    enum class Mode { Command, Script, Watch, Interactive, Describe, Complete };

    struct Options
    {
        Mode mode = Mode::Interactive;
        AppSelector selector;
        QStringList words; ///< the command, or the words to complete
        QString script;
        bool json = false;
        bool quiet = false;
        bool log = false;
    };

    explicit Ctl(const Options &options, QObject *parent = nullptr);

    /// Finds the application, connects and runs the mode; finished() tells the exit code.
    void start();
    /// Prints the running applications; the exit code is 0 with or without any.
    static void list(bool json, const std::function<void(int)> &done);

Q_SIGNALS:
    void finished(int exitCode);

private:
    void connected();
    void runCommand();
    void runScript(const QStringList &lines, const QString &source, bool fromStdin);
    void watch();
    void interactive();
    void describe();
    void complete();
    void execute(const QString &line, const VantixControl::Client::Done &done);
    void showReply(const VantixControl::Reply &reply);
    void finish(int exitCode, const QString &message = QString());

    Options m_options;
    VantixControl::Client m_client;
    QTextStream m_out;
    ConsolePrinter m_printer;
    VantixControl::ScriptRunner *m_runner = nullptr;
    /// The folder of the script file being run, which its relative file names are taken from.
    QString m_folder;
    bool m_finished = false;
};

#endif
