#include "hubs/DeviceClocks.h"

#include "core/Installation.h"
#include "link/Bus.h"
#include "link/Encodings.h"
#include "platform/Clock.h"

DeviceClocks::DeviceClocks(Bus& bus, const model::Installation& installation, const Clock& clock)
    : m_bus(bus)
    , m_installation(installation)
    , m_clock(clock) {}

QCoro::Task<bool> DeviceClocks::SetHubTime() {
    return SendToAll(model::Hub, 'U', encoding::ClockText(m_clock.Now()));
}

QCoro::Task<bool> DeviceClocks::SetAllPrinterTimes() {
    return SendToAll(model::Printer, 'U', encoding::ClockText(m_clock.Now()));
}

QCoro::Task<bool> DeviceClocks::SetHubOption(qint16 ticketsCalled) {
    return SendToAll(model::Hub, 'K', QByteArray(1, encoding::SmallNumber(ticketsCalled)));
}

QCoro::Task<bool> DeviceClocks::SendToAll(model::ObjectType type, char letter, QByteArray data) {
    constexpr int OneTry = 1;
    bool all = true;
    for (qint16 i = 0; i < m_installation.NumObjects; ++i) {
        const model::QObject& object = m_installation.QObjects[static_cast<std::size_t>(i)];
        if (object.Type != type)
            continue;
        OnDevice(object.Name);
        const Reply reply = co_await m_bus.SendCommand(object.Address, letter, data, Bus::DirectTimeout, OneTry);
        all = all && reply.ok;
    }
    co_return all;
}
