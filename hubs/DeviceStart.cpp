#include "hubs/DeviceStart.h"

#include "core/Installation.h"
#include "core/Options.h"
#include "hubs/HubRouter.h"
#include "link/Encodings.h"
#include "platform/Clock.h"
#include "platform/LeadingNumber.h"

namespace {

constexpr quint8 Everybody = 127;
constexpr int OneTry = 1;

} // namespace

DeviceStart::DeviceStart(Bus& bus, HubRouter& router, const model::Installation& installation, const Options& options,
                         const Clock& clock, QObject* parent)
    : QObject(parent)
    , m_bus(bus)
    , m_router(router)
    , m_installation(installation)
    , m_options(options)
    , m_clock(clock) {}

QCoro::Task<bool> DeviceStart::Send(qint16 object, char letter, QByteArray data) {
    const quint8 address = m_installation.Object(object).Address;
    const Reply reply = co_await m_bus.SendCommand(address, letter, data, Bus::DirectTimeout, OneTry);
    co_return reply.ok;
}

QCoro::Task<bool> DeviceStart::CounterTime(qint16 object) {
    const bool answered = co_await Send(object, 'S', encoding::TimeText(m_clock.Now()));
    Q_EMIT UpdateObjectDisplay(object, model::Counter, 0, {});
    co_return answered;
}

QCoro::Task<bool> DeviceStart::PrinterTime(qint16 object) {
    const bool answered = co_await Send(object, 'S', encoding::ClockText(m_clock.Now()));
    if (m_options.MultiTicketSeries)
        Q_EMIT UpdateObjectDisplay(object, model::Printer, m_installation.LastTicketNumber, {});
    co_return answered;
}

QCoro::Task<bool> DeviceStart::DisplayQuery(qint16 object) {
    const bool answered = co_await Send(object, 'S', {});
    Q_EMIT UpdateObjectDisplay(object, model::Display, 0, {});
    co_return answered;
}

QCoro::Task<bool> DeviceStart::SetCounterNumber(qint16 object, qint16 number) {
    const QByteArray text = encoding::DisplayText(number, m_options.DisplayType);
    const bool answered = co_await Send(object, 'H', text);
    Q_EMIT UpdateObjectDisplay(object, model::Counter, number::LeadingInteger(QString::fromLatin1(text)), {});
    co_return answered;
}

QCoro::Task<bool> DeviceStart::SetHubCounterNumber(qint16 object, QByteArray text) {
    if (text.isEmpty())
        text = QByteArrayLiteral("----");
    bool answered = false;
    if (const std::optional<model::HubPlace> place = m_installation.PlaceBehindHub(object)) {
        const QByteArray data = QByteArrayLiteral("1") + encoding::SmallNumber(place->slot) + text;
        answered = co_await Send(place->hub, 'H', data);
    }
    Q_EMIT UpdateObjectDisplay(object, model::Counter, number::LeadingInteger(QString::fromLatin1(text)), {});
    co_return answered;
}

QByteArray DeviceStart::EmptyInfoText() const {
    const QByteArray line =
        m_options.MainDisplayType == 0 ? QByteArrayLiteral(";<<<;<;") : QByteArray(6, '\x16') + '\x1B';
    return line.repeated(m_options.InfoNumLine);
}

QCoro::Task<bool> DeviceStart::SetInfoText(qint16 object, QByteArray text) {
    if (text.isEmpty())
        text = EmptyInfoText();
    const QByteArray data = QByteArrayLiteral("0000") + text;
    const bool answered = co_await Send(object, 'H', data);
    Q_EMIT UpdateObjectDisplay(object, model::Display, 0, text);
    co_return answered;
}

QCoro::Task<> DeviceStart::BroadcastReset() {
    const QByteArray time = encoding::ClockText(m_clock.Now());
    co_await m_bus.SendCommand(Everybody, 'R', time, Bus::DirectTimeout, OneTry);
}

QCoro::Task<bool> DeviceStart::BroadcastResetAndTime(std::function<bool()> isCancelled) {
    co_await BroadcastReset();
    bool all = true;
    for (qint16 i = 0; i < m_installation.NumObjects; ++i) {
        bool answered = true;
        switch (m_installation.Object(i).Type) {
        case model::Counter:
            answered = co_await CounterTime(i);
            break;
        case model::Printer:
            answered = co_await PrinterTime(i);
            break;
        case model::Display:
            answered = co_await DisplayQuery(i);
            break;
        default:
            break;
        }
        all = all && answered;
        if (isCancelled())
            break;
    }
    co_return all;
}
