#pragma once

#include <QObject>
#include <QString>

class Clock;

/// The plain text log for the installer: one file per day of the month in the folder "Log" of the program folder.
///
/// The files are Log1.txt to Log31.txt, UTF-8; a file is used again on the same day of the next month, and emptied
/// first when it is larger than 1,000,000 bytes. A line is "yyyy-mm-dd hh:mm:ss##" and the message. The file is opened
/// and closed for each line, the folder is made anew when it is gone, and what cannot be written is lost without a
/// message: the log never stops the program.
class EventLog : public QObject {
    Q_OBJECT

public:
    static constexpr int Plain = 0;
    static constexpr int Error = 16;
    static constexpr int Warning = 48;

    /// @param programFolder if empty, no file is written.
    /// @param clock must outlive the log.
    EventLog(QString programFolder, const Clock& clock, QObject* parent = nullptr);

    /// Stamps `message` and appends it. `severity` (0 plain, 16 error, 48 warning) is not written to the file.
    void WriteLog(const QString& message, int severity = Plain);

    /// Appends one finished line.
    void AppendLogFile(const QString& line);

Q_SIGNALS:
    void Written(const QString& message, int severity);

private:
    QString m_programFolder;
    const Clock& m_clock;
};
