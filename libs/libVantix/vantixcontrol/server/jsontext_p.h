#ifndef VANTIXCONTROL_JSONTEXT_P_H
#define VANTIXCONTROL_JSONTEXT_P_H

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QString>

#include <cstring>

// Reading a request's JSON text without a document, for the scans that must
// run before (or instead of) Qt's reader.
namespace VantixControl::JsonText {

/// Past the string whose opening quote is at @p at; null when it does not end before @p end.
inline const char *stringEnd(const char *at, const char *end)
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

/// The string written at [from, to), quotes included, as a JSON reader spells it.
inline QString stringText(const char *from, const char *to)
{
    const QByteArray raw = QByteArray::fromRawData(from, int(to - from));
    if (!raw.contains('\\')) {
        return QString::fromUtf8(raw.constData() + 1, raw.size() - 2);
    }
    // Escapes ("\u0069d") are rare: the reader spells them out (a lone string is safe to read).
    return QJsonDocument::fromJson('[' + raw + ']').array().at(0).toString();
}

} // namespace VantixControl::JsonText

#endif
