#include "consolewords.h"

QString quoteWord(const QString &word)
{
    if (!word.isEmpty() && !word.contains(QLatin1Char(' ')) && !word.contains(QLatin1Char('"')) &&
        !word.contains(QLatin1Char('\t'))) {
        return word;
    }
    QString quoted = word;
    quoted.replace(QLatin1Char('\\'), QLatin1String("\\\\")).replace(QLatin1Char('"'), QLatin1String("\\\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

QString joinWords(const QStringList &words)
{
    QStringList quoted;
    for (const QString &word : words) {
        quoted.append(quoteWord(word));
    }
    return quoted.join(QLatin1Char(' '));
}
