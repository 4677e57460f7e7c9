#pragma once

#include "platform/Result.h"
#include "tickets/VniText.h"

#include <QStringList>

#include <vector>

class Database;

/// The lists of the description as tables of text, for spreadsheets: out, and in again. Texts are Unicode; objects and
/// services are named by their names or, where that says which, by their numbers.
namespace lists {

enum class List : quint8 {
    Services,    ///< ID, Service Name, Number, Description, Series, Button, Active, Route To, Notes
    Objects,     ///< ID, Counter Name, Number, Address, Type, Active, HUB
    Assignments, ///< Service, Counter
    ScanPlan,    ///< Order, Object
    Directions,  ///< Display, Counter, Direction
    HubMembers,  ///< HUB, Device
};

inline constexpr List AllLists[] = {List::Services, List::Objects,    List::Assignments,
                                    List::ScanPlan, List::Directions, List::HubMembers};

/// What a list is called: "Services".
QString NameOf(List list);

/// The titles of the columns, then the rows. A failure is what the store said.
Result<std::vector<QStringList>> Export(const Database& database, List list);

/// How a row of a table finds its row of the store; of services and objects alone, since a link is there or not.
enum class Match : quint8 {
    Key,    ///< by ID; a row without one is new
    Number, ///< by Number
    Name,   ///< by name
    None,   ///< all rows are new
};

/// A cell that cannot be taken.
struct Fault {
    int row = 0;     ///< of the table, 0 for the titles
    int column = -1; ///< -1 for the whole row
    QString why;
};

/// What an import does, or has done.
struct Import {
    int added = 0;
    int changed = 0;           ///< rows that are there already, changed or not
    QStringList ignored;       ///< titles of columns that the list does not have
    std::vector<Fault> faults; ///< if there are any, nothing is done
    QString error;             ///< what the store said to all of it
};

/// A table that is to come in.
struct Incoming {
    List list = List::Services;
    Match match = Match::Key;
    /// The first row holds the titles, in any order and without regard to case; a column that is missing keeps what it
    /// holds.
    std::vector<QStringList> table;
    vni::Origin origin = vni::Origin::Unicode; ///< what is known of its letters
};

/// Looks what an import would do, without doing it.
Import Preview(Database& database, const Incoming& incoming);

/// Imports a table as one act that can be undone, all of it or nothing.
Import Take(Database& database, const Incoming& incoming);

} // namespace lists
