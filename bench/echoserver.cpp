// The baseline of the control round trip: a local socket server that sends
// every line it reads straight back, with the control server's framing (one
// line in, one line out) and nothing else.

#include <QCoreApplication>
#include <QLocalServer>
#include <QLocalSocket>

#include <cstdio>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s SOCKET_PATH\n", argv[0]);
        return 2;
    }
    QLocalServer server;
    QLocalServer::removeServer(QString::fromLocal8Bit(argv[1]));
    if (!server.listen(QString::fromLocal8Bit(argv[1]))) {
        std::fprintf(stderr, "cannot listen: %s\n", qPrintable(server.errorString()));
        return 1;
    }
    QObject::connect(&server, &QLocalServer::newConnection, &server, [&server] {
        while (QLocalSocket *socket = server.nextPendingConnection()) {
            QObject::connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            QObject::connect(socket, &QLocalSocket::readyRead, socket, [socket] {
                while (socket->canReadLine()) {
                    socket->write(socket->readLine());
                }
            });
        }
    });
    std::printf("ready\n");
    std::fflush(stdout);
    return QCoreApplication::exec();
}
