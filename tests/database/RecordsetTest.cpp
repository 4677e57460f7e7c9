#include "database/Schema.h"
#include "tests/database/World.h"

namespace {

class RecordsetTest : public ::testing::Test {
protected:
    RecordsetTest() {
        for (const char* row : {"(10, 1, 'a')", "(20, 2, 'b')", "(30, 1, 'c')", "(40, NULL, 'd')"})
            world.Sql(QStringLiteral("INSERT INTO Display (d_Id, d_Number, d_Name) VALUES ") +
                      QString::fromLatin1(row));
    }

    bool Open(const char* source, Recordset::Cursor cursor = Recordset::Cursor::Keyset) {
        return rows.Open(world.database.Connection(), QString::fromLatin1(source), {}, cursor);
    }

    QString Walk() {
        QString names;
        for (; !rows.IsEof(); rows.MoveNext())
            names += rows.Field(u"D_NAME").toString();
        return names;
    }

    World world;
    Recordset rows;
};

TEST_F(RecordsetTest, WalksFiltersAndFindsAlikeOverTableAndQuery) {
    for (const char* source : {"[Display]", "SELECT * FROM Display ORDER BY d_Id"}) {
        ASSERT_TRUE(Open(source));
        EXPECT_EQ(rows.RecordCount(), 4);
        EXPECT_EQ(Walk(), QStringLiteral("abcd"));
        EXPECT_FALSE(rows.IsBof());
        EXPECT_FALSE(rows.Find(u"d_Id", 10)) << "behind the end nothing is found";

        rows.MoveFirst();
        EXPECT_TRUE(rows.Find(u"d_number", 1) && rows.Field(u"d_Id") == 10) << "the current row counts";
        rows.MoveNext();
        EXPECT_TRUE(rows.Find(u"d_number", 1) && rows.Field(u"d_Id") == 30);
        rows.MoveNext();
        EXPECT_FALSE(rows.Find(u"d_number", 2)) << "only forward";
        EXPECT_TRUE(rows.IsEof());
        EXPECT_FALSE(rows.Field(u"d_Id").isValid());

        EXPECT_TRUE(rows.Filter(u"d_Number", 1));
        EXPECT_EQ(rows.RecordCount(), 2);
        Recordset clone = rows.Clone();
        EXPECT_EQ(clone.RecordCount(), 4);
        EXPECT_EQ(Walk(), QStringLiteral("ac"));
        EXPECT_TRUE(rows.Filter(u"d_Number", 7));
        EXPECT_TRUE(rows.IsEof() && rows.IsBof());
        EXPECT_TRUE(rows.ClearFilter());
        EXPECT_EQ(Walk(), QStringLiteral("abcd"));
        EXPECT_FALSE(rows.Filter(u"d_Nobody", 1));
        EXPECT_EQ(rows.LastError(), QStringLiteral("no such column: d_Nobody"));
    }
}

TEST_F(RecordsetTest, EditsTheRowsOfATable) {
    ASSERT_TRUE(Open("[Display]") && rows.Find(u"d_Id", 20));
    EXPECT_TRUE(rows.SetField(u"D_Name", QStringLiteral("it's")));
    EXPECT_EQ(rows.Field(u"d_name"), QStringLiteral("it's"));
    EXPECT_TRUE(rows.Update());
    EXPECT_TRUE(rows.SetField(u"d_Number", 300));
    EXPECT_FALSE(rows.Update());
    EXPECT_EQ(schema::ReadableError(rows.LastError()), QStringLiteral("d_Number takes a whole number from 0 to 255."));
    EXPECT_EQ(rows.Field(u"d_Number"), 300) << "what was typed is lost";
    rows.CancelUpdate();
    EXPECT_EQ(rows.Field(u"d_Number"), 2);

    EXPECT_TRUE(rows.AddNew() && rows.SetField(u"d_Name", QStringLiteral("n")) && rows.Update());
    EXPECT_EQ(rows.Field(u"d_Id"), 41);
    EXPECT_EQ(rows.Field(u"d_HubId"), 0) << "the table's default is not seen";
    rows.MoveFirst();
    EXPECT_TRUE(rows.Delete());
    EXPECT_FALSE(rows.Field(u"d_Id").isValid());
    EXPECT_FALSE(rows.Update());
    rows.MoveNext();
    EXPECT_EQ(Walk(), QStringLiteral("it'scdn"));
}

TEST_F(RecordsetTest, TellsThatARowIsGoneWhereItWouldBeChanged) {
    ASSERT_TRUE(Open("[Display]"));
    EXPECT_TRUE(rows.SetField(u"d_Name", QStringLiteral("x")));
    world.Sql(QStringLiteral("DELETE FROM Display WHERE d_Id=10"));
    EXPECT_FALSE(rows.Update());
    EXPECT_EQ(rows.LastError(), QStringLiteral("The row is not there any more."));
    EXPECT_FALSE(rows.Delete());
    rows.MoveNext();
    EXPECT_EQ(Walk(), QStringLiteral("bcd"));
}

TEST_F(RecordsetTest, ShowsTheRowsOfAQueryAsTheyWereUntilRequery) {
    ASSERT_TRUE(Open("SELECT d_Name FROM Display ORDER BY d_Id"));
    EXPECT_TRUE(rows.Filter(u"d_Name", QStringLiteral("z")));
    world.Sql(QStringLiteral("UPDATE Display SET d_Name='z' WHERE d_Id=20"));
    rows.MoveFirst();
    EXPECT_EQ(Walk(), QString());
    EXPECT_TRUE(rows.Requery());
    EXPECT_EQ(Walk(), QStringLiteral("z"));
    EXPECT_FALSE(rows.SetField(u"d_Name", QStringLiteral("x")));
    world.Sql(QStringLiteral("ALTER TABLE Display RENAME TO Other"));
    EXPECT_FALSE(rows.Requery());
    EXPECT_EQ(rows.LastError(), QStringLiteral("no such table: Display"));
}

TEST_F(RecordsetTest, StreamsAQueryForwardOnly) {
    ASSERT_TRUE(Open("SELECT * FROM Display ORDER BY d_Id DESC", Recordset::Cursor::ForwardOnly));
    EXPECT_TRUE(rows.MoveFirst());
    EXPECT_EQ(rows.RecordCount(), -1);
    EXPECT_TRUE(rows.Find(u"d_Number", 1) && rows.Field(u"d_Id") == 30);
    EXPECT_TRUE(rows.Find(u"d_Number", 1) && rows.Field(u"d_Id") == 30) << "the current row counts";
    EXPECT_EQ(Walk(), QStringLiteral("cba"));
    world.Sql(QStringLiteral("DROP TABLE Display"));
}

} // namespace
