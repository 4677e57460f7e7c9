#include "designer/frmImportLogo.h"

#include "designer/ui_frmImportLogo.h"
#include "tickets/LogoImport.h"

#include <QPushButton>

frmImportLogo::frmImportLogo(const QImage& picture, QWidget* parent)
    : QDialog(parent)
    , m_picture(picture)
    , m_ui(std::make_unique<Ui::frmImportLogo>()) {
    m_ui->setupUi(this);
    setModal(true);
    setAttribute(Qt::WA_DeleteOnClose);
    connect(m_ui->optThreshold, &QRadioButton::toggled, this, &frmImportLogo::ShowLogo);
    connect(m_ui->sldThreshold, &QSlider::valueChanged, this, &frmImportLogo::ShowLogo);
    connect(m_ui->cmdOK, &QPushButton::clicked, this, &QDialog::accept);
    connect(m_ui->cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
    ShowLogo();
}

frmImportLogo::~frmImportLogo() = default;

void frmImportLogo::ShowLogo() {
    const LogoLevels levels = m_ui->optThreshold->isChecked() ? LogoLevels::Threshold : LogoLevels::FloydSteinberg;
    m_logo = LogoFromPicture(m_picture, levels, m_ui->sldThreshold->value());
    m_ui->lblLogo->setPixmap(QPixmap::fromImage(PictureOf(m_logo)));
    m_ui->lblSize->setText(tr("%1 x %2 pixels").arg(m_logo.Width()).arg(m_logo.Height()));
}
