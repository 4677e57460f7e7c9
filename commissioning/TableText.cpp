#include "commissioning/TableText.h"

#include <QAbstractItemModel>

#include <algorithm>
#include <functional>

namespace {

QString Line(const QAbstractItemModel& model, const QModelIndex& row, const std::function<QString(QString)>& cell,
             QChar separator) {
    QStringList cells;
    for (int column = 0; column < model.columnCount(); ++column)
        cells += cell(row.isValid() ? row.siblingAtColumn(column).data().toString()
                                    : model.headerData(column, Qt::Horizontal).toString());
    return cells.join(separator);
}

QString CsvCell(QString text) {
    if (!text.isEmpty() && QStringLiteral("=+-@\t\r").contains(text[0]))
        text.prepend(u'\'');
    const bool isPlain = std::none_of(text.begin(), text.end(),
                                      [](QChar c) { return c == u',' || c == u'"' || c == u'\n' || c == u'\r'; });
    if (isPlain)
        return text;
    text.replace(QStringLiteral("\""), QStringLiteral("\"\""));
    return u'"' + text + u'"';
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
    QString text = Line(model, {}, TabbedCell, u'\t') + u'\n';
    for (const QModelIndex& row : std::as_const(ordered))
        text += Line(model, row, TabbedCell, u'\t') + u'\n';
    return text;
}

QByteArray tabletext::Csv(const QAbstractItemModel& model) {
    QByteArray csv = Line(model, {}, CsvCell, u',').toUtf8() + "\r\n";
    for (const QModelIndex& row : AllRows(model))
        csv += Line(model, row, CsvCell, u',').toUtf8() + "\r\n";
    return csv;
}
