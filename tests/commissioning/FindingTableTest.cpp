#include "commissioning/Findings.h"
#include "commissioning/TableText.h"

#include <gtest/gtest.h>

TEST(FindingTable, WhatIsSavedCanBeReadBackAndIsNoFormula) {
    FindingTable table({{QStringLiteral("Device")}, {QStringLiteral("Address"), true}});
    table.SetRows({{{QStringLiteral("=cmd|' /C calc'!A0"), QStringLiteral("1")}, true},
                   {{QStringLiteral("Quầy \"1\", lầu 2"), QStringLiteral("-2")}},
                   {{QStringLiteral("two\nlines"), QString()}}});
    EXPECT_EQ(tabletext::Csv(table).toStdString(), "\xEF\xBB\xBF"
                                                   "Device,Address\r\n'=cmd|' /C calc'!A0,1\r\n"
                                                   "\"Quầy \"\"1\"\", lầu 2\",-2\r\n\"two\nlines\",\r\n");
    EXPECT_EQ(tabletext::Tabbed(table, {table.index(2, 0), table.index(0, 0)}),
              QStringLiteral("Device\tAddress\n=cmd|' /C calc'!A0\t1\ntwo lines\t\n"));
    EXPECT_EQ(tabletext::Tabbed(table, {}).count(u'\n'), 4);
}

TEST(Findings, NamesAreReadableAndOnlyWhatNeedsSomebodyIsMarked) {
    LineTest::Result result;
    LineTest::Device device;
    device.name = QStringLiteral("Quaày 1");
    device.verdict = LineTest::Verdict::Healthy;
    device.asked = device.answers = 5;
    device.trips.Add(std::chrono::microseconds(12'345));
    result.devices = {device, device, device};
    result.devices[1].verdict = LineTest::Verdict::SilentDisplay;
    result.devices[2].verdict = LineTest::Verdict::Silent;
    const std::vector<FindingTable::Row> rows = findings::TestRows(result);
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_EQ(rows[0].texts.join(u'|'), QStringLiteral("Quầy 1|0||5 of 5|0|0|0|12.3|12.3|12.3|healthy"));
    EXPECT_EQ(rows[0].texts.size(), static_cast<qsizetype>(findings::TestColumns().size()));
    EXPECT_EQ(std::vector({rows[0].isMarked, rows[1].isMarked, rows[2].isMarked}), (std::vector{false, false, true}));
}
