#pragma once

#include "database/LoadRecord.h"

#include <QAbstractTableModel>

/// The record of loads as a table, the newest entry first.
class RecordModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column {
        Begun,
        Device,
        What,
        Outcome,
        Why,
        Size,
        Frames,
        Tries,
        Own,
        Foreign,
        Flags,
        Took,
        Ended,
        User,
        Port,
        Version,
        Hash,
        Columns
    };

    /// The entry is no good one.
    static constexpr int IsMarkedRole = Qt::UserRole;

    using QAbstractTableModel::QAbstractTableModel;

    void Show(std::vector<LoadEntry> entries);

    /// Lets through only what is about a device, by its name and address; nothing set lets all through.
    void SetFilter(const std::optional<DeviceIdentity>& device);

    /// The devices that stand in the record, with the name that each had last, in the order of their addresses.
    std::vector<std::pair<DeviceIdentity, QString>> Devices() const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    QString Text(const LoadEntry& entry, int column) const;
    void Filter();

    std::vector<LoadEntry> m_entries;
    std::optional<DeviceIdentity> m_filter;
    std::vector<std::size_t> m_rows; ///< indexes of entries
};
