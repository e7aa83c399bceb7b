#include "repeatedkey_p.h"

#include "jsontext_p.h"

#include <QSet>
#include <QVector>

namespace VantixControl {

namespace {
// One open object or array: an object's keys so far, and whether a key comes next.
struct Level
{
    bool object = false;
    bool keyNext = false;
    QSet<QString> keys;
};
} // namespace

QString repeatedKey(const QByteArray &json)
{
    QVector<Level> open;
    const char *end = json.constData() + json.size();
    for (const char *at = json.constData(); at < end;) {
        const char c = *at;
        if (c == '"') {
            const char *after = JsonText::stringEnd(at, end);
            if (!after) {
                return QString();
            }
            if (!open.isEmpty() && open.last().object && open.last().keyNext) {
                Level &level = open.last();
                level.keyNext = false;
                const QString key = JsonText::stringText(at, after);
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
