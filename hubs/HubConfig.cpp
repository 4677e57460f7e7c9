#include "hubs/HubConfig.h"

#include "core/Installation.h"
#include "link/Bus.h"
#include "link/Encodings.h"
#include "link/Frames.h"

#include <functional>
#include <span>
#include <vector>

using encoding::SmallNumber;

namespace {

constexpr int LargestSeries = 65535;
constexpr int OneTry = 1;
constexpr qsizetype LengthDigits = 2;

std::span<const model::QService> Services(const model::Installation& installation) {
    return std::span(installation.QServices).first(static_cast<std::size_t>(installation.NumServices));
}

std::span<const model::QObject> Objects(const model::Installation& installation) {
    return std::span(installation.QObjects).first(static_cast<std::size_t>(installation.NumObjects));
}

/// The objects of one type in object order.
std::vector<const model::QObject*> OfType(const model::Installation& installation, model::ObjectType type) {
    std::vector<const model::QObject*> found;
    for (const model::QObject& object : Objects(installation)) {
        if (object.Type == type)
            found.push_back(&object);
    }
    return found;
}

bool FitsOneCharacter(int number) {
    return number >= 0 && number <= encoding::LargestSmallNumber;
}

QString NumberFault(const QString& who, const QString& what, int number) {
    return QStringLiteral("%1: %2 %3 does not fit the hub's block, which takes 0 to %4.")
        .arg(who, what)
        .arg(number)
        .arg(encoding::LargestSmallNumber);
}

QByteArray List(const std::vector<const model::QObject*>& objects,
                const std::function<QByteArray(const model::QObject&)>& entry) {
    QByteArray list(1, SmallNumber(static_cast<int>(objects.size())));
    for (const model::QObject* object : objects)
        list += entry(*object);
    return list;
}

} // namespace

HubConfig::HubConfig(Bus& bus, const model::Installation& installation)
    : m_bus(bus)
    , m_installation(installation) {}

std::optional<QString> HubConfig::Fault() const {
    for (const model::QService& service : Services(m_installation)) {
        const QString who = QStringLiteral("Service '%1'").arg(service.Name);
        if (!FitsOneCharacter(service.Number))
            return NumberFault(who, QStringLiteral("number"), service.Number);
        if (service.Series < 0 || service.Series > LargestSeries) {
            return QStringLiteral("%1: series %2 does not fit the hub's block, which takes 0 to %3.")
                .arg(who)
                .arg(service.Series)
                .arg(LargestSeries);
        }
    }
    for (const model::QObject& object : Objects(m_installation)) {
        const QString who = QStringLiteral("Object '%1'").arg(object.Name);
        const bool hasNumber = object.Type == model::Counter || object.Type == model::Printer;
        if (hasNumber && !FitsOneCharacter(object.Number))
            return NumberFault(who, QStringLiteral("number"), object.Number);
        if (object.Type != model::Hub && !FitsOneCharacter(object.Address))
            return NumberFault(who, QStringLiteral("address"), object.Address);
    }
    for (const model::QObject* display : OfType(m_installation, model::Display)) {
        for (const model::QObject* counter : OfType(m_installation, model::Counter)) {
            const qint16 direction = m_installation.DirectionOf(display->Id, counter->Id);
            if (!FitsOneCharacter(direction)) {
                const QString who = QStringLiteral("Display '%1', counter '%2'").arg(display->Name, counter->Name);
                return NumberFault(who, QStringLiteral("direction"), direction);
            }
        }
    }
    return std::nullopt;
}

QByteArray HubConfig::BuildHubConfig() const {
    const auto counters = OfType(m_installation, model::Counter);
    QByteArray block = QByteArrayLiteral("Na_Relt");
    block += '\0';
    block += SmallNumber(m_installation.NumServices);
    for (const model::QService& service : Services(m_installation)) {
        block += SmallNumber(service.Number);
        block += static_cast<char>(service.Series % 256);
        block += static_cast<char>(service.Series / 256);
    }
    block += List(counters, [](const model::QObject& counter) {
        return QByteArray{} + SmallNumber(counter.Number) + SmallNumber(counter.Address) +
               SmallNumber(counter.FirstServiceIndex);
    });
    block += List(OfType(m_installation, model::Printer), [](const model::QObject& printer) {
        return QByteArray{} + SmallNumber(printer.Number) + SmallNumber(printer.Address);
    });
    block += List(OfType(m_installation, model::Display), [&](const model::QObject& display) {
        QByteArray entry(1, SmallNumber(display.Address));
        for (const model::QObject* counter : counters)
            entry += SmallNumber(m_installation.DirectionOf(display.Id, counter->Id));
        return entry;
    });
    const auto length = static_cast<quint32>(block.size() + LengthDigits);
    return frames::EscapeData(encoding::Hexadecimal(length, LengthDigits) + block);
}

QByteArray HubConfig::MemberList(qint16 object) const {
    const model::HubRow& row = m_installation.HubTable[static_cast<std::size_t>(object)];
    QByteArray list(1, SmallNumber(row.Count));
    for (const qint16 slot : std::span(row.Slots).first(static_cast<std::size_t>(row.Count))) {
        const model::QObject& member = m_installation.QObjects[static_cast<std::size_t>(slot)];
        list += SmallNumber(member.Type);
        list += SmallNumber(member.Address);
    }
    return list;
}

QCoro::Task<bool> HubConfig::SendHubMembers(qint16 object) {
    const QByteArray list = MemberList(object);
    const quint8 address = m_installation.QObjects[static_cast<std::size_t>(object)].Address;
    const Reply reply = co_await m_bus.SendCommand(address, 'W', list, Bus::DirectTimeout, OneTry);
    co_return reply.ok;
}

QCoro::Task<bool> HubConfig::SendHubConfig(quint8 address, QByteArray block) {
    const Reply reply = co_await m_bus.SendCommand(address, 'L', block, Bus::DirectTimeout, OneTry);
    co_return reply.ok;
}

QCoro::Task<bool> HubConfig::SetHubConfig() {
    const QByteArray block = BuildHubConfig();
    bool all = true;
    for (qint16 i = 0; i < m_installation.NumObjects; ++i) {
        const model::QObject& object = m_installation.QObjects[static_cast<std::size_t>(i)];
        if (object.Type != model::Hub)
            continue;
        const bool answered = co_await SendHubConfig(object.Address, block);
        all = all && answered;
    }
    co_return all;
}
