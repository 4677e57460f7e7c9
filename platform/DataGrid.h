#pragma once

#include <QPersistentModelIndex>
#include <QTableView>

#include <functional>
#include <optional>

class GridModel;

/// What goes into a cell's editor in place of typed or pasted characters.
struct GridInsertion {
    qsizetype replaces = 0; ///< characters before the cursor that `text` replaces
    QString text;
};

/// A table view whose cells are the values of a table in the store.
///
/// What is left in a cell (Enter, Tab, a click elsewhere) is written at once. If the store refuses it, `DataError`
/// tells why and the typed text is kept until `ResumeEdit` opens the cell's editor with it again; Escape gives the edit
/// up. Delete empties the current cell, or deletes the one row that is selected whole (by a click on the row's head or
/// Shift+Space); several are refused. Ctrl+C copies the current cell, Ctrl+V puts text into it.
class DataGrid : public QTableView {
    Q_OBJECT

public:
    explicit DataGrid(QWidget* parent = nullptr);

    /// @param model must outlive the grid.
    void SetRecords(GridModel* model);

    /// Called with the text before the cursor and what is typed or pasted there.
    using TextHook = std::function<GridInsertion(QStringView before, const QString& typed)>;
    void SetTextHook(TextHook hook) { m_textHook = std::move(hook); }

    /// What goes in for `typed` behind `before`, through the hook; text that was copied in this grid stays as it is.
    /// What does not fit is left out from its end by whole letters.
    /// @param room characters that the text may become longer by.
    GridInsertion InsertionFor(QStringView before, QString typed, qsizetype room) const;

    /// Remembers text that was copied from a cell or its editor.
    void NoteCopied(const QString& text) { m_copied = text; }

    /// Writes what stands in an open editor. @return false if the store refuses it; `DataError` has come then.
    bool CommitOpenEditor();

    /// A refused text waits to be edited again.
    bool HasRefusedText() const { return m_refusedText.has_value(); }

    /// Writes a cell and tells of a refusal; for the cells' editors.
    void WriteCell(const QModelIndex& index, const QString& text);

public Q_SLOTS:
    /// Opens the editor of the refused cell with the typed text; nothing if none was refused.
    void ResumeEdit();

Q_SIGNALS:
    /// The store refused a change. @param text what it said.
    void DataError(const QString& text);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;

private:
    void EditRefusedText();
    void DeleteSelected();
    void CopyCell();
    void PasteIntoCell();

    GridModel* m_records = nullptr;
    TextHook m_textHook;
    QString m_copied;
    QPersistentModelIndex m_refusedCell;
    std::optional<QString> m_refusedText;
};
