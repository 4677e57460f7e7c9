#include "core/Options.h"

#include "core/EventLog.h"
#include "core/IniUtility.h"
#include "platform/LeadingNumber.h"

#include <QFileInfo>
#include <QTime>

#include <limits>

namespace {

/// A time of day in the forms "hh:mm:ss", "hh:mm", "hhmmss" and "hhmm"; not valid if `text` has none of them.
QTime ReadTime(const QString& text) {
    for (const QString& form :
         {QStringLiteral("H:m:s"), QStringLiteral("H:m"), QStringLiteral("HHmmss"), QStringLiteral("HHmm")}) {
        const QTime time = QTime::fromString(text.trimmed(), form);
        if (time.isValid())
            return time;
    }
    return {};
}

/// Reads the keys of one settings file, each over the default that its field holds already.
class Reader {
public:
    Reader(const IniUtility& ini, EventLog& log)
        : m_ini(ini)
        , m_log(log) {}

    void Enter(const QString& section) { m_section = section; }

    void Number(const QString& key, qint16& field) const {
        QString text;
        if (!m_ini.ReadIni(m_section, key, text))
            return;
        const qint32 value = number::LeadingInteger(text);
        if (value < std::numeric_limits<qint16>::min() || value > std::numeric_limits<qint16>::max()) {
            m_log.WriteLog(QStringLiteral("Settings: %1 of [%2] is too large: %3").arg(key, m_section, text),
                           EventLog::Warning);
            return;
        }
        field = static_cast<qint16>(value);
    }

    void Decimal(const QString& key, double& field) const {
        QString text;
        if (m_ini.ReadIni(m_section, key, text))
            field = number::LeadingDecimal(text);
    }

    void YesNo(const QString& key, bool& field) const {
        QString text;
        if (m_ini.ReadIni(m_section, key, text))
            field = text.toLower() == QStringLiteral("yes");
    }

    /// Like `YesNo`, but blanks within quotes do not count.
    void TrimmedYesNo(const QString& key, bool& field) const {
        QString text;
        if (m_ini.ReadIni(m_section, key, text))
            field = text.trimmed().toLower() == QStringLiteral("yes");
    }

    void Text(const QString& key, QString& field) const { m_ini.ReadIni(m_section, key, field); }

    /// A time of day; a text that is none is logged, the field stays.
    void TimeOfDay(const QString& key, std::function<void(QTime)> assign) const {
        QString text;
        if (!m_ini.ReadIni(m_section, key, text))
            return;
        if (const QTime time = ReadTime(text); time.isValid()) {
            assign(time);
            return;
        }
        m_log.WriteLog(QStringLiteral("Settings: %1 of [%2] is no time of day: %3").arg(key, m_section, text),
                       EventLog::Warning);
    }

private:
    const IniUtility& m_ini;
    EventLog& m_log;
    QString m_section;
};

QString YesOrNo(bool value) {
    return value ? QStringLiteral("yes") : QStringLiteral("no");
}

QString VoiceTypeName(qint16 voiceType) {
    switch (voiceType) {
    case 1:
        return QStringLiteral("msg");
    case 2:
        return QStringLiteral("net");
    default:
        return QStringLiteral("auto");
    }
}

void LogOptions(const Options& options, EventLog& log) {
    const std::pair<QString, QString> lines[] = {
        {QStringLiteral("WakeupTime="), QString::number(options.WakeupTime)},
        {QStringLiteral("KeyDelayTime="), QString::number(options.KeyDelayTime)},
        {QStringLiteral("maxTxFail="), QString::number(options.MaxTxFail)},
        {QStringLiteral("MaxSilentTime="), QString::number(options.MaxSilentTime)},
        {QStringLiteral("MultiTicketSeries="), YesOrNo(options.MultiTicketSeries)},
        {QStringLiteral("DisplayType="), QString::number(options.DisplayType)},
        {QStringLiteral("MainDisplayType="), QString::number(options.MainDisplayType)},
        {QStringLiteral("ResetNew="), YesOrNo(options.ResetNew)},
        {QStringLiteral("Voice Type="), VoiceTypeName(options.VoiceType)},
        {QStringLiteral("SendConfigOnStart="), YesOrNo(options.SendConfigOnStart)},
        {QStringLiteral("SendConfigOnError="), YesOrNo(options.SendConfigOnError)},
        {QStringLiteral("RoutedSeries="), YesOrNo(options.RoutedSeries)},
    };
    log.WriteLog(QStringLiteral("**** Options ****"));
    for (const auto& [name, value] : lines)
        log.WriteLog(name + value);
}

} // namespace

Options ReadOptions(IniUtility& ini, EventLog& log) {
    constexpr qint16 CharactersPerLine = 7;
    constexpr qint16 ShortestReadInterval = 2;

    Options options;
    Reader read(ini, log);

    read.Enter(QStringLiteral("System"));
    read.Number(QStringLiteral("InfoNumLine"), options.InfoNumLine);
    if (options.InfoNumLine < 0 || options.InfoNumLine > std::numeric_limits<qint16>::max() / CharactersPerLine) {
        log.WriteLog(QStringLiteral("Settings: InfoNumLine of [System] is out of range: %1").arg(options.InfoNumLine),
                     EventLog::Warning);
        options.InfoNumLine = Options{}.InfoNumLine;
    }
    options.InfoNumChars = static_cast<qint16>(options.InfoNumLine * CharactersPerLine);
    read.YesNo(QStringLiteral("Schedule"), options.Schedule);
    read.TimeOfDay(QStringLiteral("End"), [&](QTime time) { options.EndOfDay = time.msecsSinceStartOfDay() / 1000; });

    read.Enter(QStringLiteral("ReadData"));
    read.Number(QStringLiteral("interval"), options.ReadInterval);
    options.ReadInterval = std::max(options.ReadInterval, ShortestReadInterval);
    read.TrimmedYesNo(QStringLiteral("Auto"), options.ReadAuto);

    read.Enter(QStringLiteral("Setup"));
    read.Text(QStringLiteral("Psd"), options.Psd);
    options.Psd = IniUtility::DecodePassword(options.Psd);
    read.Number(QStringLiteral("HourPerDay"), options.HourPerDay);

    read.Enter(QStringLiteral("options"));
    read.YesNo(QStringLiteral("ActiveClients"), options.ActiveClients);
    read.Number(QStringLiteral("WakeupTime"), options.WakeupTime);
    read.YesNo(QStringLiteral("SoftKeyDelay"), options.SoftKeyDelay);
    read.Number(QStringLiteral("KeyDelayTime"), options.KeyDelayTime);
    read.Decimal(QStringLiteral("MsgDelay"), options.MsgDelay);
    read.YesNo(QStringLiteral("PassNoNext"), options.PassNoNext);
    read.Number(QStringLiteral("PassPosition"), options.PassPosition);
    read.YesNo(QStringLiteral("TransferNoNext"), options.TransferNoNext);
    read.Number(QStringLiteral("MaxTxFail"), options.MaxTxFail);
    read.Number(QStringLiteral("CmdRetry"), options.CmdRetry);
    read.Number(QStringLiteral("MaxSilentTime"), options.MaxSilentTime);
    read.Number(QStringLiteral("delayStartup"), options.DelayStartup);
    read.YesNo(QStringLiteral("MultiTicketSeries"), options.MultiTicketSeries);
    read.Number(QStringLiteral("DisplayType"), options.DisplayType);
    read.Number(QStringLiteral("MainDisplayType"), options.MainDisplayType);
    read.YesNo(QStringLiteral("RunOverNight"), options.RunOverNight);
    read.YesNo(QStringLiteral("SendConfigOnStart"), options.SendConfigOnStart);
    read.YesNo(QStringLiteral("SendConfigOnError"), options.SendConfigOnError);
    read.YesNo(QStringLiteral("RoutedSeries"), options.RoutedSeries);
    read.Number(QStringLiteral("FromToval"), options.FromToval);

    read.Enter(QStringLiteral("AutoDelete"));
    read.YesNo(QStringLiteral("Enable"), options.AutoDeleteEnable);
    read.Text(QStringLiteral("FromYear"), options.AutoDeleteFromYear);

    read.Enter(QStringLiteral("AutoReset"));
    read.YesNo(QStringLiteral("ResetNew"), options.ResetNew);
    read.TimeOfDay(QStringLiteral("ResetAt"),
                   [&](QTime time) { options.ResetAt = time.toString(QStringLiteral("HHmmss")); });

    options.VoiceType = ReadVoiceType(ini);
    LogOptions(options, log);
    return options;
}

bool WriteOptions(const Options& options, const QString& resetAt, const IniUtility& ini) {
    const QString general = QStringLiteral("options");
    const QString reset = QStringLiteral("AutoReset");
    const struct {
        const QString& section;
        QString key;
        QString value;
    } keys[] = {
        {general, QStringLiteral("ActiveClients"), YesOrNo(options.ActiveClients)},
        {general, QStringLiteral("SoftKeyDelay"), YesOrNo(options.SoftKeyDelay)},
        {general, QStringLiteral("PassNoNext"), YesOrNo(options.PassNoNext)},
        {general, QStringLiteral("TransferNoNext"), YesOrNo(options.TransferNoNext)},
        {general, QStringLiteral("WakeupTime"), QString::number(options.WakeupTime)},
        {general, QStringLiteral("KeyDelayTime"), QString::number(options.KeyDelayTime)},
        {general, QStringLiteral("maxTxFail "), QString::number(options.MaxTxFail)},
        {general, QStringLiteral("MaxSilentTime "), QString::number(options.MaxSilentTime)},
        {general, QStringLiteral("MultiTicketSeries"), YesOrNo(options.MultiTicketSeries)},
        {general, QStringLiteral("DisplayType"), QString::number(options.DisplayType)},
        {general, QStringLiteral("MainDisplayType"), QString::number(options.MainDisplayType)},
        {reset, QStringLiteral("ResetNew"), YesOrNo(options.ResetNew)},
        {reset, QStringLiteral("ResetAt"), resetAt},
    };
    bool all = true;
    for (const auto& [section, key, value] : keys)
        all = ini.WriteIni(section, key, value) && all;
    return all;
}

QString ResetTime(const QString& typed) {
    const QTime time = ReadTime(typed);
    return time.isValid() ? time.toString(QStringLiteral("hhmmss")) : typed;
}

qint16 ReadVoiceType(IniUtility& ini) {
    const QString settings = ini.IniPath;
    ini.IniPath = QFileInfo(settings).path() + QStringLiteral("/voice.ini");
    QString type;
    ini.ReadIni(QStringLiteral("Comm"), QStringLiteral("OrvexType"), type);
    ini.IniPath = settings;
    type = type.toLower();
    if (type == QStringLiteral("msg"))
        return 1;
    return type == QStringLiteral("net") ? 2 : 0;
}
