#include "core/Installation.h"

#include <algorithm>

namespace model {
namespace {

/// Index of the first of the `count` leading records for which `matches` holds, `otherwise` if there is none.
template <typename Records, typename Predicate>
qint16 FirstMatch(const Records& records, qint16 count, qint16 otherwise, Predicate matches) {
    const auto end = records.begin() + std::clamp<int>(count, 0, SlotCount);
    const auto found = std::find_if(records.begin(), end, matches);
    return found == end ? otherwise : static_cast<qint16>(found - records.begin());
}

} // namespace

void TicketRing::ResetRing() {
    Capacity = Size;
    Head = 1;
    Tail = 0;
    Count = 0;
}

qint16 TicketRing::NextRingIndex(qint16 index) const {
    const auto next = static_cast<qint16>(index + 1);
    return next == Capacity ? qint16(0) : next;
}

bool TicketRing::RingAdd(const TicketEntry& entry) {
    if (RingIsFull())
        return false;
    ++Count;
    Tail = NextRingIndex(Tail);
    Entries[static_cast<std::size_t>(Tail)] = entry;
    return true;
}

std::vector<qint16> Installation::ObjectsOf(ObjectType type) const {
    std::vector<qint16> indexes;
    for (qint16 i = 0; i < NumObjects; ++i) {
        if (Object(i).Type == type)
            indexes.push_back(i);
    }
    return indexes;
}

qint16 Installation::Target(qint16 service) const {
    const qint16 route = Service(service).Route;
    return route == 0 ? service : FindServiceByNumber(route);
}

std::span<const qint16> Installation::MembersOf(qint16 hub) const {
    const HubRow& row = HubTable[Slot(hub)];
    return std::span(row.Slots).first(static_cast<std::size_t>(row.Count));
}

std::optional<HubPlace> Installation::PlaceBehindHub(qint16 object) const {
    const qint16 hub = Object(object).HubIndex;
    const std::span<const qint16> members = MembersOf(hub);
    const auto found = std::find(members.begin(), members.end(), object);
    if (found == members.end())
        return std::nullopt;
    return HubPlace{hub, static_cast<qint16>(found - members.begin())};
}

qint16 Installation::FindServiceById(qint32 id) const {
    return FirstMatch(QServices, NumServices, -1, [id](const QService& service) { return service.Id == id; });
}

qint16 Installation::FindServiceByNumber(qint16 number) const {
    return FirstMatch(QServices, NumServices, 0,
                      [number](const QService& service) { return service.Number == number; });
}

qint16 Installation::FindObjectById(qint32 id) const {
    return FirstMatch(QObjects, NumObjects, -1, [id](const QObject& object) { return object.Id == id; });
}

qint16 Installation::FindObjectByNumber(qint32 number) const {
    return FirstMatch(QObjects, NumObjects, -1, [number](const QObject& object) { return object.Number == number; });
}

qint16 Installation::FirstServiceOf(qint16 object) const {
    if (object < 0 || object >= SlotCount)
        return -1;
    return FindServiceById(QObjects[static_cast<std::size_t>(object)].FirstServiceId);
}

qint16 Installation::DirectionOf(qint32 infId, qint32 dId) const {
    const auto end = DirectionTable.begin() + std::min<std::ptrdiff_t>(NumDirections, std::ssize(DirectionTable));
    const auto row = std::find_if(DirectionTable.begin(), end, [=](const DirectionRow& candidate) {
        return candidate.inf_Id == infId && candidate.d_Id == dId;
    });
    return row == end ? qint16(0) : row->Dir_Id;
}

} // namespace model
