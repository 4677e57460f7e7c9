#include "core/Options.h"

#include "core/EventLog.h"
#include "core/IniUtility.h"
#include "platform/LeadingNumber.h"

#include <QFileInfo>
#include <QTime>

#include <limits>
#include <variant>

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

QString TextOf(bool value) {
    return value ? QStringLiteral("yes") : QStringLiteral("no");
}

QString TextOf(const QString& value) {
    return value;
}

QString TextOf(auto value) {
    return QString::number(value);
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

/// How a value is written in the file, where its field does not say that.
enum class Form {
    Plain,
    Trimmed,   ///< a yes/no within which blanks do not count
    Scrambled, ///< text
    TimeOfDay, ///< "hhmmss", or seconds after midnight
    Voice,     ///< not of this file: `ReadVoiceType`
};

struct Setting {
    const char* section;
    const char* key;
    std::variant<bool Options::*, qint16 Options::*, qint32 Options::*, double Options::*, QString Options::*> field;
    Form form = Form::Plain;
    const char* logName = nullptr;   ///< in the option log, in the order of this table
    const char* editedKey = nullptr; ///< under which `WriteOptions` writes it, in the order of this table
};

/// The default of each is that of its field.
const Setting Settings[] = {
    {"System", "InfoNumLine", &Options::InfoNumLine},
    {"System", "Schedule", &Options::Schedule},
    {"System", "End", &Options::EndOfDay, Form::TimeOfDay},
    {"ReadData", "interval", &Options::ReadInterval},
    {"ReadData", "Auto", &Options::ReadAuto, Form::Trimmed},
    {"Setup", "Psd", &Options::Psd, Form::Scrambled},
    {"Setup", "HourPerDay", &Options::HourPerDay},
    {"options", "ActiveClients", &Options::ActiveClients, Form::Plain, nullptr, "ActiveClients"},
    {"options", "SoftKeyDelay", &Options::SoftKeyDelay, Form::Plain, nullptr, "SoftKeyDelay"},
    {"options", "PassNoNext", &Options::PassNoNext, Form::Plain, nullptr, "PassNoNext"},
    {"options", "TransferNoNext", &Options::TransferNoNext, Form::Plain, nullptr, "TransferNoNext"},
    {"options", "WakeupTime", &Options::WakeupTime, Form::Plain, "WakeupTime=", "WakeupTime"},
    {"options", "KeyDelayTime", &Options::KeyDelayTime, Form::Plain, "KeyDelayTime=", "KeyDelayTime"},
    {"options", "MaxTxFail", &Options::MaxTxFail, Form::Plain, "maxTxFail=", "maxTxFail "},
    {"options", "MaxSilentTime", &Options::MaxSilentTime, Form::Plain, "MaxSilentTime=", "MaxSilentTime "},
    {"options", "MultiTicketSeries", &Options::MultiTicketSeries, Form::Plain,
     "MultiTicketSeries=", "MultiTicketSeries"},
    {"options", "DisplayType", &Options::DisplayType, Form::Plain, "DisplayType=", "DisplayType"},
    {"options", "MainDisplayType", &Options::MainDisplayType, Form::Plain, "MainDisplayType=", "MainDisplayType"},
    {"AutoReset", "ResetNew", &Options::ResetNew, Form::Plain, "ResetNew=", "ResetNew"},
    {"AutoReset", "ResetAt", &Options::ResetAt, Form::TimeOfDay, nullptr, "ResetAt"},
    {nullptr, nullptr, &Options::VoiceType, Form::Voice, "Voice Type="},
    {"options", "MsgDelay", &Options::MsgDelay},
    {"options", "PassPosition", &Options::PassPosition},
    {"options", "CmdRetry", &Options::CmdRetry},
    {"options", "delayStartup", &Options::DelayStartup},
    {"options", "RunOverNight", &Options::RunOverNight},
    {"options", "SendConfigOnStart", &Options::SendConfigOnStart, Form::Plain, "SendConfigOnStart="},
    {"options", "SendConfigOnError", &Options::SendConfigOnError, Form::Plain, "SendConfigOnError="},
    {"options", "RoutedSeries", &Options::RoutedSeries, Form::Plain, "RoutedSeries="},
    {"options", "FromToval", &Options::FromToval},
    {"AutoDelete", "Enable", &Options::AutoDeleteEnable},
    {"AutoDelete", "FromYear", &Options::AutoDeleteFromYear},
};

/// Takes the texts of the file into the fields. What a field cannot hold is logged, and the field stays.
class Reader {
public:
    Reader(EventLog& log, Options& options)
        : m_log(log)
        , m_options(options) {}

    void Take(const Setting& setting, const QString& text) const {
        std::visit([&](auto field) { Take(setting, text, m_options.*field); }, setting.field);
    }

private:
    void Take(const Setting& setting, const QString& text, bool& field) const {
        const QString word = setting.form == Form::Trimmed ? text.trimmed() : text;
        field = word.toLower() == QStringLiteral("yes");
    }

    void Take(const Setting& setting, const QString& text, qint16& field) const {
        const qint32 value = number::LeadingInteger(text);
        if (value < std::numeric_limits<qint16>::min() || value > std::numeric_limits<qint16>::max())
            Refuse(setting, "is too large", text);
        else
            field = static_cast<qint16>(value);
    }

    void Take(const Setting&, const QString& text, double& field) const { field = number::LeadingDecimal(text); }

    void Take(const Setting& setting, const QString& text, qint32& field) const {
        if (const QTime time = TimeOf(setting, text); time.isValid())
            field = time.msecsSinceStartOfDay() / 1000;
    }

    void Take(const Setting& setting, const QString& text, QString& field) const {
        if (setting.form == Form::Scrambled)
            field = IniUtility::DecodePassword(text);
        else if (setting.form == Form::Plain)
            field = text;
        else if (const QTime time = TimeOf(setting, text); time.isValid())
            field = time.toString(QStringLiteral("HHmmss"));
    }

    QTime TimeOf(const Setting& setting, const QString& text) const {
        const QTime time = ReadTime(text);
        if (!time.isValid())
            Refuse(setting, "is no time of day", text);
        return time;
    }

    void Refuse(const Setting& setting, const char* why, const QString& text) const {
        m_log.WriteLog(QStringLiteral("Settings: %1 of [%2] %3: %4")
                           .arg(QString::fromLatin1(setting.key), QString::fromLatin1(setting.section),
                                QString::fromLatin1(why), text),
                       EventLog::Warning);
    }

    EventLog& m_log;
    Options& m_options;
};

/// As it is written and logged.
QString TextOf(const Options& options, const Setting& setting) {
    if (setting.form == Form::Voice)
        return VoiceTypeName(options.VoiceType);
    return std::visit([&](auto field) { return TextOf(options.*field); }, setting.field);
}

void LogOptions(const Options& options, EventLog& log) {
    log.WriteLog(QStringLiteral("**** Options ****"));
    for (const Setting& setting : Settings) {
        if (setting.logName)
            log.WriteLog(QString::fromLatin1(setting.logName) + TextOf(options, setting));
    }
}

/// Derived values, and limits that are narrower than the fields.
void Settle(Options& options, EventLog& log) {
    constexpr qint16 CharactersPerLine = 7;
    constexpr qint16 ShortestReadInterval = 2;
    if (options.InfoNumLine < 0 || options.InfoNumLine > std::numeric_limits<qint16>::max() / CharactersPerLine) {
        log.WriteLog(QStringLiteral("Settings: InfoNumLine of [System] is out of range: %1").arg(options.InfoNumLine),
                     EventLog::Warning);
        options.InfoNumLine = Options{}.InfoNumLine;
    }
    options.InfoNumChars = static_cast<qint16>(options.InfoNumLine * CharactersPerLine);
    options.ReadInterval = std::max(options.ReadInterval, ShortestReadInterval);
}

} // namespace

Options ReadOptions(IniUtility& ini, EventLog& log) {
    Options options;
    const Reader reader(log, options);
    for (const Setting& setting : Settings) {
        QString text;
        if (setting.form == Form::Voice)
            options.VoiceType = ReadVoiceType(ini);
        else if (ini.ReadIni(QString::fromLatin1(setting.section), QString::fromLatin1(setting.key), text))
            reader.Take(setting, text);
    }
    Settle(options, log);
    LogOptions(options, log);
    return options;
}

bool WriteOptions(const Options& options, const QString& resetAt, const IniUtility& ini) {
    Options asTyped = options;
    asTyped.ResetAt = resetAt;
    std::vector<IniUtility::Setting> edited;
    for (const Setting& setting : Settings) {
        if (setting.editedKey)
            edited.push_back({QString::fromLatin1(setting.section), QString::fromLatin1(setting.editedKey),
                              TextOf(asTyped, setting)});
    }
    return ini.WriteAll(edited);
}

bool IsTimeOfDay(const QString& typed) {
    return ReadTime(typed).isValid();
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
