#ifndef VANTIXAPPS_CONSOLEWORDS_H
#define VANTIXAPPS_CONSOLEWORDS_H

#include <QString>
#include <QStringList>

/// One word of a console line, quoted when it holds blanks or quotes (or is empty).
QString quoteWord(const QString &word);
/// Joins words into one console line, quoting those a shell or a text field has unquoted.
QString joinWords(const QStringList &words);

#endif
