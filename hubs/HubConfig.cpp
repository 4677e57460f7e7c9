#include "hubs/HubConfig.h"

#include "core/Installation.h"
#include "link/Bus.h"
#include "link/Encodings.h"
#include "link/Frames.h"
#include "tickets/VniText.h"

#include <functional>
#include <span>
#include <vector>

using encoding::SmallNumber;

namespace {

constexpr int LargestSeries = 65535;
constexpr int OneTry = 1;
constexpr qsizetype LengthDigits = 2;

/// The objects of one type in object order.
std::vector<const model::QObject*> OfType(const model::Installation& installation, model::ObjectType type) {
    std::vector<const model::QObject*> found;
    for (const model::QObject& object : installation.LoadedObjects()) {
        if (object.Type == type)
            found.push_back(&object);
    }
    return found;
}

bool FitsOneCharacter(int number) {
    return number >= 0 && number <= encoding::LargestSmallNumber;
}

/// Collects what does not fit the block.
class Faults {
public:
    /// @param carrier what the numbers have to fit.
    explicit Faults(QString carrier)
        : m_carrier(std::move(carrier)) {}

    /// Looks at what one character has to carry.
    void Number(BlockFault::Of of, qint32 id, const QString& who, const char* field, const QString& what, int number) {
        Check(FitsOneCharacter(number), of, id, field, who, what, number, encoding::LargestSmallNumber);
    }

    /// Looks at what two bytes have to carry.
    void Series(const model::QService& service, const QString& who) {
        Check(service.Series >= 0 && service.Series <= LargestSeries, BlockFault::Of::Service, service.Id, "q_series",
              who, QStringLiteral("series"), service.Series, LargestSeries);
    }

    std::vector<BlockFault> Found;

private:
    void Check(bool fits, BlockFault::Of of, qint32 id, const char* field, const QString& who, const QString& what,
               int number, int largest) {
        if (fits)
            return;
        Found.push_back({of, id, QString::fromLatin1(field),
                         QStringLiteral("%1: %2 %3 does not fit the hub's %4, which takes 0 to %5.")
                             .arg(who, what)
                             .arg(number)
                             .arg(m_carrier)
                             .arg(largest)});
    }

    QString m_carrier;
};

QByteArray List(const std::vector<const model::QObject*>& objects,
                const std::function<QByteArray(const model::QObject&)>& entry) {
    QByteArray list(1, SmallNumber(static_cast<int>(objects.size())));
    for (const model::QObject* object : objects)
        list += entry(*object);
    return list;
}

} // namespace

std::vector<BlockFault> BlockFaults(const model::Installation& installation) {
    if (OfType(installation, model::Hub).empty())
        return {};
    Faults faults(QStringLiteral("block"));
    for (const model::QService& service : installation.LoadedServices()) {
        const QString who = QStringLiteral("Service '%1'").arg(vni::ToUnicode(service.Name));
        faults.Number(BlockFault::Of::Service, service.Id, who, "q_Number", QStringLiteral("number"), service.Number);
        faults.Series(service, who);
    }
    for (const model::QObject& object : installation.LoadedObjects()) {
        const QString who = QStringLiteral("Object '%1'").arg(vni::ToUnicode(object.Name));
        if (object.Type == model::Counter || object.Type == model::Printer)
            faults.Number(BlockFault::Of::Object, object.Id, who, "d_Number", QStringLiteral("number"), object.Number);
        if (object.Type == model::Counter || object.Type == model::Printer || object.Type == model::Display)
            faults.Number(BlockFault::Of::Object, object.Id, who, "d_Address", QStringLiteral("address"),
                          object.Address);
    }
    for (const model::QObject* display : OfType(installation, model::Display)) {
        for (const model::QObject* counter : OfType(installation, model::Counter)) {
            const QString who = QStringLiteral("Display '%1', counter '%2'")
                                    .arg(vni::ToUnicode(display->Name), vni::ToUnicode(counter->Name));
            faults.Number(BlockFault::Of::Direction, display->Id, who, "Dir_Id", QStringLiteral("direction"),
                          installation.DirectionOf(display->Id, counter->Id));
        }
    }
    return faults.Found;
}

std::vector<BlockFault> MemberFaults(const model::Installation& installation) {
    Faults faults(QStringLiteral("member list"));
    for (const qint16 hub : installation.ObjectsOf(model::Hub)) {
        for (const qint16 index : installation.MembersOf(hub)) {
            const model::QObject& member = installation.Object(index);
            const QString who = QStringLiteral("Object '%1'").arg(vni::ToUnicode(member.Name));
            faults.Number(BlockFault::Of::Object, member.Id, who, "d_Address", QStringLiteral("address"),
                          member.Address);
            faults.Number(BlockFault::Of::Object, member.Id, who, "d_Type", QStringLiteral("type"), member.Type);
        }
    }
    return faults.Found;
}

QByteArray BuildHubConfig(const model::Installation& installation) {
    const auto counters = OfType(installation, model::Counter);
    QByteArray block = QByteArrayLiteral("Na_Relt");
    block += '\0';
    block += SmallNumber(installation.NumServices);
    for (const model::QService& service : installation.LoadedServices()) {
        block += SmallNumber(service.Number);
        block += static_cast<char>(service.Series % 256);
        block += static_cast<char>(service.Series / 256);
    }
    block += List(counters, [](const model::QObject& counter) {
        return QByteArray{} + SmallNumber(counter.Number) + SmallNumber(counter.Address) +
               SmallNumber(counter.FirstServiceIndex);
    });
    block += List(OfType(installation, model::Printer), [](const model::QObject& printer) {
        return QByteArray{} + SmallNumber(printer.Number) + SmallNumber(printer.Address);
    });
    block += List(OfType(installation, model::Display), [&](const model::QObject& display) {
        QByteArray entry(1, SmallNumber(display.Address));
        for (const model::QObject* counter : counters)
            entry += SmallNumber(installation.DirectionOf(display.Id, counter->Id));
        return entry;
    });
    const auto length = static_cast<quint32>(block.size() + LengthDigits);
    return frames::EscapeData(encoding::Hexadecimal(length, LengthDigits) + block);
}

QByteArray MemberList(const model::Installation& installation, qint16 hub) {
    const std::span<const qint16> members = installation.MembersOf(hub);
    QByteArray list(1, SmallNumber(static_cast<int>(members.size())));
    for (const qint16 index : members) {
        const model::QObject& member = installation.Object(index);
        list += SmallNumber(member.Type);
        list += SmallNumber(member.Address);
    }
    return list;
}

HubConfig::HubConfig(Bus& bus, const model::Installation& installation)
    : m_bus(bus)
    , m_installation(installation) {}

QCoro::Task<bool> HubConfig::SendHubMembers(qint16 object) {
    for (const qint16 member : m_installation.MembersOf(object)) {
        const model::QObject& device = m_installation.Object(member);
        if (!FitsOneCharacter(device.Address) || !FitsOneCharacter(device.Type))
            co_return false;
    }
    const quint8 address = m_installation.Object(object).Address;
    const Reply reply =
        co_await m_bus.SendCommand(address, 'W', MemberList(m_installation, object), Bus::DirectTimeout, OneTry);
    co_return reply.ok;
}

QCoro::Task<bool> HubConfig::SendHubConfig(quint8 address, QByteArray block) {
    const Reply reply = co_await m_bus.SendCommand(address, 'L', block, Bus::DirectTimeout, OneTry);
    co_return reply.ok;
}

QCoro::Task<QStringList> HubConfig::SetHubConfig() {
    const QByteArray block = BuildHubConfig(m_installation);
    QStringList silent;
    for (const qint16 hub : m_installation.ObjectsOf(model::Hub)) {
        const model::QObject& object = m_installation.Object(hub);
        const QString name = vni::ToUnicode(object.Name);
        if (!OnDevice(name))
            break;
        const bool answered = co_await SendHubConfig(object.Address, block);
        if (!answered)
            silent += name;
    }
    co_return silent;
}
