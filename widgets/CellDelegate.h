#pragma once

#include <QStyledItemDelegate>

class DataGrid;

/// Makes the editors of a grid's cells and writes what is left in them: a line that hands everything typed or pasted to
/// the grid's text hook, or a list where the column has one.
class CellDelegate final : public QStyledItemDelegate {
public:
    /// @param grid owns the delegate.
    explicit CellDelegate(DataGrid* grid);

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override;

protected:
    bool eventFilter(QObject* editor, QEvent* event) override;

private:
    DataGrid* m_grid;
};
