#pragma once

#include "platform/Completion.h"

#include <QElapsedTimer>
#include <QObject>
#include <QProcess>
#include <QStringList>
#include <QTimer>

#include <chrono>

class ProgressBox;

/// One run of the program `JetImport`, an object for its life alone: it has no signals. It is
/// given up with `Retire`: the waiting coroutine may go on inside of it, and a killed program takes a moment to end.
class ImporterRun : public QObject {
public:
    struct Outcome {
        bool stopped = false; ///< by `Stop` or by the box's Cancel
        QString error;        ///< empty if all rows were taken over
        qint64 rows = 0;
        QStringList notes; ///< at most `MostNotes`
    };

    static constexpr int MostNotes = 100;

    /// @param box must outlive the run. @param patience the longest time without a line of the program.
    ImporterRun(ProgressBox& box, std::chrono::milliseconds patience);

    void Start(const QString& program, const QString& source, const QString& target);

    /// Kills the program and ends the wait at once.
    void Stop();

    /// Deletes this once nothing of it is in use and the program has ended.
    void Retire();

    Completion<Outcome>& Done() { return m_done; }

private:
    void ReadLines();
    void Understand(const QString& line);
    void Kill(const QString& reason);
    void Watch();
    void OnFinished(int code, QProcess::ExitStatus status);
    void FinishLater();

    ProgressBox& m_box;
    QProcess m_process;
    QTimer m_watch;
    QElapsedTimer m_silence;
    std::chrono::milliseconds m_patience;
    bool m_complete = false;
    Outcome m_outcome;
    Completion<Outcome> m_done;
};
