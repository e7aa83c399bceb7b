#ifndef QBCOMMON_APPCONFIG_H
#define QBCOMMON_APPCONFIG_H

#include <qbcommon/qbcommon_export.h>

#include <QString>
#include <QStringList>

/**
 * The application's configuration: its command-line arguments and the
 * folders it keeps data in.
 *
 * Folders resolve under one root: `<root>/var/<name>`, `<root>/var/etc/<name>`
 * and `<root>/share/<name>`; an empty name gives the folder itself. The root
 * is the one given to setRootPath(), else the environment variable
 * QBCOMMON_ROOT, else the user's writable application-data folder. Nothing is
 * created on disk here; callers create what they write to.
 */
class QBCOMMON_EXPORT AppConfig
{
public:
    static AppConfig *instance();

    /**
     * The value of @p name on the command line, given as `--name value` or
     * `--name=value`; @p defaultValue when absent or without a value.
     */
    QString argumentValue(const QString &name, const QString &defaultValue = QString()) const;
    /// Whether @p name is on the command line, alone or as `name=value`.
    bool argumentExits(const QString &name) const;

    QString varPath(const QString &name) const;
    QString varEtcPath(const QString &name) const;
    QString sharePath(const QString &name) const;

    QString rootPath() const;
    /// Replaces the root; an empty path returns to the default lookup.
    void setRootPath(const QString &path);

    /// The arguments read: QCoreApplication's, unless setArguments() replaced them.
    QStringList arguments() const;
    void setArguments(const QStringList &arguments);
    /// Returns to QCoreApplication's arguments.
    void resetArguments();

private:
    AppConfig();
    QString under(const QString &folder, const QString &name) const;

    QString m_rootPath;
    QStringList m_arguments;
    bool m_argumentsSet = false;
};

#endif
