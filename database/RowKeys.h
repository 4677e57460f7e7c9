#pragma once

#include "platform/Result.h"

class Sqlite;

/// Gives every table that has `schema::Kind::OwnKey` and lacks a key one: only rows that a key tells apart can be taken
/// back when they were changed. Rows, their order, and columns that the schema does not know stay. Each table is done
/// whole or not at all; nothing is written where all is there.
Result<> GiveRowKeys(const Sqlite& file);
