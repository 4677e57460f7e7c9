#include "printers/PrinterConfig.h"

#include "core/EventLog.h"
#include "core/Installation.h"
#include "hubs/HubRouter.h"
#include "platform/Clock.h"

#include <QSaveFile>

namespace {

constexpr int OneTry = 1;
constexpr int TwoTries = 2;
constexpr qint16 ButtonTablePause = 200; ///< milliseconds
constexpr qint16 ClosingPause = 5;       ///< seconds

} // namespace

PrinterConfig::PrinterConfig(QString programFolder, const model::Installation& installation, HubRouter& router,
                             Clock& clock, PrinterTables::CounterList counterListOfService, EventLog& log,
                             ::QObject* parent)
    : ::QObject(parent)
    , m_programFolder(std::move(programFolder))
    , m_installation(installation)
    , m_router(router)
    , m_clock(clock)
    , m_counterListOfService(std::move(counterListOfService))
    , m_log(log) {}

QCoro::Task<bool> PrinterConfig::SendPrinterConfig(qint16 object, bool fullLoad) {
    const PrinterTables tables(m_installation, m_counterListOfService, m_log);
    const QString name = m_installation.QObjects[static_cast<std::size_t>(object)].Name;
    const QByteArray buttonTable = tables.ButtonTable(fullLoad);
    const QByteArray none;
    const QString tableError = QStringLiteral("Error on set service table");
    const int total = static_cast<int>(tables.ServiceTable().size()) + (fullLoad ? 3 : 2);
    int done = 0;

    WriteListing(tables);
    Q_EMIT Progress(name, done, total);
    co_await m_router.HubTransferBegin(object);

    const Reply buttons = co_await m_router.SendToObject(object, 'K', buttonTable, Bus::DirectTimeout, OneTry);
    if (!buttons)
        m_log.WriteLog(QStringLiteral("Error on set btn table"), EventLog::Error);
    Q_EMIT Progress(name, ++done, total);
    co_await m_clock.DelayMilliseconds(ButtonTablePause);

    co_await m_router.SendToObject(object, 'P', none, Bus::DirectTimeout, OneTry);
    Q_EMIT Progress(name, ++done, total);

    for (const QByteArray& row : tables.ServiceTable()) {
        const Reply service = co_await m_router.SendToObject(object, 'M', row, Bus::DirectTimeout, TwoTries);
        if (!service)
            m_log.WriteLog(tableError, EventLog::Error);
        Q_EMIT Progress(name, ++done, total);
    }

    if (fullLoad) {
        const Reply end = co_await m_router.SendToObject(object, 'N', none, Bus::DirectTimeout, TwoTries);
        if (!end) {
            m_log.WriteLog(tableError, EventLog::Error);
            co_await m_router.HubTransferEnd(object);
            co_return false;
        }
        Q_EMIT Progress(name, ++done, total);
    }
    co_await m_clock.DelaySeconds(ClosingPause);
    co_await m_router.HubTransferEnd(object);
    co_return true;
}

QCoro::Task<bool> PrinterConfig::ConfigAllPrinters() {
    bool all = true;
    for (qint16 i = 0; i < m_installation.NumObjects; ++i) {
        if (m_installation.QObjects[static_cast<std::size_t>(i)].Type != model::Printer)
            continue;
        const bool loaded = co_await SendPrinterConfig(i, true);
        all = all && loaded;
    }
    co_return all;
}

void PrinterConfig::WriteListing(const PrinterTables& tables) {
    QSaveFile file(m_programFolder + QStringLiteral("/TDSVCfg.log"));
    if (file.open(QIODevice::WriteOnly) && file.write(tables.Listing()) >= 0 && file.commit())
        return;
    m_log.WriteLog(QStringLiteral("TDSVCfg.log could not be written: ") + file.errorString(), EventLog::Error);
}
