#include "database/ImporterRun.h"

#include "platform/Dialogs.h"

#include <sys/prctl.h>

#include <algorithm>
#include <csignal>

namespace {

constexpr std::chrono::milliseconds WatchInterval{100};
constexpr qint64 LongestLine = 64 * 1024;

} // namespace

ImporterRun::ImporterRun(ProgressBox& box, Clock& clock, std::chrono::milliseconds patience)
    : m_box(box)
    , m_clock(clock)
    , m_watch(clock.MakeTimer([this] { Watch(); }))
    , m_patience(patience) {
    m_process.setStandardErrorFile(QProcess::nullDevice());
    m_process.setStandardInputFile(QProcess::nullDevice());
    // An import whose station is gone would write for nobody.
    m_process.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
    connect(&m_process, &QProcess::readyReadStandardOutput, this, &ImporterRun::ReadLines);
    connect(&m_process, &QProcess::finished, this, &ImporterRun::OnFinished);
    connect(&m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error != QProcess::FailedToStart)
            return;
        m_report.error =
            QStringLiteral("The program %1 cannot be started: %2.").arg(m_process.program(), m_process.errorString());
        FinishLater();
    });
}

void ImporterRun::Start(const QString& program, const QString& source, const QString& target) {
    m_lastLine = m_clock.Monotonic();
    m_watch->Start(WatchInterval);
    m_process.start(program, {source, target});
}

void ImporterRun::Stop() {
    m_report.stopped = true;
    m_watch->Stop();
    m_process.disconnect(this);
    m_process.kill();
    m_done.Finish(m_report);
}

void ImporterRun::Retire() {
    if (m_process.state() == QProcess::NotRunning)
        deleteLater();
    else
        connect(&m_process, &QProcess::finished, this, &QObject::deleteLater);
}

void ImporterRun::ReadLines() {
    while (m_process.canReadLine()) {
        m_lastLine = m_clock.Monotonic();
        Understand(QString::fromUtf8(m_process.readLine(LongestLine)).trimmed());
    }
    if (m_process.bytesAvailable() > LongestLine)
        Kill(QStringLiteral("The import program broke down."));
}

void ImporterRun::Understand(const QString& line) {
    const QString word = line.section(u' ', 0, 0);
    const QString rest = line.section(u' ', 1);
    if (word == QStringLiteral("progress")) {
        const QString table = rest.section(u' ', 0, -3);
        const qint64 done = rest.section(u' ', -2, -2).toLongLong();
        const qint64 total = rest.section(u' ', -1).toLongLong();
        m_box.Show(total > 0 ? QStringLiteral("Taking over table %1: row %2 of %3").arg(table).arg(done).arg(total)
                             : QStringLiteral("Taking over: %1").arg(table),
                   done, total);
    } else if (word == QStringLiteral("note")) {
        if (m_report.notes.size() < MostNotes)
            m_report.notes += rest;
    } else if (word == QStringLiteral("done")) {
        m_complete = true;
        m_report.rows = rest.toLongLong();
    } else if (word == QStringLiteral("error") && m_report.error.isEmpty()) {
        m_report.error = rest;
    }
}

void ImporterRun::Kill(const QString& reason) {
    if (m_report.error.isEmpty())
        m_report.error = reason;
    m_process.kill();
}

void ImporterRun::Watch() {
    m_watch->Start(WatchInterval);
    if (m_box.IsCancelled()) {
        m_report.stopped = true;
        m_process.kill();
    } else if (m_clock.Monotonic() - m_lastLine > m_patience) {
        Kill(QStringLiteral("The import program made no progress for %1 seconds and was stopped.")
                 .arg(std::max<qint64>(1, std::chrono::duration_cast<std::chrono::seconds>(m_patience).count())));
    }
}

void ImporterRun::OnFinished(int code, QProcess::ExitStatus status) {
    ReadLines();
    if (m_report.error.isEmpty() && !m_report.stopped) {
        if (status == QProcess::CrashExit)
            m_report.error = QStringLiteral("The import program broke down while it read the file.");
        else if (code != 0 || !m_complete)
            m_report.error = QStringLiteral("The import program ended early (exit code %1).").arg(code);
    }
    FinishLater();
}

// The coroutine goes on outside of the process's own signals.
void ImporterRun::FinishLater() {
    m_watch->Stop();
    QMetaObject::invokeMethod(
        this, [this] { m_done.Finish(m_report); }, Qt::QueuedConnection);
}
