#include "database/DirectionMatrix.h"

#include "core/Installation.h"
#include "database/GridRecords.h"
#include "database/Schema.h"

#include <algorithm>
#include <limits>

namespace {

constexpr qint16 NoDisplay = -1; ///< id of the last row

std::vector<std::pair<int, QString>> Directions() {
    return {{0, QStringLiteral("None")},
            {1, QStringLiteral("Left")},
            {2, QStringLiteral("Right")},
            {3, QStringLiteral("Up")},
            {4, QStringLiteral("Down")}};
}

struct Device {
    qint16 id;
    QString name;
};

/// The devices of one type whose ids fit the table of directions.
std::vector<Device> DevicesOf(const GridRecords& rsDisplay, model::ObjectType type) {
    std::vector<Device> devices;
    for (int row = 0; row < rsDisplay.RecordCount(); ++row) {
        const QVariant stored = rsDisplay.Value(row, u"d_Type");
        const qint64 id = rsDisplay.Key(row).toLongLong();
        if (stored.toInt() == type && id > 0 && id <= std::numeric_limits<qint16>::max())
            devices.push_back({static_cast<qint16>(id), rsDisplay.Value(row, u"d_Name").toString()});
    }
    // As they stand in the store, however a user has sorted the list.
    std::sort(devices.begin(), devices.end(), [](const Device& one, const Device& other) { return one.id < other.id; });
    return devices;
}

} // namespace

void DirectionMatrix::LoadDirectionGrid(const GridRecords& rsDisplay, const model::Installation& installation) {
    if (rsDisplay.RecordCount() == 0)
        return;
    beginResetModel();
    m_columns = {{.caption = QStringLiteral("Display \\ Counter"), .field = QString(), .readOnly = true}};
    m_counterIds.clear();
    for (const Device& counter : DevicesOf(rsDisplay, model::Counter)) {
        m_counterIds.push_back(counter.id);
        m_columns.push_back({.caption = counter.name, .field = QString(), .values = Directions()});
    }
    std::vector<Device> displays = DevicesOf(rsDisplay, model::Display);
    displays.push_back({NoDisplay, QStringLiteral("--------")});
    m_rows.clear();
    for (const Device& display : displays) {
        Row& row = m_rows.emplace_back(Row{display.id, display.name, {}});
        for (const qint16 counterId : m_counterIds)
            row.directions.push_back(installation.DirectionOf(display.id, counterId));
    }
    ForgetChoices();
    endResetModel();
}

void DirectionMatrix::ForgetChoices() {
    m_choices.clear();
    m_undone = 0;
    m_isChanged = false;
}

void DirectionMatrix::Clear() {
    beginResetModel();
    m_columns.clear();
    m_counterIds.clear();
    m_rows.clear();
    ForgetChoices();
    endResetModel();
}

Result<> DirectionMatrix::UpdateDataDir(Database& database) {
    if (!database.IsOpen())
        return Failure{QStringLiteral("Can't open Queue database!")};
    std::vector<Statement> statements{{QStringLiteral("DELETE FROM [Info-Direction]")}};
    for (const Row& row : m_rows) {
        if (row.displayId == NoDisplay)
            continue;
        for (std::size_t i = 0; i < m_counterIds.size(); ++i) {
            statements.push_back(
                {QStringLiteral("INSERT INTO [Info-Direction] ([inf_Id],[d_Id],[Dir_Id]) VALUES (?,?,?)"),
                 {row.displayId, m_counterIds[i], row.directions[i]}});
        }
    }
    const Result<> done = database.Edit({}, statements);
    if (!done)
        return Failure{schema::ReadableError(done.Error())};
    ForgetChoices();
    Q_EMIT RecordsChanged();
    return {};
}

int DirectionMatrix::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

QVariant DirectionMatrix::Key(int row) const {
    return row >= 0 && row < rowCount() ? QVariant(m_rows[static_cast<std::size_t>(row)].displayId) : QVariant();
}

QString DirectionMatrix::CellText(int row, int column) const {
    if (row < 0 || row >= rowCount() || column < 0 || column >= columnCount())
        return {};
    const Row& shown = m_rows[static_cast<std::size_t>(row)];
    return column == 0 ? shown.name : QString::number(shown.directions[static_cast<std::size_t>(column - 1)]);
}

Result<> DirectionMatrix::Write(int row, int column, const QString& text) {
    if (!flags(index(row, column)).testFlag(Qt::ItemIsEditable) || text == CellText(row, column))
        return Result<>();
    m_choices.resize(m_choices.size() - m_undone);
    m_undone = 0;
    m_choices.push_back({row, column, CellText(row, column).toShort(), text.toShort()});
    Set(row, column, text.toShort());
    return Result<>();
}

void DirectionMatrix::Set(int row, int column, qint16 direction) {
    m_rows[static_cast<std::size_t>(row)].directions[static_cast<std::size_t>(column - 1)] = direction;
    m_isChanged = CanUndo();
    Q_EMIT dataChanged(index(row, column), index(row, column));
    Q_EMIT RecordsChanged();
}

void DirectionMatrix::Undo() {
    if (!CanUndo())
        return;
    const Choice& choice = m_choices[m_choices.size() - ++m_undone];
    Set(choice.row, choice.column, choice.before);
}

void DirectionMatrix::Redo() {
    if (!CanRedo())
        return;
    const Choice& choice = m_choices[m_choices.size() - m_undone--];
    Set(choice.row, choice.column, choice.after);
}

Qt::ItemFlags DirectionMatrix::flags(const QModelIndex& index) const {
    Qt::ItemFlags flags = GridModel::flags(index);
    // Nothing that is chosen for no display could be stored.
    if (Key(index.row()).toInt() == NoDisplay)
        flags.setFlag(Qt::ItemIsEditable, false);
    return flags;
}
