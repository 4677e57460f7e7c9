#pragma once

#include "station/ListTransfer.h"

#include <QDialog>

#include <memory>

class Station;
namespace delimited {
struct Table;
}
namespace Ui {
class frmImport;
}

/// Shows what the import of a list would do, cell by cell, and does it.
class frmImport : public QDialog {
    Q_OBJECT

public:
    /// @param station must outlive the window. @param path of the file that `table` was read from.
    frmImport(Station& station, lists::List list, const QString& path, const delimited::Table& table, QWidget* parent);
    ~frmImport() override;

private:
    void ShowPreview();
    void Take();

    Station& m_station;
    std::unique_ptr<Ui::frmImport> m_ui;
    lists::Incoming m_incoming;
};
