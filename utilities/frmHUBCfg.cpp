#include "utilities/frmHUBCfg.h"

#include "hubs/HubOption.h"
#include "utilities/ui_frmHUBCfg.h"

#include <QPointer>

namespace {

/// Applies what was typed; the window, if it is still there, closes unless another value is wanted.
QCoro::Task<> ApplyTyped(HubOption& option, QString typed, QPointer<QDialog> window) {
    window->setEnabled(false);
    const bool taken = co_await option.Apply(typed);
    if (!window)
        co_return;
    window->setEnabled(true);
    if (taken)
        window->accept();
}

} // namespace

frmHUBCfg::frmHUBCfg(HubOption& option, QWidget* parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::frmHUBCfg>()) {
    m_ui->setupUi(this);
    setModal(true);
    setAttribute(Qt::WA_DeleteOnClose);
    m_ui->txtFromTo->setText(QString::number(option.Value()));
    m_ui->txtFromTo->selectAll();
    connect(m_ui->cmdOK, &QPushButton::clicked, this,
            [this, &option] { ApplyTyped(option, m_ui->txtFromTo->text(), this); });
    connect(m_ui->cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
}

frmHUBCfg::~frmHUBCfg() = default;
