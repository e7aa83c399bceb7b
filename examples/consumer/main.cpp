// A program built against an installed Vantix, alone: it starts the simulated
// Tolvex, lists its devices and exits. Its CMakeLists.txt uses find_package(),
// build-with-pkg-config.sh the same source through pkg-config.

#include <vantix/vantix.h>

#include <qbcommon/appconfig.h>

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QTextStream>

using namespace TQ_SPAPI;

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);

    // The unit's files go to a folder of our own, removed at exit, not to the
    // user's application-data folder.
    QTemporaryDir root;
    if (!root.isValid()) {
        QTextStream(stderr) << "vantix-consumer: no temporary folder: " << root.errorString() << '\n';
        return 1;
    }
    AppConfig::instance()->setRootPath(root.path());

    SystemPlatformType::type = System::PT_TOLVEX;
    System *system = System::instance();
    QObject::connect(system, &System::apiReady, &app, [system] {
        QTextStream out(stdout);
        out << "Vantix " << VANTIX_VERSION_STRING << ", " << system->devices().size() << " devices\n";
        const QMetaEnum ids = QMetaEnum::fromType<IDevice::DeviceId>();
        for (const IDevicePtr &device : system->devices()) {
            out << ids.valueToKey(device->id()) << '\n';
        }
        QCoreApplication::quit();
    });
    system->initialize(QStringLiteral("vantix-consumer"));

    const int result = QCoreApplication::exec();
    System::releaseInstance();
    return result;
}
