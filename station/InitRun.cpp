#include "station/InitRun.h"

#include "core/Installation.h"
#include "core/Options.h"
#include "database/TicketRecords.h"
#include "hubs/DeviceStart.h"
#include "hubs/HubConfig.h"
#include "platform/Clock.h"
#include "printers/PrinterConfig.h"
#include "printers/TicketForms.h"
#include "tickets/VniText.h"

#include <algorithm>

namespace {

constexpr qint16 AfterReset = 250;    ///< milliseconds
constexpr qint16 AfterObject = 100;   ///< milliseconds
constexpr qint16 AfterPrinter = 1500; ///< milliseconds
constexpr qint16 AtTheEnd = 2;        ///< seconds

/// What goes to a device behind a hub directly reaches it only if the hub passes it on.
QString NameOf(const model::QObject& object) {
    const QString name = vni::ToUnicode(object.Name);
    return object.HubId == 0 ? name : InitRun::tr("%1 (behind a hub)").arg(name);
}

} // namespace

InitRun::InitRun(const Parts& parts)
    : m_parts(parts) {}

QCoro::Task<bool> InitRun::InitCounter(qint16 object) {
    model::QObject& counter = m_parts.installation.Object(object);
    const model::TicketEntry ticket = m_parts.tickets.GetLastTicket(counter.Number);
    bool answered = false;
    if (counter.HubId == 0)
        answered = co_await m_parts.starts.SetCounterNumber(object, ticket.TicketNo);
    else
        answered = co_await m_parts.starts.SetHubCounterNumber(object, QByteArray::number(ticket.TicketNo));
    counter.CurrentTicket = ticket;
    co_return answered;
}

QCoro::Task<bool> InitRun::InitPrinter(qint16 object) {
    bool answered = co_await m_parts.starts.PrinterTime(object);
    co_await m_parts.clock.DelayMilliseconds(AfterPrinter);
    if (m_parts.options.SendConfigOnStart) {
        const bool hasTables = co_await m_parts.printers.SendPrinterConfig(object, PrinterConfig::Load::StartUp);
        const bool hasForm = co_await m_parts.forms.SendStoredForm(object);
        answered = answered && hasTables && hasForm;
    }
    co_return answered;
}

QCoro::Task<bool> InitRun::InitObject(qint16 object) {
    bool answered = true;
    switch (m_parts.installation.Object(object).Type) {
    case model::Counter:
        answered = co_await InitCounter(object);
        break;
    case model::Printer:
        answered = co_await InitPrinter(object);
        break;
    case model::Display:
        answered = co_await m_parts.starts.SetInfoText(object, {});
        break;
    case model::Hub:
        answered = co_await m_parts.hubs.SendHubMembers(object);
        break;
    }
    co_return answered;
}

QCoro::Task<QStringList> InitRun::InitQObjects() {
    const model::Installation& installation = m_parts.installation;
    Q_EMIT presetGauge(0, std::max<int>(installation.NumObjects, 1));
    co_await m_parts.starts.BroadcastReset();
    co_await m_parts.clock.DelayMilliseconds(AfterReset);
    QStringList silent;
    for (qint16 i = 0; i < installation.NumObjects; ++i) {
        const bool answered = co_await InitObject(i);
        if (!answered)
            silent += NameOf(installation.Object(i));
        if (m_isCancelled)
            break;
        Q_EMIT UpdateGauge(i + 1);
        co_await m_parts.clock.DelayMilliseconds(AfterObject);
    }
    co_await m_parts.clock.DelaySeconds(AtTheEnd);
    Q_EMIT closeGauge();
    co_return silent;
}
