#include "repeatedkey_p.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>
#include <QVector>

#include <cstring>

namespace VantixControl {

namespace {
// One open object or array: an object's keys so far, and whether a key comes next.
struct Level
{
    bool object = false;
    bool keyNext = false;
    QSet<QString> keys;
};

// The key written at [from, to), quotes included, as a reader spells it.
QString keyText(const char *from, const char *to)
{
    const QByteArray raw = QByteArray::fromRawData(from, int(to - from));
    if (!raw.contains('\\')) {
        return QString::fromUtf8(raw.constData() + 1, raw.size() - 2);
    }
    // Escapes are rare in keys: the reader spells them out (a lone string is safe to read).
    return QJsonDocument::fromJson('[' + raw + ']').array().at(0).toString();
}

// Past the string whose opening quote is at @p at; null when it does not end.
const char *stringEnd(const char *at, const char *end)
{
    for (++at; at < end;) {
        const char *quote = static_cast<const char *>(std::memchr(at, '"', size_t(end - at)));
        if (!quote) {
            return nullptr;
        }
        // A quote after an odd number of backslashes is part of the text.
        const char *slash = quote;
        while (slash > at && slash[-1] == '\\') {
            --slash;
        }
        if ((quote - slash) % 2 == 0) {
            return quote + 1;
        }
        at = quote + 1;
    }
    return nullptr;
}
} // namespace

QString repeatedKey(const QByteArray &json)
{
    QVector<Level> open;
    const char *end = json.constData() + json.size();
    for (const char *at = json.constData(); at < end;) {
        const char c = *at;
        if (c == '"') {
            const char *after = stringEnd(at, end);
            if (!after) {
                return QString();
            }
            if (!open.isEmpty() && open.last().object && open.last().keyNext) {
                Level &level = open.last();
                level.keyNext = false;
                const QString key = keyText(at, after);
                if (level.keys.contains(key)) {
                    return key;
                }
                level.keys.insert(key);
            }
            at = after;
            continue;
        }
        if (c == '{' || c == '[') {
            open.append({c == '{', c == '{', {}});
        } else if ((c == '}' || c == ']') && !open.isEmpty()) {
            open.removeLast();
        } else if (c == ',' && !open.isEmpty() && open.last().object) {
            open.last().keyNext = true;
        }
        ++at;
    }
    return QString();
}

} // namespace VantixControl
