#include "commissioning/TableText.h"

#include "platform/DelimitedText.h"

#include <QAbstractItemModel>

#include <algorithm>

namespace {

/// The cells of a row, of the titles for an invalid one. A row below another one begins with the name of that: by
/// itself nobody would know what it is about.
QStringList CellsOf(const QAbstractItemModel& model, const QModelIndex& row) {
    QStringList cells;
    for (int column = 0; column < model.columnCount(); ++column)
        cells += row.isValid() ? row.siblingAtColumn(column).data().toString()
                               : model.headerData(column, Qt::Horizontal).toString();
    if (row.parent().isValid() && !cells.isEmpty())
        cells[0] = row.parent().data().toString() + QStringLiteral(" / ") + cells[0];
    return cells;
}

QString TabbedCell(QString text) {
    for (QChar& c : text) {
        if (c == u'\t' || c == u'\n' || c == u'\r')
            c = u' ';
    }
    return text;
}

/// Adds all rows below `parent`, those of a tree behind their parents.
void AddRows(const QAbstractItemModel& model, const QModelIndex& parent, QModelIndexList& rows) {
    for (int row = 0; row < model.rowCount(parent); ++row) {
        rows += model.index(row, 0, parent);
        AddRows(model, rows.back(), rows);
    }
}

QModelIndexList AllRows(const QAbstractItemModel& model) {
    QModelIndexList rows;
    AddRows(model, {}, rows);
    return rows;
}

} // namespace

QString tabletext::Tabbed(const QAbstractItemModel& model, const QModelIndexList& rows) {
    QModelIndexList ordered = rows.isEmpty() ? AllRows(model) : rows;
    std::sort(ordered.begin(), ordered.end(), [](const QModelIndex& a, const QModelIndex& b) {
        // A parent stands before its children.
        const auto place = [](const QModelIndex& index) {
            return index.parent().isValid() ? std::pair(index.parent().row(), index.row()) : std::pair(index.row(), -1);
        };
        return place(a) < place(b);
    });
    ordered.prepend(QModelIndex());
    QString text;
    for (const QModelIndex& row : std::as_const(ordered)) {
        QStringList cells = CellsOf(model, row);
        std::transform(cells.begin(), cells.end(), cells.begin(), TabbedCell);
        text += cells.join(u'\t') + u'\n';
    }
    return text;
}

QByteArray tabletext::Csv(const QAbstractItemModel& model) {
    std::vector<QStringList> rows{CellsOf(model, {})};
    for (const QModelIndex& row : AllRows(model))
        rows.push_back(CellsOf(model, row));
    return delimited::Write(rows);
}
