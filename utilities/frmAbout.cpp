#include "utilities/frmAbout.h"

#include "platform/Dialogs.h"
#include "utilities/SystemInfo.h"
#include "utilities/ui_frmAbout.h"
#include "widgets/Artwork.h"

namespace {

constexpr int PictureSize = 96;
constexpr double TitleScale = 1.6; ///< of the window's letters

} // namespace

frmAbout::frmAbout(const QString& version, const QStringList& contact, const RegistryStore& registry, Dialogs& dialogs,
                   QWidget* parent)
    : QDialog(parent)
    , m_registry(registry)
    , m_dialogs(dialogs)
    , m_ui(std::make_unique<Ui::frmAbout>()) {
    m_ui->setupUi(this);
    setModal(true);
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(QStringLiteral("About ") + QStringLiteral("Orvex"));
    m_ui->Image1->setPixmap(artwork::Sign(PictureSize));
    QFont title = font();
    title.setPointSizeF(title.pointSizeF() * TitleScale);
    title.setBold(true);
    for (QLabel* label : {m_ui->lblTitle_0, m_ui->lblTitle_1})
        label->setFont(title);
    // One over the other, for a shadow.
    QPalette shadow = m_ui->lblTitle_0->palette();
    shadow.setColor(QPalette::WindowText, palette().color(QPalette::Mid));
    m_ui->lblTitle_0->setPalette(shadow);
    m_ui->lblTitle_0->setContentsMargins(0, 2, 0, 0);
    m_ui->lblVersion->setText(QStringLiteral("Version ") + version);
    QLabel* const lines[] = {m_ui->Label1, m_ui->Label2, m_ui->Label3};
    for (qsizetype i = 0; i < std::ssize(lines); ++i) {
        lines[i]->setText(contact.value(i));
        lines[i]->setVisible(!contact.value(i).isEmpty());
    }
    connect(m_ui->cmdOK, &QPushButton::clicked, this, &QDialog::close);
    connect(m_ui->cmdSysInfo, &QPushButton::clicked, this, &frmAbout::StartSysInfo);
}

frmAbout::~frmAbout() = default;

void frmAbout::StartSysInfo() {
    if (!systeminfo::Start(m_registry))
        m_dialogs.ShowMessage(BoxKind::Critical, QStringLiteral("System Information Is Unavailable At This Time"));
}
