#include "printers/PrinterConfig.h"

#include "core/EventLog.h"
#include "core/Installation.h"
#include "hubs/HubRouter.h"
#include "platform/Clock.h"
#include "platform/WholeFile.h"
#include "tickets/VniText.h"

namespace {

constexpr int OneTry = 1;
constexpr int TwoTries = 2;
constexpr int SureTimes = 3;             ///< that something is sent again
constexpr qint16 ButtonTablePause = 200; ///< milliseconds
constexpr qint16 ClosingPause = 5;       ///< seconds

} // namespace

PrinterConfig::PrinterConfig(const Parts& parts, QString programFolder, PrinterTables::CounterList counterListOfService)
    : PrinterTransfer(parts)
    , m_programFolder(std::move(programFolder))
    , m_counterListOfService(std::move(counterListOfService)) {}

QCoro::Task<bool> PrinterConfig::SendPrinterConfig(qint16 object, Load load) {
    const bool isFull = load != Load::StartUp;
    const int again = load == Load::Sure ? SureTimes : 0;
    const PrinterTables tables(m_installation, m_counterListOfService, m_log);
    const QString name = vni::ToUnicode(Printer(object).Name);
    const QString phase = tr("tables");
    const int total = static_cast<int>(tables.ServiceTable().size()) + (isFull ? 3 : 2);
    int done = 0;

    WriteListing(tables);
    Q_EMIT Progress(name, phase, done, total);
    co_await m_router.HubTransferBegin(object);

    const bool hasButtons = co_await SendUntilTaken(object, 'K', tables.ButtonTable(isFull), OneTry, again);
    if (!hasButtons)
        m_log.WriteLog(QStringLiteral("Error on set btn table"), EventLog::Error);
    Q_EMIT Progress(name, phase, ++done, total);
    co_await m_clock.DelayMilliseconds(ButtonTablePause);

    co_await SendFrame(object, 'P', {}, OneTry);
    Q_EMIT Progress(name, phase, ++done, total);

    for (std::size_t i = 0; i < tables.ServiceTable().size(); ++i) {
        const bool hasRow = co_await SendUntilTaken(object, 'M', tables.ServiceTable()[i], TwoTries, again);
        if (m_isCancelled)
            break;
        if (!hasRow)
            m_log.WriteLog(QStringLiteral("Error on set service table"), EventLog::Error);
        if (load == Load::Sure && !m_isOwn)
            m_log.WriteLog(QStringLiteral("Printer '%1' did not take service row %2, '%3'.")
                               .arg(name)
                               .arg(i)
                               .arg(vni::ToUnicode(m_installation.Service(static_cast<qint16>(i)).Name)),
                           EventLog::Error);
        Q_EMIT Progress(name, phase, ++done, total);
    }

    if (isFull) {
        const bool ended = co_await SendFrame(object, 'N', {}, TwoTries);
        if (!ended) {
            m_log.WriteLog(QStringLiteral("Error on set service table"), EventLog::Error);
            co_await m_router.HubTransferEnd(object);
            co_return false;
        }
        Q_EMIT Progress(name, phase, ++done, total);
    }
    co_await m_clock.DelaySeconds(ClosingPause);
    co_await m_router.HubTransferEnd(object);
    co_return true;
}

QCoro::Task<QStringList> PrinterConfig::ConfigAllPrinters() {
    return SendToAll([this](qint16 object) { return SendPrinterConfig(object, Load::Full); }, HubBracket::Without, {});
}

void PrinterConfig::WriteListing(const PrinterTables& tables) {
    const Result<> written = WriteWhole(m_programFolder + QStringLiteral("/TDSVCfg.log"), tables.Listing());
    if (!written)
        m_log.WriteLog(written.Error(), EventLog::Error);
}
