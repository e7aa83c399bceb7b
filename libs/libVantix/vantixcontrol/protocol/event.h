#ifndef VANTIXCONTROL_EVENT_H
#define VANTIXCONTROL_EVENT_H

#include <vantix/vantix_export.h>

#include <QJsonValue>
#include <QMetaType>
#include <QString>
#include <QVector>

class QJsonObject;

namespace VantixControl {

/// One argument of a signal: its name, its text as a person reads it, its value for programs.
struct VANTIX_EXPORT EventArgument
{
    QString name;
    QString text;
    QJsonValue value;
};

/// A signal of the simulated hardware as a session saw it.
struct VANTIX_EXPORT Event
{
    qint64 ms = 0; ///< since the System started
    QString object; ///< "ID_BATTERY_1ST", "System", "IWifiP2PPeer(02:22:22)"
    QString signal; ///< "fuelGaugeChanged"
    QVector<EventArgument> arguments;
    /// The arguments as the sender rendered them; read from the protocol, where names come unordered.
    QString renderedArguments;

    /// "newValue=20 ..." (enums and flags by name, text quoted).
    QString argumentsText() const;
    /// "[   5296 ms] ID_BATTERY_1ST fuelGaugeChanged newValue=20".
    QString text() const;
    /// One line of the control protocol, without its newline.
    QByteArray toJsonLine() const;
    static Event fromJson(const QJsonObject &object);
};

/// A record of the application's message log, as copied to a session that asked for it.
struct VANTIX_EXPORT LogEntry
{
    qint64 ms = 0;
    QString type; ///< "debug", "info", "warning", "critical", "fatal"
    QString category;
    QString function;
    QString message;

    /// "[   5296 ms] debug default: Illegal command".
    QString text() const;
    QByteArray toJsonLine() const;
    static LogEntry fromJson(const QJsonObject &object);
};

/// Appends @p value to @p out as JSON text; quicker than building documents for every event.
VANTIX_EXPORT void appendJson(QByteArray &out, const QJsonValue &value);
VANTIX_EXPORT void appendJsonString(QByteArray &out, const QString &text);

} // namespace VantixControl

Q_DECLARE_METATYPE(VantixControl::Event)
Q_DECLARE_METATYPE(VantixControl::LogEntry)

#endif
