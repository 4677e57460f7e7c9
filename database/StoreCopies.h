#pragma once

#include "platform/Result.h"

#include <QString>

#include <vector>

class Clock;
class Database;

/// A whole copy of the store as it was.
struct StoreCopy {
    QString path;
    QString moment; ///< "yyyy-MM-dd hh:mm:ss", local time
    QString before; ///< what was about to be done
};

/// Copies of the store from before what cannot be taken back row by row, or what a user may want back as a whole:
///
///     Snapshots/NAME yyyy-MM-dd hh-mm-ss BEFORE.mdb    beside the store NAME.mdb
///
/// The last 20 of each store stay.
class StoreCopies {
public:
    static constexpr int Most = 20;

    /// The references must outlive this.
    StoreCopies(const Database& database, const Clock& clock)
        : m_database(database)
        , m_clock(clock) {}

    /// Copies the open store, whatever its name. @return success only once the copy lasts through a power cut.
    /// @param before what is about to be done, without signs that a file name cannot have.
    Result<> Take(const QString& before) const;

    /// The copies of the open store, the newest first.
    std::vector<StoreCopy> List() const;

private:
    QString Folder() const;
    /// @param made the copy that was made just now, which stays whatever its date is.
    void RemoveOld(const QString& made) const;

    const Database& m_database;
    const Clock& m_clock;
};
