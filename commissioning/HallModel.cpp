#include "commissioning/HallModel.h"

#include "core/Installation.h"
#include "tickets/VniText.h"

#include <algorithm>

namespace {

/// Rows of devices have this id, rows of things the row of their device.
constexpr quintptr OfDevice = ~quintptr(0);

bool HaveSameRows(const std::vector<DeviceState>& one, const std::vector<DeviceState>& other) {
    const auto sameKinds = [](const DeviceState& a, const DeviceState& b) {
        return a.key == b.key && std::equal(a.items.begin(), a.items.end(), b.items.begin(), b.items.end(),
                                            [](const HeldItem& x, const HeldItem& y) { return x.kind == y.kind; });
    };
    return std::equal(one.begin(), one.end(), other.begin(), other.end(), sameKinds);
}

} // namespace

QString DurationText(std::chrono::milliseconds time) {
    const qint64 seconds = std::chrono::ceil<std::chrono::seconds>(time).count();
    return seconds < 60 ? HallModel::tr("%1 s").arg(seconds)
                        : HallModel::tr("%1 min %2 s").arg(seconds / 60).arg(seconds % 60);
}

void HallModel::Show(std::vector<DeviceState> hall, std::map<qint32, QString> words,
                     std::set<Commissioning::Choice> loading) {
    const bool isSame = HaveSameRows(m_hall, hall);
    if (!isSame)
        beginResetModel();
    m_hall = std::move(hall);
    m_words = std::move(words);
    m_loading = std::move(loading);
    // What is no longer there cannot be chosen.
    std::set<Commissioning::Choice> there;
    for (const DeviceState& device : m_hall) {
        for (const HeldItem& item : device.items)
            there.insert({device.key, item.kind});
    }
    std::erase_if(m_chosen, [&there](const Commissioning::Choice& choice) { return !there.contains(choice); });
    if (!isSame) {
        endResetModel();
    } else if (!m_hall.empty()) {
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, Columns - 1));
        for (int row = 0; row < rowCount(); ++row) {
            const QModelIndex device = index(row, 0);
            if (const int items = rowCount(device); items > 0)
                Q_EMIT dataChanged(index(0, 0, device), index(items - 1, Columns - 1, device));
        }
    }
    Q_EMIT ChoiceChanged();
}

QString HallModel::Summary() const {
    int inStep = 0;
    int holding = 0;
    int troubled = 0;
    for (const DeviceState& device : m_hall) {
        const auto words = m_words.find(device.key);
        troubled += words != m_words.end() && !words->second.isEmpty() ? 1 : 0;
        holding += device.state != StepState::Nothing ? 1 : 0;
        inStep += device.state == StepState::InStep ? 1 : 0;
    }
    QString text = inStep == holding ? tr("All %1 devices that are loaded are in step.").arg(holding)
                                     : tr("%1 of %2 devices that are loaded are in step.").arg(inStep).arg(holding);
    if (troubled > 0)
        text += u' ' + tr("%n device(s) need a look.", nullptr, troubled);
    return text;
}

QModelIndex HallModel::index(int row, int column, const QModelIndex& parent) const {
    if (!hasIndex(row, column, parent))
        return {};
    return createIndex(row, column, parent.isValid() ? static_cast<quintptr>(parent.row()) : OfDevice);
}

QModelIndex HallModel::parent(const QModelIndex& child) const {
    if (!child.isValid() || child.internalId() == OfDevice)
        return {};
    return createIndex(static_cast<int>(child.internalId()), 0, OfDevice);
}

int HallModel::rowCount(const QModelIndex& parent) const {
    if (!parent.isValid())
        return static_cast<int>(m_hall.size());
    if (parent.internalId() != OfDevice || parent.column() != 0)
        return 0;
    return static_cast<int>(DeviceOf(parent).items.size());
}

int HallModel::columnCount(const QModelIndex&) const {
    return Columns;
}

const DeviceState& HallModel::DeviceOf(const QModelIndex& index) const {
    const bool isDevice = index.internalId() == OfDevice;
    return m_hall[isDevice ? static_cast<std::size_t>(index.row()) : static_cast<std::size_t>(index.internalId())];
}

const HeldItem* HallModel::ItemOf(const QModelIndex& index) const {
    if (index.internalId() == OfDevice)
        return nullptr;
    return &DeviceOf(index).items[static_cast<std::size_t>(index.row())];
}

QString HallModel::DeviceText(const DeviceState& device, int column) const {
    std::chrono::milliseconds time{0};
    qint64 size = 0;
    for (const HeldItem& item : device.items) {
        time += item.time;
        size += item.size;
    }
    const auto words = m_words.find(device.key);
    const QString said = words == m_words.end() ? QString() : words->second;
    switch (column) {
    case What: {
        const QString name = tr("%1 (address %2)").arg(vni::ToUnicode(device.name)).arg(device.address);
        return device.hub.isEmpty() ? name : tr("%1, behind %2").arg(name, vni::ToUnicode(device.hub));
    }
    case State:
        if (!said.isEmpty())
            return said;
        if (device.state == StepState::Nothing)
            return device.type == model::Display ? tr("is not asked") : tr("holds nothing");
        return NameOf(device.state);
    case Why:
        if (device.type == model::Display)
            return tr("displays may not answer P");
        return device.what;
    case Size:
        return size > 0 ? tr("%L1 bytes").arg(size) : QString();
    case Time:
        return time.count() > 0 ? DurationText(time) : QString();
    default:
        return {};
    }
}

QString HallModel::ItemText(const HeldItem& item, int column) {
    switch (column) {
    case What:
        return NameOf(item.kind);
    case State:
        return NameOf(item.state);
    case Why:
        return item.what;
    case Size:
        return item.size > 0 ? tr("%L1 bytes").arg(item.size) : QString();
    case Time:
        return DurationText(item.time);
    default:
        return {};
    }
}

Qt::CheckState HallModel::CheckOf(const QModelIndex& index) const {
    const DeviceState& device = DeviceOf(index);
    if (const HeldItem* const item = ItemOf(index))
        return m_chosen.contains({device.key, item->kind}) ? Qt::Checked : Qt::Unchecked;
    const auto chosen = std::count_if(device.items.begin(), device.items.end(), [&](const HeldItem& item) {
        return m_chosen.contains({device.key, item.kind});
    });
    if (chosen == 0)
        return Qt::Unchecked;
    return chosen == static_cast<qsizetype>(device.items.size()) ? Qt::Checked : Qt::PartiallyChecked;
}

QVariant HallModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid())
        return {};
    const DeviceState& device = DeviceOf(index);
    const HeldItem* const item = ItemOf(index);
    switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
        if (item && m_loading.contains({device.key, item->kind}) && (index.column() == State || index.column() == Why))
            return index.column() == State ? tr("being loaded") : QString();
        return item ? ItemText(*item, index.column()) : DeviceText(device, index.column());
    case Qt::CheckStateRole:
        if (index.column() == What && !device.items.empty())
            return CheckOf(index);
        return {};
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(Qt::AlignVCenter |
                                   (index.column() == Size || index.column() == Time ? Qt::AlignRight : Qt::AlignLeft));
    case StateRole:
        if (item && m_loading.contains({device.key, item->kind}))
            return static_cast<int>(StepState::Nothing);
        return static_cast<int>(item ? item->state : device.state);
    default:
        return {};
    }
}

bool HallModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::CheckStateRole || !index.isValid())
        return false;
    const DeviceState& device = DeviceOf(index);
    const HeldItem* const changed = ItemOf(index);
    for (const HeldItem& item : device.items) {
        if (changed && changed != &item)
            continue;
        if (value.toInt() == Qt::Unchecked)
            m_chosen.erase({device.key, item.kind});
        else
            m_chosen.insert({device.key, item.kind});
    }
    const QModelIndex parent = changed ? index.parent() : index;
    Q_EMIT dataChanged(parent, parent);
    Q_EMIT dataChanged(this->index(0, 0, parent), this->index(rowCount(parent) - 1, 0, parent));
    Q_EMIT ChoiceChanged();
    return true;
}

QVariant HallModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractItemModel::headerData(section, orientation, role);
    const QString titles[Columns] = {tr("Device, and what it holds"), tr("State"), tr("Since when, and why"),
                                     tr("Size"), tr("Time")};
    return section < Columns ? titles[section] : QVariant();
}

Qt::ItemFlags HallModel::flags(const QModelIndex& index) const {
    Qt::ItemFlags flags = QAbstractItemModel::flags(index);
    if (index.isValid() && index.column() == What && !DeviceOf(index).items.empty())
        flags |= Qt::ItemIsUserCheckable;
    return flags;
}
