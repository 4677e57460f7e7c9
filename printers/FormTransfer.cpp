#include "printers/FormTransfer.h"

#include "core/EventLog.h"
#include "core/Installation.h"
#include "hubs/HubRouter.h"
#include "link/Encodings.h"
#include "link/Frames.h"
#include "platform/Clock.h"
#include "tickets/VniText.h"

namespace {

constexpr qsizetype ChunkLength = 64; ///< bytes before stuffing
constexpr int TwoTries = 2;
constexpr int BeforeLogos = 10'000; ///< milliseconds
constexpr int AfterLogos = 5'000;   ///< milliseconds
constexpr qint16 WaitStep = 100;    ///< milliseconds between looks whether the user has cancelled

std::vector<QByteArray> Chunks(const QByteArray& block) {
    std::vector<QByteArray> chunks;
    for (qsizetype start = 0; start < block.size(); start += ChunkLength)
        chunks.push_back(frames::EscapeData(block.mid(start, ChunkLength)));
    return chunks;
}

/// Why a form cannot be sent with its logos; empty if it can.
QString LogoFault(const CompiledForm& form, Logos logos) {
    if (logos == Logos::Without || form.LogoData.size() <= CompiledForm::LongestLogoData)
        return {};
    return QStringLiteral("Logo data too large: %1 bytes, at most %2.")
        .arg(form.LogoData.size())
        .arg(CompiledForm::LongestLogoData);
}

} // namespace

QCoro::Task<> FormTransfer::Wait(int milliseconds) {
    for (int waited = 0; waited < milliseconds && !m_isCancelled; waited += WaitStep)
        co_await m_clock.DelayMilliseconds(WaitStep);
}

QCoro::Task<> FormTransfer::Report(qint16 object, Occasion occasion, QString text) {
    if (occasion == Occasion::Designer)
        co_await m_dialogs.ShowMessage(BoxKind::Exclamation, text);
    else if (occasion == Occasion::StartUp)
        m_log.WriteLog(QStringLiteral("Send Prn Form to MEM error! Addr=%1").arg(Printer(object).Address));
}

QCoro::Task<bool> FormTransfer::SendForm(qint16 object, QByteArray form, Occasion occasion) {
    const bool begun =
        co_await SendFrame(object, 'L', encoding::Hexadecimal(static_cast<quint32>(form.size()), 4), TwoTries);
    if (!begun) {
        co_await Report(object, occasion, QStringLiteral("Could'n start send ticket form!"));
        co_return false;
    }
    const bool sent = co_await SendChunks(object, 'O', Chunks(form), tr("form"), TwoTries);
    if (!sent)
        co_await Report(object, occasion, QStringLiteral("Send ticket form data error!"));
    // Whatever came before, the printer must not be left waiting for more.
    const bool cancelled = std::exchange(m_isCancelled, false);
    const QByteArray flag(1, occasion == Occasion::StartUp ? '!' : '1');
    const bool ended = co_await SendFrame(object, 'V', flag, TwoTries);
    if (!ended)
        co_await Report(object, occasion, QStringLiteral("Send ticket form Error!"));
    co_return ended && !cancelled && !m_isCancelled;
}

QCoro::Task<bool> FormTransfer::SendLogos(qint16 object, QByteArray logos, Occasion occasion) {
    const QString name = vni::ToUnicode(Printer(object).Name);
    Q_EMIT Progress(name, tr("the printer stores the form"), 0, 0);
    co_await Wait(BeforeLogos);
    QString problem;
    const bool begun = co_await SendFrame(object, 'X', {}, TwoTries);
    if (!begun) {
        problem = QStringLiteral("Could'n start send Logo !");
    } else {
        const bool sent = co_await SendChunks(object, 'Y', Chunks(logos), tr("logos"), TwoTries);
        if (!sent) {
            problem = QStringLiteral("Send Logo data error!");
        } else {
            const bool ended = co_await SendFrame(object, 'Z', {}, TwoTries);
            if (!ended)
                problem = QStringLiteral("Send Logo Error!");
        }
    }
    if (!problem.isEmpty()) {
        co_await Report(object, occasion, problem);
        co_return false;
    }
    Q_EMIT Progress(name, tr("the printer stores the logos"), 0, 0);
    co_await Wait(AfterLogos);
    co_return !m_isCancelled;
}

QCoro::Task<bool> FormTransfer::SendFormAndLogo(qint16 object, CompiledForm form, Logos logos, Occasion occasion) {
    if (occasion == Occasion::StartUp)
        m_isCancelled = false; // nobody can have meant this one
    const bool sent = co_await SendForm(object, form.PrnForm, occasion);
    if (!sent || logos == Logos::Without || occasion == Occasion::StartUp || form.LogoCount < 1)
        co_return sent;
    co_return co_await SendLogos(object, form.LogoData, occasion);
}

QCoro::Task<bool> FormTransfer::LoadPart(qint16 object, CompiledForm form, Part part) {
    Begin();
    co_await m_router.HubTransferBegin(object);
    bool sent = false;
    if (part == Part::Form)
        sent = co_await SendForm(object, form.PrnForm, Occasion::Commissioning);
    else
        sent = co_await SendLogos(object, form.LogoData, Occasion::Commissioning);
    co_await m_router.HubTransferEnd(object);
    co_return sent;
}

QCoro::Task<Outcome> FormTransfer::SendToPrinter(qint16 object, CompiledForm form, Logos logos) {
    if (const QString fault = LogoFault(form, logos); !fault.isEmpty())
        co_return Outcome::Refused(fault);
    Begin();
    const QString name = vni::ToUnicode(Printer(object).Name);
    co_await m_router.HubTransferBegin(object);
    const bool sent = co_await SendFormAndLogo(object, form, logos, Occasion::Designer);
    Outcome outcome = Outcome::Done();
    if (sent) {
        co_await m_dialogs.ShowMessage(BoxKind::Information, QStringLiteral("Set done."));
    } else {
        co_await m_dialogs.ShowMessage(BoxKind::Exclamation,
                                       QStringLiteral("Set ticket form to printer #%1 error!").arg(name));
        outcome = Outcome::Failed({});
        if (m_isUnanswered)
            outcome.silent += name;
    }
    co_await m_router.HubTransferEnd(object);
    co_return outcome;
}

QCoro::Task<Outcome> FormTransfer::SendFormToAllPrinters(CompiledForm form, Logos logos) {
    if (const QString fault = LogoFault(form, logos); !fault.isEmpty())
        co_return Outcome::Refused(fault);
    const Send send = [this, form, logos](qint16 object) {
        return SendFormAndLogo(object, form, logos, Occasion::Designer);
    };
    const QStringList failed = co_await SendToAll(
        send, HubBracket::With, QStringLiteral("Set ticket form to printer #%1 error! Do you want to continue?"));
    Outcome outcome = failed.isEmpty() ? Outcome::Done(BoxKind::Information, QStringLiteral("Set done."))
                                       : Outcome::Failed(QStringLiteral("There're errors on setting ticket form."));
    outcome.silent = Silent();
    co_return outcome;
}
