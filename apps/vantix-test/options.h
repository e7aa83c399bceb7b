#ifndef VANTIXTEST_OPTIONS_H
#define VANTIXTEST_OPTIONS_H

#include <QMap>
#include <QString>
#include <QStringList>

/// What the command line asks for, checked: a run starts only from valid options.
struct Options
{
    int jobs = 1;
    double speed = 0; ///< 0: real time
    QString fakeTimeLibrary; ///< with a speed
    double timeoutSeconds = 300;
    QString junitFile;
    QString artifactsDir;
    int shardIndex = 1; ///< from 1
    int shardCount = 1;
    int repeat = 1;
    QMap<QString, QString> defines;
    bool list = false;
    QString platform;
    QStringList paths; ///< scenarios and folders, as given
    QString program; ///< absolute
    QStringList arguments;

    enum class Parsed { Run, Error };
    /**
     * Reads @p arguments (argv, program name first). --help and --version print
     * and exit; anything wrong leaves Error with a message for the user.
     */
    static Parsed parse(const QStringList &arguments, Options *options, QString *error);
};

#endif
