// The baseline for the simulator's start-up: a Qt program that does nothing
// but start its event loop, wait the same 100 ms as apiReady, and exit.

#include <QCoreApplication>
#include <QTimer>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QTimer::singleShot(100, &app, &QCoreApplication::quit);
    return QCoreApplication::exec();
}
