#include "station/SiteDescription.h"

#include "database/Database.h"
#include "station/ListTransfer.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <algorithm>

namespace {

using Table = std::vector<QStringList>;

QString tr(const char* text) {
    return QCoreApplication::translate("SiteDescription", text);
}

QString RowOf(const QStringList& cells, const QString& tag) {
    QString row;
    for (const QString& cell : cells)
        row += QStringLiteral("<%1 align=\"left\">%2</%1>").arg(tag, cell.toHtmlEscaped());
    return QStringLiteral("<tr>%1</tr>").arg(row);
}

QString TableOf(const Table& table) {
    QString rows;
    for (std::size_t row = 1; row < table.size(); ++row)
        rows += RowOf(table[row], QStringLiteral("td"));
    // The titles stand again on every page.
    return QStringLiteral("<table border=\"1\" cellspacing=\"0\" cellpadding=\"3\" width=\"100%\"><thead>%1</thead>%2"
                          "</table>")
        .arg(RowOf(table[0], QStringLiteral("th")), rows);
}

/// A list of pairs with all that belong to the same first one in one row.
Table Gathered(const Table& pairs) {
    Table gathered{pairs[0]};
    for (std::size_t row = 1; row < pairs.size(); ++row) {
        const auto known = std::find_if(gathered.begin() + 1, gathered.end(),
                                        [&](const QStringList& one) { return one[0] == pairs[row][0]; });
        if (known == gathered.end())
            gathered.push_back(pairs[row]);
        else
            (*known)[1] += QStringLiteral(", ") + pairs[row][1];
    }
    return gathered;
}

/// Display, counter, direction as a table of displays and counters.
Table Matrix(const Table& directions) {
    Table matrix{{directions[0][0]}};
    for (std::size_t i = 1; i < directions.size(); ++i) {
        QStringList& titles = matrix[0];
        if (!titles.contains(directions[i][1]))
            titles += directions[i][1];
    }
    for (std::size_t i = 1; i < directions.size(); ++i) {
        auto row = std::find_if(matrix.begin() + 1, matrix.end(),
                                [&](const QStringList& one) { return one[0] == directions[i][0]; });
        if (row == matrix.end()) {
            matrix.emplace_back(matrix[0].size(), QString());
            row = std::prev(matrix.end());
            (*row)[0] = directions[i][0];
        }
        (*row)[matrix[0].indexOf(directions[i][1])] = directions[i][2];
    }
    return matrix;
}

/// More counters than this do not fit side by side on a page.
constexpr qsizetype WidestMatrix = 12;

} // namespace

Result<QString> SiteDescription(const Database& database, const QString& printed) {
    QString html = QStringLiteral("<h1>%1</h1><p>%2</p>")
                       .arg(QFileInfo(database.Path()).completeBaseName().toHtmlEscaped(),
                            QStringLiteral("%1, %2").arg(database.Path(), printed).toHtmlEscaped());
    for (const lists::List list : lists::AllLists) {
        const Result<Table> table = lists::Export(database, list);
        if (!table)
            return Failure{table.Error()};
        html += QStringLiteral("<h2>%1</h2>")
                    .arg(tr("%1 (%2)").arg(lists::NameOf(list)).arg(table->size() - 1).toHtmlEscaped());
        if (table->size() == 1) {
            html += QStringLiteral("<p>%1</p>").arg(tr("None."));
            continue;
        }
        const bool isPairs = list == lists::List::Assignments || list == lists::List::HubMembers;
        Table shown = isPairs ? Gathered(*table) : *table;
        if (list == lists::List::Directions) {
            if (Table matrix = Matrix(*table); matrix[0].size() <= WidestMatrix + 1)
                shown = std::move(matrix);
        }
        html += TableOf(shown);
    }
    return html;
}
