#include "core/EventLog.h"

#include "platform/Clock.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {
constexpr qint64 LargestFile = 1'000'000; ///< bytes; a file of exactly this size is still appended to
}

EventLog::EventLog(QString programFolder, const Clock& clock, QObject* parent)
    : QObject(parent)
    , m_programFolder(std::move(programFolder))
    , m_clock(clock) {}

void EventLog::WriteLog(const QString& message, int severity) {
    AppendLogFile(m_clock.Now().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")) + QStringLiteral("##") + message);
    Q_EMIT Written(message, severity);
}

void EventLog::AppendLogFile(const QString& line) {
    if (m_programFolder.isEmpty())
        return;
    const QDir folder(m_programFolder + QStringLiteral("/Log"));
    if (!folder.exists())
        folder.mkpath(QStringLiteral("."));
    const int day = m_clock.Now().date().day();
    QFile file(folder.filePath(QStringLiteral("Log%1.txt").arg(day)));
    const QFileInfo info(file.fileName());
    const bool startsAnew = info.size() > LargestFile;
    // A pipe in its place would be waited for.
    if (info.exists() && !info.isFile())
        return;
    if (file.open(QIODevice::WriteOnly | (startsAnew ? QIODevice::Truncate : QIODevice::Append)))
        file.write((line + u'\n').toUtf8());
}
