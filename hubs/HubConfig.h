#pragma once

#include <QByteArray>
#include <QString>

#include <qcoro/qcorotask.h>

#include <optional>

class Bus;

namespace model {
struct Installation;
}

/// What a hub is told about the installation: its members (`W`) and the whole of services, counters, printers and
/// displays (`L`).
///
/// Member list, the data of `W`: the count as a small number, then type and address of each member as small numbers.
///
/// Configuration block, the data of `L`, before stuffing:
///
///     2       7        1  1      3 each              1      3 each                          1      2 each
///     length  Na_Relt  0  count  services            count  counters                        count  printers
///                                Number Series lo hi        Number Address FirstService            Number Address
///
///     1      1 + counters each
///     count  displays: Address, the direction of each counter
///
/// The length counts all characters of the block before stuffing, its own two digits included, and keeps its low 8
/// bits. Numbers are small numbers, but for the two plain bytes of Series; a counter without a service has "/" for
/// FirstService.
class HubConfig {
public:
    /// The references must outlive this object.
    HubConfig(Bus& bus, const model::Installation& installation);

    /// Why the block cannot be built: the first service or object with a number that one character (0 to 207), or a
    /// series that two bytes cannot carry. Nothing if all can.
    std::optional<QString> Fault() const;

    /// The block of the installation as it stands, stuffed. Only for an installation without a `Fault`.
    QByteArray BuildHubConfig() const;

    /// The member list of a hub. @param object its index in `QObjects`.
    QByteArray MemberList(qint16 object) const;

    /// Sends its member list to one hub. @param object index in `QObjects`.
    QCoro::Task<bool> SendHubMembers(qint16 object);

    /// Sends a stuffed block to one hub.
    QCoro::Task<bool> SendHubConfig(quint8 address, QByteArray block);

    /// Sends the block to every hub, in object order; one that does not answer does not stop the run.
    /// @return true if all answered, also if there is no hub. Only for an installation without a `Fault`.
    QCoro::Task<bool> SetHubConfig();

private:
    Bus& m_bus;
    const model::Installation& m_installation;
};
