#include "hubs/DeviceClocks.h"

#include "core/Installation.h"
#include "link/Bus.h"
#include "link/Encodings.h"
#include "platform/Clock.h"
#include "tickets/VniText.h"

DeviceClocks::DeviceClocks(Bus& bus, const model::Installation& installation, const Clock& clock)
    : m_bus(bus)
    , m_installation(installation)
    , m_clock(clock) {}

QCoro::Task<QStringList> DeviceClocks::SetHubTime() {
    return SendToAll(model::Hub, 'U', encoding::ClockText(m_clock.Now()));
}

QCoro::Task<QStringList> DeviceClocks::SetAllPrinterTimes() {
    return SendToAll(model::Printer, 'U', encoding::ClockText(m_clock.Now()));
}

QCoro::Task<bool> DeviceClocks::SetTime(qint16 object) {
    const quint8 address = m_installation.Object(object).Address;
    const QByteArray time = encoding::ClockText(m_clock.Now());
    const Reply reply = co_await m_bus.SendCommand(address, 'U', time, Bus::DirectTimeout, 1);
    co_return reply.ok;
}

QCoro::Task<QStringList> DeviceClocks::SetHubOption(qint16 ticketsCalled) {
    return SendToAll(model::Hub, 'K', QByteArray(1, encoding::SmallNumber(ticketsCalled)));
}

QCoro::Task<QStringList> DeviceClocks::SendToAll(model::ObjectType type, char letter, QByteArray data) {
    constexpr int OneTry = 1;
    QStringList silent;
    m_isStopped = false;
    for (const qint16 index : m_installation.ObjectsOf(type)) {
        const model::QObject& object = m_installation.Object(index);
        const QString name = vni::ToUnicode(object.Name);
        m_isStopped = !OnDevice(name);
        if (m_isStopped)
            break;
        const Reply reply = co_await m_bus.SendCommand(object.Address, letter, data, Bus::DirectTimeout, OneTry);
        if (!reply.ok)
            silent += name;
    }
    co_return silent;
}
