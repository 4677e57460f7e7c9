#pragma once

#include "platform/Result.h"

#include <QAbstractTableModel>
#include <QString>

#include <functional>
#include <map>
#include <vector>

/// One column of a data-bound grid.
struct GridColumn {
    QString caption;
    QString field; ///< column of the table, or "Table.column" in a join; empty for a column that stays empty
    bool readOnly = false;
    int maxLength = 0;     ///< characters that the editor takes, 0 for no limit
    bool countsUp = false; ///< a copy of a row gets the next free number here
    bool isWide = false;   ///< takes a share of the room that the other columns leave
    /// What a cell may hold and how each value shows, for a combo box; empty for a text cell.
    std::vector<std::pair<int, QString>> values = {};

    /// "Table.column" whose values alone a cell may hold, and what one of them is called; empty where any will do.
    QString refersTo = {};
    QString refersToA = {};

    /// A column of yes or no, shown as "Yes" and "No".
    static GridColumn YesNo(const QString& caption, const QString& field);

    /// How a stored value shows: through `values` if they have it, else as it is.
    QString Shown(const QString& stored) const;
};

/// A cell that deserves a look, and why.
struct GridMark {
    QVariant key; ///< of the row
    QString field;
    QString text;
};

/// What a cell of a column without a field shows: a word, its reason, and a picture (`QIcon`).
struct GridNote {
    QString text;
    QString why;
    QVariant picture;
};

/// The rows of a table as a grid shows and edits them; its last row may be a blank one for a new record.
///
/// What the user leaves in a cell is written at once. Only when the store has agreed does the shown row change.
class GridModel : public QAbstractTableModel {
    Q_OBJECT

public:
    using QAbstractTableModel::QAbstractTableModel;

    virtual const std::vector<GridColumn>& Columns() const = 0;

    /// True for the blank last row.
    virtual bool IsNewRow(int row) const = 0;

    /// Tells a row from all others, also after its place has changed; invalid for the blank row.
    virtual QVariant Key(int row) const = 0;

    /// Whether the user may delete rows.
    virtual bool CanRemove() const = 0;

    /// The text that a cell's editor begins with: the stored value, empty for a null.
    virtual QString CellText(int row, int column) const = 0;

    /// Writes what was left in a cell; an empty text is a null. In the blank row it makes the new record, with the
    /// store's defaults in all other columns. An unchanged value is not written. After a failure the row shows what the
    /// store holds.
    virtual Result<> Write(int row, int column, const QString& text) = 0;

    /// Deletes the record of a row.
    virtual Result<> Remove(int row) = 0;

    /// Whether the rows can be sorted by a column (`sort`); a column of -1 is the order of the store.
    virtual bool CanSort() const { return false; }

    /// Does several of these as one act, whole or not at all; after a failure the rows show what the store holds.
    /// Rows keep their places meanwhile, and the signals come once, at its end. @param act its name, for a user.
    virtual Result<> Together(const QString& act, const std::function<Result<>()>& change);

    /// How a cell's text reads where it is not drawn in the grid's font, as for a screen reader.
    void SetReadable(std::function<QString(QStringView stored)> readable) { m_readable = std::move(readable); }

    /// Marks these cells and no others. A cell's text shows as its tool tip.
    void SetMarks(std::vector<GridMark> marks);
    /// The text of a cell's mark, empty if it has none.
    QString MarkOf(int row, int column) const;

    /// Fills a column that has no field. @param notes by the key of the row.
    void SetNotes(int column, std::map<qint64, GridNote> notes);

    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    /// Cells of columns that are not `readOnly` can be edited, and every row but the blank one can be dragged.
    Qt::ItemFlags flags(const QModelIndex& index) const override;

Q_SIGNALS:
    /// The store has taken an insert, update or delete.
    void RecordsChanged();
    /// The store has taken a delete; comes after `RecordsChanged`.
    void RecordRemoved();
    /// Other cells are marked than before; not `dataChanged`, which would reset open editors.
    void MarksChanged();

protected:
    /// A text as people read it, and not as it is stored.
    QString AsRead(const QString& stored) const { return m_readable ? m_readable(stored) : stored; }
    /// What a cell of the column without a field shows.
    QString NoteText(const QVariant& key) const;

private:
    const GridNote* NoteOf(const QModelIndex& index) const;

    std::vector<GridMark> m_marks;
    int m_notedColumn = -1;
    std::map<qint64, GridNote> m_notes;
    std::function<QString(QStringView)> m_readable;
};
