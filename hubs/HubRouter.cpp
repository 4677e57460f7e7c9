#include "hubs/HubRouter.h"

#include "core/EventLog.h"
#include "core/Installation.h"
#include "link/Encodings.h"
#include "link/Frames.h"

using model::Installation;

HubRouter::HubRouter(Bus& bus, const Installation& installation)
    : m_bus(bus)
    , m_installation(installation) {}

QCoro::Task<Reply> HubRouter::SendToObject(qint16 object, char letter, QByteArray data, Bus::Milliseconds timeout,
                                           int tries) {
    const model::QObject& device = m_installation.Object(object);
    if (device.HubId == 0) {
        co_return co_await m_bus.SendCommand(device.Address, letter, data, timeout, tries);
    }
    const std::optional<model::HubPlace> place = m_installation.PlaceBehindHub(object);
    if (!place)
        co_return Reply{};
    // A relay cannot carry what no character can; sent directly the bus refuses it and says so.
    if (device.Address > encoding::LargestSmallNumber) {
        co_return co_await m_bus.SendCommand(device.Address, letter, data, timeout, tries);
    }
    QByteArray relayed;
    relayed += encoding::SmallNumber(device.Address);
    relayed += letter;
    relayed += data;
    const quint8 hubAddress = m_installation.Object(place->hub).Address;
    Reply reply = co_await m_bus.SendCommand(hubAddress, 'N', relayed, Bus::RelayTimeout, tries);
    frames::RemoveRelayLetter(reply.frame);
    co_return reply;
}

QCoro::Task<std::optional<bool>> HubRouter::TestConnection(qint16 object, quint8 address) {
    if (m_installation.Object(object).HubId == 0) {
        const Reply direct = co_await m_bus.SendCommand(address, 'P', {}, Bus::DirectTimeout, 1);
        co_return direct.ok;
    }
    if (!m_installation.PlaceBehindHub(object))
        co_return std::nullopt;
    const Reply relayed = co_await SendToObject(object, 'P', {}, Bus::RelayTimeout, 1);
    co_return relayed.ok;
}

QCoro::Task<> HubRouter::HubTransferBegin(qint16 object) {
    return SendBracket(object, '0');
}

QCoro::Task<> HubRouter::HubTransferEnd(qint16 object) {
    return SendBracket(object, '1');
}

QCoro::Task<> HubRouter::SendBracket(qint16 object, char flag) {
    if (m_installation.Object(object).HubId == 0)
        co_return;
    const std::optional<model::HubPlace> place = m_installation.PlaceBehindHub(object);
    if (!place)
        co_return;
    const QByteArray data(1, flag);
    const quint8 hubAddress = m_installation.Object(place->hub).Address;
    co_await m_bus.SendCommand(hubAddress, 'J', data, Bus::DirectTimeout, 1);
}
