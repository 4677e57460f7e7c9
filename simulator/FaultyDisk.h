#pragma once

#include <QByteArray>
#include <QString>

#include <array>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

/// The disk under one folder, as a power cut knows it: what was written but not flushed may be there, in part or in
/// another order, or not; names that were not flushed may be the old ones. The file calls of this whole program, those
/// of its libraries too, go through here.
///
/// Subfolders named Log are left alone: nobody relies on them.
class FaultyDisk {
public:
    using Dice = std::mt19937;

    static FaultyDisk& Instance();

    /// Watches a folder, whose files are taken as flushed. One at a time.
    void Begin(const QString& folder);
    void End();

    /// No file can grow.
    void SetFull(bool isFull) { m_isFull = isFull; }
    /// The next flush fails.
    void FailNextFlush() { m_failsFlush = true; }
    /// Something may fail now.
    bool IsFaulty() const { return m_isFull || m_failsFlush || m_isDead || m_life > 0; }

    /// The machine dies at the `changes`-th change of the disk from now on, 1 for the next one: that one and all later
    /// ones fail. 0 lets it live.
    void DieAt(int changes) { m_life = changes; }
    void Die() { m_isDead = true; }
    bool IsDead() const { return m_isDead; }

    /// The machine starts again after its death, with the files that it finds then.
    void Restart(bool wasPowerCut, Dice& dice);

    /// Called where a library sleeps; nobody really does.
    std::function<void(std::chrono::nanoseconds)> OnSleep;

    // What the file calls come to. A negative result is an error number.

    int Open(const char* path, int flags, unsigned mode);
    ssize_t Write(int descriptor, const void* bytes, size_t count, off_t offset);
    int Truncate(int descriptor, off_t size);
    int Flush(int descriptor);
    int Rename(const char* from, const char* to, bool mayReplace);
    int Unlink(const char* path);
    void Closed(int descriptor);

private:
    struct Change {
        qint64 offset;
        QByteArray bytes;
        bool isTruncation;
    };
    struct File {
        QByteArray flushed;
        std::vector<Change> pending;
    };
    /// Names that change together.
    using NameChange = std::vector<std::pair<std::string, int>>;

    bool IsWatched(const std::string& path) const;
    /// Counts a change. @return 0, or why it fails.
    int Allow();
    int* FileOf(int descriptor);
    void Note(const NameChange& change);
    static void Apply(std::map<std::string, int>& names, const NameChange& change);
    static void Apply(QByteArray& content, const Change& change);
    QByteArray AfterPowerCut(const File& file, Dice& dice) const;

    std::string m_folder;
    std::vector<File> m_files;
    std::map<std::string, int> m_names;
    std::map<std::string, int> m_flushedNames;
    std::vector<NameChange> m_nameChanges;
    std::array<int, 4096> m_descriptors{}; ///< file number + 1, or `Folder`
    bool m_isFull = false;
    bool m_failsFlush = false;
    bool m_isDead = false;
    int m_life = 0;
};
