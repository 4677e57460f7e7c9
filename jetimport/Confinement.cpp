#include "jetimport/Confinement.h"

#include <QFile>
#include <QSqlDatabase>

#include <fcntl.h>
#include <linux/landlock.h>
#include <seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>

namespace jet {
namespace {

// Younger than the headers of Debian 12.
constexpr quint64 Truncate = 1ULL << 14;
constexpr long AbiWithRefer = 2;
constexpr long AbiWithTruncate = 3;

constexpr quint64 Read = LANDLOCK_ACCESS_FS_READ_FILE;
constexpr quint64 ReadBelow = Read | LANDLOCK_ACCESS_FS_READ_DIR;
constexpr quint64 Make =
    ReadBelow | LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_MAKE_REG | LANDLOCK_ACCESS_FS_REMOVE_FILE | Truncate;

Failure Refused(const char* what, int error) {
    return {QStringLiteral("The import cannot be closed in: %1: %2.")
                .arg(QString::fromLatin1(what), qt_error_string(error))};
}

long LandlockAbi() {
    return syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
}

/// Closes its descriptor in the end.
class Descriptor {
public:
    explicit Descriptor(long number)
        : m_number(static_cast<int>(number)) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (m_number >= 0)
            close(m_number);
    }

    operator int() const { return m_number; }

private:
    int m_number;
};

bool Allow(int rules, const QString& path, quint64 access) {
    const int kind = (access & LANDLOCK_ACCESS_FS_READ_DIR) != 0 ? O_DIRECTORY : 0;
    const Descriptor place(open(QFile::encodeName(path).constData(), O_PATH | O_CLOEXEC | kind));
    // What is not there cannot be allowed, nor read.
    if (place < 0)
        return true;
    const landlock_path_beneath_attr rule = {.allowed_access = access, .parent_fd = place};
    return syscall(SYS_landlock_add_rule, rules, LANDLOCK_RULE_PATH_BENEATH, &rule, 0) == 0;
}

Result<> LimitFiles(const QString& source, const QString& folder) {
    const long abi = LandlockAbi();
    quint64 known = (LANDLOCK_ACCESS_FS_MAKE_SYM << 1) - 1;
    if (abi >= AbiWithRefer)
        known |= LANDLOCK_ACCESS_FS_REFER;
    if (abi >= AbiWithTruncate)
        known |= Truncate;
    const landlock_ruleset_attr handled = {.handled_access_fs = known};
    const Descriptor rules(syscall(SYS_landlock_create_ruleset, &handled, sizeof handled, 0));
    const bool closed = rules >= 0 && Allow(rules, source, Read) && Allow(rules, folder, Make & known) &&
                        Allow(rules, QStringLiteral("/usr/lib"), ReadBelow) &&
                        Allow(rules, QStringLiteral("/dev/urandom"), Read) &&
                        (!Confinement::IsSanitized || Allow(rules, QStringLiteral("/proc"), ReadBelow)) &&
                        syscall(SYS_landlock_restrict_self, static_cast<int>(rules), 0) == 0;
    return closed ? Result<>() : Refused("Landlock", errno);
}

// Calls that are refused rather than a list of those allowed: which calls the libraries make changes with their
// version.
constexpr int RefusedCalls[] = {
    SCMP_SYS(socket),
    SCMP_SYS(socketpair),
    SCMP_SYS(connect),
    SCMP_SYS(bind),
    SCMP_SYS(listen),
    SCMP_SYS(accept),
    SCMP_SYS(accept4),
    SCMP_SYS(execve),
    SCMP_SYS(execveat),
    SCMP_SYS(kill),
    SCMP_SYS(tkill),
    SCMP_SYS(pidfd_open),
    SCMP_SYS(pidfd_getfd),
    SCMP_SYS(process_vm_writev),
    SCMP_SYS(io_uring_setup),
    SCMP_SYS(bpf),
    SCMP_SYS(perf_event_open),
    SCMP_SYS(userfaultfd),
    SCMP_SYS(keyctl),
    SCMP_SYS(add_key),
    SCMP_SYS(request_key),
    SCMP_SYS(mount),
    SCMP_SYS(umount2),
    SCMP_SYS(move_mount),
    SCMP_SYS(fsopen),
    SCMP_SYS(open_tree),
    SCMP_SYS(pivot_root),
    SCMP_SYS(chroot),
    SCMP_SYS(setns),
    SCMP_SYS(unshare),
    SCMP_SYS(init_module),
    SCMP_SYS(finit_module),
    SCMP_SYS(delete_module),
    SCMP_SYS(kexec_load),
    SCMP_SYS(kexec_file_load),
    SCMP_SYS(reboot),
    SCMP_SYS(open_by_handle_at),
    // What Landlock does not know of: rights, owners, times and attributes of any file.
    SCMP_SYS(chmod),
    SCMP_SYS(fchmod),
    SCMP_SYS(fchmodat),
    SCMP_SYS(chown),
    SCMP_SYS(fchown),
    SCMP_SYS(lchown),
    SCMP_SYS(fchownat),
    SCMP_SYS(utime),
    SCMP_SYS(utimes),
    SCMP_SYS(futimesat),
    SCMP_SYS(utimensat),
    SCMP_SYS(setxattr),
    SCMP_SYS(lsetxattr),
    SCMP_SYS(fsetxattr),
    SCMP_SYS(removexattr),
    SCMP_SYS(lremovexattr),
    SCMP_SYS(fremovexattr),
    SCMP_SYS(swapon),
    SCMP_SYS(swapoff),
};

// What a sanitizer's search for leaks needs.
constexpr int RefusedUnlessSanitized[] = {
    SCMP_SYS(fork), SCMP_SYS(vfork), SCMP_SYS(clone), SCMP_SYS(ptrace), SCMP_SYS(process_vm_readv),
};

Result<> LimitCalls() {
    const std::unique_ptr<void, void (*)(scmp_filter_ctx)> filter(seccomp_init(SCMP_ACT_ALLOW), seccomp_release);
    if (!filter)
        return Refused("seccomp", ENOMEM);
    int error = 0;
    const auto refuse = [&](int call, int code) {
        if (error == 0)
            error = seccomp_rule_add(filter.get(), SCMP_ACT_ERRNO(static_cast<quint32>(code)), call, 0);
    };
    for (const int call : RefusedCalls)
        refuse(call, EPERM);
    if (!Confinement::IsSanitized) {
        for (const int call : RefusedUnlessSanitized)
            refuse(call, EPERM);
        // Its flags lie in memory, where no filter sees them; told that there is none, the C library takes clone.
        refuse(SCMP_SYS(clone3), ENOSYS);
    }
    // abort() is a signal to itself.
    if (error == 0)
        error = seccomp_rule_add(filter.get(), SCMP_ACT_ERRNO(EPERM), SCMP_SYS(tgkill), 1,
                                 SCMP_A0(SCMP_CMP_NE, static_cast<scmp_datum_t>(getpid()), 0));
    if (error == 0)
        error = seccomp_load(filter.get());
    return error == 0 ? Result<>() : Refused("seccomp", -error);
}

bool Limit(__rlimit_resource resource, rlim_t most) {
    rlimit limit{};
    if (getrlimit(resource, &limit) != 0)
        return false;
    limit.rlim_cur = std::min(most, limit.rlim_max);
    limit.rlim_max = limit.rlim_cur;
    return setrlimit(resource, &limit) == 0;
}

bool LimitResources() {
    return (Confinement::IsSanitized || Limit(RLIMIT_AS, Confinement::MemoryBytes)) &&
           Limit(RLIMIT_CPU, Confinement::CpuSeconds) && Limit(RLIMIT_FSIZE, Confinement::FileBytes) &&
           Limit(RLIMIT_CORE, 0);
}

void LoadDriver(const QString& folder) {
    // A large index is sorted in temporary files.
    qputenv("SQLITE_TMPDIR", QFile::encodeName(folder));
    const QString name = QStringLiteral("driver");
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        database.setDatabaseName(QStringLiteral(":memory:"));
        database.open();
    }
    QSqlDatabase::removeDatabase(name);
}

} // namespace

bool Confinement::KernelHasLandlock() {
    return LandlockAbi() > 0;
}

Result<> Confinement::Enter(const QString& source, const QString& folder, Landlock landlock) {
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0)
        return Refused("privileges", errno);
    if (!LimitResources())
        return Refused("limits", errno);
    LoadDriver(folder);
    if (landlock == Landlock::Use && KernelHasLandlock()) {
        const Result<> files = LimitFiles(source, folder);
        if (!files)
            return files;
    }
    return LimitCalls();
}

} // namespace jet
