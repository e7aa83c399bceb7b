#include "event.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace VantixControl {

namespace {
QString stamp(qint64 ms)
{
    return QStringLiteral("[%1 ms]").arg(ms, 7);
}
} // namespace

void appendJsonString(QByteArray &out, const QString &text)
{
    static const char hex[] = "0123456789abcdef";
    out.append('"');
    const QByteArray utf8 = text.toUtf8();
    for (const char c : utf8) {
        const auto u = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            out.append('\\').append(c);
        } else if (u < 0x20) {
            switch (c) {
            case '\n':
                out.append("\\n");
                break;
            case '\t':
                out.append("\\t");
                break;
            case '\r':
                out.append("\\r");
                break;
            default:
                out.append("\\u00").append(hex[u >> 4]).append(hex[u & 15]);
                break;
            }
        } else {
            out.append(c);
        }
    }
    out.append('"');
}

void appendJson(QByteArray &out, const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Null:
    case QJsonValue::Undefined:
        out.append("null");
        break;
    case QJsonValue::Bool:
        out.append(value.toBool() ? "true" : "false");
        break;
    case QJsonValue::Double: {
        const double d = value.toDouble();
        if (!std::isfinite(d)) {
            out.append("null");
        } else if (d == std::floor(d) && std::abs(d) < 9007199254740992.0) {
            out.append(QByteArray::number(qint64(d)));
        } else {
            out.append(QByteArray::number(d, 'g', 17));
        }
        break;
    }
    case QJsonValue::String:
        appendJsonString(out, value.toString());
        break;
    case QJsonValue::Array:
        out.append(QJsonDocument(value.toArray()).toJson(QJsonDocument::Compact));
        break;
    case QJsonValue::Object:
        out.append(QJsonDocument(value.toObject()).toJson(QJsonDocument::Compact));
        break;
    }
}

QString Event::argumentsText() const
{
    if (!renderedArguments.isEmpty()) {
        return renderedArguments;
    }
    QString result;
    for (const EventArgument &argument : arguments) {
        if (!result.isEmpty()) {
            result += QLatin1Char(' ');
        }
        result += argument.name.isEmpty() ? argument.text : argument.name + QLatin1Char('=') + argument.text;
    }
    return result;
}

QString Event::text() const
{
    QString line = stamp(ms) + QLatin1Char(' ') + object + QLatin1Char(' ') + signal;
    const QString args = argumentsText();
    if (!args.isEmpty()) {
        line += QLatin1Char(' ') + args;
    }
    return line;
}

QByteArray Event::toJsonLine() const
{
    QByteArray out;
    out.reserve(128);
    out.append("{\"event\":");
    appendJsonString(out, signal);
    out.append(",\"object\":");
    appendJsonString(out, object);
    out.append(",\"args\":{");
    for (int i = 0; i < arguments.size(); ++i) {
        if (i > 0) {
            out.append(',');
        }
        // An unnamed argument is known by its position.
        appendJsonString(out, arguments.at(i).name.isEmpty() ? QString::number(i) : arguments.at(i).name);
        out.append(':');
        appendJson(out, arguments.at(i).value);
    }
    out.append("},\"argsText\":");
    appendJsonString(out, argumentsText());
    out.append(",\"ms\":").append(QByteArray::number(ms)).append('}');
    return out;
}

Event Event::fromJson(const QJsonObject &object)
{
    Event event;
    event.ms = qint64(object.value(QLatin1String("ms")).toDouble());
    event.object = object.value(QLatin1String("object")).toString();
    event.signal = object.value(QLatin1String("event")).toString();
    const QJsonObject args = object.value(QLatin1String("args")).toObject();
    for (auto it = args.begin(); it != args.end(); ++it) {
        event.arguments.append({it.key(), QString(), it.value()});
    }
    event.renderedArguments = object.value(QLatin1String("argsText")).toString();
    return event;
}

QString LogEntry::text() const
{
    return QStringLiteral("%1 %2 %3: %4").arg(stamp(ms), type, category, message);
}

QByteArray LogEntry::toJsonLine() const
{
    QByteArray out("{\"log\":{\"type\":");
    appendJsonString(out, type);
    out.append(",\"category\":");
    appendJsonString(out, category);
    out.append(",\"function\":");
    appendJsonString(out, function);
    out.append(",\"message\":");
    appendJsonString(out, message);
    out.append("},\"ms\":").append(QByteArray::number(ms)).append('}');
    return out;
}

LogEntry LogEntry::fromJson(const QJsonObject &object)
{
    const QJsonObject log = object.value(QLatin1String("log")).toObject();
    LogEntry entry;
    entry.ms = qint64(object.value(QLatin1String("ms")).toDouble());
    entry.type = log.value(QLatin1String("type")).toString();
    entry.category = log.value(QLatin1String("category")).toString();
    entry.function = log.value(QLatin1String("function")).toString();
    entry.message = log.value(QLatin1String("message")).toString();
    return entry;
}

} // namespace VantixControl
