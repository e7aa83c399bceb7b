#include "appconfig.h"

#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>

AppConfig::AppConfig() = default;

AppConfig *AppConfig::instance()
{
    static AppConfig config;
    return &config;
}

QStringList AppConfig::arguments() const
{
    if (m_argumentsSet) {
        return m_arguments;
    }
    return QCoreApplication::instance() ? QCoreApplication::arguments() : QStringList();
}

void AppConfig::setArguments(const QStringList &arguments)
{
    m_arguments = arguments;
    m_argumentsSet = true;
}

void AppConfig::resetArguments()
{
    m_arguments.clear();
    m_argumentsSet = false;
}

QString AppConfig::argumentValue(const QString &name, const QString &defaultValue) const
{
    const QStringList args = arguments();
    const QString withValue = name + QLatin1Char('=');
    // The first entry is the program itself.
    for (int i = 1; i < args.size(); ++i) {
        const QString &arg = args.at(i);
        if (arg == name) {
            return i + 1 < args.size() ? args.at(i + 1) : defaultValue;
        }
        if (arg.startsWith(withValue)) {
            return arg.mid(withValue.size());
        }
    }
    return defaultValue;
}

bool AppConfig::argumentExits(const QString &name) const
{
    const QStringList args = arguments();
    const QString withValue = name + QLatin1Char('=');
    for (int i = 1; i < args.size(); ++i) {
        if (args.at(i) == name || args.at(i).startsWith(withValue)) {
            return true;
        }
    }
    return false;
}

QString AppConfig::rootPath() const
{
    if (!m_rootPath.isEmpty()) {
        return m_rootPath;
    }
    const QString fromEnvironment = qEnvironmentVariable("QBCOMMON_ROOT");
    if (!fromEnvironment.isEmpty()) {
        return QDir::cleanPath(fromEnvironment);
    }
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
}

void AppConfig::setRootPath(const QString &path)
{
    m_rootPath = path.isEmpty() ? QString() : QDir::cleanPath(QDir(path).absolutePath());
}

QString AppConfig::under(const QString &folder, const QString &name) const
{
    const QString base = rootPath() + QLatin1Char('/') + folder;
    return name.isEmpty() ? base : QDir::cleanPath(base + QLatin1Char('/') + name);
}

QString AppConfig::varPath(const QString &name) const
{
    return under(QStringLiteral("var"), name);
}

QString AppConfig::varEtcPath(const QString &name) const
{
    return under(QStringLiteral("var/etc"), name);
}

QString AppConfig::sharePath(const QString &name) const
{
    return under(QStringLiteral("share"), name);
}
