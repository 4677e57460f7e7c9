#include "commissioning/RecordModel.h"

#include "station/HallState.h"
#include "tickets/VniText.h"

#include <QDateTime>

namespace {

QString EndText(const LoadEntry& entry) {
    if (entry.event == LoadEntry::Event::Asked)
        return RecordModel::tr("told its flags");
    if (entry.event == LoadEntry::Event::Begun)
        return RecordModel::tr("never ended");
    switch (entry.end) {
    case LoadEntry::End::Done:
        return RecordModel::tr("done");
    case LoadEntry::End::Failed:
        return RecordModel::tr("failed");
    case LoadEntry::End::CutOff:
        break;
    }
    return RecordModel::tr("cut off");
}

bool IsBad(const LoadEntry& entry) {
    if (entry.event == LoadEntry::Event::Asked)
        return !entry.flags.startsWith(QStringLiteral("1111"));
    return entry.event == LoadEntry::Event::Begun || entry.end != LoadEntry::End::Done;
}

} // namespace

void RecordModel::Show(std::vector<LoadEntry> entries) {
    beginResetModel();
    m_entries = std::move(entries);
    Filter();
    endResetModel();
}

void RecordModel::SetFilter(const std::optional<DeviceIdentity>& device) {
    beginResetModel();
    m_filter = device;
    Filter();
    endResetModel();
}

void RecordModel::Filter() {
    m_rows.clear();
    for (std::size_t i = 0; i < m_entries.size(); ++i) {
        if (!m_filter || m_entries[i].device == *m_filter)
            m_rows.push_back(i);
    }
}

std::vector<std::pair<DeviceIdentity, QString>> RecordModel::Devices() const {
    std::map<std::pair<quint8, DeviceIdentity>, QString> devices;
    // The newest name comes first.
    for (const LoadEntry& entry : m_entries)
        devices.emplace(std::pair(entry.device.address, entry.device), vni::ToUnicode(entry.name));
    std::vector<std::pair<DeviceIdentity, QString>> all;
    all.reserve(devices.size());
    for (const auto& [place, name] : devices)
        all.emplace_back(place.second, name);
    return all;
}

int RecordModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int RecordModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : Columns;
}

QString RecordModel::Text(const LoadEntry& entry, int column) const {
    const bool isLoad = entry.event != LoadEntry::Event::Asked;
    const bool isEnd = entry.event == LoadEntry::Event::Ended;
    const auto number = [isEnd](qint64 value) { return isEnd ? QString::number(value) : QString(); };
    switch (column) {
    case Begun:
        return entry.begun;
    case Device: {
        const QString name = tr("%1 (address %2)").arg(vni::ToUnicode(entry.name)).arg(entry.device.address);
        return entry.device.hub == DeviceIdentity::Direct ? name
                                                          : tr("%1, behind hub %2").arg(name).arg(entry.device.hub);
    }
    case What:
        return isLoad ? NameOf(entry.kind) : tr("status");
    case Outcome:
        return EndText(entry);
    case Why:
        return entry.reason;
    case Size:
        return number(entry.size);
    case Frames:
        return number(entry.frames);
    case Tries:
        return number(entry.tries);
    case Own:
        return number(entry.own);
    case Foreign:
        return number(entry.foreign);
    case Flags:
        return entry.flags;
    case Took: {
        const QString format = QStringLiteral("yyyy-MM-dd hh:mm:ss");
        const QDateTime begun = QDateTime::fromString(entry.begun, format);
        return isEnd ? tr("%1 s").arg(begun.secsTo(QDateTime::fromString(entry.ended, format))) : QString();
    }
    case Ended:
        return entry.ended;
    case User:
        return entry.user;
    case Port:
        return entry.port;
    case Version:
        return entry.version;
    case Hash:
        return entry.hash;
    default:
        return {};
    }
}

QVariant RecordModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid())
        return {};
    const LoadEntry& entry = m_entries[m_rows[static_cast<std::size_t>(index.row())]];
    switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
        return Text(entry, index.column());
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(
            Qt::AlignVCenter | (index.column() >= Size && index.column() <= Foreign ? Qt::AlignRight : Qt::AlignLeft));
    case IsMarkedRole:
        return IsBad(entry);
    default:
        return {};
    }
}

QVariant RecordModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    const QString titles[Columns] = {tr("Begun"),   tr("Device"),   tr("What"),  tr("Outcome"),     tr("Why"),
                                     tr("Bytes"),   tr("Commands"), tr("Tries"), tr("Own answers"), tr("Foreign"),
                                     tr("Flags"),   tr("Took"),     tr("Ended"), tr("User"),        tr("Port"),
                                     tr("Version"), tr("SHA-256")};
    return section < Columns ? titles[section] : QVariant();
}
