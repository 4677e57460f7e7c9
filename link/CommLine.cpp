#include "link/CommLine.h"

#include "core/IniUtility.h"
#include "platform/Clock.h"
#include "platform/Dialogs.h"
#include "platform/Line.h"

namespace {
constexpr qint32 StateOpen = 0;
constexpr qint32 StateNotOpen = 1;

const QString& Section() {
    static const QString section = QStringLiteral("Comm");
    return section;
}

QString StrictKey() {
    return QStringLiteral("StrictReplies");
}

QString EchoKey() {
    return QStringLiteral("LocalEcho");
}

QString Yes() {
    return QStringLiteral("yes");
}

} // namespace

CommLine::CommLine(Line& control, IniUtility& ini, Dialogs& dialogs, const Clock& clock, QObject* parent)
    : QObject(parent)
    , m_control(control)
    , m_ini(ini)
    , m_dialogs(dialogs)
    , m_clock(clock) {
    connect(&m_control, &Line::LineLost, this, &CommLine::CloseComm);
}

bool CommLine::LoadCommSettings() {
    Settings = CommSettings{};
    const auto isOn = [this](const QString& key) {
        QString value;
        return m_ini.ReadIni(Section(), key, value) && value.compare(Yes(), Qt::CaseInsensitive) == 0;
    };
    Settings.StrictReplies = isOn(StrictKey());
    Settings.LocalEcho = isOn(EchoKey());
    QString device;
    if (!m_ini.ReadIni(Section(), QStringLiteral("Device"), device))
        return false;
    Settings.CommDevice = device;
    Settings.CommName = device;
    return m_ini.ReadIni(Section(), QStringLiteral("Baud"), Settings.CommBaud);
}

bool CommLine::SaveCommSettings() {
    std::vector<IniUtility::Setting> settings = {{Section(), QStringLiteral("Device"), Settings.CommName},
                                                 {Section(), QStringLiteral("Baud"), Settings.CommBaud}};
    // A file in which nobody ever asked for them does not get them.
    for (const auto& [key, isOn] : {std::pair(StrictKey(), Settings.StrictReplies), {EchoKey(), Settings.LocalEcho}}) {
        QString before;
        if (isOn || m_ini.ReadIni(Section(), key, before))
            settings.push_back({Section(), key, isOn ? Yes() : QStringLiteral("no")});
    }
    return m_ini.WriteAll(settings);
}

QCoro::Task<bool> CommLine::OpenPort() {
    if (!Settings.CommDevice.isEmpty()) {
        m_control.Close();
        const QString lineSettings = Settings.CommBaud.trimmed() + QStringLiteral(",n,8,1");
        const Result<> taken = m_control.SetPort(Settings.CommName, lineSettings);
        if (!taken) {
            co_await m_dialogs.ShowMessage(BoxKind::Critical, taken.Error());
            co_return false;
        }
        m_control.Open();
    }
    if (m_control.IsOpen()) {
        Settings.CommState = StateOpen;
        m_portIsOpen = true;
        co_return true;
    }
    Settings.CommState = StateNotOpen;
    m_portIsOpen = false;
    co_await m_dialogs.ShowMessage(BoxKind::Critical, QStringLiteral("COM port used by another program!"));
    co_return false;
}

QCoro::Task<bool> CommLine::ChoosePort(QString name, QString baud) {
    if (name.trimmed().isEmpty() || baud.trimmed().isEmpty()) {
        co_await m_dialogs.ShowMessage(BoxKind::Critical, QStringLiteral("Please select a Device and Baudrate!"));
        co_return false;
    }
    Settings.CommDevice = name;
    Settings.CommName = name;
    Settings.CommBaud = baud;
    const bool saved = SaveCommSettings();
    const bool opened = co_await OpenPort();
    SetCommStatus(Settings.CommDevice, Settings.CommBaud, opened);
    if (!saved)
        co_await m_dialogs.ShowMessage(BoxKind::Exclamation,
                                       QStringLiteral("The settings could not be written to %1.").arg(m_ini.IniPath));
    co_return opened;
}

void CommLine::ClosePort() {
    Settings.CommState = StateNotOpen;
    m_portIsOpen = false;
    m_control.Close();
}

void CommLine::CloseComm() {
    ClosePort();
    SetCommStatus(Settings.CommDevice, Settings.CommBaud, false);
}

void CommLine::SetCommStatus(const QString& device, const QString& baud, bool opened) {
    if (opened)
        m_timeConnected = m_clock.Now();
    Q_EMIT StatusChanged(device, baud, opened);
}
