#include "hubs/HubRouter.h"

#include "core/EventLog.h"
#include "core/Installation.h"
#include "link/Encodings.h"

using model::Installation;

HubRouter::HubRouter(Bus& bus, const Installation& installation)
    : m_bus(bus)
    , m_installation(installation) {}

std::optional<HubRouter::Place> HubRouter::FindHubSlot(qint16 object) const {
    const qint16 hub = m_installation.QObjects[static_cast<std::size_t>(object)].HubIndex;
    const model::HubRow& row = m_installation.HubTable[static_cast<std::size_t>(hub)];
    for (qint16 slot = 0; slot < row.Count; ++slot) {
        if (row.Slots[static_cast<std::size_t>(slot)] == object)
            return Place{hub, slot};
    }
    return std::nullopt;
}

QCoro::Task<Reply> HubRouter::SendToObject(qint16 object, char letter, QByteArray data, Bus::Milliseconds timeout,
                                           int tries) {
    const model::QObject& device = m_installation.QObjects[static_cast<std::size_t>(object)];
    if (device.HubId == 0) {
        const Reply direct = co_await m_bus.SendCommand(device.Address, letter, data, timeout, tries);
        co_return direct;
    }
    const std::optional<Place> place = FindHubSlot(object);
    if (!place)
        co_return Reply{};
    // A relay cannot carry what no character can; sent directly the bus refuses it and says so.
    if (device.Address > encoding::LargestSmallNumber) {
        const Reply refused = co_await m_bus.SendCommand(device.Address, letter, data, timeout, tries);
        co_return refused;
    }
    QByteArray relayed;
    relayed += encoding::SmallNumber(device.Address);
    relayed += letter;
    relayed += data;
    const quint8 hubAddress = m_installation.QObjects[static_cast<std::size_t>(place->hub)].Address;
    Reply reply = co_await m_bus.SendCommand(hubAddress, 'N', relayed, Bus::RelayTimeout, tries);
    // The hub's own letter goes out, so that the content stands where a direct reply has it.
    reply.frame.remove(5, 1);
    co_return reply;
}

QCoro::Task<std::optional<bool>> HubRouter::TestConnection(qint16 object, quint8 address) {
    const QByteArray nothing;
    if (m_installation.QObjects[static_cast<std::size_t>(object)].HubId == 0) {
        const Reply direct = co_await m_bus.SendCommand(address, 'P', nothing, Bus::DirectTimeout, 1);
        co_return direct.ok;
    }
    if (!FindHubSlot(object))
        co_return std::nullopt;
    const Reply relayed = co_await SendToObject(object, 'P', nothing, Bus::RelayTimeout, 1);
    co_return relayed.ok;
}

QCoro::Task<> HubRouter::HubTransferBegin(qint16 object) {
    return SendBracket(object, '0');
}

QCoro::Task<> HubRouter::HubTransferEnd(qint16 object) {
    return SendBracket(object, '1');
}

QCoro::Task<> HubRouter::SendBracket(qint16 object, char flag) {
    if (m_installation.QObjects[static_cast<std::size_t>(object)].HubId == 0)
        co_return;
    const std::optional<Place> place = FindHubSlot(object);
    if (!place)
        co_return;
    const QByteArray data(1, flag);
    const quint8 hubAddress = m_installation.QObjects[static_cast<std::size_t>(place->hub)].Address;
    co_await m_bus.SendCommand(hubAddress, 'J', data, Bus::DirectTimeout, 1);
}
