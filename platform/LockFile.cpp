#include "platform/LockFile.h"

#include <QFile>

#include <cerrno>
#include <cstdio>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// Between opening and locking the file's name may have gone to another one.
bool HasName(int descriptor, const QByteArray& path) {
    struct stat open {};
    struct stat named {};
    return ::fstat(descriptor, &open) == 0 && ::lstat(path.constData(), &named) == 0 && open.st_dev == named.st_dev &&
           open.st_ino == named.st_ino;
}

} // namespace

Result<> LockFile::Take(const QString& path) {
    constexpr int Everybody = 0666; // what the user's mask leaves of it
    Release();
    m_isElsewhere = false;
    m_path = QFile::encodeName(path);
    for (;;) {
        m_descriptor = ::open(m_path.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, Everybody);
        if (m_descriptor < 0)
            return Failure{qt_error_string()};
        struct stat info {};
        if (::fstat(m_descriptor, &info) != 0 || !S_ISREG(info.st_mode)) {
            Close();
            return Failure{QStringLiteral("%1 is no regular file.").arg(path)};
        }
        if (::flock(m_descriptor, LOCK_EX | LOCK_NB) != 0) {
            m_isElsewhere = errno == EWOULDBLOCK;
            const Failure failure{qt_error_string()};
            Close();
            return failure;
        }
        if (HasName(m_descriptor, m_path))
            return {};
        Close();
    }
}

Result<> LockFile::RenameTo(const QString& path) {
    if (std::rename(m_path.constData(), QFile::encodeName(path).constData()) != 0)
        return Failure{qt_error_string()};
    Close();
    return {};
}

void LockFile::Release() {
    if (m_descriptor >= 0)
        ::unlink(m_path.constData());
    Close();
}

void LockFile::Close() {
    if (m_descriptor >= 0)
        ::close(std::exchange(m_descriptor, -1));
}
