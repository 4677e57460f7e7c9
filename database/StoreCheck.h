#pragma once

#include "platform/Result.h"

class Sqlite;

/// Looks whether an open file has all tables and columns that the station works with, and whether each column can hold
/// what the station keeps in it. The columns that `UpgradeDatabase` adds, and those that nothing reads, may be missing.
/// A view in place of a table is none. Reads the schema alone.
/// @return a failure that names every table and column that is missing or of a wrong kind.
Result<> CheckTables(const Sqlite& file);
