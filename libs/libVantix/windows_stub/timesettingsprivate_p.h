#ifndef VANTIX_TIMESETTINGSPRIVATE_P_H
#define VANTIX_TIMESETTINGSPRIVATE_P_H

#include <vantix/itimesettings.h>
#include <vantix/vantix_private_export.h>

#include <QObject>
#include <QStringList>

namespace TQ_SPAPI {

/**
 * Time settings of a desktop host: kept in memory only, since the library
 * must not touch the workstation's clock or zone.
 */
class VANTIX_PRIVATE_EXPORT TimeSettingsPrivate : public QObject
{
    Q_OBJECT

public:
    explicit TimeSettingsPrivate(ITimeSettings *q);
    ~TimeSettingsPrivate() override;

    void setTimeZone(const QString &zone);
    void setNtpEnabled(bool enabled);
    void setUrlList(const QStringList &urls);
    void setDateTime(const QDateTime &dateTime);
    bool isHwClockValid() const;

    ITimeSettings *q;
    QString timeZone = QStringLiteral("Europe/Copenhagen");
    // No zone database is read on the desktop.
    QStringList timeZones;
    QStringList urlList{QStringLiteral("pool.ntp.org")};
    bool ntpEnabled = true;

private:
    Q_DISABLE_COPY(TimeSettingsPrivate)
};

} // namespace TQ_SPAPI

#endif
