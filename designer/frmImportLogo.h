#pragma once

#include "tickets/LogoCells.h"

#include <QDialog>
#include <QImage>

#include <memory>

namespace Ui {
class frmImportLogo;
}

/// Reduces a picture to the two levels of a logo, and shows what comes out while the user chooses how.
class frmImportLogo : public QDialog {
    Q_OBJECT

public:
    explicit frmImportLogo(const QImage& picture, QWidget* parent = nullptr);
    ~frmImportLogo() override;

    /// The logo as it is shown.
    const LogoCells& Logo() const { return m_logo; }

private:
    void ShowLogo();

    const QImage m_picture;
    LogoCells m_logo;
    std::unique_ptr<Ui::frmImportLogo> m_ui;
};
