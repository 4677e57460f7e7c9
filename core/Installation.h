#pragma once

#include "core/clsInfTbl.h"

#include <QString>

#include <array>
#include <memory>
#include <optional>
#include <span>
#include <vector>

/// The installation in memory: what everything that talks to a device reads. Filled from the database by the loaders.
namespace model {

constexpr int SlotCount = 64;  ///< records of `QServices` and of `QObjects`
constexpr int HubMembers = 16; ///< members of one hub

/// A waiting ticket.
struct TicketEntry {
    qint16 TicketNo = 0;     ///< the printed number
    qint16 ServiceIndex = 0; ///< index in `QServices`
    qint32 RecordId = 0;     ///< `ID` of the row in `rData`
    float Seconds = 0;       ///< time of day, seconds after midnight
};

/// A fixed ring of waiting tickets, the oldest at `Head`.
struct TicketRing {
    static constexpr qint16 Size = 512;

    qint16 Capacity = Size;
    qint16 Head = 1;
    qint16 Tail = 0;
    qint16 Count = 0;
    std::array<TicketEntry, Size + 1> Entries{}; ///< the last one is never used

    /// Empties the ring; the entries are left as they are.
    void ResetRing();
    bool RingIsFull() const { return Count == Capacity; }
    /// The index behind `index`: 0 behind `Capacity` - 1.
    qint16 NextRingIndex(qint16 index) const;
    /// False, and nothing changes, if the ring is full.
    bool RingAdd(const TicketEntry& entry);
};

/// What a device on the bus is.
enum ObjectType : quint8 { Counter = 0, Printer = 1, Display = 2, Hub = 3 };

/// The ticket number behind one. The largest has none behind it; it is held, not wrapped.
inline qint32 NumberAfter(qint32 number) {
    return number == std::numeric_limits<qint32>::max() ? number : number + 1;
}

/// A service, from one enabled row of table `Queue`.
struct QService {
    qint32 Id = 0;       ///< `q_Id`, fits 16 bits
    quint8 Button = 0;   ///< button of the ticket printer
    qint16 Number = 0;   ///< its own number; `Route` of other services refers to it
    QString Name;        ///< VNI
    QString Description; ///< VNI
    QString Notes;       ///< VNI
    qint32 Series = 1;   ///< base of the ticket numbers
    TicketRing WaitRing;
    TicketRing FlaggedRing;
    qint16 Route = 0;      ///< 0, or the `Number` of the service whose series this one shares
    qint32 NextNumber = 0; ///< next ticket number
    qint16 SeriesIndex = 0;
    qint16 OwnSeriesIndex = 0; ///< no meaning for a routed service while RoutedSeries is on
};

/// A device on the bus, from one enabled row of table `Display`.
struct QObject {
    qint32 Id = 0;             ///< `d_Id`
    quint8 Direction = 0;      ///< read by nothing
    quint8 Number = 0;         ///< the number that people see
    QString Name;              ///< VNI
    quint8 Address = 0;        ///< on the bus; unique among the loaded objects
    ObjectType Type = Counter; ///< a value that is none of them is a device that nothing is sent to
    qint32 HubId = 0;          ///< `d_Id` of the hub it stands behind, 0 for none
    qint16 HubIndex = 0;       ///< object index of that hub, set by `BuildHubTable`
    qint16 HubSlot = 0;        ///< place in the hub's row of `HubTable`, set by `BuildHubTable`
    qint16 State = 0;
    bool Changed = false;
    TicketEntry CurrentTicket;
    qint32 FirstServiceId = -1;    ///< `q_Id` of the first assignment, -1 if there is none
    qint16 FirstServiceIndex = -1; ///< its index in `QServices`, -1 if it is not loaded
    std::array<quint8, SlotCount> ServiceIndexes{};
    qint16 ServiceCount = 0;
    qint16 CommandDelay = 0;
    bool VoiceLocal = false; ///< read by nothing
    QString VoicerId;        ///< read by nothing
    bool Dirty = false;
    std::unique_ptr<clsInfTbl> InfoTable; ///< of a Display only
    qint16 RetryDelay = 0;
    qint16 TestService = 0; ///< record 0 only
    qint16 TestTicket = 0;  ///< record 0 only
    TicketRing WaitRing;
    TicketRing FlaggedRing;
};

/// The arrow that a display shows for a counter.
struct DirectionRow {
    qint16 inf_Id = 0; ///< `d_Id` of the display
    qint16 d_Id = 0;   ///< `d_Id` of the counter
    qint16 Dir_Id = 0; ///< 0 none, 1 left, 2 right, 3 up, 4 down
};

/// The members of one hub as object indexes.
struct HubRow {
    qint16 Count = 0; ///< 0 to 16
    std::array<qint16, HubMembers> Slots{};
};

/// Where a device stands behind a hub.
struct HubPlace {
    qint16 hub = 0;  ///< object index of the hub
    qint16 slot = 0; ///< 0 to 15
};

/// The whole model. Large (some 2 MB): lives on the heap.
struct Installation {
    qint16 NumServices = 0;
    qint16 NumObjects = 0;
    std::array<QService, SlotCount> QServices;
    std::array<QObject, SlotCount> QObjects;
    std::vector<DirectionRow> DirectionTable;
    qint16 NumDirections = 0;
    std::vector<qint16> ScanOrder; ///< object indexes
    qint16 NumScanEntries = 0;
    std::array<HubRow, SlotCount> HubTable{}; ///< by the object index of a hub
    qint16 LastTicketNumber = 0;              ///< the next number when all services share one series

    /// Records by their index, 0 to 63.
    const QService& Service(qint16 index) const { return QServices[Slot(index)]; }
    QService& Service(qint16 index) { return QServices[Slot(index)]; }
    const QObject& Object(qint16 index) const { return QObjects[Slot(index)]; }
    QObject& Object(qint16 index) { return QObjects[Slot(index)]; }

    std::span<const QService> LoadedServices() const {
        return std::span(QServices).first(static_cast<std::size_t>(NumServices));
    }
    std::span<const QObject> LoadedObjects() const {
        return std::span(QObjects).first(static_cast<std::size_t>(NumObjects));
    }

    std::span<QService> LoadedServices() { return std::span(QServices).first(static_cast<std::size_t>(NumServices)); }
    std::span<QObject> LoadedObjects() { return std::span(QObjects).first(static_cast<std::size_t>(NumObjects)); }

    /// Indexes of the loaded objects of a type, in object order.
    std::vector<qint16> ObjectsOf(ObjectType type) const;

    /// Object indexes of the members of a hub. @param hub its object index.
    std::span<const qint16> MembersOf(qint16 hub) const;

    /// Index of the service whose series a service shares: the one that its `Route` names (the first one if none has
    /// that number), itself without a route.
    qint16 Target(qint16 service) const;

    /// The place of an object in the member list of the hub at its `HubIndex`, none if it is not listed there.
    std::optional<HubPlace> PlaceBehindHub(qint16 object) const;

    /// Index of the first loaded service with that `Id`, -1 if there is none.
    qint16 FindServiceById(qint32 id) const;
    /// Index of the first loaded service with that `Number`; 0, the first service, if there is none. With no service
    /// loaded 0 means nobody: the caller must not touch record 0 then.
    qint16 FindServiceByNumber(qint16 number) const;
    /// Index of the first loaded object with that `Id`, -1 if there is none.
    qint16 FindObjectById(qint32 id) const;
    /// Index of the first loaded object with that `Number`, -1 if there is none.
    qint16 FindObjectByNumber(qint32 number) const;
    /// Index of the service whose `Id` is the object's `FirstServiceId`, -1 if it is not loaded.
    /// @param object 0 to 63.
    qint16 FirstServiceOf(qint16 object) const;
    /// `Dir_Id` of the first row for that display and counter, 0 if there is none.
    qint16 DirectionOf(qint32 infId, qint32 dId) const;

private:
    static std::size_t Slot(qint16 index) {
        Q_ASSERT(index >= 0 && index < SlotCount);
        return static_cast<std::size_t>(index);
    }
};

} // namespace model
