#include "platform/WholeFile.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QString Suffix() {
    return QStringLiteral(".saving");
}

} // namespace

Failure WholeFile::Fault(const QString& reason) {
    m_fault = reason;
    m_file.close();
    m_lock.Release();
    return {QStringLiteral("%1 could not be written: %2").arg(m_path, reason)};
}

Result<> WholeFile::Begin() {
    const QFileInfo info(m_path);
    const QString target = info.canonicalFilePath();
    m_target = target.isEmpty() ? info.absoluteFilePath() : target;
    if (info.exists() && !info.isFile())
        return Fault(QStringLiteral("It is no regular file."));
    if (info.exists() && !info.isWritable())
        return Fault(qt_error_string(EACCES));
    if (const Result<> taken = m_lock.Take(m_target + Suffix()); !taken)
        return Fault(m_lock.IsElsewhere() ? QStringLiteral("It is being written already.") : taken.Error());
    const int descriptor = m_lock.Descriptor();
    if (::ftruncate(descriptor, 0) != 0 || !m_file.open(descriptor, QIODevice::WriteOnly | QIODevice::Unbuffered))
        return Fault(qt_error_string());
    if (info.exists())
        m_file.setPermissions(info.permissions());
    m_fault.clear();
    return {};
}

bool WholeFile::Write(QByteArrayView content) {
    // Of a disk that is nearly full a write takes what still fits, and calls that no error.
    while (m_fault.isEmpty() && !content.isEmpty()) {
        const qint64 written = m_file.write(content.data(), content.size());
        if (written <= 0)
            m_fault = m_file.error() == QFileDevice::NoError ? qt_error_string(ENOSPC) : m_file.errorString();
        content = content.sliced(std::max<qint64>(written, 0));
    }
    return m_fault.isEmpty();
}

Result<> WholeFile::Finish() {
    if (!m_fault.isEmpty())
        return Fault(m_fault);
    if (::fsync(m_lock.Descriptor()) != 0)
        return Fault(qt_error_string());
    if (const Result<> renamed = m_lock.RenameTo(m_target); !renamed)
        return Fault(renamed.Error());
    return FlushFolderOf(m_target);
}

void RemoveUnfinished(const QString& folder) {
    const QDir files(folder);
    for (const QString& name : files.entryList({u'*' + Suffix()}, QDir::Files | QDir::Hidden)) {
        // Whoever still writes it holds it.
        LockFile left;
        (void)left.Take(files.filePath(name));
    }
}

Result<> WriteWhole(const QString& path, QByteArrayView content) {
    WholeFile file(path);
    if (const Result<> begun = file.Begin(); !begun)
        return begun;
    file.Write(content);
    return file.Finish();
}

Result<QByteArray> ReadWhole(const QString& path, qint64 limit) {
    const auto cannot = [&path](const QString& reason) {
        return Failure{QStringLiteral("%1 cannot be read: %2").arg(path, reason)};
    };
    // A pipe or a device may have no end, and even its opening may wait. What counts is the file that is open: its name
    // may be another's by now.
    const int descriptor = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (descriptor < 0)
        return cannot(qt_error_string());
    struct stat info {};
    if (::fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode)) {
        ::close(descriptor);
        return cannot(QStringLiteral("It is no regular file."));
    }
    QFile file;
    if (!file.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        ::close(descriptor);
        return cannot(file.errorString());
    }
    QByteArray content = file.read(limit + 1);
    if (file.error() != QFileDevice::NoError)
        return cannot(file.errorString());
    if (content.size() > limit)
        return cannot(QStringLiteral("It has more than %1 bytes.").arg(limit));
    return content;
}

Result<> FlushFolderOf(const QString& path) {
    const QByteArray folder = QFile::encodeName(QFileInfo(path).absolutePath());
    const int descriptor = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const bool isFlushed = descriptor >= 0 && (::fsync(descriptor) == 0 || errno == EINVAL);
    const Failure failure{
        QStringLiteral("%1 could not be flushed: %2").arg(QFile::decodeName(folder), qt_error_string())};
    if (descriptor >= 0)
        ::close(descriptor);
    return isFlushed ? Result<>() : failure;
}
