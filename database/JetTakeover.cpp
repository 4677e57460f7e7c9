#include "database/JetTakeover.h"

#include "core/EventLog.h"
#include "database/ImporterRun.h"
#include "database/Sqlite.h"
#include "database/StoreCheck.h"
#include "database/StoreKind.h"
#include "database/StoreWait.h"
#include "platform/Dialogs.h"
#include "platform/LockFile.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QUuid>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <utility>

namespace {

QString TemporaryStore(const QString& file) {
    return file + QStringLiteral(".takeover");
}

QString TemporaryCopy(const QString& file) {
    return file + QStringLiteral(".takeover-copy");
}

void RemoveLeftovers(const QString& file) {
    QFile::remove(TemporaryStore(file));
    QFile::remove(TemporaryStore(file) + QStringLiteral("-journal"));
    QFile::remove(TemporaryCopy(file));
    QDir(TemporaryStore(file) + QStringLiteral(".work")).removeRecursively();
}

bool IsSameFile(const QString& a, const QString& b) {
    struct stat first {};
    struct stat second {};
    return stat(QFile::encodeName(a).constData(), &first) == 0 &&
           stat(QFile::encodeName(b).constData(), &second) == 0 && first.st_dev == second.st_dev &&
           first.st_ino == second.st_ino;
}

/// The name that keeps the old file: the first that is free, or that a killed run has already given it.
QString KeptName(const QString& file) {
    const QFileInfo info(file);
    const QString stem = info.dir().filePath(info.completeBaseName() + QStringLiteral(".jet"));
    for (int number = 1;; ++number) {
        const QString name =
            (number == 1 ? stem : QStringLiteral("%1-%2").arg(stem).arg(number)) + QStringLiteral(".mdb");
        const QFileInfo candidate(name);
        if ((!candidate.exists() && !candidate.isSymLink()) || IsSameFile(name, file))
            return name;
    }
}

bool FlushPath(const QString& path) {
    const int descriptor = open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    const bool flushed = descriptor >= 0 && fsync(descriptor) == 0;
    if (descriptor >= 0)
        close(descriptor);
    return flushed;
}

/// Makes `kept` a second name, or a whole copy, of `file`.
Result<> Keep(const QString& file, const QString& kept) {
    if (IsSameFile(file, kept) || link(QFile::encodeName(file).constData(), QFile::encodeName(kept).constData()) == 0)
        return {};
    // Not every file system has links.
    const QString copy = TemporaryCopy(file);
    QFile source(file);
    if (source.copy(copy) && FlushPath(copy) && QFile::rename(copy, kept))
        return {};
    const QString reason = source.error() == QFileDevice::NoError ? qt_error_string() : source.errorString();
    QFile::remove(copy);
    return Failure{QStringLiteral("The old file cannot be kept as %1: %2.").arg(kept, reason)};
}

/// Gives the store `temporary` the name `file`, and the file's bytes the name `kept`. After a failure all is as it was.
Result<> Swap(const QString& file, const QString& temporary, const QString& kept) {
    const QString folder = QFileInfo(file).path();
    // A store has to be writable for its owner, whatever the old file was.
    const QFileDevice::Permissions permissions =
        QFile::permissions(file) | QFileDevice::ReadOwner | QFileDevice::WriteOwner;
    if (!QFile::setPermissions(temporary, permissions) || !FlushPath(temporary))
        return Failure{QStringLiteral("The new store cannot be finished: %1.").arg(qt_error_string())};
    const bool wasKept = IsSameFile(file, kept);
    if (Result<> done = Keep(file, kept); !done)
        return done;
    FlushPath(folder);
    if (std::rename(QFile::encodeName(temporary).constData(), QFile::encodeName(file).constData()) != 0) {
        const QString reason = qt_error_string();
        if (!wasKept)
            QFile::remove(kept);
        return Failure{QStringLiteral("The new store cannot take the file's name: %1.").arg(reason)};
    }
    FlushPath(folder);
    return {};
}

QString Native(const QString& path) {
    return QDir::toNativeSeparators(path);
}

/// Why a file that is no Access/Jet file cannot be used; empty if it can.
QString FaultOf(const QString& path, StoreKind kind) {
    switch (kind) {
    case StoreKind::Sqlite: {
        const Result<> sound = JetTakeover::CheckStore(path);
        return sound ? QString()
                     : QStringLiteral("The database %1 cannot be used.\n\n%2").arg(Native(path), sound.Error());
    }
    case StoreKind::Missing:
        return QStringLiteral("The file %1 does not exist.").arg(Native(path));
    case StoreKind::Unreadable:
        return QStringLiteral("The file %1 cannot be read.").arg(Native(path));
    case StoreKind::Empty:
        return QStringLiteral("The file %1 is empty; it holds no database.").arg(Native(path));
    default:
        return QStringLiteral("The file %1 is neither a database of this program nor an Access database.")
            .arg(Native(path));
    }
}

} // namespace

JetTakeover::JetTakeover(Dialogs& dialogs, Clock& clock, EventLog& log, QString importer,
                         std::chrono::milliseconds patience)
    : m_dialogs(dialogs)
    , m_clock(clock)
    , m_log(log)
    , m_importer(std::move(importer))
    , m_patience(patience) {}

JetTakeover::~JetTakeover() = default;

Result<> JetTakeover::CheckStore(const QString& path) {
    Sqlite file;
    if (const auto opened = file.Open(path); !opened)
        return Failure{QStringLiteral("It cannot be opened: %1.").arg(opened.Error())};
    QSqlQuery query(file.Connection());
    // Values outside their column's range are the loaders' business.
    query.exec(QStringLiteral("PRAGMA ignore_check_constraints = ON"));
    if (!query.exec(QStringLiteral("PRAGMA quick_check(1)")) || !query.next()) {
        const QString text = Sqlite::TextOf(query.lastError());
        // What has words of its own is no damage.
        const bool isDamage = text == query.lastError().databaseText();
        return Failure{isDamage ? QStringLiteral("It is damaged: %1.").arg(text) : text};
    }
    const QString verdict = query.value(0).toString();
    if (verdict != QStringLiteral("ok"))
        return Failure{QStringLiteral("It is damaged: %1.").arg(verdict)};
    query.finish();
    return CheckTables(file);
}

QCoro::Task<Outcome> JetTakeover::Prepare(QString path) {
    if (m_closed)
        co_return Outcome::Cancelled();
    const StoreKind kind = StoreKindOfFile(path);
    if (IsJet(kind))
        co_return co_await TakeOver(path);
    co_await WaitUntilFree(path, kind);
    const QString fault = FaultOf(path, kind);
    if (fault.isEmpty())
        co_return Outcome::Done();
    m_log.WriteLog(fault.simplified(), EventLog::Error);
    co_return Outcome::Failed(fault, BoxKind::Critical);
}

QCoro::Task<> JetTakeover::WaitUntilFree(QString path, StoreKind kind) {
    Sqlite file;
    if (kind != StoreKind::Sqlite || !file.Open(path))
        co_return;
    co_await StoreWait::UntilFree(file, m_dialogs, m_clock);
}

QCoro::Task<Outcome> JetTakeover::TakeOver(QString file) {
    // What a link names is replaced, not the link.
    const QString canonical = QFileInfo(file).canonicalFilePath();
    if (!canonical.isEmpty())
        file = canonical;
    const QString question =
        QStringLiteral("%1\nis an Access database. This program keeps its data in a store of another kind.\n\n"
                       "Take all data over into a new store now?\n\n"
                       "The new store gets the name of this file. The old file is kept unchanged as %2.")
            .arg(Native(file), QFileInfo(KeptName(file)).fileName());
    const bool agreed = co_await m_dialogs.AskYesNo(BoxKind::Information, question);
    if (m_closed)
        co_return Outcome::Cancelled();
    if (!agreed)
        co_return Outcome::Refused({});

    LockFile lock;
    if (const Result<> taken = lock.Take(file + QStringLiteral(".takeover-lock")); !taken) {
        co_return NotTakenOver(file, lock.IsElsewhere()
                                         ? QStringLiteral("Another program is taking it over right now.")
                                         : QStringLiteral("Its folder cannot be written to: %1.").arg(taken.Error()));
    }
    RemoveLeftovers(file);
    const Outcome outcome = co_await TakeOverLocked(file);
    RemoveLeftovers(file);
    co_return outcome;
}

QCoro::Task<Outcome> JetTakeover::TakeOverLocked(QString file) {
    const QString temporary = TemporaryStore(file);
    const QFileInfo before(file);
    const QDateTime changed = before.lastModified();
    const qint64 size = before.size();

    ImporterRun::Report report;
    {
        const std::unique_ptr<ProgressBox> box =
            m_dialogs.ShowProgress(QStringLiteral("Taking over %1").arg(before.fileName()));
        auto run = std::make_unique<ImporterRun>(*box, m_clock, m_patience);
        m_run = run.get();
        run->Start(m_importer, file, temporary);
        report = co_await run->Done().Wait();
        run.release()->Retire();
        if (!report.stopped && box->IsCancelled())
            report.stopped = true;
    }
    if (report.stopped || m_closed)
        co_return Outcome::Cancelled();
    if (!report.error.isEmpty())
        co_return NotTakenOver(file, report.error);
    if (const Result<> sound = CheckStore(temporary); !sound)
        co_return NotTakenOver(file, sound.Error());
    const QFileInfo after(file);
    if (after.lastModified() != changed || after.size() != size)
        co_return NotTakenOver(file, QStringLiteral("Another program changed it meanwhile."));
    const QString kept = KeptName(file);
    if (const Result<> swapped = Swap(file, temporary, kept); !swapped)
        co_return NotTakenOver(file, swapped.Error());

    for (const QString& note : std::as_const(report.notes))
        m_log.WriteLog(QStringLiteral("Take over: ") + note, EventLog::Warning);
    m_log.WriteLog(QStringLiteral("%1 taken over, %2 rows. The old file is kept as %3.")
                       .arg(Native(file))
                       .arg(report.rows)
                       .arg(Native(kept)));
    co_return Outcome::Done();
}

Outcome JetTakeover::NotTakenOver(const QString& file, const QString& reason) {
    m_log.WriteLog(QStringLiteral("%1 was not taken over: %2").arg(Native(file), reason.simplified()), EventLog::Error);
    return Outcome::Failed(
        QStringLiteral("%1 was not taken over.\n\n%2\n\nThe file is as it was.").arg(Native(file), reason),
        BoxKind::Critical);
}

void JetTakeover::Close() {
    m_closed = true;
    if (m_run)
        m_run->Stop();
}
