#include "platform/GridModel.h"

#include <algorithm>

GridColumn GridColumn::YesNo(const QString& caption, const QString& field) {
    return {.caption = caption, .field = field, .values = {{1, QStringLiteral("Yes")}, {0, QStringLiteral("No")}}};
}

QString GridColumn::Shown(const QString& stored) const {
    if (values.empty() || stored.isEmpty())
        return stored;
    const auto known = std::find_if(values.begin(), values.end(),
                                    [&](const auto& value) { return QString::number(value.first) == stored; });
    if (known != values.end())
        return known->second;
    // Any number but 0 is a yes, as the loaders read it.
    const bool isYesNo = values.size() == 2 && values[0].second == QStringLiteral("Yes");
    return isYesNo ? values[0].second : stored;
}

Result<> GridModel::Together(const QString&, const std::function<Result<>()>& change) {
    return change();
}

int GridModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(Columns().size());
}

void GridModel::SetMarks(std::vector<GridMark> marks) {
    m_marks = std::move(marks);
    Q_EMIT MarksChanged();
}

void GridModel::SetNotes(int column, std::map<qint64, GridNote> notes) {
    m_notedColumn = column;
    m_notes = std::move(notes);
    // Of this column alone: an editor that is open in another stays as it is.
    if (rowCount() > 0)
        Q_EMIT dataChanged(index(0, column), index(rowCount() - 1, column));
}

QString GridModel::NoteText(const QVariant& key) const {
    const auto note = m_notes.find(key.toLongLong());
    return note == m_notes.end() ? QString() : note->second.text;
}

const GridNote* GridModel::NoteOf(const QModelIndex& index) const {
    const QVariant key = index.isValid() && index.column() == m_notedColumn ? Key(index.row()) : QVariant();
    const auto note = key.isValid() ? m_notes.find(key.toLongLong()) : m_notes.end();
    return note == m_notes.end() ? nullptr : &note->second;
}

QString GridModel::MarkOf(int row, int column) const {
    if (m_marks.empty())
        return {};
    const QVariant key = Key(row);
    const QString name = Columns()[static_cast<std::size_t>(column)].field.section(u'.', -1);
    QStringList texts;
    for (const GridMark& mark : m_marks) {
        if (key.isValid() && mark.key.toLongLong() == key.toLongLong() &&
            mark.field.compare(name, Qt::CaseInsensitive) == 0)
            texts += mark.text;
    }
    return texts.join(u'\n');
}

QVariant GridModel::data(const QModelIndex& index, int role) const {
    if (const GridNote* const note = NoteOf(index)) {
        switch (role) {
        case Qt::DisplayRole:
        case Qt::AccessibleTextRole:
            return note->text;
        case Qt::ToolTipRole:
            return note->why;
        case Qt::DecorationRole:
            return note->picture;
        default:
            return {};
        }
    }
    if (index.isValid() && role == Qt::ToolTipRole)
        return MarkOf(index.row(), index.column());
    if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::EditRole && role != Qt::AccessibleTextRole))
        return {};
    const QString text = CellText(index.row(), index.column());
    if (role == Qt::AccessibleTextRole && m_readable)
        return m_readable(Columns()[static_cast<std::size_t>(index.column())].Shown(text));
    return role == Qt::EditRole ? text : Columns()[static_cast<std::size_t>(index.column())].Shown(text);
}

QVariant GridModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role != Qt::DisplayRole)
        return {};
    if (orientation == Qt::Horizontal)
        return Columns()[static_cast<std::size_t>(section)].caption;
    return IsNewRow(section) ? QStringLiteral("*") : QString::number(section + 1);
}

Qt::ItemFlags GridModel::flags(const QModelIndex& index) const {
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (!index.isValid())
        return flags;
    flags.setFlag(Qt::ItemIsEditable, !Columns()[static_cast<std::size_t>(index.column())].readOnly);
    flags.setFlag(Qt::ItemIsDragEnabled, !IsNewRow(index.row()));
    return flags;
}
