#include "tests/database/World.h"
#include "tests/support/RandomEditor.h"

using namespace Qt::StringLiterals;

TEST(EditHistory, UndoAndRedoLeaveWhatCopiesWouldLeave) {
    for (quint32 seed = 1; seed <= 12; ++seed) {
        World world;
        world.Sql(QStringLiteral("PRAGMA synchronous = OFF"));
        RandomEditor editor(world.database, seed);
        EditHistory& history = world.database.History();
        std::vector<QString> before; // of each act that can be undone
        std::vector<QString> after;  // of each act that can be redone
        for (int step = 0; step < 200; ++step) {
            const QString now = DescriptionOf(world.database);
            const int what = editor.Roll(10);
            if (what < 5) {
                editor.Act();
                if (const QString then = DescriptionOf(world.database); then != now) {
                    before.push_back(now);
                    after.clear();
                }
            } else if (what < 8) {
                const auto undone = history.Undo();
                ASSERT_EQ(static_cast<bool>(undone), !before.empty()) << seed << ' ' << step;
                if (undone) {
                    after.push_back(now);
                    ASSERT_EQ(DescriptionOf(world.database), before.back()) << seed << ' ' << step;
                    before.pop_back();
                }
            } else if (what < 9) {
                const auto redone = history.Redo();
                ASSERT_EQ(static_cast<bool>(redone), !after.empty()) << seed << ' ' << step;
                if (redone) {
                    before.push_back(now);
                    ASSERT_EQ(DescriptionOf(world.database), after.back()) << seed << ' ' << step;
                    after.pop_back();
                }
            } else if (editor.Roll(2) == 0) {
                // What can be undone is still there after an end of the program.
                world.database.OpenDatabase(world.store);
            } else if (!before.empty()) {
                const std::vector<EditAct> acts = history.Read(1000).ValueOr({});
                const EditAct& act = acts[static_cast<std::size_t>(editor.Roll(static_cast<int>(acts.size())))];
                if (history.GoBack(act.id, QStringLiteral("back"))) {
                    before.push_back(now);
                    after.clear();
                }
            }
            ASSERT_EQ(history.NextUndo().has_value(), !before.empty());
            ASSERT_EQ(history.NextRedo().has_value(), !after.empty());
        }
        // The whole way back, in one act.
        const std::vector<EditAct> acts = history.Read(1000).ValueOr({});
        ASSERT_FALSE(acts.empty());
        if (!DescriptionOf(world.database).isEmpty()) {
            ASSERT_TRUE(history.GoBack(acts.back().id, {}));
        }
        EXPECT_EQ(DescriptionOf(world.database), QString());
    }
}

TEST(EditHistory, RefusesAStepOverWhatAnotherProgramHasChanged) {
    World world;
    world.Sql(QStringLiteral("INSERT INTO Display (d_Name, d_Address) VALUES ('A', 1), ('B', 2)"));
    const auto set = [&](const char* statement) {
        ASSERT_TRUE(world.database.Edit({}, {Statement{QString::fromLatin1(statement)}}));
    };
    set("UPDATE Display SET d_Name = 'A1' WHERE d_Id = 1");
    set("UPDATE Display SET d_Address = d_Address + 10");
    Sqlite other;
    ASSERT_TRUE(other.Open(world.store));
    ASSERT_TRUE(other.Run({QStringLiteral("UPDATE Display SET d_Address = 50 WHERE d_Id = 2")}));

    const auto undone = world.database.History().Undo();
    ASSERT_FALSE(undone);
    EXPECT_TRUE(undone.Error().contains(QStringLiteral("table Display (B)"))) << qPrintable(undone.Error());
    EXPECT_EQ(world.Values(QStringLiteral("SELECT d_Address FROM Display")), u"11,50"_s);
    // What lies before it is not lost.
    ASSERT_TRUE(world.database.History().Undo());
    EXPECT_EQ(world.Values(QStringLiteral("SELECT d_Name FROM Display")), u"A,B"_s);
}

TEST(EditHistory, TellsWhatAnActHasChangedAndWhatLiesInAnotherStore) {
    World world;
    const auto edit = [&](const char* statement) {
        ASSERT_TRUE(world.database.Edit({}, {Statement{QString::fromLatin1(statement)}})) << statement;
    };
    edit("INSERT INTO Display (d_Name, d_Address) VALUES ('A', 1)");
    const QString copy = world.folder.filePath(QStringLiteral("copy.mdb"));
    world.Sql(QStringLiteral("VACUUM INTO '%1'").arg(copy));
    edit("UPDATE Display SET d_Address = 7");
    edit("DELETE FROM Display");

    EditHistory& history = world.database.History();
    const std::vector<EditAct> acts = history.Read(10).ValueOr({});
    ASSERT_EQ(acts.size(), 3U);
    const std::vector<RowChange> changed = history.Rows(acts[1].id).ValueOr({});
    ASSERT_EQ(changed.size(), 1U);
    ASSERT_EQ(changed[0].fields.size(), 1U);
    EXPECT_EQ(changed[0].fields[0].column, u"d_Address"_s);
    EXPECT_EQ(changed[0].fields[0].before, 1);
    EXPECT_EQ(changed[0].fields[0].after, 7);
    EXPECT_EQ(history.NameOfRow(u"Display", changed[0].key), u"A"_s); // from when it was removed

    const std::vector<RowChange> back = history.CompareWith(copy).ValueOr({});
    ASSERT_EQ(back.size(), 1U);
    EXPECT_EQ(back[0].kind, RowChange::Kind::Added);
    ASSERT_TRUE(history.TakeFrom(copy, QStringLiteral("copy")));
    EXPECT_EQ(world.Values(QStringLiteral("SELECT d_Address FROM Display")), u"1"_s);
    ASSERT_TRUE(history.Undo());
    EXPECT_EQ(world.Values(QStringLiteral("SELECT d_Address FROM Display")), u""_s);
}

TEST(EditHistory, AStoreOfEarlierDaysGetsKeysForItsDirections) {
    World world(false);
    {
        Sqlite file;
        ASSERT_TRUE(file.Open(world.store));
        for (const char* statement :
             {"DROP TABLE [Info-Direction]", "DROP TABLE IF EXISTS EditAct",
              "CREATE TABLE [Info-Direction] (inf_Id SMALLINT, Note TEXT, d_Id SMALLINT, dir_id SMALLINT)",
              "INSERT INTO [Info-Direction] VALUES (9, 'x', 1, 4), (70000, NULL, 2, 5), (9, 'y', 1, 3)"})
            ASSERT_TRUE(file.Run({QString::fromLatin1(statement)})) << statement;
    }
    for (int opened = 0; opened < 2; ++opened) {
        world.database.OpenDatabase(world.store);
        EXPECT_EQ(world.Values(QStringLiteral(
                      "SELECT RowKey||' '||inf_Id||' '||IFNULL(Note,'')||' '||dir_id FROM [Info-Direction]")),
                  u"1 9 x 4,2 70000  5,3 9 y 3"_s);
    }
    ASSERT_TRUE(world.database.Edit({}, {Statement{QStringLiteral("DELETE FROM [Info-Direction]")}}));
    ASSERT_TRUE(world.database.History().Undo());
    EXPECT_EQ(world.Values(QStringLiteral("SELECT Note FROM [Info-Direction]")), u"x,null,y"_s);
    EXPECT_EQ(world.TakeLines(), QStringList());
}

TEST(EditHistory, ADiskThatGetsFullInTheMiddleLeavesNothingOfAnAct) {
    World world;
    world.Sql(QStringLiteral("INSERT INTO Display (d_Name) VALUES ('A')"));
    const QString before = DescriptionOf(world.database);
    world.Sql(QStringLiteral("PRAGMA max_page_count = 1")); // as many as there are now
    int refused = 0;
    const Result<> done = world.database.Edit(QStringLiteral("many"), [&]() -> Result<> {
        // Whoever goes on after a refusal must not write past the act.
        for (int i = 0; i < 600; ++i) {
            const Result<> written = world.database.Run(
                {QStringLiteral("INSERT INTO Display (d_Name) VALUES (?)"), {QString(i % 3 == 0 ? 20'000 : 9, u'x')}});
            refused += written ? 0 : 1;
        }
        return {};
    });
    EXPECT_GT(refused, 500);
    EXPECT_EQ(done.Error(), u"The disk is full."_s);
    EXPECT_EQ(DescriptionOf(world.database), before);
    EXPECT_FALSE(world.database.History().NextUndo());
    world.Sql(QStringLiteral("PRAGMA max_page_count = 100000"));
    EXPECT_TRUE(world.database.Edit({}, {Statement{QStringLiteral("DELETE FROM Display")}}));
    EXPECT_TRUE(world.database.History().Undo());
    EXPECT_EQ(DescriptionOf(world.database), before);
}

TEST(EditHistory, AHugeActIsTakenBackAndADamagedOneDoesNotHoldThoseBeforeIt) {
    World world;
    const auto edit = [&](const char* statement) {
        ASSERT_TRUE(world.database.Edit({}, {Statement{QString::fromLatin1(statement)}})) << statement;
    };
    edit("INSERT INTO Queue (q_Name) VALUES ('A')");
    edit("INSERT INTO Queue (q_Notes) VALUES (printf('%.*c', 17000000, 'x'))");
    edit("UPDATE Queue SET q_Notes='short'");
    EditHistory& history = world.database.History();
    world.Sql(QStringLiteral("UPDATE EditAct SET Changes=x'0000000154' WHERE ID=(SELECT MAX(ID) FROM EditAct)"));
    EXPECT_EQ(history.Undo().Error(), u"What was written down of the edits is damaged."_s);
    world.Sql(QStringLiteral("UPDATE Queue SET q_Notes=CASE q_Id WHEN 2 THEN printf('%.*c', 17000000, 'x') END"));
    EXPECT_TRUE(history.Undo());
    EXPECT_TRUE(history.Undo());
    EXPECT_EQ(world.Values(QStringLiteral("SELECT q_Id FROM Queue")), QString());
}

TEST(EditHistory, WhatStoodInTheWayAtOpeningIsTriedAnewAtTheFirstEdit) {
    World world;
    world.Sql(QStringLiteral("DROP TABLE EditAct"));
    Sqlite other;
    ASSERT_TRUE(other.Open(world.store));
    {
        const Transaction held(other, Transaction::Kind::Write);
        world.database.OpenDatabase(world.store);
        EXPECT_NE(world.database.History().Fault(), QString());
    }
    ASSERT_TRUE(world.database.Edit({}, {Statement{QStringLiteral("INSERT INTO Display (d_Name) VALUES ('A')")}}));
    EXPECT_EQ(world.database.History().Fault(), QString());
    EXPECT_TRUE(world.database.History().Undo());
}

TEST(EditHistory, WhatTheStationItselfWritesStaysWhenACopyIsTakenBack) {
    World world;
    world.Sql(QStringLiteral("INSERT INTO Display (d_Id,d_Name,LastInfo) VALUES (1,'A','old'), (2,'B','old')"));
    const QString copy = world.folder.filePath(QStringLiteral("copy.mdb"));
    world.Sql(QStringLiteral("VACUUM INTO '%1'").arg(copy));
    world.Sql(QStringLiteral("UPDATE Display SET LastInfo='new'"));
    EditHistory& history = world.database.History();
    EXPECT_EQ(history.TakeFrom(copy, QStringLiteral("copy")).Error(), u"The description is what it was then."_s);
    ASSERT_TRUE(world.database.Edit({}, {Statement{QStringLiteral("UPDATE Display SET d_Name='X' WHERE d_Id=1")}}));
    ASSERT_TRUE(history.TakeFrom(copy, QStringLiteral("copy")));
    EXPECT_EQ(world.Values(QStringLiteral("SELECT d_Name||LastInfo FROM Display")), u"Anew,Bnew"_s);
    world.Sql(QStringLiteral("UPDATE Display SET LastInfo='newer'"));
    ASSERT_TRUE(history.Undo());
    EXPECT_EQ(world.Values(QStringLiteral("SELECT d_Name||LastInfo FROM Display")), u"Xnewer,Bnewer"_s);
}
