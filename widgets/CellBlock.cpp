#include "widgets/CellBlock.h"

#include "platform/DelimitedText.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>

#include <algorithm>
#include <map>
#include <set>

namespace {

constexpr qsizetype MostFaults = 12;       ///< cells that are told of one refused act
constexpr qsizetype LongestText = 4 << 20; ///< characters of a block that comes from elsewhere

QString tr(const char* text) {
    return QCoreApplication::translate("GridBlocks", text);
}

QString BlockType() {
    return QStringLiteral("application/x-orvex-cells");
}

/// A text with the number at its end, or behind the number itself, counted up. Without one it stays as it is.
QString CountedUp(const QString& text, int steps) {
    static const QRegularExpression form(QStringLiteral("^(.*?)(\\d{1,9})$"));
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch())
        return text;
    const QString digits = match.captured(2);
    return match.captured(1) + QString::number(digits.toLongLong() + steps).rightJustified(digits.size(), u'0');
}

std::map<int, std::set<int>> ColumnsByRow(const QModelIndexList& selected) {
    std::map<int, std::set<int>> rows;
    for (const QModelIndex& cell : selected)
        rows[cell.row()].insert(cell.column());
    return rows;
}

} // namespace

std::unique_ptr<QMimeData> cellblock::MimeOf(const CellBlock& block,
                                             const std::function<QString(const QString&)>& readable) {
    QStringList lines;
    QJsonArray rows;
    for (const QStringList& row : block.rows) {
        QStringList cells;
        for (const QString& cell : row) {
            const bool isPlain = !cell.contains(u'\t') && !cell.contains(u'\n') && !cell.startsWith(u'"');
            QString text = readable(cell);
            cells += isPlain ? text : u'"' + text.replace(u'"', QStringLiteral("\"\"")) + u'"';
        }
        lines += cells.join(u'\t');
        rows.append(QJsonArray::fromStringList(row));
    }
    auto data = std::make_unique<QMimeData>();
    data->setText(lines.join(u'\n'));
    data->setData(BlockType(), QJsonDocument(rows).toJson(QJsonDocument::Compact));
    return data;
}

std::optional<CellBlock> cellblock::Of(const QMimeData* data) {
    if (!data)
        return std::nullopt;
    CellBlock block;
    if (data->hasFormat(BlockType())) {
        const QJsonArray rows = QJsonDocument::fromJson(data->data(BlockType())).array();
        for (const QJsonValue& row : rows) {
            QStringList& cells = block.rows.emplace_back();
            const QJsonArray values = row.toArray();
            for (const QJsonValue& cell : values)
                cells += cell.toString();
        }
        block.isStored = true;
    } else if (data->hasText()) {
        const QString text = data->text();
        if (text.size() <= LongestText)
            block.rows = delimited::Cells(text, u'\t', delimited::EmptyRows::Keep);
    }
    return block.rows.empty() ? std::nullopt : std::optional(std::move(block));
}

bool GridBlocks::IsEditable(int row, int column) const {
    return m_model.flags(m_model.index(row, column)).testFlag(Qt::ItemIsEditable);
}

QString GridBlocks::PlaceOf(int row, int column) const {
    return tr("Row %1, %2").arg(row + 1).arg(m_model.Columns()[static_cast<std::size_t>(column)].caption);
}

Result<> GridBlocks::Write(const QString& act, const std::vector<Cell>& cells) {
    QStringList faults;
    qsizetype count = 0;
    const auto note = [&](const Cell& cell, const QString& why) {
        if (++count <= MostFaults)
            faults += PlaceOf(cell.row, cell.column) + QStringLiteral(": ") + why;
    };
    const Result<> done = m_model.Together(act, [&]() -> Result<> {
        for (const Cell& cell : cells) {
            if (const Result<> written = m_model.Write(cell.row, cell.column, cell.text); !written)
                note(cell, written.Error());
        }
        return faults.isEmpty() ? Result<>() : Failure{QString()};
    });
    if (faults.isEmpty())
        return done;
    if (count > MostFaults)
        faults += tr("and %1 more").arg(count - MostFaults);
    return Failure{tr("Nothing was changed:") + u'\n' + faults.join(u'\n')};
}

void GridBlocks::DropEmptyNewRows(std::vector<Cell>& cells, int firstNew) {
    // An empty row makes no record, so that those behind it come one further up.
    std::map<int, bool> isFilled;
    for (const Cell& cell : cells)
        isFilled[cell.row] |= !cell.text.isEmpty();
    std::erase_if(cells, [&](const Cell& cell) { return cell.row >= firstNew && !isFilled[cell.row]; });
    std::map<int, int> places;
    for (const auto& [row, filled] : isFilled) {
        if (row >= firstNew && filled)
            places.emplace(row, firstNew + static_cast<int>(places.size()));
    }
    for (Cell& cell : cells) {
        if (const auto place = places.find(cell.row); place != places.end())
            cell.row = place->second;
    }
}

Result<> GridBlocks::Paste(int row, int column, const CellBlock& block, const QModelIndexList& selected) {
    const auto first = std::find(m_columns.begin(), m_columns.end(), column);
    if (block.rows.empty() || first == m_columns.end())
        return {};
    std::vector<Cell> cells;
    if (block.rows.size() == 1 && block.rows[0].size() == 1 && selected.size() > 1) {
        for (const QModelIndex& cell : selected)
            cells.push_back({cell.row(), cell.column(), block.rows[0][0]});
    } else {
        const auto room = m_columns.end() - first;
        for (std::size_t i = 0; i < block.rows.size(); ++i) {
            const QStringList& texts = block.rows[i];
            if (texts.size() > room)
                return Failure{tr("Nothing was changed: the block is %1 columns wide, and there are %2 from here on.")
                                   .arg(texts.size())
                                   .arg(room)};
            for (qsizetype j = 0; j < texts.size(); ++j)
                cells.push_back({row + static_cast<int>(i), *(first + j), texts[j]});
        }
    }
    // What cannot be edited is left out, such as the keys of rows that were copied whole.
    const bool hasNewRow = m_model.rowCount() > 0 && m_model.IsNewRow(m_model.rowCount() - 1);
    const int rows = m_model.rowCount();
    QStringList faults;
    std::vector<Cell> writable;
    for (Cell& cell : cells) {
        const GridColumn& description = m_model.Columns()[static_cast<std::size_t>(cell.column)];
        if (cell.row >= rows && !hasNewRow)
            return Failure{tr("Nothing was changed: the block has %1 rows, and there are %2 from here on.")
                               .arg(block.rows.size())
                               .arg(rows - row)};
        if (cell.row >= rows ? description.readOnly : !IsEditable(cell.row, cell.column))
            continue;
        const Result<QString> text = m_convert(description, cell.text, block.isStored);
        if (text)
            writable.push_back({cell.row, cell.column, *text});
        else if (faults.size() < MostFaults)
            faults += PlaceOf(cell.row, cell.column) + QStringLiteral(": ") + text.Error();
    }
    if (!faults.isEmpty())
        return Failure{tr("Nothing was changed:") + u'\n' + faults.join(u'\n')};
    if (writable.empty())
        return Failure{tr("Nothing was changed: these cells cannot be edited.")};
    DropEmptyNewRows(writable, hasNewRow ? rows - 1 : rows);
    return Write(writable.size() == 1 ? QString() : tr("paste %1 cells").arg(writable.size()), writable);
}

Result<> GridBlocks::Clear(const QModelIndexList& selected) {
    std::vector<Cell> cells;
    for (const QModelIndex& cell : selected) {
        if (IsEditable(cell.row(), cell.column()))
            cells.push_back({cell.row(), cell.column(), {}});
    }
    return Write(cells.size() == 1 ? QString() : tr("empty %1 cells").arg(cells.size()), cells);
}

Result<> GridBlocks::FillDown(const QModelIndexList& selected) {
    const std::map<int, std::set<int>> rows = ColumnsByRow(selected);
    std::vector<Cell> cells;
    for (const auto& [row, columns] : rows) {
        for (const int column : columns) {
            if (row != rows.begin()->first && IsEditable(row, column))
                cells.push_back({row, column, m_model.CellText(rows.begin()->first, column)});
        }
    }
    return Write(tr("fill down"), cells);
}

Result<> GridBlocks::Choose(const QModelIndexList& selected, QChar letter) {
    std::vector<Cell> cells;
    for (const QModelIndex& cell : selected) {
        const auto& values = m_model.Columns()[static_cast<std::size_t>(cell.column())].values;
        const auto chosen = std::find_if(values.begin(), values.end(), [letter](const auto& value) {
            return value.second.startsWith(letter, Qt::CaseInsensitive);
        });
        if (chosen != values.end() && IsEditable(cell.row(), cell.column()) && !m_model.IsNewRow(cell.row()))
            cells.push_back({cell.row(), cell.column(), QString::number(chosen->first)});
    }
    return cells.empty() ? Result<>() : Write(tr("choose for %1 cells").arg(cells.size()), cells);
}

Result<> GridBlocks::FillSeries(const QModelIndexList& selected) {
    const std::map<int, std::set<int>> rows = ColumnsByRow(selected);
    std::vector<Cell> cells;
    for (const auto& [row, columns] : rows) {
        const int steps = row - rows.begin()->first;
        for (const int column : columns) {
            const bool isChoice = !m_model.Columns()[static_cast<std::size_t>(column)].values.empty();
            const QString first = m_model.CellText(rows.begin()->first, column);
            if (steps > 0 && IsEditable(row, column))
                cells.push_back({row, column, isChoice ? first : CountedUp(first, steps)});
        }
    }
    return Write(tr("fill with a series"), cells);
}

QString GridBlocks::NextFree(int column, const QString& text, const std::vector<Cell>& taken) const {
    std::set<QString> used;
    for (int row = 0; row < m_model.rowCount(); ++row)
        used.insert(m_model.CellText(row, column));
    for (const Cell& cell : taken) {
        if (cell.column == column)
            used.insert(cell.text);
    }
    QString next = text;
    for (std::size_t i = 0; i <= used.size() && used.contains(next); ++i)
        next = CountedUp(next, 1);
    return next;
}

Result<> GridBlocks::Duplicate(const std::vector<int>& rows) {
    std::vector<Cell> cells;
    int target = m_model.rowCount() - 1;
    if (target < 0 || !m_model.IsNewRow(target))
        return Failure{tr("No rows can be added to this list.")};
    for (const int row : rows) {
        if (m_model.IsNewRow(row))
            continue;
        const std::size_t before = cells.size();
        for (int column = 0; column < m_model.columnCount(); ++column) {
            const GridColumn& description = m_model.Columns()[static_cast<std::size_t>(column)];
            const QString text = m_model.CellText(row, column);
            if (!description.readOnly && !text.isEmpty())
                cells.push_back({target, column, description.countsUp ? NextFree(column, text, cells) : text});
        }
        target += cells.size() > before ? 1 : 0;
    }
    return Write(rows.size() == 1 ? tr("duplicate a row") : tr("duplicate %1 rows").arg(rows.size()), cells);
}

Result<> GridBlocks::Remove(const std::vector<int>& rows) {
    return m_model.Together(rows.size() == 1 ? QString() : tr("delete %1 rows").arg(rows.size()), [&]() -> Result<> {
        for (auto row = rows.rbegin(); row != rows.rend(); ++row) {
            if (Result<> removed = m_model.Remove(*row); !removed)
                return removed;
        }
        return {};
    });
}
