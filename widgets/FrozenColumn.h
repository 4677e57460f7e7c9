#pragma once

#include <QTableView>

class DataGrid;

/// The first column of a grid, which stands still while the others scroll past it.
///
/// It lies over the grid, shows the same records with the same selection, and leaves keys and editing to it.
class FrozenColumn : public QTableView {
    Q_OBJECT

public:
    /// @param grid owns this; its records are set.
    explicit FrozenColumn(DataGrid& grid);

    bool eventFilter(::QObject* watched, QEvent* event) override;

private:
    void LieOver();
    /// Moves the grid so far that its current cell does not lie below this.
    void Uncover(const QModelIndex& current);

    DataGrid& m_grid;
};
