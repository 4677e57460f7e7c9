#include "platform/LeadingNumber.h"

#include <gtest/gtest.h>

#include <QString>

TEST(LeadingNumber, ReadsWhatTheTextBeginsWith) {
    const struct {
        const char16_t* text;
        int integer;
        int typed;
    } cases[] = {
        {u"12", 12, 12},
        {u"12abc", 12, 12},
        {u"abc", 0, 0},
        {u"", 0, 0},
        {u"  -7 ", -7, -7},
        {u"+3", 3, 3},
        {u"- 3", 0, 0},
        {u"10.4", 10, 10},
        {u"10.6", 10, 11},
        {u"0.5", 0, 0},
        {u"1.5", 1, 2},
        {u"2.5", 2, 2},
        {u".7", 0, 1},
        {u".", 0, 0},
        {u"1e3", 1, 1},
        {u"99999999999", 2147483647, 2147483647},
        {u"-99999999999", -2147483648, -2147483648},
    };
    for (const auto& [text, integer, typed] : cases) {
        SCOPED_TRACE(QString::fromUtf16(text).toStdString());
        EXPECT_EQ(number::LeadingInteger(QStringView(text)), integer);
        EXPECT_EQ(number::TypedNumber(QStringView(text)), typed);
    }
}
