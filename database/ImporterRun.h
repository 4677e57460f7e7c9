#pragma once

#include "platform/Clock.h"
#include "platform/Completion.h"

#include <QObject>
#include <QProcess>
#include <QStringList>

#include <memory>

class ProgressBox;

/// One run of the program `JetImport`, an object for its life alone: it has no signals. It is
/// given up with `Retire`: the waiting coroutine may go on inside of it, and a killed program takes a moment to end.
class ImporterRun : public QObject {
public:
    struct Report {
        bool stopped = false; ///< by `Stop` or by the box's Cancel
        QString error;        ///< empty if all rows were taken over
        qint64 rows = 0;
        QStringList notes; ///< at most `MostNotes`
    };

    static constexpr int MostNotes = 100;

    /// @param box, clock must outlive the run. @param patience the longest time without a line of the program.
    ImporterRun(ProgressBox& box, Clock& clock, std::chrono::milliseconds patience);

    void Start(const QString& program, const QString& source, const QString& target);

    /// Kills the program and ends the wait at once.
    void Stop();

    /// Deletes this once nothing of it is in use and the program has ended.
    void Retire();

    Completion<Report>& Done() { return m_done; }

private:
    void ReadLines();
    void Understand(const QString& line);
    void Kill(const QString& reason);
    void Watch();
    void OnFinished(int code, QProcess::ExitStatus status);
    void FinishLater();

    ProgressBox& m_box;
    QProcess m_process;
    const Clock& m_clock;
    const std::unique_ptr<ClockTimer> m_watch;
    Clock::Instant m_lastLine;
    std::chrono::milliseconds m_patience;
    bool m_complete = false;
    Report m_report;
    Completion<Report> m_done;
};
