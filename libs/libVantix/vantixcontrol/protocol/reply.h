#ifndef VANTIXCONTROL_REPLY_H
#define VANTIXCONTROL_REPLY_H

#include <vantix/vantix_export.h>

#include <QJsonValue>
#include <QString>
#include <QStringList>

class QJsonObject;

namespace VantixControl {

/// Why a line failed, for programs that branch on it.
enum class ErrorClass {
    None,
    UnknownCommand, ///< no such command (or debug command)
    UnknownTarget, ///< no such device, object, property or method, or the device is not plugged
    BadValue, ///< a value that does not convert to what is expected
    BadRequest, ///< a malformed line or request: wrong arguments, bad quoting, bad JSON
    Failed, ///< understood, but it could not be done or changed nothing
};

/// "UnknownCommand" and so on; the names the control protocol sends.
VANTIX_EXPORT QString errorClassName(ErrorClass error);
VANTIX_EXPORT ErrorClass errorClassFromName(const QString &name);

/**
 * The answer to one console line. A person reads lines and then "OK",
 * "OK <text>" or "KO: <text>"; a program reads the typed value or the error
 * class. Both come from the same reply, so they never disagree.
 */
struct VANTIX_EXPORT Reply
{
    bool ok = true;
    ErrorClass error = ErrorClass::None;
    /// What follows "OK " (may be empty), or the message after "KO: ".
    QString text;
    /// The value's type: "int", "double", "bool", "QString", an enum's name, "table", "object", ...; empty without one.
    QString type;
    QJsonValue value;
    /// Shown before the answer line (tables, property lists).
    QStringList lines;

    static Reply success(const QString &text = QString());
    static Reply failure(ErrorClass error, const QString &message);
    Reply &withValue(const QString &type, const QJsonValue &value);
    Reply &withLines(const QStringList &lines);

    /// "OK", "OK <text>" or "KO: <text>".
    QString answer() const;
    /// The lines and the answer, one per line, as a person reads them.
    QString rendered() const;

    /// The reply fields of the control protocol (without the request's id).
    QJsonObject toJson() const;
    /// toJson() with the request's @p id, as one line of the protocol (no newline).
    QByteArray toJsonLine(const QJsonValue &id) const;
    /// The same with the id as the client wrote it, JSON text carried back byte for byte.
    QByteArray toJsonLineWithIdText(const QByteArray &idText) const;
    static Reply fromJson(const QJsonObject &object);
};

} // namespace VantixControl

#endif
