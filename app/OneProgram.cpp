#include "app/OneProgram.h"

#include <QCryptographicHash>
#include <QDir>
#include <QLocalServer>
#include <QLocalSocket>

#include <unistd.h>

namespace {

constexpr int TellingTime = 500; ///< milliseconds; a program that is busy for longer is told all the same

} // namespace

OneProgram::OneProgram(const QString& folder)
    : m_folder(QDir(folder).canonicalPath()) {}

OneProgram::~OneProgram() = default;

QString OneProgram::SocketName() const {
    const QByteArray hash = QCryptographicHash::hash(m_folder.toUtf8(), QCryptographicHash::Sha256).toHex();
    return QStringLiteral("orvex-%1-%2").arg(::getuid()).arg(QString::fromLatin1(hash.first(24)));
}

bool OneProgram::Begin() {
    if (m_running.Take(m_folder + QStringLiteral("/Orvex.running")) || !m_running.IsElsewhere()) {
        Listen();
        return true;
    }
    TellFirst();
    return false;
}

void OneProgram::Listen() {
    m_server = std::make_unique<QLocalServer>();
    // A name that is no file goes with the process, however it ends.
    m_server->setSocketOptions(QLocalServer::AbstractNamespaceOption);
    connect(m_server.get(), &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* socket = m_server->nextPendingConnection()) {
            socket->deleteLater();
            Q_EMIT Wanted();
        }
    });
    m_server->listen(SocketName());
}

void OneProgram::TellFirst() const {
    QLocalSocket socket;
    socket.setSocketOptions(QLocalSocket::AbstractNamespaceOption);
    socket.connectToServer(SocketName());
    socket.waitForConnected(TellingTime);
}
