#pragma once

#include "platform/Result.h"

#include <QString>

namespace jet {

/// Closes this process in, before it opens a foreign file whose parser may be taken over by what it reads. There is no
/// way back; threads and children would be closed in too.
///
/// What is left to the process:
///  - files: to read the one source file, what the C library loads of `/usr/lib` (tables of code pages), and
///    `/dev/urandom`; to read, write, make and remove plain files in the one target folder, an empty one of its own,
///    where SQLite is told to put its temporary files too. Descriptors that are open stay open. Only where the kernel
///    has Landlock (5.13 and later).
///  - system calls: neither sockets, nor another program or process, nor a look into or a signal to other processes,
///    nor what changes the system, nor the rights, owner, times or attributes of a file. Such a call fails with EPERM,
///    so that the import ends with a message.
///  - no new privileges, whatever set-user-ID program would be started.
///  - memory, time, and size of a file: the limits below. The process gets a null pointer, SIGXCPU, or SIGXFSZ.
class Confinement {
public:
    /// Skip: as on a kernel without it.
    enum class Landlock { Use, Skip };

    /// Address space. A file is read page by page (4 KB); the largest thing in memory is one long value of 16 MB with
    /// its copies as bytes and text, beside 200 MB of libraries.
    static constexpr quint64 MemoryBytes = 1024ULL * 1024 * 1024;
    /// A Jet file has at most 2 GB, which is 40 million rows of the shortest table; a slow machine takes over 50,000 of
    /// them in a second.
    static constexpr quint64 CpuSeconds = 1800;
    /// The store is no larger than a few times its source.
    static constexpr quint64 FileBytes = 8ULL * 1024 * 1024 * 1024;

    /// AddressSanitizer reserves terabytes of address space, and its search for leaks starts a process, looks into this
    /// one, and reads `/proc`: with it, memory is not bounded and these are left open.
#if defined(__SANITIZE_ADDRESS__)
    static constexpr bool IsSanitized = true;
#else
    static constexpr bool IsSanitized = false;
#endif

    static bool KernelHasLandlock();

    /// Loads the driver of the store first, which could not be found afterwards. Needs an application object.
    /// @param source the file to read. @param folder where the store is made. Either may be missing: the import says
    /// so.
    /// @return failed if the kernel refuses anything but Landlock; the process may then be closed in half.
    static Result<> Enter(const QString& source, const QString& folder, Landlock landlock = Landlock::Use);
};

} // namespace jet
