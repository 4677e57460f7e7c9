#include "platform/WholeFile.h"

#include <QFileInfo>

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

Failure WholeFile::Fault() const {
    return {QStringLiteral("%1 could not be written: %2").arg(m_file.fileName(), m_file.errorString())};
}

Result<> WholeFile::Begin() {
    m_isGood = m_file.open(QIODevice::WriteOnly);
    return m_isGood ? Result<>() : Fault();
}

bool WholeFile::Write(QByteArrayView content) {
    // Of a disk that is nearly full a write takes what still fits, and calls that no error.
    while (m_isGood && !content.isEmpty()) {
        const qint64 written = m_file.write(content.data(), content.size());
        m_isGood = written > 0;
        content = content.sliced(std::max<qint64>(written, 0));
    }
    return m_isGood;
}

Result<> WholeFile::Finish() {
    // A commit overlooks that its own buffer could not be written, and puts an empty file in the old one's place.
    if (!m_isGood || !m_file.flush() || m_file.error() != QFileDevice::NoError) {
        const Failure fault = Fault();
        if (m_file.isOpen()) {
            m_file.cancelWriting();
            m_file.commit();
        }
        return fault;
    }
    if (!m_file.commit())
        return Fault();
    return FlushFolderOf(m_file.fileName());
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
