#pragma once

#include "platform/GridModel.h"
#include "widgets/CellBlock.h"
#include "widgets/InnerDrag.h"

#include <QPersistentModelIndex>
#include <QPointer>
#include <QTableView>

#include <functional>
#include <optional>

/// What goes into a cell's editor in place of typed or pasted characters.
struct GridInsertion {
    qsizetype replaces = 0; ///< characters before the cursor that `text` replaces
    QString text;
};

/// A table view whose cells are the values of a table in the store.
///
/// What is left in a cell (Enter, Tab, a click elsewhere) is written at once. If the store refuses it, `DataError`
/// tells why and the typed text is kept until `ResumeEdit` opens the cell's editor with it again; Escape gives the edit
/// up. Delete empties the selected cells, or deletes the rows if they are selected whole (by a click on the row's head
/// or Shift+Space). Cells go to other programs and come from them as blocks, see `CellBlock`.
///
/// Enter goes on to the cell below, Tab to the next one that can be edited, over the ends of rows into the blank row;
/// Ctrl+Tab leaves the grid. Ctrl+' takes the text of the cell above. A letter that is typed over several cells that
/// are chosen from lists chooses for all of them.
///
/// What is selected is a block of cells or of whole rows around the current cell, made with Shift.
///
/// A click on the head of a column sorts by it, a second one the other way round, a third one no more; the order of the
/// store stays as it is.
///
/// As long as there are rows one of them is the current one: after the records were read anew it is the one with the
/// same key, else the one in the same place. Columns are as wide as what they show, until the user changes a width.
class DataGrid : public QTableView {
    Q_OBJECT

public:
    explicit DataGrid(QWidget* parent = nullptr);

    /// @param model the grid shows nothing any more once it is gone.
    void SetRecords(GridModel* model);

    /// How cells hold letters, where not as Unicode.
    struct Letters {
        /// Called with the text before the cursor and what is typed or pasted there.
        std::function<GridInsertion(QStringView before, const QString& typed)> typed;
        /// What other programs get of a cell's text.
        std::function<QString(QStringView stored)> readable;
    };
    void SetLetters(Letters letters);
    /// The text of a cell as other programs get it.
    QString Readable(const QString& stored) const { return m_letters.readable ? m_letters.readable(stored) : stored; }

    /// What goes in for `typed` behind `before`; pasted text that a field of this program gave goes in as it is stored.
    /// What does not fit is left out from its end by whole letters.
    /// @param room characters that the text may become longer by.
    GridInsertion InsertionFor(QStringView before, QString typed, qsizetype room) const;

    /// Writes what stands in an open editor. @return false if the store refuses it; `DataError` has come then.
    bool CommitOpenEditor();

    /// Writes what stands in the open editors of all grids of a window. @return false if the store refuses some of it.
    static bool CommitAll(const QWidget& window);

    /// The value in a column of the current row, empty for a null or if there is no row.
    QString CurrentText(int column) const;
    /// The same for a label or a box.
    QString CurrentReadable(int column) const { return Readable(CurrentText(column)); }
    /// The same as a number, 0 for a null or if there is no row.
    qint32 CurrentNumber(int column) const { return CurrentText(column).toInt(); }

    /// Which of how many places that hold a text is the current cell; none of them for a place of 0.
    struct Found {
        int place = 0;
        int count = 0;
    };
    /// Goes to a cell that shows a text, without regard to case and marks: with a step of 0 to the current one or else
    /// the next, with 1 to the next, with -1 to the one before, round about.
    Found Find(const QString& text, int step);

    /// The rows of records that the selected block goes over, from top to bottom; the current one alone without a
    /// block.
    std::vector<int> BlockRows() const;
    /// The same as numbers in a column, 0 for a null.
    std::vector<qint32> BlockNumbers(int column) const;

    /// Goes to the record with that key, in the column of that field or, if it has none such, in the first one shown.
    /// @return false if there is no such record.
    bool GoTo(const QVariant& key, const QString& field);

    /// A click on a cell with a list opens that list.
    void OpenListsByClick();

    /// Lets rows be dragged out of this grid, to others of its window. The pressed cell becomes the current one; Escape
    /// gives the drag up.
    void LetRowsBeDragged();
    /// Takes rows that are dragged out of `source`; `RowDropped` tells of each.
    void TakeRowsOf(const DataGrid* source) { m_dragSource = source; }

    /// A cell is open.
    bool IsEditing() const { return state() == EditingState; }
    /// A refused text waits to be edited again.
    bool HasRefusedText() const { return m_refusedText.has_value(); }

    /// Gives the keyboard to what comes behind the grid.
    void LeaveForward() { focusNextPrevChild(true); }

    /// Writes a cell and tells of a refusal; for the cells' editors.
    void WriteCell(const QModelIndex& index, const QString& text);

    // What an Edit menu does with the selected cells; what stands in the way comes as `DataError`.
    void Copy();
    void Cut();
    void Paste();
    void FillDown();
    void FillSeries();
    void DuplicateRows();
    /// Deletes the selected rows, the current one if none is selected whole; of several `RemovalWanted` asks first.
    void DeleteRows();
    /// Deletes the rows that `RemovalWanted` has told.
    void RemoveWantedRows();
    /// The list takes new rows.
    bool CanAdd() const;
    bool CanRemove() const { return m_records && m_records->CanRemove(); }
    /// More than one row is selected.
    bool HasBlock() const;

public Q_SLOTS:
    /// Selects nothing: no command acts on all rows.
    void selectAll() override {}

    /// Opens the editor of the refused cell with the typed text; nothing if none was refused.
    void ResumeEdit();

Q_SIGNALS:
    /// The store refused a change. @param text what it said.
    void DataError(const QString& text);
    /// Another row is the current one now, or the current row shows something else.
    void CurrentRowChanged();
    /// Several rows are to be deleted: `RemoveWantedRows` does it.
    void RemovalWanted(int rows);
    /// The current row of the source has been dropped here.
    void RowDropped();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;
    void resizeEvent(QResizeEvent* event) override;
    void startDrag(Qt::DropActions actions) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    int FirstEditable() const;
    void NoteCurrentRow();
    void RestoreCurrentRow();
    /// Sorts by a column upwards, downwards, or no more, one after the other.
    void SortBy(int column);
    void FitColumns();
    int FittingWidth(int column) const;
    DataGrid* DropTargetAt(QPoint place) const;
    void EditRefusedText();
    void NarrowSelection();
    void OpenList(const QPersistentModelIndex& cell);
    /// Opens the next cell that can be edited, over locked columns and the ends of rows. @param step 1 or -1.
    void EditBeside(int step);
    /// More than one cell is selected, and all are chosen from lists.
    bool ChoosesForAll() const;
    /// Writes what stands in the cell above.
    void TakeFromAbove();
    /// Goes one row down, as far as there is one.
    void GoBelow();
    void DeleteSelected();
    void Tell(const Result<>& done);
    GridBlocks Blocks();
    void PasteText(const QModelIndex& cell, const QString& text, bool isStored);
    Result<QString> Fitting(const GridColumn& column, const QString& text, bool isStored) const;
    QModelIndexList SelectedCells() const;
    std::vector<int> SelectedRows() const;

    QPointer<GridModel> m_records;
    const DataGrid* m_dragSource = nullptr;
    InnerDrag m_drag;
    QVariant m_currentKey;
    int m_currentRow = 0;
    std::optional<int> m_currentColumn;
    bool m_isRestoring = false;
    int m_sortColumn = -1; ///< -1 for the order of the store
    bool m_isSortedDown = false;
    bool m_isFitting = false;
    bool m_hasUserWidths = false;
    Letters m_letters;
    std::vector<QVariant> m_wantedRows; ///< keys of rows that are to be deleted
    QPersistentModelIndex m_refusedCell;
    std::optional<QString> m_refusedText;
};
