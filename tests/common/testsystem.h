#ifndef VANTIX_TEST_TESTSYSTEM_H
#define VANTIX_TEST_TESTSYSTEM_H

#include <vantix/idevice.h>
#include <vantix/system.h>

#include <qbcommon/appconfig.h>

#include <QSignalSpy>
#include <QStringList>

/**
 * Starts the System as an application does on power-up: @p platform, the
 * program @p arguments, initialize(@p name). A system that was already
 * started is released first, so each call is a fresh start.
 */
inline TQ_SPAPI::System *startSystem(int platform, const QStringList &arguments = {}, const char *name = "test")
{
    using TQ_SPAPI::System;
    if (System::instance()->isReady()) {
        System::releaseInstance();
    }
    AppConfig::instance()->setArguments(QStringList{QStringLiteral("test")} + arguments);
    TQ_SPAPI::SystemPlatformType::type = System::PlatformType(platform);
    System::instance()->initialize(QString::fromLatin1(name));
    return System::instance();
}

/// The status words a spy on IDevice::statusChanged recorded, in order.
inline QList<int> statusWords(const QSignalSpy &spy)
{
    QList<int> words;
    for (const QList<QVariant> &arguments : spy) {
        words.append(int(arguments.at(0).value<TQ_SPAPI::IDevice::DeviceFlags>()));
    }
    return words;
}

#endif
