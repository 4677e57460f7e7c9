#include "platform/DelimitedText.h"

#include <QRandomGenerator>

#include <gtest/gtest.h>

TEST(DelimitedText, FindsEncodingAndSeparator) {
    const struct {
        QByteArray bytes;
        QString encoding;
        QChar separator;
        QStringList last;
    } cases[] = {
        {"a,b\nx,\"1,2\"\n", u"UTF-8"_qs, u',', {u"x"_qs, u"1,2"_qs}},
        {"\xEF\xBB\xBF"
         "a;b;c\r\nQu\xE1\xBA\xA7y;;\"say \"\"no\"\"\"",
         u"UTF-8"_qs,
         u';',
         {u"Qu\u1EA7y"_qs, {}, u"say \"no\""_qs}},
        {"a\tb\n\"two\nlines\"\t2\n\t\n", u"UTF-8"_qs, u'\t', {u"two\nlines"_qs, u"2"_qs}},
        {QByteArray("\xFF\xFE"
                    "a\0;\0b\0\n\0\xA7\x1E;\0x\0",
                    16),
         u"UTF-16"_qs,
         u';',
         {u"\u1EA7"_qs, u"x"_qs}},
        // As spreadsheets on a Vietnamese and on a Western computer save.
        {"Name,No\nQu\xE2\xCCy s\xF4\xEC 1,1", u"Windows-1258"_qs, u',', {u"Qu\u1EA7y s\u1ED1 1"_qs, u"1"_qs}},
        {"Name,No\nQua\xE0y,1", u"Windows-1252"_qs, u',', {u"Qua\u00E0y"_qs, u"1"_qs}},
        {"N,a\n\xD0\xE3ng ky\xEC,1", u"Windows-1258"_qs, u',', {u"\u0110\u0103ng k\u00FD"_qs, u"1"_qs}},
        {"N,a\nqu\xEC nhie\xE0u,1", u"Windows-1252"_qs, u',', {u"qu\u00EC nhie\u00E0u"_qs, u"1"_qs}},
        {"\r\ra;b\rc;d\r", u"UTF-8"_qs, u';', {u"c"_qs, u"d"_qs}},
        {"a,\"b\nc,d", u"UTF-8"_qs, u',', {u"c"_qs, u"d"_qs}},
    };
    for (const auto& one : cases) {
        const auto table = delimited::Read(one.bytes);
        ASSERT_TRUE(table) << one.bytes.constData();
        EXPECT_EQ(table->encoding, one.encoding) << one.bytes.constData();
        EXPECT_EQ(table->separator, one.separator) << one.bytes.constData();
        EXPECT_EQ(table->rows.back().join(u'|').toStdString(), one.last.join(u'|').toStdString());
    }
    EXPECT_FALSE(delimited::Read("\n\r\n,,\n"));
    EXPECT_FALSE(delimited::Read(QByteArray(delimited::LargestText + 1, 'x')));
}

TEST(DelimitedText, WhatIsWrittenIsReadAgain) {
    QRandomGenerator random(7);
    const QString signs = u"ab1,;\t\"\n 'ầ"_qs;
    for (int world = 0; world < 2'000; ++world) {
        std::vector<QStringList> rows{{u"Title"_qs, u"B,"_qs}};
        for (int row = random.bounded(6); row > 0; --row) {
            QStringList& cells = rows.emplace_back(QStringList{u"x"_qs});
            for (int cell = random.bounded(4); cell > 0; --cell) {
                QString text;
                for (int sign = random.bounded(8); sign > 0; --sign)
                    text += signs[random.bounded(signs.size())];
                cells += text.startsWith(u'\t') ? QString() : text;
            }
        }
        const auto read = delimited::Read(delimited::Write(rows));
        ASSERT_TRUE(read);
        ASSERT_EQ(read->rows, rows) << delimited::Write(rows).constData();
    }
    EXPECT_EQ(delimited::Write({{u"=1+1"_qs, u"-5"_qs, u"@x"_qs}}), "\xEF\xBB\xBF'=1+1,-5,'@x\r\n");
}
