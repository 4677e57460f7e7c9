#include "station/InitRun.h"

#include "platform/Clock.h"
#include "station/Station.h"

#include <algorithm>

namespace {

constexpr qint16 AfterReset = 250;    ///< milliseconds
constexpr qint16 AfterObject = 100;   ///< milliseconds
constexpr qint16 AfterPrinter = 1500; ///< milliseconds
constexpr qint16 AtTheEnd = 2;        ///< seconds

/// What goes to a device behind a hub directly reaches it only if the hub passes it on.
QString NameOf(const model::QObject& object) {
    return object.HubId == 0 ? object.Name : InitRun::tr("%1 (behind a hub)").arg(object.Name);
}

} // namespace

InitRun::InitRun(Station& station)
    : m_station(station) {}

QCoro::Task<bool> InitRun::InitCounter(qint16 object) {
    model::QObject& counter = m_station.installation->QObjects[static_cast<std::size_t>(object)];
    const model::TicketEntry ticket = m_station.tickets.GetLastTicket(counter.Number);
    bool answered = false;
    if (counter.HubId == 0) {
        answered = co_await m_station.starts.SetCounterNumber(object, ticket.TicketNo);
    } else {
        const QByteArray text = QByteArray::number(ticket.TicketNo);
        answered = co_await m_station.starts.SetHubCounterNumber(object, text);
    }
    counter.CurrentTicket = ticket;
    co_return answered;
}

QCoro::Task<bool> InitRun::InitPrinter(qint16 object) {
    const bool answered = co_await m_station.starts.PrinterTime(object);
    co_await m_station.clock.DelayMilliseconds(AfterPrinter);
    if (m_station.options.SendConfigOnStart) {
        co_await m_station.printers.SendPrinterConfig(object, false);
        co_await m_station.forms.SendStoredForm(object);
    }
    co_return answered;
}

QCoro::Task<bool> InitRun::InitQObjects() {
    const model::Installation& installation = *m_station.installation;
    Q_EMIT presetGauge(0, std::max<int>(installation.NumObjects, 1));
    co_await m_station.starts.BroadcastReset();
    co_await m_station.clock.DelayMilliseconds(AfterReset);
    bool all = true;
    Silent.clear();
    for (qint16 i = 0; i < installation.NumObjects; ++i) {
        bool answered = true;
        const QByteArray noText;
        switch (installation.QObjects[static_cast<std::size_t>(i)].Type) {
        case model::Counter:
            answered = co_await InitCounter(i);
            break;
        case model::Printer:
            answered = co_await InitPrinter(i);
            break;
        case model::Display:
            answered = co_await m_station.starts.SetInfoText(i, noText);
            break;
        case model::Hub:
            co_await m_station.hubs.SendHubMembers(i);
            break;
        default:
            break;
        }
        all = all && answered;
        if (!answered)
            Silent += NameOf(installation.QObjects[static_cast<std::size_t>(i)]);
        if (CancelInit)
            break;
        Q_EMIT UpdateGauge(i + 1);
        co_await m_station.clock.DelayMilliseconds(AfterObject);
    }
    co_await m_station.clock.DelaySeconds(AtTheEnd);
    Q_EMIT closeGauge();
    if (!CancelInit)
        m_station.run.SetRunning(true);
    co_return all;
}
