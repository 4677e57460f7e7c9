#include "printers/FormTransfer.h"

#include "core/EventLog.h"
#include "core/Installation.h"
#include "hubs/HubRouter.h"
#include "link/Encodings.h"
#include "link/Frames.h"
#include "platform/Clock.h"

namespace {

constexpr qsizetype ChunkLength = 64; ///< bytes before stuffing
constexpr int TwoTries = 2;
constexpr int BeforeLogos = 10'000; ///< milliseconds
constexpr int AfterLogos = 5'000;   ///< milliseconds
constexpr qint16 WaitStep = 100;    ///< milliseconds between looks whether the user has cancelled

} // namespace

FormTransfer::FormTransfer(const model::Installation& installation, HubRouter& router, Clock& clock, Dialogs& dialogs,
                           EventLog& log, ::QObject* parent)
    : ::QObject(parent)
    , m_installation(installation)
    , m_router(router)
    , m_clock(clock)
    , m_dialogs(dialogs)
    , m_log(log) {}

QCoro::Task<bool> FormTransfer::Send(qint16 object, char letter, QByteArray data) {
    if (m_cancelled)
        co_return false;
    const Reply reply = co_await m_router.SendToObject(object, letter, data, Bus::DirectTimeout, TwoTries);
    co_return reply.ok;
}

QCoro::Task<bool> FormTransfer::SendBlock(qint16 object, char letter, QByteArray block, QString phase) {
    const QString name = m_installation.QObjects[static_cast<std::size_t>(object)].Name;
    const auto total = static_cast<int>((block.size() + ChunkLength - 1) / ChunkLength);
    for (int frame = 0; frame < total; ++frame) {
        Q_EMIT Progress(name, phase, frame, total);
        const QByteArray chunk = frames::EscapeData(block.mid(frame * ChunkLength, ChunkLength));
        const bool sent = co_await Send(object, letter, chunk);
        if (!sent)
            co_return false;
    }
    Q_EMIT Progress(name, phase, total, total);
    co_return true;
}

QCoro::Task<> FormTransfer::Wait(int milliseconds) {
    for (int waited = 0; waited < milliseconds && !m_cancelled; waited += WaitStep)
        co_await m_clock.DelayMilliseconds(WaitStep);
}

QCoro::Task<> FormTransfer::Report(qint16 object, bool interactive, QString text) {
    if (interactive) {
        co_await m_dialogs.ShowMessage(BoxKind::Exclamation, text);
    } else {
        const quint8 address = m_installation.QObjects[static_cast<std::size_t>(object)].Address;
        m_log.WriteLog(QStringLiteral("Send Prn Form to MEM error! Addr=%1").arg(address));
    }
}

QCoro::Task<bool> FormTransfer::SendFormAndLogo(qint16 object, CompiledForm form, bool withLogo, bool interactive) {
    const QString name = m_installation.QObjects[static_cast<std::size_t>(object)].Name;
    const QByteArray none;
    const QString noStart = QStringLiteral("Could'n start send ticket form!");
    const QString dataError = QStringLiteral("Send ticket form data error!");
    const QString noEnd = QStringLiteral("Send ticket form Error!");
    m_cancelled = false;

    const QByteArray length = encoding::Hexadecimal(static_cast<quint32>(form.PrnForm.size()), 4);
    const bool begun = co_await Send(object, 'L', length);
    if (!begun) {
        co_await Report(object, interactive, noStart);
        co_return false;
    }
    const QString formPhase = tr("form");
    const bool sent = co_await SendBlock(object, 'O', form.PrnForm, formPhase);
    if (!sent)
        co_await Report(object, interactive, dataError);
    // Whatever came before, the printer must not be left waiting for more.
    const bool cancelled = std::exchange(m_cancelled, false);
    const QByteArray flag(1, interactive ? '1' : '!');
    const bool ended = co_await Send(object, 'V', flag);
    if (!ended) {
        co_await Report(object, interactive, noEnd);
        co_return false;
    }
    if (cancelled)
        co_return false;
    if (!withLogo || !interactive || form.LogoCount < 1)
        co_return true;

    const QString noLogoStart = QStringLiteral("Could'n start send Logo !");
    const QString logoDataError = QStringLiteral("Send Logo data error!");
    const QString noLogoEnd = QStringLiteral("Send Logo Error!");
    const QString waitPhase = tr("the printer stores the form");
    const QString logoPhase = tr("logos");
    Q_EMIT Progress(name, waitPhase, 0, 0);
    co_await Wait(BeforeLogos);
    const bool logosBegun = co_await Send(object, 'X', none);
    if (!logosBegun) {
        co_await m_dialogs.ShowMessage(BoxKind::Exclamation, noLogoStart);
        co_return false;
    }
    const bool logosSent = co_await SendBlock(object, 'Y', form.LogoData, logoPhase);
    if (!logosSent) {
        co_await m_dialogs.ShowMessage(BoxKind::Exclamation, logoDataError);
        co_return false;
    }
    const bool logosEnded = co_await Send(object, 'Z', none);
    if (!logosEnded) {
        co_await m_dialogs.ShowMessage(BoxKind::Exclamation, noLogoEnd);
        co_return false;
    }
    const QString storePhase = tr("the printer stores the logos");
    Q_EMIT Progress(name, storePhase, 0, 0);
    co_await Wait(AfterLogos);
    co_return true;
}

QCoro::Task<bool> FormTransfer::SendToPrinter(qint16 object, CompiledForm form, bool withLogo) {
    const bool refused = co_await RefuseLogos(form, withLogo);
    if (refused)
        co_return false;
    const QString name = m_installation.QObjects[static_cast<std::size_t>(object)].Name;
    co_await m_router.HubTransferBegin(object);
    const bool sent = co_await SendFormAndLogo(object, form, withLogo, true);
    const BoxKind kind = sent ? BoxKind::Information : BoxKind::Exclamation;
    const QString outcome =
        sent ? QStringLiteral("Set done.") : QStringLiteral("Set ticket form to printer #%1 error!").arg(name);
    co_await m_dialogs.ShowMessage(kind, outcome);
    co_await m_router.HubTransferEnd(object);
    co_return sent;
}

QCoro::Task<bool> FormTransfer::SendFormToAllPrinters(CompiledForm form, bool withLogo) {
    bool all = true;
    for (qint16 i = 0; i < m_installation.NumObjects; ++i) {
        const model::QObject& object = m_installation.QObjects[static_cast<std::size_t>(i)];
        if (object.Type != model::Printer)
            continue;
        const QString question =
            QStringLiteral("Set ticket form to printer #%1 error! Do you want to continue?").arg(object.Name);
        co_await m_router.HubTransferBegin(i);
        const bool sent = co_await SendFormAndLogo(i, form, withLogo, true);
        bool goOn = true;
        if (!sent) {
            all = false;
            goOn = co_await m_dialogs.AskYesNo(BoxKind::Exclamation, question);
        }
        co_await m_router.HubTransferEnd(i);
        if (!goOn)
            break;
    }
    co_return all;
}

QCoro::Task<bool> FormTransfer::RefuseLogos(const CompiledForm& form, bool withLogo) {
    if (!withLogo || form.LogoData.size() <= CompiledForm::LongestLogoData)
        co_return false;
    const QString text = QStringLiteral("Logo data too large: %1 bytes, at most %2.")
                             .arg(form.LogoData.size())
                             .arg(CompiledForm::LongestLogoData);
    co_await m_dialogs.ShowMessage(BoxKind::Exclamation, text);
    co_return true;
}
