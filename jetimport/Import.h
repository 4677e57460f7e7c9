#pragma once

#include "platform/Result.h"

#include <QString>

#include <functional>

namespace jet {

/// What the take-over tells while it works.
struct Listener {
    std::function<void(const QString& table, qint64 done, qint64 total)> Progress;
    std::function<void(const QString& text)> Note;
};

/// Takes over the Access/Jet file `source` into a new store `target`, which must not exist yet.
///
/// Every table and column that the station knows is carried over, with further columns of those tables: null stays
/// null, texts, dates and keys stay what they were, a counter goes on behind the highest number that it ever gave. A
/// value outside of what its column takes is kept all the same. Further tables are only named in a note. The four
/// columns of later days are left out of `rData` and `qData` if `rData` lacks them.
///
/// At the end the store is checked, counted and flushed to the disk. Needs an application object.
/// @return the number of rows; failed with what is wrong, and then `target` does not exist.
Result<qint64> Import(const QString& source, const QString& target, const Listener& listener);

} // namespace jet
