#include "words.h"

namespace VantixControl {

namespace {
int hexDigit(QChar c)
{
    const ushort u = c.unicode();
    if (u >= '0' && u <= '9') {
        return u - '0';
    }
    if (u >= 'a' && u <= 'f') {
        return u - 'a' + 10;
    }
    if (u >= 'A' && u <= 'F') {
        return u - 'A' + 10;
    }
    return -1;
}

// What must not stand bare in a quoted word: anything that could end a
// line, or that a reader would not see (blanks other than the space, controls).
bool needsEscape(QChar c)
{
    return c != QLatin1Char(' ') &&
        (c.isSpace() || c.category() == QChar::Other_Control || c.category() == QChar::Other_Format);
}

// @p text with line breaks and invisible characters escaped, and with @p quotes also " and \.
QString escaped(const QString &text, bool quotes)
{
    QString result;
    result.reserve(text.size());
    for (const QChar c : text) {
        if (quotes && (c == QLatin1Char('"') || c == QLatin1Char('\\'))) {
            result.append(QLatin1Char('\\')).append(c);
        } else if (c == QLatin1Char('\n')) {
            result.append(QLatin1String("\\n"));
        } else if (c == QLatin1Char('\r')) {
            result.append(QLatin1String("\\r"));
        } else if (c == QLatin1Char('\t')) {
            result.append(QLatin1String("\\t"));
        } else if (needsEscape(c)) {
            result.append(QStringLiteral("\\u%1").arg(c.unicode(), 4, 16, QLatin1Char('0')));
        } else {
            result.append(c);
        }
    }
    return result;
}
} // namespace

bool Words::split(const QString &line, QStringList *words, QString *error)
{
    QString word;
    bool inWord = false;
    bool quoted = false;
    for (int i = 0; i < line.size(); ++i) {
        const QChar c = line.at(i);
        if (quoted) {
            if (c == QLatin1Char('"')) {
                quoted = false;
            } else if (c != QLatin1Char('\\')) {
                word.append(c);
            } else if (++i == line.size()) {
                *error = QStringLiteral("a backslash ends the line inside quotes");
                return false;
            } else {
                const QChar e = line.at(i);
                if (e == QLatin1Char('n')) {
                    word.append(QLatin1Char('\n'));
                } else if (e == QLatin1Char('r')) {
                    word.append(QLatin1Char('\r'));
                } else if (e == QLatin1Char('t')) {
                    word.append(QLatin1Char('\t'));
                } else if (e == QLatin1Char('u')) {
                    ushort code = 0;
                    for (int k = 1; k <= 4; ++k) {
                        const int digit = i + k < line.size() ? hexDigit(line.at(i + k)) : -1;
                        if (digit < 0) {
                            *error = QStringLiteral("\\u needs four hex digits");
                            return false;
                        }
                        code = ushort(code * 16 + digit);
                    }
                    word.append(QChar(code));
                    i += 4;
                } else {
                    word.append(e);
                }
            }
        } else if (c == QLatin1Char('"')) {
            quoted = true;
            inWord = true;
        } else if (c.isSpace()) {
            if (inWord) {
                words->append(word);
                word.clear();
                inWord = false;
            }
        } else {
            word.append(c);
            inWord = true;
        }
    }
    if (quoted) {
        *error = QStringLiteral("a quote is not closed");
        return false;
    }
    if (inWord) {
        words->append(word);
    }
    return true;
}

QString Words::quote(const QString &word)
{
    bool plain = !word.isEmpty() && !word.startsWith(QLatin1Char('#'));
    for (int i = 0; plain && i < word.size(); ++i) {
        const QChar c = word.at(i);
        plain = c != QLatin1Char('"') && !c.isSpace() && !needsEscape(c);
    }
    if (plain) {
        return word;
    }
    return QLatin1Char('"') + escape(word) + QLatin1Char('"');
}

QString Words::escape(const QString &text)
{
    return escaped(text, true);
}

QString Words::printable(const QString &text)
{
    return escaped(text, false);
}

QString Words::join(const QStringList &words)
{
    QStringList quoted;
    quoted.reserve(words.size());
    for (const QString &word : words) {
        quoted.append(quote(word));
    }
    return quoted.join(QLatin1Char(' '));
}

} // namespace VantixControl
