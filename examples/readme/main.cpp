#include <vantix/vantix.h>

#include <QCoreApplication>
#include <QDebug>

using namespace TQ_SPAPI;

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    SystemPlatformType::type = System::PT_TOLVEX;
    System *system = System::instance();
    QObject::connect(system, &System::apiReady, &app, [system] {
        for (const IDevicePtr &device : system->devices())
            qInfo() << device->id() << device->status();
        QCoreApplication::quit();
    });
    system->initialize(QStringLiteral("readme-example"));
    return app.exec();
}
