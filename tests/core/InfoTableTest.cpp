#include "core/clsInfTbl.h"

#include <gtest/gtest.h>

TEST(InfoTable, ShowsTheNewestRowFirstAndBlanksEmptyOnes) {
    clsInfTbl table(0);
    table.Init(3);
    EXPECT_EQ(table.GetStrInf(), QStringLiteral(";<<<;<;;<<<;<;;<<<;<;"));
    table.AddItem(7, 12345, 2);
    table.AddItem(112, 8, 13);
    EXPECT_EQ(table.GetStrInf(), QStringLiteral("00081232345072;<<<;<;"));
    table.AddItem(1, 1, 0);
    table.AddItem(2, 2, 0);
    EXPECT_EQ(table.GetStrInf(), QStringLiteral("000202000010100008123"));

    clsInfTbl matrix(1);
    matrix.Init(1);
    EXPECT_EQ(matrix.GetStrInf(), QStringLiteral("\x16\x16\x16\x16\x16\x16\x1B"));
}

TEST(InfoTable, CountsNewRowsInBitsThatStayPositive) {
    clsInfTbl table(0);
    table.Init(2);
    table.AddItem(1, 1, 1);
    table.AddItem(1, 2, 1);
    EXPECT_EQ(table.InfNewRows(), 3);
    EXPECT_TRUE(table.IsDirty());
    for (int i = 0; i < 20; ++i)
        table.AddItem(1, 3, 1);
    EXPECT_EQ(table.InfNewRows(), 32767);
    table.ClrDirty();
    EXPECT_EQ(table.InfNewRows(), 0);
    EXPECT_FALSE(table.IsDirty());
}

TEST(InfoTable, TakesAStoredTextRowByRow) {
    const struct {
        const char16_t* stored;
        const char16_t* shown;
    } cases[] = {
        {u"100101110020222", u"000200010020221001011"}, // the third group has one digit
        {u"10010111002022", u";<<<;<;10020221001011"},
        {u"12x4567", u";<<<;<;;<<<;<;0012567"},
        {u" 123456", u";<<<;<;;<<<;<;;<<<;<;"},
    };
    for (const auto& [stored, shown] : cases) {
        clsInfTbl table(0);
        table.Init(3);
        table.AddStringItems(QString::fromUtf16(stored));
        EXPECT_TRUE(table.IsDirty());
        EXPECT_EQ(table.GetStrInf(), QString::fromUtf16(shown));
    }
    clsInfTbl table(0);
    table.Init(1);
    table.AddItem(3, 4, 1);
    table.AddStringItems(QString());
    EXPECT_EQ(table.GetStrInf(), QStringLiteral("0004031"));
}

TEST(InfoTable, WithoutRowsTakesNothing) {
    clsInfTbl table(0);
    table.Init(0);
    table.AddItem(1, 1, 1);
    table.AddStringItems(QStringLiteral("1234567"));
    EXPECT_TRUE(table.GetStrInf().isEmpty());
}
