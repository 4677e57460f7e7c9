#include "station/HallState.h"

#include "core/HubTable.h"
#include "core/Installation.h"
#include "platform/Clock.h"
#include "station/LoadDifference.h"
#include "station/LoadWatch.h"

#include <QCoreApplication>

#include <algorithm>

namespace {

struct Words {
    Q_DECLARE_TR_FUNCTIONS(HallState)
};

/// Why the last load of a thing is no good one; empty if it is.
QString LoadFault(const LoadEntry& last) {
    if (last.event == LoadEntry::Event::Begun)
        return Words::tr("the load of %1 never came to its end").arg(last.begun);
    if (last.end == LoadEntry::End::Done)
        return {};
    return Words::tr("load of %1: %2").arg(last.begun, last.reason);
}

} // namespace

QString NameOf(StepState state) {
    switch (state) {
    case StepState::Nothing:
        return {};
    case StepState::InStep:
        return Words::tr("in step");
    case StepState::NotAsked:
        return Words::tr("not verified");
    case StepState::Changed:
        return Words::tr("changed since");
    case StepState::NeverLoaded:
        return Words::tr("never loaded");
    case StepState::Failed:
        break;
    }
    return Words::tr("failed");
}

QString FlagFault(LoadKind kind, const QString& flags) {
    const auto isGood = [&flags](int place) { return place < flags.size() && flags[place] == u'1'; };
    switch (kind) {
    case LoadKind::Tables:
        if (!isGood(0))
            return Words::tr("the printer reports an error in its service table");
        return isGood(1) ? QString() : Words::tr("the printer reports an error in its button table");
    case LoadKind::Form:
    case LoadKind::Logos:
        return isGood(2) ? QString() : Words::tr("the printer reports an error in its form");
    case LoadKind::Letters:
        return isGood(3) ? QString() : Words::tr("the printer reports an error in its letters");
    default:
        return {};
    }
}

HallState::HallState(Database& database, const LoadRecord& record, const TicketForms& forms, const Options& options,
                     const Clock& clock)
    : m_record(record)
    , m_forms(forms)
    , m_clock(clock)
    , m_quiet(QString(), clock)
    , m_scratch(std::make_unique<model::Installation>())
    , m_loaders(database, *m_scratch, options, m_quiet) {}

HallState::~HallState() = default;

Result<> HallState::LoadScratch() {
    const Result<Snapshot> store = m_loaders.Read();
    if (!store)
        return Failure{store.Error()};
    m_scratch->NumServices = m_loaders.LoadServices(*store);
    m_loaders.AssignSeriesIndexes(m_scratch->NumServices);
    m_scratch->NumObjects = m_loaders.LoadCounters(*store);
    m_scratch->NumDirections = m_loaders.LoadDirections(*store);
    for (qint16 i = 0; i < m_scratch->NumObjects; ++i)
        m_scratch->Object(i).FirstServiceIndex = m_scratch->FirstServiceOf(i);
    BuildHubTable(*m_scratch, m_quiet);
    return {};
}

HeldItem HallState::StateOf(const Payload& payload, const DeviceIdentity& device, const LoadRecord& record) {
    HeldItem item;
    item.kind = payload.kind;
    item.size = payload.content.size();
    const auto is = [&item](StepState state, const QString& what) {
        item.state = state;
        item.what = what;
        return item;
    };
    const LoadRecord::Standing* const standing = record.Of(device, payload.kind);
    if (!payload.fault.isEmpty())
        return is(standing ? StepState::Failed : StepState::NeverLoaded, payload.fault);
    if (!standing)
        return is(StepState::NeverLoaded, {});
    if (const QString fault = LoadFault(standing->last); !fault.isEmpty())
        return is(StepState::Failed, fault);
    if (standing->last.hash != LoadRecord::HashOf(payload.content)) {
        const std::optional<QByteArray> before = record.Content(standing->last.hash);
        const QString difference = DifferenceOf(payload.kind, before.value_or(QByteArray()), payload.content);
        return is(StepState::Changed, Words::tr("loaded %1; since then: %2").arg(standing->last.ended, difference));
    }
    const bool hasFlag = payload.kind == LoadKind::Tables || payload.kind == LoadKind::Form ||
                         payload.kind == LoadKind::Logos || payload.kind == LoadKind::Letters;
    const QString flags = record.FlagsSince(device, payload.kind);
    if (hasFlag && flags.isEmpty())
        return is(StepState::NotAsked, Words::tr("loaded %1").arg(standing->last.ended));
    if (const QString fault = FlagFault(payload.kind, flags); hasFlag && !fault.isEmpty())
        return is(StepState::Failed, fault);
    return is(StepState::InStep, Words::tr("loaded %1").arg(standing->last.ended));
}

Result<std::vector<DeviceState>> HallState::Look(int baud) {
    if (const Result<> loaded = LoadScratch(); !loaded)
        return Failure{loaded.Error()};
    Payloads payloads({*m_scratch, m_forms, m_record, m_clock,
                       [this](qint32 service) { return m_loaders.CounterListOfService(service); }, m_quiet});
    std::vector<DeviceState> all;
    for (qint16 index = 0; index < m_scratch->NumObjects; ++index) {
        const model::QObject& object = m_scratch->Object(index);
        DeviceState& device = all.emplace_back();
        device.object = index;
        device.key = object.Id;
        device.name = object.Name;
        device.type = object.Type;
        device.address = object.Address;
        if (const qint16 hub = m_scratch->FindObjectById(object.HubId); object.HubId != 0 && hub >= 0)
            device.hub = m_scratch->Object(hub).Name;
        QStringList whats;
        for (const Payload& payload : payloads.Of(index)) {
            HeldItem item = StateOf(payload, IdentityOf(*m_scratch, object), m_record);
            item.time = Payloads::LoadTime(payload, baud, object.HubId != 0);
            if (item.state > device.state) {
                device.state = item.state;
                whats.clear();
            }
            if (item.state == device.state && item.state != StepState::InStep)
                whats += item.what.isEmpty() ? NameOf(item.kind) : NameOf(item.kind) + QStringLiteral(": ") + item.what;
            device.items.push_back(item);
        }
        device.what = whats.join(QStringLiteral("; "));
    }
    return all;
}
