#pragma once

#include "link/Bus.h"

namespace model {
struct Installation;
}

/// The way to a device that may stand behind a hub.
///
/// A device behind a hub is reached by command `N` to the hub: the device's address as a small number, the letter, the
/// data.
class HubRouter {
public:
    /// The references must outlive the router.
    HubRouter(Bus& bus, const model::Installation& installation);

    /// Sends a command to an object, directly or through its hub. Through a hub the time-out is 1.2 s whatever is asked
    /// for, and the hub's letter is taken out of the reply, so that it reads like a direct one. A device that its hub
    /// does not list gets nothing; the reply has failed then.
    QCoro::Task<Reply> SendToObject(qint16 object, char letter, QByteArray data, Bus::Milliseconds timeout, int tries);

    /// Asks for a sign of life (command `P`, one try): an object on the bus itself under `address`, one behind a hub
    /// through the hub.
    /// @return whether it answered; nothing, and nothing is sent, if its hub does not list it.
    QCoro::Task<std::optional<bool>> TestConnection(qint16 object, quint8 address);

    /// Tells the object's hub that a long transfer begins or ends (command `J`). Nothing for an object without a hub or
    /// not listed by it; the answer is ignored.
    QCoro::Task<> HubTransferBegin(qint16 object);
    QCoro::Task<> HubTransferEnd(qint16 object);

private:
    QCoro::Task<> SendBracket(qint16 object, char flag);

    Bus& m_bus;
    const model::Installation& m_installation;
};
