#include "platform/VoiceChannel.h"

#include <QLocalSocket>

namespace {

QString WindowTitle() {
    return QStringLiteral("KTL_SONDREL");
}

} // namespace

void voice::PostToVoice(qint16 wParam, qint32 lParam) {
    QLocalSocket socket;
    socket.connectToServer(WindowTitle(), QIODevice::WriteOnly);
    // A listening program is connected at once; one that is too busy for that is not waited for.
    if (socket.state() != QLocalSocket::ConnectedState)
        return;
    socket.write("KTL_ORVEX_TO_SONDREL " + QByteArray::number(wParam) + ' ' + QByteArray::number(lParam) + '\n');
    socket.flush();
}
