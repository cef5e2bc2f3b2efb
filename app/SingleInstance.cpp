#include "app/SingleInstance.h"

#include <QLocalServer>
#include <QLocalSocket>
#include <cctype>
#include <unistd.h>

namespace {

constexpr int kConnectTimeoutMs = 500;
const QByteArray kReopen = QByteArrayLiteral("reopen\n");

} // namespace

SingleInstance::SingleInstance(const QString& name, QObject* parent)
    : QObject(parent)
    , m_name(name) { }

SingleInstance::~SingleInstance() = default;

QString SingleInstance::defaultName() {
    // One window per user and display: programs started on other displays (another X server, a
    // test under Xvfb) run on their own.
    QByteArray display = qgetenv("WAYLAND_DISPLAY");
    if (display.isEmpty())
        display = qgetenv("DISPLAY");
    QString name = QStringLiteral("twinsift-%1-").arg(::getuid());
    for (const char c : display)
        name += QChar::fromLatin1(std::isalnum(static_cast<unsigned char>(c)) ? c : '_');
    return name;
}

bool SingleInstance::handOverToRunning() {
    QLocalSocket socket;
    socket.connectToServer(m_name);
    if (!socket.waitForConnected(kConnectTimeoutMs))
        return false;
    socket.write(kReopen);
    socket.waitForBytesWritten(kConnectTimeoutMs);
    socket.disconnectFromServer();
    return true;
}

bool SingleInstance::listen() {
    m_server = new QLocalServer(this);
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    // Nobody answered, so a socket file left by a crashed run is stale.
    QLocalServer::removeServer(m_name);
    if (!m_server->listen(m_name))
        return false;
    connect(m_server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* socket = m_server->nextPendingConnection()) {
            connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
                if (socket->readAll().contains("reopen"))
                    emit reopenRequested();
            });
        }
    });
    return true;
}
