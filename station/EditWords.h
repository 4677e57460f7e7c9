#pragma once

#include "database/EditHistory.h"

#include <QStringList>

/// Edits in words for a user.
namespace editwords {

/// What was changed, a line for each row: "Quầy 5: Address 5 to 7". Directions that were stored anew as they were are
/// no change. @param history knows the names of what is gone.
QStringList Lines(const EditHistory& history, const std::vector<RowChange>& rows);

/// An act in one line: its name or, if it has none, what it has changed.
QString Title(const EditHistory& history, const EditAct& act);

/// A table as its tab is called: "Services"; without regard to case.
QString TableName(const QString& table);

} // namespace editwords
