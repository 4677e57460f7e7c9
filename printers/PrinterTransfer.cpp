#include "printers/PrinterTransfer.h"

#include "core/Installation.h"
#include "hubs/HubRouter.h"
#include "platform/Clock.h"
#include "platform/Dialogs.h"
#include "tickets/VniText.h"

PrinterTransfer::PrinterTransfer(const Parts& parts)
    : m_installation(parts.installation)
    , m_router(parts.router)
    , m_clock(parts.clock)
    , m_dialogs(parts.dialogs)
    , m_log(parts.log) {}

const model::QObject& PrinterTransfer::Printer(qint16 object) const {
    return m_installation.Object(object);
}

QCoro::Task<QStringList> PrinterTransfer::SendToAll(Send send, HubBracket bracket, QString question) {
    QStringList failed;
    m_isCancelled = m_wasCancelled = false;
    m_silent.clear();
    for (const qint16 object : m_installation.ObjectsOf(model::Printer)) {
        if (bracket == HubBracket::With)
            co_await m_router.HubTransferBegin(object);
        m_isUnanswered = false;
        const bool sent = co_await send(object);
        bool goOn = true;
        if (!sent) {
            m_wasCancelled = std::exchange(m_isCancelled, false);
            goOn = !m_wasCancelled || !question.isEmpty();
            const QString name = vni::ToUnicode(Printer(object).Name);
            failed += name;
            if (m_isUnanswered)
                m_silent += name;
            if (!question.isEmpty())
                goOn = co_await m_dialogs.AskYesNo(BoxKind::Exclamation, question.arg(name));
        }
        if (bracket == HubBracket::With)
            co_await m_router.HubTransferEnd(object);
        if (!goOn)
            break;
    }
    co_return failed;
}

QCoro::Task<bool> PrinterTransfer::SendFrame(qint16 object, char letter, QByteArray data, int tries) {
    m_isOwn = false;
    if (m_isCancelled)
        co_return false;
    const Reply reply = co_await m_router.SendToObject(object, letter, data, Bus::DirectTimeout, tries);
    m_isUnanswered |= !reply.ok;
    m_isOwn = reply.isOwn;
    co_return reply.ok;
}

QCoro::Task<bool> PrinterTransfer::SendUntilTaken(qint16 object, char letter, QByteArray data, int tries, int again) {
    bool answered = co_await SendFrame(object, letter, data, tries);
    for (int i = 0; i < again && !m_isOwn && !m_isCancelled; ++i)
        answered = co_await SendFrame(object, letter, data, tries);
    co_return answered;
}

QCoro::Task<bool> PrinterTransfer::SendChunks(qint16 object, char letter, std::vector<QByteArray> chunks, QString phase,
                                              int tries, qint16 pause) {
    const QString name = vni::ToUnicode(Printer(object).Name);
    const auto total = static_cast<int>(chunks.size());
    int done = 0;
    for (const QByteArray& chunk : chunks) {
        Q_EMIT Progress(name, phase, done++, total);
        const bool sent = co_await SendFrame(object, letter, chunk, tries);
        if (!sent)
            co_return false;
        if (pause > 0)
            co_await m_clock.DelayMilliseconds(pause);
    }
    Q_EMIT Progress(name, phase, total, total);
    co_return true;
}
