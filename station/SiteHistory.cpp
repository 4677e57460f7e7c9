#include "station/SiteHistory.h"

#include "station/EditWords.h"
#include "tickets/VniText.h"

#include <QCoreApplication>

#include <algorithm>

namespace {

QString tr(const char* text) {
    return QCoreApplication::translate("SiteHistory", text);
}

QString EndOf(const LoadEntry& entry) {
    switch (entry.end) {
    case LoadEntry::End::Done:
        return tr("done");
    case LoadEntry::End::Failed:
        return tr("failed");
    case LoadEntry::End::CutOff:
        break;
    }
    return entry.event == LoadEntry::Event::Begun ? tr("never ended") : tr("cut off");
}

SiteEvent EventOf(const LoadEntry& entry) {
    SiteEvent event;
    event.kind = SiteEvent::Kind::Load;
    event.moment = entry.begun;
    event.user = entry.user;
    QString device = tr("%1 (address %2)").arg(vni::ToUnicode(entry.name)).arg(entry.device.address);
    event.where = {device};
    if (entry.device.hub != DeviceIdentity::Direct)
        device = tr("%1, behind hub %2").arg(device).arg(entry.device.hub);
    if (entry.event == LoadEntry::Event::Asked) {
        event.isBad = !entry.flags.startsWith(QStringLiteral("1111"));
        event.what = tr("%1: asked, flags %2").arg(device, entry.flags);
    } else {
        event.isBad = entry.event == LoadEntry::Event::Begun || entry.end != LoadEntry::End::Done;
        event.what = tr("%1: %2 loaded, %3").arg(device, NameOf(entry.kind), EndOf(entry));
    }
    if (!entry.reason.isEmpty())
        event.details += entry.reason;
    if (entry.event == LoadEntry::Event::Ended) {
        event.details += tr("%1 bytes in %2 commands, %3 tries; %4 answered by the device itself, %5 by something else")
                             .arg(entry.size)
                             .arg(entry.frames)
                             .arg(entry.tries)
                             .arg(entry.own)
                             .arg(entry.foreign);
        event.details += tr("SHA-256 %1").arg(entry.hash);
    }
    if (!entry.port.isEmpty())
        event.details += tr("at port %1, with version %2").arg(entry.port, entry.version);
    return event;
}

QString KindText(const EditAct& act, const QString& title) {
    switch (act.kind) {
    case EditAct::Kind::Undo:
        return tr("Undo: %1").arg(title);
    case EditAct::Kind::Redo:
        return tr("Redo: %1").arg(title);
    case EditAct::Kind::Edit:
        break;
    }
    return title;
}

} // namespace

Result<std::vector<SiteEvent>> SiteHistory::Read(int most) const {
    std::vector<SiteEvent> events;
    const Result<std::vector<EditAct>> acts = m_edits.Read(most);
    if (!acts)
        return Failure{acts.Error()};
    for (const EditAct& act : *acts) {
        SiteEvent& event = events.emplace_back();
        event.moment = act.moment;
        event.user = act.user;
        event.act = act.id;
        event.what = KindText(act, editwords::Title(m_edits, act));
        const Result<std::vector<RowChange>> rows = m_edits.Rows(act.id);
        for (const RowChange& row : rows ? *rows : std::vector<RowChange>()) {
            const QString table = editwords::TableName(row.table);
            if (!event.where.contains(table))
                event.where += table;
        }
    }
    const Result<std::vector<LoadEntry>> loads = m_loads.Read(most);
    if (!loads)
        return Failure{loads.Error()};
    std::transform(loads->begin(), loads->end(), std::back_inserter(events), EventOf);
    for (const StoreCopy& copy : m_copies.List()) {
        SiteEvent& event = events.emplace_back();
        event.kind = SiteEvent::Kind::Copy;
        event.moment = copy.moment;
        event.what = tr("Copy of the database, made before: %1").arg(copy.before);
        event.path = copy.path;
    }
    // What happened in the same second stays in its order.
    std::stable_sort(events.begin(), events.end(),
                     [](const SiteEvent& one, const SiteEvent& other) { return one.moment > other.moment; });
    return events;
}

Result<QStringList> SiteHistory::Details(const SiteEvent& event) const {
    if (event.kind == SiteEvent::Kind::Load)
        return event.details;
    const Result<std::vector<RowChange>> rows =
        event.kind == SiteEvent::Kind::Edit ? m_edits.Rows(event.act) : m_edits.CompareWith(event.path);
    if (!rows)
        return Failure{rows.Error()};
    return editwords::Lines(m_edits, *rows);
}
