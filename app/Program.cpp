#include "app/Program.h"

#include "database/JetTakeover.h"
#include "hubs/frmHUBCfg.h"
#include "platform/Clock.h"
#include "platform/Dialogs.h"
#include "printers/frmDesignTicket.h"
#include "printers/frmEditLogo.h"
#include "setup/frmQueue.h"
#include "station/Station.h"
#include "utilities/frmSetPort.h"

#include <QFileInfo>

namespace {

constexpr qint16 SendingCheck = 50;   ///< milliseconds between looks at the line while ending
constexpr int LongestEndingWait = 60; ///< such looks: 3.0 seconds

QString DatabaseName() {
    return QStringLiteral("Harbinet.mdb");
}

} // namespace

Program::Program(QString programFolder, Clock& clock, Dialogs& dialogs)
    : m_clock(clock)
    , m_dialogs(dialogs)
    , m_station(std::make_unique<Station>(programFolder, clock, dialogs))
    , m_takeover(std::make_unique<JetTakeover>(dialogs, m_station->log, programFolder + QStringLiteral("/JetImport"))) {
}

Program::~Program() {
    m_exiting = true;
    m_takeover->Close();
    m_station->Close();
}

QCoro::Task<> Program::Main() {
    Station& station = *m_station;
    station.log.WriteLog(QStringLiteral("-"));
    station.log.WriteLog(QStringLiteral("---System Startup---"));
    station.options = ReadOptions(station.ini, station.log);
    station.log.WriteLog(QStringLiteral("---System Initialize.."));
    station.line.LoadCommSettings();
    co_await station.forms.LoadLetters();
    if (m_exiting)
        co_return;
    station.log.WriteLog(QStringLiteral("before DBOpen.."));

    const QString path = co_await ChooseDatabase();
    if (m_exiting)
        co_return;
    if (path.isEmpty()) {
        Q_EMIT Ended();
        co_return;
    }
    station.database.OpenDatabase(path);
    station.reload.ReloadAll();
    station.bus.ResetSequenceNumbers();
    if (const std::optional<qint16> next = station.tickets.RecoverTickets())
        station.installation->LastTicketNumber = *next;

    const bool opened = co_await station.line.OpenPort();
    if (m_exiting)
        co_return;
    ShowSetupWindow();
    station.line.SetCommStatus(station.line.Settings.CommDevice, station.line.Settings.CommBaud, opened);
    station.log.WriteLog(opened ? QStringLiteral("Initialize system..")
                                : QStringLiteral("No COM to Initialize system."));
    m_setupWindow->show();
    station.log.WriteLog(QStringLiteral("End initialize."));
}

QCoro::Task<QString> Program::ChooseDatabase() {
    const QString offered = m_station->ProgramFolder + u'/' + DatabaseName();
    InstallEmptyDatabase(offered);
    const QString filter = QStringLiteral("Harbinet Access Database *.mdb|*.mdb");
    for (;;) {
        QString path = co_await m_dialogs.ChooseFile(filter, offered);
        if (path.isEmpty())
            co_return path;
        // A file that cannot be used has been told about; the user may choose another.
        const bool usable = co_await m_takeover->Prepare(path);
        if (usable)
            co_return path;
    }
}

void Program::InstallEmptyDatabase(const QString& path) {
    if (QFileInfo::exists(path))
        return;
    if (const std::optional<QString> error = Database::CreateEmpty(path))
        m_station->log.WriteLog(QStringLiteral("%1 could not be made: %2").arg(path, *error), EventLog::Error);
}

void Program::ShowSetupWindow() {
    m_setupWindow = std::make_unique<frmQueue>(*m_station);
    connect(m_setupWindow.get(), &frmQueue::PortChoiceWanted, this, &Program::ShowPortWindow);
    connect(m_setupWindow.get(), &frmQueue::HubOptionWanted, this,
            [this] { (new frmHUBCfg(m_station->hubOption, m_setupWindow.get()))->show(); });
    connect(m_setupWindow.get(), &frmQueue::TicketDesignWanted, this, &Program::ShowTicketDesigner);
    connect(m_setupWindow.get(), &frmQueue::Closed, this, [this] { ExitSystem(); });
}

void Program::ShowPortWindow() {
    if (!m_portWindow) {
        m_portWindow = std::make_unique<frmSetPort>(m_station->line, m_dialogs, SerialControl::AvailablePorts(),
                                                    m_setupWindow.get());
        // Closed by its frame it is made anew the next time; hidden after a choice it comes back as it was.
        connect(m_portWindow.get(), &QDialog::rejected, this, [this] { m_portWindow.release()->deleteLater(); });
    }
    m_portWindow->show();
}

void Program::ShowTicketDesigner() {
    auto* designer = new frmDesignTicket(m_station->forms, *m_station->installation, m_dialogs, m_setupWindow.get());
    connect(designer, &frmDesignTicket::LogoEditorWanted, this, [this, designer] {
        auto* editor = new frmEditLogo(m_station->forms, m_dialogs, designer);
        // What it has saved can be used in the form.
        connect(editor, &QObject::destroyed, designer, &frmDesignTicket::ListLogos);
        editor->show();
    });
    designer->show();
}

QCoro::Task<> Program::ExitSystem() {
    if (m_exiting)
        co_return;
    m_exiting = true;
    for (int look = 0; look < LongestEndingWait && m_station->bus.Sending(); ++look)
        co_await m_clock.DelayMilliseconds(SendingCheck);
    m_station->Close();
    m_takeover->Close();
    m_station->database.CloseDatabase();
    m_station->database.BackupDatabase();
    Q_EMIT Ended();
}
