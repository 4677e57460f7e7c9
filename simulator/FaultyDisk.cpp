#include "simulator/FaultyDisk.h"

#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int FolderMark = -1;
constexpr qint64 Sector = 512; ///< is written whole or not at all

template <typename Function>
Function* Real(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

int RealOpen(const char* path, int flags, unsigned mode) {
    static auto* const real = Real<int(const char*, int, ...)>("open64");
    return real(path, flags, mode);
}
ssize_t RealWrite(int descriptor, const void* bytes, size_t count) {
    static auto* const real = Real<ssize_t(int, const void*, size_t)>("write");
    return real(descriptor, bytes, count);
}
ssize_t RealWriteAt(int descriptor, const void* bytes, size_t count, off_t offset) {
    static auto* const real = Real<ssize_t(int, const void*, size_t, off_t)>("pwrite64");
    return real(descriptor, bytes, count, offset);
}
int RealTruncate(int descriptor, off_t size) {
    static auto* const real = Real<int(int, off_t)>("ftruncate64");
    return real(descriptor, size);
}
int RealFlush(int descriptor) {
    static auto* const real = Real<int(int)>("fsync");
    return real(descriptor);
}
int RealRename(const char* from, const char* to) {
    static auto* const real = Real<int(const char*, const char*)>("rename");
    return real(from, to);
}
int RealUnlink(const char* path) {
    static auto* const real = Real<int(const char*)>("unlink");
    return real(path);
}

QByteArray Content(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string content((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    return QByteArray::fromStdString(content);
}

std::string Absolute(const char* path) {
    return std::filesystem::absolute(path).lexically_normal().string();
}

} // namespace

FaultyDisk& FaultyDisk::Instance() {
    static FaultyDisk disk;
    return disk;
}

void FaultyDisk::Begin(const QString& folder) {
    *this = FaultyDisk();
    const std::string root = folder.toStdString() + '/';
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        if (!entry.is_regular_file() || entry.path().parent_path().filename() == "Log")
            continue;
        m_names[entry.path().string()] = static_cast<int>(m_files.size());
        m_files.push_back({Content(entry.path().string()), {}});
    }
    m_flushedNames = m_names;
    m_folder = root;
}

void FaultyDisk::End() {
    *this = FaultyDisk();
}

bool FaultyDisk::IsWatched(const std::string& path) const {
    return !m_folder.empty() && path.starts_with(m_folder) && path.find("/Log/", m_folder.size() - 1) == path.npos;
}

int FaultyDisk::Allow() {
    if (m_life > 0 && --m_life == 0)
        m_isDead = true;
    return m_isDead ? -EIO : 0;
}

int* FaultyDisk::FileOf(int descriptor) {
    if (m_folder.empty() || descriptor < 0 || descriptor >= static_cast<int>(m_descriptors.size()))
        return nullptr;
    int& file = m_descriptors[static_cast<std::size_t>(descriptor)];
    return file == 0 ? nullptr : &file;
}

void FaultyDisk::Note(const NameChange& change) {
    Apply(m_names, change);
    m_nameChanges.push_back(change);
}

void FaultyDisk::Apply(std::map<std::string, int>& names, const NameChange& change) {
    for (const auto& [name, file] : change) {
        if (file < 0)
            names.erase(name);
        else
            names[name] = file;
    }
}

int FaultyDisk::Open(const char* name, int flags, unsigned mode) {
    const auto open = [&] {
        const int descriptor = RealOpen(name, flags, mode);
        return descriptor < 0 ? -errno : descriptor;
    };
    if (m_folder.empty())
        return open();
    const std::string path = Absolute(name);
    struct stat info {};
    const bool isThere = ::stat(name, &info) == 0;
    if (isThere && S_ISDIR(info.st_mode) && IsWatched(path + "/.")) {
        const int descriptor = open();
        if (descriptor >= 0 && descriptor < static_cast<int>(m_descriptors.size()))
            m_descriptors[static_cast<std::size_t>(descriptor)] = FolderMark;
        return descriptor;
    }
    if (!IsWatched(path))
        return open();
    const bool changes = (!isThere && (flags & O_CREAT) != 0) || (isThere && (flags & O_TRUNC) != 0);
    if (changes) {
        if (const int refused = Allow(); refused != 0)
            return refused;
    }
    const int descriptor = open();
    if (descriptor < 0 || descriptor >= static_cast<int>(m_descriptors.size()))
        return descriptor;
    if (!isThere) {
        m_files.emplace_back();
        Note({{path, static_cast<int>(m_files.size()) - 1}});
    }
    const int file = m_names[path];
    if (isThere && changes)
        m_files[static_cast<std::size_t>(file)].pending.push_back({0, {}, true});
    m_descriptors[static_cast<std::size_t>(descriptor)] = file + 1;
    return descriptor;
}

ssize_t FaultyDisk::Write(int descriptor, const void* bytes, size_t count, off_t offset) {
    const auto write = [&] {
        const ssize_t written =
            offset < 0 ? RealWrite(descriptor, bytes, count) : RealWriteAt(descriptor, bytes, count, offset);
        return written < 0 ? -errno : written;
    };
    const int* const file = FileOf(descriptor);
    if (!file)
        return write();
    if (const int refused = Allow(); refused != 0)
        return refused;
    struct stat info {};
    ::fstat(descriptor, &info);
    qint64 place = offset;
    if (offset < 0) {
        const bool appends = (::fcntl(descriptor, F_GETFL) & O_APPEND) != 0;
        place = appends ? info.st_size : ::lseek(descriptor, 0, SEEK_CUR);
    }
    if (m_isFull && place + static_cast<qint64>(count) > info.st_size) {
        // What still fits is taken.
        count = info.st_size > place ? static_cast<size_t>(info.st_size - place) : 0;
        if (count == 0)
            return -ENOSPC;
    }
    const ssize_t written = write();
    if (written > 0) {
        m_files[static_cast<std::size_t>(*file - 1)].pending.push_back(
            {place, QByteArray(static_cast<const char*>(bytes), written), false});
    }
    return written;
}

int FaultyDisk::Truncate(int descriptor, off_t size) {
    const int* const file = FileOf(descriptor);
    if (file) {
        if (const int refused = Allow(); refused != 0)
            return refused;
        m_files[static_cast<std::size_t>(*file - 1)].pending.push_back({size, {}, true});
    }
    return RealTruncate(descriptor, size) < 0 ? -errno : 0;
}

int FaultyDisk::Flush(int descriptor) {
    const int* const file = FileOf(descriptor);
    if (!file)
        return RealFlush(descriptor) < 0 ? -errno : 0;
    if (const int refused = Allow(); refused != 0)
        return refused;
    if (std::exchange(m_failsFlush, false))
        return -EIO;
    if (*file == FolderMark) {
        m_flushedNames = m_names;
        m_nameChanges.clear();
        return 0;
    }
    File& flushed = m_files[static_cast<std::size_t>(*file - 1)];
    for (const Change& change : std::exchange(flushed.pending, {}))
        Apply(flushed.flushed, change);
    return 0;
}

int FaultyDisk::Rename(const char* from, const char* to, bool mayReplace) {
    const auto rename = [&] { return RealRename(from, to) < 0 ? -errno : 0; };
    if (m_folder.empty())
        return rename();
    const std::string source = Absolute(from);
    const std::string target = Absolute(to);
    if (!mayReplace && std::filesystem::exists(target))
        return -EEXIST;
    if (!IsWatched(source) || !IsWatched(target))
        return rename();
    if (const int refused = Allow(); refused != 0)
        return refused;
    const int done = rename();
    if (done == 0)
        Note({{target, m_names[source]}, {source, -1}});
    return done;
}

int FaultyDisk::Unlink(const char* path) {
    const auto unlink = [&] { return RealUnlink(path) < 0 ? -errno : 0; };
    if (m_folder.empty() || !IsWatched(Absolute(path)))
        return unlink();
    if (const int refused = Allow(); refused != 0)
        return refused;
    const int done = unlink();
    if (done == 0)
        Note({{Absolute(path), -1}});
    return done;
}

void FaultyDisk::Closed(int descriptor) {
    if (int* const file = FileOf(descriptor))
        *file = 0;
}

void FaultyDisk::Apply(QByteArray& content, const Change& change) {
    if (change.isTruncation) {
        const qsizetype size = content.size();
        content.resize(change.offset);
        if (change.offset > size)
            std::fill(content.begin() + size, content.end(), '\0');
        return;
    }
    const qsizetype end = change.offset + change.bytes.size();
    if (content.size() < end)
        content.append(QByteArray(end - content.size(), '\0'));
    std::copy(change.bytes.begin(), change.bytes.end(), content.begin() + change.offset);
}

QByteArray FaultyDisk::AfterPowerCut(const File& file, Dice& dice) const {
    QByteArray content = file.flushed;
    const auto count = file.pending.size();
    if (count == 0)
        return content;
    const bool inOrder = dice() % 2 == 0;
    const auto whole = dice() % (count + 1);
    for (std::size_t i = 0; i < count; ++i) {
        Change change = file.pending[i];
        if (inOrder ? i < whole : dice() % 2 == 0) {
            Apply(content, change);
        } else if (inOrder && i == whole && !change.isTruncation) {
            change.bytes.truncate(static_cast<qint64>(dice() % 8) * Sector);
            Apply(content, change);
        }
        if (inOrder && i == whole)
            break;
    }
    return content;
}

void FaultyDisk::Restart(bool wasPowerCut, Dice& dice) {
    m_isDead = m_isFull = m_failsFlush = false;
    m_life = 0;
    if (!wasPowerCut)
        return;
    const auto kept = dice() % (m_nameChanges.size() + 1);
    for (std::size_t i = 0; i < kept; ++i)
        Apply(m_flushedNames, m_nameChanges[i]);
    for (const auto& [name, file] : m_names)
        RealUnlink(name.c_str());
    std::vector<File> files;
    std::map<std::string, int> names;
    for (const auto& [name, file] : m_flushedNames) {
        const QByteArray content = AfterPowerCut(m_files[static_cast<std::size_t>(file)], dice);
        const int descriptor = RealOpen(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        RealWrite(descriptor, content.constData(), static_cast<size_t>(content.size()));
        Real<int(int)>("close")(descriptor);
        names[name] = static_cast<int>(files.size());
        files.push_back({content, {}});
    }
    m_files = std::move(files);
    m_names = m_flushedNames = std::move(names);
    m_nameChanges.clear();
    m_descriptors.fill(0);
}

// The calls of the C library, in place of its own ones.

namespace {

template <typename Number>
Number Told(Number result) {
    if (result >= 0)
        return result;
    errno = static_cast<int>(-result);
    return -1;
}

unsigned ModeOf(int flags, va_list arguments) {
    return (flags & O_CREAT) != 0 ? va_arg(arguments, unsigned) : 0;
}

} // namespace

extern "C" {

int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const unsigned mode = ModeOf(flags, arguments);
    va_end(arguments);
    return Told(FaultyDisk::Instance().Open(path, flags, mode));
}
int open64(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const unsigned mode = ModeOf(flags, arguments);
    va_end(arguments);
    return Told(FaultyDisk::Instance().Open(path, flags, mode));
}
ssize_t write(int descriptor, const void* bytes, size_t count) {
    return Told(FaultyDisk::Instance().Write(descriptor, bytes, count, -1));
}
ssize_t pwrite(int descriptor, const void* bytes, size_t count, off_t offset) {
    return Told(FaultyDisk::Instance().Write(descriptor, bytes, count, offset));
}
ssize_t pwrite64(int descriptor, const void* bytes, size_t count, off64_t offset) {
    return Told(FaultyDisk::Instance().Write(descriptor, bytes, count, offset));
}
int ftruncate(int descriptor, off_t size) noexcept {
    return Told(FaultyDisk::Instance().Truncate(descriptor, size));
}
int ftruncate64(int descriptor, off64_t size) noexcept {
    return Told(FaultyDisk::Instance().Truncate(descriptor, size));
}
int fsync(int descriptor) {
    return Told(FaultyDisk::Instance().Flush(descriptor));
}
int fdatasync(int descriptor) {
    return Told(FaultyDisk::Instance().Flush(descriptor));
}
int rename(const char* from, const char* to) noexcept {
    return Told(FaultyDisk::Instance().Rename(from, to, true));
}
int renameat2(int, const char* from, int, const char* to, unsigned flags) noexcept {
    return Told(FaultyDisk::Instance().Rename(from, to, flags == 0));
}
int unlink(const char* path) noexcept {
    return Told(FaultyDisk::Instance().Unlink(path));
}
int close(int descriptor) {
    FaultyDisk::Instance().Closed(descriptor);
    static auto* const real = Real<int(int)>("close");
    return real(descriptor);
}
int usleep(useconds_t microseconds) {
    if (FaultyDisk::Instance().OnSleep)
        FaultyDisk::Instance().OnSleep(std::chrono::microseconds(microseconds));
    return 0;
}
int nanosleep(const timespec* time, timespec*) {
    if (FaultyDisk::Instance().OnSleep)
        FaultyDisk::Instance().OnSleep(std::chrono::seconds(time->tv_sec) + std::chrono::nanoseconds(time->tv_nsec));
    return 0;
}

} // extern "C"
