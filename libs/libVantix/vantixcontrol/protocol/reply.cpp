#include "reply.h"

#include "event.h"

#include <QJsonObject>

namespace VantixControl {

namespace {
struct ClassName
{
    ErrorClass error;
    const char *name;
};

const ClassName classNames[] = {
    {ErrorClass::None, ""},
    {ErrorClass::UnknownCommand, "UnknownCommand"},
    {ErrorClass::UnknownTarget, "UnknownTarget"},
    {ErrorClass::BadValue, "BadValue"},
    {ErrorClass::BadRequest, "BadRequest"},
    {ErrorClass::Failed, "Failed"},
};
} // namespace

QString errorClassName(ErrorClass error)
{
    for (const ClassName &c : classNames) {
        if (c.error == error) {
            return QLatin1String(c.name);
        }
    }
    return QString();
}

ErrorClass errorClassFromName(const QString &name)
{
    for (const ClassName &c : classNames) {
        if (name == QLatin1String(c.name)) {
            return c.error;
        }
    }
    // A class from a newer server is still a failure.
    return name.isEmpty() ? ErrorClass::None : ErrorClass::Failed;
}

Reply Reply::success(const QString &text)
{
    Reply reply;
    reply.text = text;
    return reply;
}

Reply Reply::failure(ErrorClass error, const QString &message)
{
    Reply reply;
    reply.ok = false;
    reply.error = error;
    reply.text = message;
    return reply;
}

Reply &Reply::withValue(const QString &valueType, const QJsonValue &valueData)
{
    type = valueType;
    value = valueData;
    return *this;
}

Reply &Reply::withLines(const QStringList &textLines)
{
    lines = textLines;
    return *this;
}

QString Reply::answer() const
{
    if (!ok) {
        return QStringLiteral("KO: ") + text;
    }
    return text.isEmpty() ? QStringLiteral("OK") : QStringLiteral("OK ") + text;
}

QString Reply::rendered() const
{
    return lines.isEmpty() ? answer() : lines.join(QLatin1Char('\n')) + QLatin1Char('\n') + answer();
}

QJsonObject Reply::toJson() const
{
    QJsonObject object;
    object.insert(QStringLiteral("ok"), ok);
    if (ok) {
        if (!type.isEmpty()) {
            object.insert(QStringLiteral("type"), type);
            object.insert(QStringLiteral("value"), value);
        }
    } else {
        object.insert(QStringLiteral("error"),
            QJsonObject{{QStringLiteral("class"), errorClassName(error)}, {QStringLiteral("message"), text}});
    }
    object.insert(QStringLiteral("text"), rendered());
    return object;
}

QByteArray Reply::toJsonLine(const QJsonValue &id) const
{
    QByteArray idText;
    appendJson(idText, id);
    return toJsonLineWithIdText(idText);
}

QByteArray Reply::toJsonLineWithIdText(const QByteArray &idText) const
{
    // Written directly, keys in the order toJson() gives them: every answer passes here.
    QByteArray out;
    out.reserve(96);
    out.append('{');
    if (!ok) {
        out.append("\"error\":{\"class\":");
        appendJsonString(out, errorClassName(error));
        out.append(",\"message\":");
        appendJsonString(out, text);
        out.append("},");
    }
    out.append("\"id\":");
    out.append(idText);
    out.append(ok ? ",\"ok\":true,\"text\":" : ",\"ok\":false,\"text\":");
    appendJsonString(out, rendered());
    if (ok && !type.isEmpty()) {
        out.append(",\"type\":");
        appendJsonString(out, type);
        out.append(",\"value\":");
        appendJson(out, value);
    }
    out.append('}');
    return out;
}

Reply Reply::fromJson(const QJsonObject &object)
{
    Reply reply;
    reply.ok = object.value(QLatin1String("ok")).toBool();
    const QString rendered = object.value(QLatin1String("text")).toString();
    const int split = rendered.lastIndexOf(QLatin1Char('\n'));
    if (split >= 0) {
        reply.lines = rendered.left(split).split(QLatin1Char('\n'));
    }
    const QString answer = rendered.mid(split + 1);
    if (reply.ok) {
        reply.type = object.value(QLatin1String("type")).toString();
        reply.value = object.value(QLatin1String("value"));
        reply.text = answer.startsWith(QLatin1String("OK ")) ? answer.mid(3) : QString();
    } else {
        const QJsonObject error = object.value(QLatin1String("error")).toObject();
        reply.error = errorClassFromName(error.value(QLatin1String("class")).toString());
        reply.text = error.value(QLatin1String("message")).toString();
    }
    return reply;
}

} // namespace VantixControl
