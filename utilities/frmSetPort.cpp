#include "utilities/frmSetPort.h"

#include "link/CommLine.h"
#include "platform/Dialogs.h"
#include "utilities/ui_frmSetPort.h"

#include <QPointer>

namespace {

constexpr int NamedPorts = 8; ///< COM1 to COM8

/// Only a saved speed that stands in this text is shown.
const QString& PresetSpeeds() {
    static const QString speeds = QStringLiteral("300,600,1200,2400,4800,9600,19200,38400");
    return speeds;
}

/// Opens the chosen line; the window, if it is still there, goes out of sight once it is open.
QCoro::Task<> OpenChosen(CommLine& line, QString name, QString baud, QPointer<QDialog> window) {
    window->setEnabled(false);
    const bool opened = co_await line.ChoosePort(name, baud);
    if (!window)
        co_return;
    window->setEnabled(true);
    if (opened)
        window->hide();
}

QCoro::Task<> Tell(Dialogs& dialogs, QString text) {
    co_await dialogs.ShowMessage(BoxKind::Critical, text);
}

} // namespace

frmSetPort::frmSetPort(CommLine& line, Dialogs& dialogs, const QList<SerialControl::Port>& ports, QWidget* parent)
    : QDialog(parent)
    , m_line(line)
    , m_dialogs(dialogs)
    , m_ui(std::make_unique<Ui::frmSetPort>()) {
    m_ui->setupUi(this);
    setModal(true);
    FillPorts(ports);
    FillSpeeds();
    connect(m_ui->cmdOK, &QPushButton::clicked, this, &frmSetPort::Choose);
}

frmSetPort::~frmSetPort() = default;

void frmSetPort::FillPorts(const QList<SerialControl::Port>& ports) {
    QComboBox& box = *m_ui->cboModems;
    for (int number = 1; number <= NamedPorts; ++number)
        box.addItem(QStringLiteral("COM%1").arg(number));
    for (const SerialControl::Port& port : ports) {
        box.addItem(port.name);
        box.setItemData(box.count() - 1, port.description, Qt::ToolTipRole);
    }
    const QString saved = m_line.Settings.CommName;
    if (!saved.isEmpty() && box.findText(saved) < 0)
        box.addItem(saved);
    box.setCurrentIndex(box.findText(saved));
}

void frmSetPort::FillSpeeds() {
    QComboBox& box = *m_ui->cboBaud;
    box.addItems(PresetSpeeds().split(u','));
    box.addItems({QStringLiteral("57600"), QStringLiteral("115200")});
    const QString saved = m_line.Settings.CommBaud.trimmed();
    const bool isPreset = !saved.isEmpty() && PresetSpeeds().contains(saved);
    box.setCurrentIndex(isPreset ? box.findText(saved) : -1);
}

void frmSetPort::Choose() {
    if (m_ui->cboModems->currentIndex() < 0 || m_ui->cboBaud->currentIndex() < 0) {
        Tell(m_dialogs, QStringLiteral("Please select a Device and Baudrate!"));
        return;
    }
    OpenChosen(m_line, m_ui->cboModems->currentText(), m_ui->cboBaud->currentText(), this);
}
