#include "ui/single_instance.h"

#include <QLocalSocket>

namespace zembrastel {
namespace {

constexpr int patience = 1000; // milliseconds

QString socketPath(const std::filesystem::path& stateFolder) {
    return QString::fromStdString((stateFolder / "socket").string());
}

} // namespace

SingleInstance::SingleInstance(const std::filesystem::path& stateFolder, InstanceLock held, QObject* parent)
    : QObject(parent), lock(std::move(held)) {
    const QString path = socketPath(stateFolder);
    // Whoever made the socket that is there is gone: this program has the lock.
    QLocalServer::removeServer(path);
    server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&server, &QLocalServer::newConnection, this, [this] {
        while (auto* asking = server.nextPendingConnection()) {
            connect(asking, &QLocalSocket::disconnected, asking, &QObject::deleteLater);
            asking->disconnectFromServer();
            Q_EMIT showRequested();
        }
    });
    server.listen(path);
}

bool SingleInstance::askToShow(const std::filesystem::path& stateFolder) {
    QLocalSocket socket;
    socket.connectToServer(socketPath(stateFolder));
    // To connect is to ask; the answer is that the other side closes.
    return socket.waitForConnected(patience)
           && (socket.state() == QLocalSocket::UnconnectedState || socket.waitForDisconnected(patience));
}

} // namespace zembrastel
