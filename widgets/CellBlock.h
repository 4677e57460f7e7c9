#pragma once

#include "platform/GridModel.h"

#include <QMimeData>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

/// Cells of a grid, row by row.
struct CellBlock {
    std::vector<QStringList> rows;
    bool isStored = false; ///< letters as the store holds them, else Unicode
};

/// Blocks on their way over the clipboard: other programs get lines with tabs between the cells in Unicode, the grids
/// of this program the stored letters themselves, which do not survive a way there and back.
namespace cellblock {

/// @param block stored letters. @param readable makes Unicode of them.
std::unique_ptr<QMimeData> MimeOf(const CellBlock& block, const std::function<QString(const QString&)>& readable);

/// What a program has copied; nothing if there is no text. A cell that a spreadsheet has put in quotes is taken out of
/// them.
std::optional<CellBlock> Of(const QMimeData* data);

} // namespace cellblock

/// What a user does with many cells of a grid at once. Each operation is one act: done as a whole or not at all; what
/// stands in the way is told cell by cell.
class GridBlocks {
public:
    /// What goes into a cell for a text that comes from elsewhere; a failure says why it does not fit.
    using Convert = std::function<Result<QString>(const GridColumn& column, const QString& text, bool isStored)>;

    /// @param columns those that are shown, from left to right. All must outlive this.
    GridBlocks(GridModel& model, std::vector<int> columns, Convert convert)
        : m_model(model)
        , m_columns(std::move(columns))
        , m_convert(std::move(convert)) {}

    /// Writes a block, its first cell into `row` and `column`; rows behind the last one are new ones. Cells that cannot
    /// be edited are passed over. A block of one cell fills `selected`, in which it is repeated.
    Result<> Paste(int row, int column, const CellBlock& block, const QModelIndexList& selected);

    /// Empties cells.
    Result<> Clear(const QModelIndexList& selected);

    /// Writes the first row of a block into the others.
    Result<> FillDown(const QModelIndexList& selected);

    /// Writes the choice that begins with a letter into every cell that has such a one.
    Result<> Choose(const QModelIndexList& selected, QChar letter);

    /// Counts up from the first row of a block: a number by one a row, a text in the number at its end.
    Result<> FillSeries(const QModelIndexList& selected);

    /// Makes a new row of each, with the next free number in the columns in which numbers are not to come twice, and a
    /// name that counts up. @param rows from the top.
    Result<> Duplicate(const std::vector<int>& rows);

    /// Deletes rows. @param rows from the top.
    Result<> Remove(const std::vector<int>& rows);

private:
    struct Cell {
        int row;
        int column;
        QString text;
    };

    static void DropEmptyNewRows(std::vector<Cell>& cells, int firstNew);
    Result<> Write(const QString& act, const std::vector<Cell>& cells);
    bool IsEditable(int row, int column) const;
    QString PlaceOf(int row, int column) const;
    QString NextFree(int column, const QString& text, const std::vector<Cell>& taken) const;

    GridModel& m_model;
    std::vector<int> m_columns;
    Convert m_convert;
};
