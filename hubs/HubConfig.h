#pragma once

#include <QByteArray>
#include <QStringList>

#include <qcoro/qcorotask.h>

#include <functional>
#include <vector>

class Bus;

namespace model {
struct Installation;
}

/// What the configuration block cannot carry.
struct BlockFault {
    enum class Of { Service, Object, Direction };

    Of of = Of::Service;
    qint32 id = 0; ///< `q_Id` of the service; `d_Id` of the object, or of the display of a direction
    QString field; ///< column of the store
    QString text;  ///< for a user
};

/// All services, objects and directions with a number that one character (0 to 207), or a series that two bytes
/// (0 to 65535) cannot carry. Nothing without a hub, since nobody gets the block then.
std::vector<BlockFault> BlockFaults(const model::Installation& installation);

/// The members of all hubs whose address or type one character (0 to 207) cannot carry in a member list.
std::vector<BlockFault> MemberFaults(const model::Installation& installation);

/// The configuration block, the data of command `L`, stuffed, of an installation without faults. Before stuffing:
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
QByteArray BuildHubConfig(const model::Installation& installation);

/// The member list of a hub, the data of command `W`: the count as a small number, then type and address of each member
/// as small numbers. @param hub its index in `QObjects`.
QByteArray MemberList(const model::Installation& installation, qint16 hub);

/// What a hub is told about the installation: its members (`W`) and the whole of services, counters, printers and
/// displays (`L`).
class HubConfig {
public:
    /// The references must outlive this object.
    HubConfig(Bus& bus, const model::Installation& installation);

    /// Called with the name of each hub before the block is sent to it; false ends the run.
    std::function<bool(const QString&)> OnDevice = [](const QString&) { return true; };

    /// Sends its member list to one hub, unless the list cannot carry one of them: then nothing is sent, and it has
    /// failed. @param object index in `QObjects`.
    QCoro::Task<bool> SendHubMembers(qint16 object);

    /// Sends a stuffed block to one hub.
    QCoro::Task<bool> SendHubConfig(quint8 address, QByteArray block);

    /// Sends the block to every hub, in object order; one that does not answer does not stop the run.
    /// @return the names of those that did not answer. Only for an installation without faults.
    QCoro::Task<QStringList> SetHubConfig();

private:
    Bus& m_bus;
    const model::Installation& m_installation;
};
