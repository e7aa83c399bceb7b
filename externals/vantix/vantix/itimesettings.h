#ifndef VANTIX_ITIMESETTINGS_H
#define VANTIX_ITIMESETTINGS_H

#include <vantix/vantix_export.h>

#include <QDateTime>
#include <QObject>
#include <QString>
#include <QStringList>

namespace TQ_SPAPI {

class TimeSettingsPrivate;

/**
 * The system's time zone, the NTP switch and the NTP server list. On the
 * desktop the values live in memory only and the clock cannot be set.
 * Setters emit only when the value changes.
 */
class VANTIX_EXPORT ITimeSettings : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString timeZone READ timeZone WRITE setTimeZone NOTIFY timeZoneChanged)
    Q_PROPERTY(bool ntpEnabled READ ntpEnabled WRITE setNtpEnabled NOTIFY enabledChanged)
    Q_PROPERTY(QStringList urlList READ urlList WRITE setUrlList NOTIFY urlListChanged)

public:
    explicit ITimeSettings(QObject *parent = nullptr);
    ~ITimeSettings() override;

    QString timeZone() const;
    /// Any name is accepted; it is not checked against known zones.
    void setTimeZone(const QString &zone);
    bool ntpEnabled() const;
    void setNtpEnabled(bool enabled);
    QStringList urlList() const;
    /// Emits only when the entries or their order differ.
    void setUrlList(const QStringList &urls);

    QStringList getTimeZones() const;
    /// Refused on the desktop, with a warning.
    Q_INVOKABLE void setDateTime(const QDateTime &dateTime);
    bool isHwClockValid() const;

Q_SIGNALS:
    void timeZoneChanged(QString newZone);
    void enabledChanged(bool enabled);
    void urlListChanged();

private:
    TimeSettingsPrivate *d;
    Q_DISABLE_COPY(ITimeSettings)
};

} // namespace TQ_SPAPI

#endif
