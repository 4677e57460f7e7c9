#include "utilities/frmOptions.h"

#include "platform/Dialogs.h"
#include "platform/LeadingNumber.h"
#include "station/Station.h"
#include "utilities/cRegistry.h"
#include "utilities/ui_frmOptions.h"

#include <algorithm>
#include <limits>

namespace {

constexpr qint32 PlainString = 1;

/// A box and the setting behind it.
struct CheckedOption {
    QCheckBox* box;
    bool Options::*field;
};

struct TypedOption {
    QLineEdit* box;
    qint16 Options::*field;
};

std::array<CheckedOption, 6> CheckedOptions(const Ui::frmOptions& ui) {
    return {{{ui.chkOpt_0, &Options::ActiveClients},
             {ui.chkOpt_1, &Options::SoftKeyDelay},
             {ui.chkOpt_2, &Options::PassNoNext},
             {ui.chkOpt_3, &Options::TransferNoNext},
             {ui.chkTicketSeries, &Options::MultiTicketSeries},
             {ui.chkAutoReset, &Options::ResetNew}}};
}

std::array<TypedOption, 4> TypedOptions(const Ui::frmOptions& ui) {
    return {{{ui.txtValue_0, &Options::WakeupTime},
             {ui.txtValue_1, &Options::KeyDelayTime},
             {ui.txtValue_2, &Options::MaxTxFail},
             {ui.txtValue_3, &Options::MaxSilentTime}}};
}

/// What a user typed, held to what the setting can take.
qint16 Typed(const QLineEdit& box) {
    return static_cast<qint16>(std::clamp<qint32>(number::TypedNumber(box.text()), std::numeric_limits<qint16>::min(),
                                                  std::numeric_limits<qint16>::max()));
}

/// The entry that starts the program with the session.
cRegistry RunEntry(const RegistryStore& store) {
    cRegistry entry(store);
    entry.ClassKey = RegistryStore::LocalMachine;
    entry.SectionKey = QStringLiteral("SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run");
    entry.ValueKey = QStringLiteral("Orvex");
    entry.ValueType = PlainString;
    return entry;
}

} // namespace

frmOptions::frmOptions(Station& station, RegistryStore registry, QString runCommand, QWidget* parent)
    : QDialog(parent)
    , m_station(station)
    , m_registry(std::move(registry))
    , m_runCommand(std::move(runCommand))
    , m_ui(std::make_unique<Ui::frmOptions>()) {
    m_ui->setupUi(this);
    setModal(true);
    setAttribute(Qt::WA_DeleteOnClose);
    for (QComboBox* box : {m_ui->CboDispType, m_ui->cboMainDispType})
        box->addItems({QStringLiteral("Led 7 Segment"), QStringLiteral("Led Matrix!")});
    LoadOptions();
    connect(m_ui->chkTicketSeries, &QCheckBox::clicked, this, &frmOptions::WarnOfTicketSeries);
    connect(m_ui->cmdOK, &QPushButton::clicked, this, [this] {
        if (!IsTimeOfDay(m_ui->txtRenewAt->text())) {
            m_station.dialogs.Warn(QStringLiteral("Error in Date/Time format."));
            m_ui->txtRenewAt->setFocus();
            m_ui->txtRenewAt->selectAll();
            return;
        }
        const QStringList problems = SaveOptions();
        // The boxes must outlive this window.
        close();
        for (const QString& problem : problems)
            m_station.dialogs.Warn(problem);
    });
    connect(m_ui->cmdCancel, &QPushButton::clicked, this, &QDialog::close);
}

frmOptions::~frmOptions() = default;

void frmOptions::LoadOptions() {
    const Options& options = m_station.Settings();
    for (const auto& [box, field] : CheckedOptions(*m_ui))
        box->setChecked(options.*field);
    for (const auto& [box, field] : TypedOptions(*m_ui))
        box->setText(QString::number(options.*field));
    m_ui->CboDispType->setCurrentIndex(options.DisplayType);
    m_ui->cboMainDispType->setCurrentIndex(options.MainDisplayType);
    const QString time = options.ResetAt.rightJustified(6, u'0');
    m_ui->txtRenewAt->setText(QStringLiteral("%1:%2:%3").arg(time.first(2), time.sliced(2, 2), time.sliced(4)));
    m_ui->chkShowIcon->setChecked(!RunEntry(m_registry).Value().toString().isEmpty());
}

QStringList frmOptions::SaveOptions() {
    Options options = m_station.Settings();
    for (const auto& [box, field] : CheckedOptions(*m_ui))
        options.*field = box->isChecked();
    for (const auto& [box, field] : TypedOptions(*m_ui))
        options.*field = Typed(*box);
    options.DisplayType = static_cast<qint16>(m_ui->CboDispType->currentIndex());
    options.MainDisplayType = static_cast<qint16>(m_ui->cboMainDispType->currentIndex());
    return {m_station.SaveOptions(options, m_ui->txtRenewAt->text()).text, SaveAutoStart()};
}

QString frmOptions::SaveAutoStart() const {
    cRegistry entry = RunEntry(m_registry);
    std::optional<cRegistry::Error> error;
    if (m_ui->chkShowIcon->isChecked())
        error = entry.SetValue(m_runCommand);
    else if (!entry.Value().toString().isEmpty())
        error = entry.DeleteValue();
    return error ? error->description : QString();
}

void frmOptions::WarnOfTicketSeries() {
    m_station.dialogs.Warn(QStringLiteral("Warning, change this option may cause system to re-print printed ticket if "
                                          "queue is running!"));
}
