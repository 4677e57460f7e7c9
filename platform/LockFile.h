#pragma once

#include "platform/Result.h"

/// A file that one process holds. What a killed process held is free: an old file under the name means nothing.
class LockFile {
public:
    LockFile() = default;
    ~LockFile() { Release(); }
    LockFile(const LockFile&) = delete;
    LockFile& operator=(const LockFile&) = delete;

    /// Makes the file if it is missing, and holds it; what it holds is left alone. Never waits.
    /// @return a failure if another process, or another object of this one, holds it, or if it cannot be made.
    Result<> Take(const QString& path);
    /// The last `Take` failed because somebody else holds the file.
    bool IsElsewhere() const { return m_isElsewhere; }
    /// For reading and writing; -1 while not held.
    int Descriptor() const { return m_descriptor; }

    /// Gives the file another name, in place of what bears it, and lets go of it.
    Result<> RenameTo(const QString& path);
    /// Removes the file and lets go of it; nothing if it is not held.
    void Release();

private:
    void Close();

    QByteArray m_path;
    int m_descriptor = -1;
    bool m_isElsewhere = false;
};
