#pragma once

#include "station/Commissioning.h"

#include <QAbstractItemModel>

/// The devices of the hall, under each what it is to hold, and how that stands. What can be loaded has a check box.
class HallModel : public QAbstractItemModel {
    Q_OBJECT

public:
    enum Column { What, State, Why, Size, Time, Columns };

    /// The `StepState` of a row as a number, in the column State.
    static constexpr int StateRole = Qt::UserRole;

    using QAbstractItemModel::QAbstractItemModel;

    /// Shows the hall as it is now; what is checked stays checked.
    /// @param words about each device, by `d_Id`, that stand in place of its state.
    /// @param loading what is being loaded at this moment, and has no state meanwhile.
    void Show(std::vector<DeviceState> hall, std::map<qint32, QString> words,
              std::set<Commissioning::Choice> loading = {});

    const std::vector<DeviceState>& Hall() const { return m_hall; }

    /// What the user has checked.
    const std::set<Commissioning::Choice>& Chosen() const { return m_chosen; }

    /// A sentence about the whole: how many devices are in step and how many are not.
    QString Summary() const;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

Q_SIGNALS:
    void ChoiceChanged();

private:
    /// The device of a row; of the row of a thing, the device that it belongs to.
    const DeviceState& DeviceOf(const QModelIndex& index) const;
    /// The thing of a row, none for the row of a device.
    const HeldItem* ItemOf(const QModelIndex& index) const;
    QString DeviceText(const DeviceState& device, int column) const;
    static QString ItemText(const HeldItem& item, int column);
    Qt::CheckState CheckOf(const QModelIndex& index) const;

    std::vector<DeviceState> m_hall;
    std::map<qint32, QString> m_words;
    std::set<Commissioning::Choice> m_loading;
    std::set<Commissioning::Choice> m_chosen;
};

/// A duration as people read it: "12 s", "3 min 20 s".
QString DurationText(std::chrono::milliseconds time);
