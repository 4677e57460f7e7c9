#pragma once

#include "database/StoreTemplate.h"

#include <QDialog>

#include <memory>

class Station;
namespace Ui {
class frmNewFrom;
}

/// Makes a new database out of another one, and shows before what its objects will be.
class frmNewFrom : public QDialog {
    Q_OBJECT

public:
    /// @param station must outlive the window. @param source path of the other database.
    frmNewFrom(Station& station, const QString& source, QWidget* parent);
    ~frmNewFrom() override;

Q_SIGNALS:
    /// The new database is there.
    void Made(const QString& path, const QString& text);

private:
    StoreTemplate::Shift Shift() const;
    void ShowPreview();
    void Make();

    Station& m_station;
    const QString m_source;
    std::unique_ptr<Ui::frmNewFrom> m_ui;
};
