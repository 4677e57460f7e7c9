#pragma once

#include <QString>

class EventLog;
class IniUtility;

/// All settings of Tallora.ini but those of the sections Comm, Ticket, Logo and Bakup, and VoiceType from voice.ini.
/// Fields begin with their defaults.
struct Options {
    // [System]
    qint16 InfoNumLine = 3;   ///< lines of an information display
    qint16 InfoNumChars = 21; ///< always InfoNumLine times 7
    bool Schedule = false;
    qint32 EndOfDay = 86400; ///< key End, seconds after midnight

    // [ReadData]
    qint16 ReadInterval = 5; ///< key interval, at least 2
    bool ReadAuto = true;    ///< key Auto

    // [Setup]
    QString Psd; ///< decoded
    qint16 HourPerDay = 8;

    // [options]
    bool ActiveClients = false;
    qint16 WakeupTime = 15; ///< seconds
    bool SoftKeyDelay = false;
    qint16 KeyDelayTime = 3; ///< seconds
    double MsgDelay = 0.5;
    bool PassNoNext = true;
    qint16 PassPosition = 3;
    bool TransferNoNext = true;
    qint16 MaxTxFail = 3;
    qint16 CmdRetry = 2;
    qint16 MaxSilentTime = 120; ///< seconds
    qint16 DelayStartup = 4;    ///< key delayStartup
    bool MultiTicketSeries = false;
    qint16 DisplayType = 0;     ///< 0 "Led 7 Segment", 1 "Led Matrix!"
    qint16 MainDisplayType = 0; ///< likewise, for information displays
    bool RunOverNight = false;
    bool SendConfigOnStart = false;
    bool SendConfigOnError = true;
    bool RoutedSeries = false;
    qint16 FromToval = 5; ///< tickets called, 1 to 10

    // [AutoDelete]
    bool AutoDeleteEnable = false;
    QString AutoDeleteFromYear = QStringLiteral("2");

    // [AutoReset]
    bool ResetNew = false;
    QString ResetAt = QStringLiteral("000000"); ///< "hhmmss"

    /// 0 "auto", 1 "msg", 2 "net"
    qint16 VoiceType = 0;
};

/// Reads every key from the file that `ini` works on, assigning the defaults first, then VoiceType, and writes the
/// option log. A number that does not fit its field is logged with its key, and the default stays.
Options ReadOptions(IniUtility& ini, EventLog& log);

/// Writes the keys that the options window edits.
/// @param resetAt stands for `ResetAt` in the file, as the user typed it.
/// @return false if they could not be written; the file is as it was then.
bool WriteOptions(const Options& options, const QString& resetAt, const IniUtility& ini);

/// Whether a text that a user typed is such a time of day.
bool IsTimeOfDay(const QString& typed);

/// A time of day that a user typed ("7:30", "07:30:00", "0730"), as "hhmmss"; a text that is none stays as it is.
QString ResetTime(const QString& typed);

/// Reads [Comm] OrvexType of voice.ini, which lies beside the file that `ini` works on; `ini` is pointed there and
/// back.
/// @return 1 for "msg", 2 for "net" (in any case of letters), 0 for anything else.
qint16 ReadVoiceType(IniUtility& ini);
