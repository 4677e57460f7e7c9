#include "station/ListTransfer.h"

#include "tests/database/World.h"
#include "tests/support/RandomEditor.h"

namespace {

using lists::List;
using lists::Match;
using Table = std::vector<QStringList>;

Table ExportOf(const World& world, List list) {
    auto table = lists::Export(world.database, list);
    EXPECT_TRUE(table) << qPrintable(table.Error());
    return table ? *table : Table();
}

QString FaultsOf(const lists::Import& import) {
    QStringList faults{import.error};
    for (const lists::Fault& fault : import.faults)
        faults += QStringLiteral("%1,%2: %3").arg(fault.row).arg(fault.column).arg(fault.why);
    return faults.join(u'\n').trimmed();
}

void FillHall(World& world) {
    world.Sql(
        QStringLiteral("INSERT INTO Queue (q_Number,q_Name,q_On,q_Button) VALUES (1,'Göûi tieàn',1,1), (2,'B',0,2)"));
    world.Sql(QStringLiteral("INSERT INTO Display (d_Number,d_Address,d_Name,d_On,d_Type,d_HubId) VALUES "
                             "(1,1,'Quaày 1',1,0,0), (2,2,'Quaày 2',1,0,4), (5,40,'Baûng',1,2,0), (9,64,'Hub',1,3,0)"));
    world.Sql(QStringLiteral("INSERT INTO [Queue-Display] (q_Id,d_Id) VALUES (1,1),(2,2)"));
    world.Sql(QStringLiteral("INSERT INTO ScanPlan (d_Id,[Order]) VALUES (2,1),(1,2)"));
    world.Sql(QStringLiteral("INSERT INTO [Info-Direction] (inf_Id,d_Id,Dir_Id) VALUES (3,1,2)"));
}

} // namespace

TEST(ListTransfer, WhatWasExportedMakesTheSameHallInAnEmptyStore) {
    for (quint32 seed = 0; seed < 30; ++seed) {
        World from;
        from.Sql(QStringLiteral("PRAGMA synchronous = OFF"));
        FillHall(from);
        // Names that several rows have are told by their numbers; those must tell them apart.
        RandomEditor editor(from.database, seed);
        for (int i = 0; i < (seed == 0 ? 0 : 12); ++i)
            editor.Act();
        for (const char* table : {"Display", "Queue"}) {
            const QString prefix = QString::fromLatin1(table) == u"Queue" ? QStringLiteral("q_") : QStringLiteral("d_");
            from.Sql(QStringLiteral("UPDATE %1 SET %2Number=100+rowid, %2Name='N'||IFNULL(%2Name,'')||' x'||rowid")
                         .arg(QLatin1String(table), prefix));
        }
        from.Sql(QStringLiteral("DELETE FROM [Queue-Display] WHERE q_Id NOT IN (SELECT q_Id FROM Queue) OR d_Id NOT IN "
                                "(SELECT d_Id FROM Display)"));
        from.Sql(QStringLiteral("DELETE FROM ScanPlan WHERE d_Id NOT IN (SELECT d_Id FROM Display)"));
        from.Sql(
            QStringLiteral("DELETE FROM [Info-Direction] WHERE d_Id NOT IN (SELECT d_Id FROM Display) OR inf_Id NOT "
                           "IN (SELECT d_Id FROM Display)"));
        from.Sql(QStringLiteral("DELETE FROM [Info-Direction] WHERE RowKey NOT IN (SELECT MIN(RowKey) FROM "
                                "[Info-Direction] GROUP BY inf_Id,d_Id)"));
        // What the windows refuse is refused here as well.
        const auto of = [](int type) { return QStringLiteral("(SELECT d_Id FROM Display WHERE d_Type=%1)").arg(type); };
        from.Sql(QStringLiteral("DELETE FROM [Queue-Display] WHERE d_Id NOT IN ") + of(model::Counter));
        from.Sql(QStringLiteral("DELETE FROM [Info-Direction] WHERE d_Id NOT IN %1 OR inf_Id NOT IN %2")
                     .arg(of(model::Counter), of(model::Display)));
        from.Sql(QStringLiteral("UPDATE Display SET d_HubId=0 WHERE d_HubId=d_Id OR d_HubId NOT IN ") + of(model::Hub));
        World to;
        to.Sql(QStringLiteral("PRAGMA synchronous = OFF"));
        // Hubs are named by objects that come in the same table, so their column comes with the members.
        for (const List list : lists::AllLists) {
            Table table = ExportOf(from, list);
            if (list == List::Objects) {
                for (QStringList& row : table)
                    row.removeLast();
            }
            const lists::Import import = lists::Take(to.database, {list, Match::None, table});
            ASSERT_EQ(FaultsOf(import), QString()) << seed << ' ' << qPrintable(lists::NameOf(list));
        }
        for (const List list : lists::AllLists) {
            Table expected = ExportOf(from, list);
            Table found = ExportOf(to, list);
            const auto sort = [](Table& table) {
                for (QStringList& row : table)
                    row.sort();
                std::sort(table.begin(), table.end());
                table.erase(std::unique(table.begin(), table.end()), table.end());
            };
            if (list == List::Services || list == List::Objects) {
                for (Table* table : {&expected, &found}) {
                    for (QStringList& row : *table)
                        row.removeFirst();
                }
            }
            sort(expected);
            sort(found);
            ASSERT_EQ(found, expected) << seed << ' ' << qPrintable(lists::NameOf(list));
        }
        // Once more over itself by the keys: nothing is changed.
        const QString before = DescriptionOf(from.database);
        for (const List list : {List::Services, List::Objects}) {
            const lists::Import import = lists::Take(from.database, {list, Match::Key, ExportOf(from, list)});
            ASSERT_EQ(FaultsOf(import), QString());
            ASSERT_EQ(import.added, 0);
        }
        ASSERT_EQ(DescriptionOf(from.database), before) << seed;
    }
}

TEST(ListTransfer, ARefusedCellRefusesTheWholeTableAndIsNamed) {
    World world;
    FillHall(world);
    const QString before = DescriptionOf(world.database);
    const struct {
        List list;
        Match match;
        Table table;
        const char* faults;
    } cases[] = {
        {List::Objects,
         Match::Number,
         {{u"Number"_qs, u"address"_qs, u"Type"_qs, u"Active"_qs},
          {u"1"_qs, u"300"_qs},
          {u"7"_qs, u"x"_qs, u"Clock"_qs, u"maybe"_qs}},
         "1,1: Address takes a whole number from 0 to 255.\n2,1: \"x\" is no whole number.\n2,2: \"Clock\" is none of "
         "Counter, Printer, Display, Hub.\n2,3: \"maybe\" is neither Yes nor No."},
        {List::Services,
         Match::Name,
         {{u"Number"_qs}, {u"1"_qs}},
         "0,-1: The first row has no column \"Service Name\"."},
        {List::Services,
         Match::Key,
         {{u"ID"_qs, u"Number"_qs}, {u"77"_qs, u"1"_qs}},
         "1,-1: There is no row with ID 77."},
        {List::Assignments,
         Match::None,
         {{u"Service"_qs, u"Counter"_qs}, {u"B"_qs, u"Quầy 1"_qs}, {u"C"_qs, u"Quầy 9"_qs}, {u"1"_qs, {}}},
         "2,0: There is no service \"C\".\n2,1: There is no object \"Quầy 9\".\n3,-1: A cell is empty."},
        {List::Directions,
         Match::None,
         {{u"Display"_qs, u"Counter"_qs, u"Direction"_qs}, {u"Bảng"_qs, u"Quầy 2"_qs, u"North"_qs}},
         "1,2: \"North\" is none of None, Left, Right, Up, Down."},
        {List::Directions,
         Match::None,
         {{u"Display"_qs, u"Counter"_qs, u"Direction"_qs}, {u"Quầy 1"_qs, u"#3"_qs, u"Up"_qs}},
         "1,0: \"Quầy 1\" is no Display.\n1,1: \"#3\" is no Counter."},
        {List::Objects,
         Match::Number,
         {{u"Number"_qs, u"HUB"_qs}, {u"7"_qs, {}}, {u"7"_qs, {}}, {u"9"_qs, u"Hub"_qs}, {u"1"_qs, u"2"_qs}},
         "2,-1: Row 1 has this Number too.\n3,-1: A hub cannot stand behind itself.\n4,1: \"2\" is no Hub."},
    };
    for (const auto& one : cases) {
        for (const bool isReal : {false, true}) {
            const lists::Incoming incoming{one.list, one.match, one.table};
            const lists::Import import =
                isReal ? lists::Take(world.database, incoming) : lists::Preview(world.database, incoming);
            EXPECT_EQ(FaultsOf(import).toStdString(), one.faults);
        }
    }
    const lists::Import seen = lists::Preview(
        world.database,
        {List::Objects,
         Match::Number,
         {{u"Number"_qs, u"Counter Name"_qs, u"Colour"_qs}, {u"1"_qs, u"Quầy A"_qs}, {u"3"_qs, u"Quầy 3"_qs}}});
    EXPECT_EQ(seen.added, 1);
    EXPECT_EQ(seen.changed, 1);
    EXPECT_EQ(seen.ignored, QStringList{u"Colour"_qs});
    EXPECT_EQ(DescriptionOf(world.database), before) << "a preview does nothing";
    EXPECT_FALSE(world.database.History().NextUndo());
}

TEST(ListTransfer, ANameThatIsAnothersNumberIsNotTakenForIt) {
    World world;
    world.Sql(QStringLiteral("INSERT INTO Queue (q_Id,q_Number,q_Name) VALUES (1,1,'A')"));
    world.Sql(QStringLiteral("INSERT INTO Display (d_Id,d_Number,d_Name,d_Type) VALUES (1,5,'TV',0), (2,6,'TV',0), "
                             "(3,7,'5',0), (4,8,'6',0)"));
    world.Sql(QStringLiteral("INSERT INTO [Queue-Display] (q_Id,d_Id) VALUES (1,1), (1,3)"));
    const QString before = DescriptionOf(world.database);
    const Table table = ExportOf(world, List::Assignments);
    EXPECT_EQ(table, (Table{{u"Service"_qs, u"Counter"_qs}, {u"A"_qs, u"#1"_qs}, {u"A"_qs, u"5"_qs}}));
    EXPECT_EQ(FaultsOf(lists::Take(world.database, {List::Assignments, Match::None, table})), QString());
    EXPECT_EQ(DescriptionOf(world.database), before);
}
