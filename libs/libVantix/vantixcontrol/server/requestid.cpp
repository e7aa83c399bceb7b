#include "requestid_p.h"

#include "jsontext_p.h"

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

// Reads a line as far as needed, through raw pointers: every answer of the fuzz target passes here.
class Scanner
{
public:
    explicit Scanner(const QByteArray &text)
        : m_begin(text.constData())
        , m_end(text.constData() + text.size())
    {
    }

    const char *begin() const { return m_begin; }
    const char *end() const { return m_end; }

    const char *skipBlanks(const char *at) const
    {
        while (at < m_end && isBlank(*at)) {
            ++at;
        }
        return at;
    }

    // Past the string that starts at @p at (its opening quote); null when it does not end.
    const char *skipString(const char *at) const { return JsonText::stringEnd(at, m_end); }

    // Past the value that starts at @p at; null when it does not end.
    const char *skipValue(const char *at) const
    {
        if (at >= m_end) {
            return nullptr;
        }
        if (*at == '"') {
            return skipString(at);
        }
        if (*at != '{' && *at != '[') {
            while (at < m_end && !isBlank(*at) && !isEnd(*at)) {
                ++at;
            }
            return at;
        }
        int depth = 0;
        while (at < m_end) {
            if (*at == '"') {
                at = skipString(at);
                if (!at) {
                    return nullptr;
                }
                continue;
            }
            if (*at == '{' || *at == '[') {
                ++depth;
            } else if ((*at == '}' || *at == ']') && --depth == 0) {
                return at + 1;
            }
            ++at;
        }
        return nullptr;
    }

    // Whether the key string at [from, to) (quotes included) reads "id".
    static bool isIdKey(const char *from, const char *to)
    {
        // Most keys have no escapes: compared as bytes, nothing is decoded.
        const QByteArray key = QByteArray::fromRawData(from, int(to - from));
        return key.contains('\\') ? JsonText::stringText(from, to) == QLatin1String("id") : key == "\"id\"";
    }

private:
    const char *m_begin;
    const char *m_end;
};
} // namespace

QByteArray requestIdText(const QByteArray &line, IdOccurrence which)
{
    const Scanner scan(line);
    const char *at = scan.skipBlanks(scan.begin());
    if (at >= scan.end() || *at != '{') {
        return QByteArray();
    }
    QByteArray found;
    at = scan.skipBlanks(at + 1);
    if (at < scan.end() && *at == '}') {
        return found;
    }
    while (at < scan.end() && *at == '"') {
        const char *keyEnd = scan.skipString(at);
        const char *colon = keyEnd ? scan.skipBlanks(keyEnd) : nullptr;
        if (!colon || colon >= scan.end() || *colon != ':') {
            return QByteArray();
        }
        const char *valueBegin = scan.skipBlanks(colon + 1);
        const char *valueEnd = scan.skipValue(valueBegin);
        if (!valueEnd || valueEnd == valueBegin) {
            return QByteArray();
        }
        if (Scanner::isIdKey(at, keyEnd)) {
            found = QByteArray(valueBegin, int(valueEnd - valueBegin));
            if (which == IdOccurrence::First) {
                return found;
            }
        }
        at = scan.skipBlanks(valueEnd);
        if (at < scan.end() && *at == '}') {
            return found;
        }
        if (at >= scan.end() || *at != ',') {
            return QByteArray();
        }
        at = scan.skipBlanks(at + 1);
    }
    return QByteArray();
}

} // namespace VantixControl
