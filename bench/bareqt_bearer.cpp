// What the host-facing part of the simulator costs at the least: a Qt
// program that creates a network configuration manager (which loads Qt's
// bearer plugins) and lists the network interfaces, waits 100 ms and exits.

#include <QCoreApplication>
#include <QNetworkInterface>
#include <QTimer>

QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED
#include <QNetworkConfigurationManager>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QNetworkConfigurationManager manager;
    const auto configurations = manager.allConfigurations();
    const auto interfaces = QNetworkInterface::allInterfaces();
    QTimer::singleShot(100, &app, &QCoreApplication::quit);
    return QCoreApplication::exec() + (configurations.size() + interfaces.size() < 0 ? 1 : 0);
}

QT_WARNING_POP
