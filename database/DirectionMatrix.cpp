#include "database/DirectionMatrix.h"

#include "core/Installation.h"
#include "database/GridRecords.h"
#include "database/Schema.h"

#include <algorithm>
#include <array>
#include <limits>
#include <map>
#include <utility>

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

void DirectionMatrix::ReloadUnderChoices(const GridRecords& rsDisplay, const model::Installation& installation) {
    struct Kept {
        qint16 display;
        qint16 counter;
        qint16 direction;
    };
    std::vector<Kept> kept;
    for (std::size_t i = 0; i + m_undone < m_choices.size(); ++i) {
        const Choice& choice = m_choices[i];
        kept.push_back({m_rows[static_cast<std::size_t>(choice.row)].displayId,
                        m_counterIds[static_cast<std::size_t>(choice.column - 1)], choice.after});
    }
    LoadDirectionGrid(rsDisplay, installation);
    for (const Kept& choice : kept) {
        const auto row = std::find_if(m_rows.begin(), m_rows.end(),
                                      [&choice](const Row& one) { return one.displayId == choice.display; });
        const auto counter = std::find(m_counterIds.begin(), m_counterIds.end(), choice.counter);
        if (row != m_rows.end() && counter != m_counterIds.end())
            (void)Write(static_cast<int>(row - m_rows.begin()), static_cast<int>(counter - m_counterIds.begin()) + 1,
                        QString::number(choice.direction));
    }
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
    // A direction that is stored already keeps its key: what does not change is no edit.
    std::map<std::array<int, 3>, QVariant> keys;
    auto stored = database.Select({QStringLiteral("SELECT inf_Id,d_Id,Dir_Id,RowKey FROM [Info-Direction]")});
    while (stored && stored->next())
        keys[{stored->value(0).toInt(), stored->value(1).toInt(), stored->value(2).toInt()}] = stored->value(3);
    if (stored)
        stored->finish();
    std::vector<Statement> statements{{QStringLiteral("DELETE FROM [Info-Direction]")}};
    for (const Row& row : m_rows) {
        if (row.displayId == NoDisplay)
            continue;
        for (std::size_t i = 0; i < m_counterIds.size(); ++i) {
            Statement insert{QStringLiteral("INSERT INTO [Info-Direction] ([inf_Id],[d_Id],[Dir_Id]) VALUES (?,?,?)"),
                             {row.displayId, m_counterIds[i], row.directions[i]}};
            if (const auto key = keys.find({row.displayId, m_counterIds[i], row.directions[i]}); key != keys.end()) {
                insert.text =
                    QStringLiteral("INSERT INTO [Info-Direction] ([inf_Id],[d_Id],[Dir_Id],[RowKey]) VALUES (?,?,?,?)");
                insert.values += key->second;
            }
            statements.push_back(insert);
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
    // Emptied is none.
    if (!flags(index(row, column)).testFlag(Qt::ItemIsEditable) || text.toShort() == CellText(row, column).toShort())
        return Result<>();
    m_act += m_isTogether ? 0 : 1;
    m_choices.resize(m_choices.size() - m_undone);
    m_undone = 0;
    m_choices.push_back({row, column, CellText(row, column).toShort(), text.toShort(), m_act});
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
    const int act = m_choices[m_choices.size() - m_undone - 1].act;
    while (CanUndo() && m_choices[m_choices.size() - m_undone - 1].act == act) {
        const Choice& choice = m_choices[m_choices.size() - ++m_undone];
        Set(choice.row, choice.column, choice.before);
    }
}

void DirectionMatrix::Redo() {
    if (!CanRedo())
        return;
    const int act = m_choices[m_choices.size() - m_undone].act;
    while (CanRedo() && m_choices[m_choices.size() - m_undone].act == act) {
        const Choice& choice = m_choices[m_choices.size() - m_undone--];
        Set(choice.row, choice.column, choice.after);
    }
}

Result<> DirectionMatrix::Together(const QString&, const std::function<Result<>()>& change) {
    ++m_act;
    m_isTogether = true;
    const Result<> done = change();
    m_isTogether = false;
    if (!done && CanUndo() && m_choices.back().act == m_act && m_undone == 0) {
        Undo();
        m_choices.resize(m_choices.size() - std::exchange(m_undone, 0));
    }
    return done;
}

Qt::ItemFlags DirectionMatrix::flags(const QModelIndex& index) const {
    Qt::ItemFlags flags = GridModel::flags(index);
    // Nothing that is chosen for no display could be stored.
    if (Key(index.row()).toInt() == NoDisplay)
        flags.setFlag(Qt::ItemIsEditable, false);
    return flags;
}
