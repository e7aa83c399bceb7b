#include "requestid_p.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace VantixControl {

namespace {
bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// Where a number or word (true, false, null) in an object or array ends.
bool isEnd(char c)
{
    return c == ',' || c == '}' || c == ']';
}

class Scanner
{
public:
    explicit Scanner(const QByteArray &text)
        : m_text(text)
    {
    }

    int skipBlanks(int at) const
    {
        while (at < m_text.size() && isBlank(m_text.at(at))) {
            ++at;
        }
        return at;
    }

    // Past the string that starts at @p at (its opening quote); -1 when it does not end.
    int skipString(int at) const
    {
        for (++at; at < m_text.size(); ++at) {
            if (m_text.at(at) == '\\') {
                ++at;
            } else if (m_text.at(at) == '"') {
                return at + 1;
            }
        }
        return -1;
    }

    // Past the value that starts at @p at; -1 when it does not end.
    int skipValue(int at) const
    {
        if (at >= m_text.size()) {
            return -1;
        }
        const char first = m_text.at(at);
        if (first == '"') {
            return skipString(at);
        }
        if (first != '{' && first != '[') {
            while (at < m_text.size() && !isBlank(m_text.at(at)) && !isEnd(m_text.at(at))) {
                ++at;
            }
            return at;
        }
        int depth = 0;
        while (at < m_text.size()) {
            const char c = m_text.at(at);
            if (c == '"') {
                at = skipString(at);
                if (at < 0) {
                    return -1;
                }
                continue;
            }
            if (c == '{' || c == '[') {
                ++depth;
            } else if ((c == '}' || c == ']') && --depth == 0) {
                return at + 1;
            }
            ++at;
        }
        return -1;
    }

    // Whether the key string at [begin, end) (quotes included) reads "id".
    bool isIdKey(int begin, int end) const
    {
        const QByteArray key = m_text.mid(begin, end - begin);
        if (!key.contains('\\')) {
            return key == "\"id\"";
        }
        // Escaped ("\u0069d"): let the JSON reader spell it out.
        const QJsonDocument decoded = QJsonDocument::fromJson('[' + key + ']');
        return decoded.array().at(0).toString() == QLatin1String("id");
    }

private:
    const QByteArray &m_text;
};
} // namespace

QByteArray requestIdText(const QByteArray &line)
{
    const Scanner scan(line);
    int at = scan.skipBlanks(0);
    if (at >= line.size() || line.at(at) != '{') {
        return QByteArray();
    }
    QByteArray found;
    at = scan.skipBlanks(at + 1);
    if (at < line.size() && line.at(at) == '}') {
        return found;
    }
    while (at < line.size() && line.at(at) == '"') {
        const int keyEnd = scan.skipString(at);
        if (keyEnd < 0) {
            return QByteArray();
        }
        const int colon = scan.skipBlanks(keyEnd);
        if (colon >= line.size() || line.at(colon) != ':') {
            return QByteArray();
        }
        const int valueBegin = scan.skipBlanks(colon + 1);
        const int valueEnd = scan.skipValue(valueBegin);
        if (valueEnd < 0 || valueEnd == valueBegin) {
            return QByteArray();
        }
        if (scan.isIdKey(at, keyEnd)) {
            found = line.mid(valueBegin, valueEnd - valueBegin);
        }
        at = scan.skipBlanks(valueEnd);
        if (at < line.size() && line.at(at) == '}') {
            return found;
        }
        if (at >= line.size() || line.at(at) != ',') {
            return QByteArray();
        }
        at = scan.skipBlanks(at + 1);
    }
    return QByteArray();
}

} // namespace VantixControl
