#ifndef VANTIX_TEST_TESTFILES_H
#define VANTIX_TEST_TESTFILES_H

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QString>

/// Writes @p data to @p path, creating missing folders; whether it worked.
inline bool writeFile(const QString &path, const QByteArray &data = QByteArray())
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(data) == data.size();
}

/// The whole content of @p path, or "(unreadable)".
inline QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(unreadable)");
}

#endif
