#include "database/StoreCopies.h"

#include "database/Database.h"
#include "platform/Clock.h"
#include "platform/WholeFile.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr const char* Unfinished = ".copying";
constexpr qint64 UnfinishedAge = 3600; ///< seconds after which nobody writes to such a file any more

Result<> Flush(const QString& path) {
    const int file = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (file < 0 || ::fsync(file) != 0) {
        const QString reason = qt_error_string();
        if (file >= 0)
            ::close(file);
        return Failure{QStringLiteral("%1: %2").arg(path, reason)};
    }
    ::close(file);
    return FlushFolderOf(path);
}

} // namespace

QString StoreCopies::Folder() const {
    return QFileInfo(m_database.Path()).absolutePath() + QStringLiteral("/Snapshots");
}

Result<> StoreCopies::Take(const QString& before) const {
    if (!m_database.IsOpen())
        return Failure{QStringLiteral("Can't open Queue database!")};
    const QString folder = Folder();
    if (!QDir().mkpath(folder))
        return Failure{QStringLiteral("%1: The folder cannot be made.").arg(folder)};
    const QFileInfo store(m_database.Path());
    const QString begin =
        QStringLiteral("%1/%2 %3 ")
            .arg(folder, store.completeBaseName(), m_clock.Now().toString(QStringLiteral("yyyy-MM-dd hh-mm-ss")));
    QString path = begin + before + QStringLiteral(".mdb");
    for (int second = 2; QFileInfo::exists(path); ++second)
        path = begin + before + QStringLiteral(" %1.mdb").arg(second);
    const QString temporary = path + QLatin1String(Unfinished);
    QFile::remove(temporary);
    Result<> done = m_database.Run({QStringLiteral("VACUUM INTO ?"), {temporary}});
    if (done)
        done = Flush(temporary);
    if (done && !QFile::rename(temporary, path))
        done = Failure{QStringLiteral("%1: The file cannot be made.").arg(path)};
    if (done)
        done = FlushFolderOf(path);
    if (!done) {
        QFile::remove(temporary);
        return done;
    }
    RemoveOld(path);
    return {};
}

std::vector<StoreCopy> StoreCopies::List() const {
    if (!m_database.IsOpen())
        return {};
    const QRegularExpression form(
        QStringLiteral("^%1 (\\d{4}-\\d\\d-\\d\\d) (\\d\\d)-(\\d\\d)-(\\d\\d) (.*)\\.mdb$")
            .arg(QRegularExpression::escape(QFileInfo(m_database.Path()).completeBaseName())));
    std::vector<StoreCopy> all;
    const QDir folder(Folder());
    const QStringList names = folder.entryList(QDir::Files);
    for (const QString& name : names) {
        const QRegularExpressionMatch match = form.match(name);
        if (match.hasMatch())
            all.push_back({folder.filePath(name),
                           QStringLiteral("%1 %2:%3:%4")
                               .arg(match.captured(1), match.captured(2), match.captured(3), match.captured(4)),
                           match.captured(5)});
    }
    std::sort(all.begin(), all.end(), [](const StoreCopy& one, const StoreCopy& other) {
        return std::pair(one.moment, one.path) > std::pair(other.moment, other.path);
    });
    return all;
}

void StoreCopies::RemoveOld(const QString& made) const {
    const std::vector<StoreCopy> all = List();
    for (std::size_t i = Most; i < all.size(); ++i)
        if (all[i].path != made)
            QFile::remove(all[i].path);
    // What a killed program has left; another one may be copying at this moment.
    const QDateTime old = m_clock.Now().addSecs(-UnfinishedAge);
    QDir folder(Folder());
    const QStringList unfinished = folder.entryList({u'*' + QLatin1String(Unfinished)}, QDir::Files);
    for (const QString& name : unfinished)
        if (QFileInfo(folder.filePath(name)).lastModified() < old)
            folder.remove(name);
}
