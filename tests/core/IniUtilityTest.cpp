#include "core/IniUtility.h"

#include "tests/support/Files.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

namespace {

class IniUtilityTest : public ::testing::Test {
protected:
    QString Read(const QString& section, const QString& key) const {
        QString value = QStringLiteral("(default)");
        const bool found = m_ini.ReadIni(section, key, value);
        EXPECT_EQ(found, value != QStringLiteral("(default)"));
        return value;
    }

    QTemporaryDir m_folder;
    IniUtility m_ini{m_folder.filePath(QStringLiteral("Tallora.ini"))};
};

} // namespace

TEST_F(IniUtilityTest, ReadsByTheRulesOfIniFiles) {
    WriteFile(m_ini.IniPath, "stray=1\n"
                             "[First]\n"
                             "; key=comment\n"
                             "key = one \n"
                             "KEY=two\n"
                             "quoted=\" a b \"\r\n"
                             "single='x\n"
                             "empty=\n"
                             "equals=a=b\n"
                             "utf8=\xC3\xA9\n"
                             "ansi=\xE9\x80\n"
                             "[ second ]\n"
                             "key=three\n"
                             "[FIRST]\n"
                             "only=again\n"
                             "key2=no end");
    const struct {
        const char16_t* section;
        const char16_t* key;
        const char16_t* value;
    } cases[] = {
        {u"first", u"Key", u"one"},        {u"FIRST", u" key ", u"one"},         {u"First", u"quoted", u" a b "},
        {u"First", u"single", u"'x"},      {u"First", u"empty", u"(default)"},   {u"First", u"equals", u"a=b"},
        {u"First", u"utf8", u"\u00E9"},    {u"First", u"ansi", u"\u00E9\u20AC"}, {u"Second", u"key", u"three"},
        {u"First", u"only", u"(default)"}, {u"", u"stray", u"(default)"},        {u"Third", u"key", u"(default)"},
    };
    for (const auto& [section, key, value] : cases)
        EXPECT_EQ(Read(QString::fromUtf16(section), QString::fromUtf16(key)), QString::fromUtf16(value));
}

TEST_F(IniUtilityTest, ReadsAtMost127CharactersOfAValue) {
    WriteFile(m_ini.IniPath, "[s]\nk=" + QByteArray(200, 'v') + "\n");
    EXPECT_EQ(Read(QStringLiteral("s"), QStringLiteral("k")), QString(127, u'v'));
}

TEST_F(IniUtilityTest, AByteOrderMarkDoesNotHideTheFirstSection) {
    WriteFile(m_ini.IniPath, "\xEF\xBB\xBF[s]\nk=v\n");
    EXPECT_EQ(Read(QStringLiteral("s"), QStringLiteral("k")), QStringLiteral("v"));
    EXPECT_TRUE(m_ini.WriteIni(QStringLiteral("s"), QStringLiteral("k"), QStringLiteral("w")));
    EXPECT_EQ(ReadFile(m_ini.IniPath), "\xEF\xBB\xBF[s]\nk=w\n");
}

TEST_F(IniUtilityTest, AMissingFileReadsAsEmptyAndIsMadeByWriting) {
    EXPECT_EQ(Read(QStringLiteral("s"), QStringLiteral("k")), QStringLiteral("(default)"));
    EXPECT_TRUE(m_ini.WriteIni(QStringLiteral("s"), QStringLiteral("k"), QStringLiteral("v")));
    EXPECT_EQ(ReadFile(m_ini.IniPath), "[s]\nk=v\n");
}

TEST_F(IniUtilityTest, WritingLeavesEverythingElseAsItIs) {
    const QByteArray before =
        "; head\r\n\r\n[Comm]\r\nBaud=9600 \r\nDevice=COM1\r\n\r\n[x]\r\n\xE9=\x80\r\nMaxTxFail=3";
    WriteFile(m_ini.IniPath, before);
    EXPECT_TRUE(m_ini.WriteIni(QStringLiteral("comm"), QStringLiteral("device"), QStringLiteral("ttyUSB0")));
    EXPECT_TRUE(m_ini.WriteIni(QStringLiteral("Comm"), QStringLiteral("New"), QStringLiteral("\u1EBF")));
    EXPECT_TRUE(m_ini.WriteIni(QStringLiteral("X"), QStringLiteral("maxTxFail "), QStringLiteral("4")));
    EXPECT_TRUE(m_ini.WriteIni(QStringLiteral("y"), QStringLiteral("m_TicketDigits "), QStringLiteral("5")));
    EXPECT_EQ(ReadFile(m_ini.IniPath),
              "; head\r\n\r\n[Comm]\r\nBaud=9600 \r\nDevice=ttyUSB0\r\nNew=\xE1\xBA\xBF\r\n\r\n"
              "[x]\r\n\xE9=\x80\r\nMaxTxFail=4\r\n[y]\r\nm_TicketDigits =5\r\n");
    EXPECT_EQ(Read(QStringLiteral("Comm"), QStringLiteral("new")), QStringLiteral("\u1EBF"));
}

TEST_F(IniUtilityTest, ARefusedWriteKeepsTheOldFile) {
    const IniUtility nowhere(m_folder.filePath(QStringLiteral("no/such/folder.ini")));
    EXPECT_FALSE(nowhere.WriteIni(QStringLiteral("s"), QStringLiteral("k"), QStringLiteral("v")));
    const IniUtility folder(m_folder.path());
    EXPECT_FALSE(folder.WriteIni(QStringLiteral("s"), QStringLiteral("k"), QStringLiteral("v")));
}

TEST(DecodePassword, SubtractsTheSquareOfThePlace) {
    EXPECT_EQ(IniUtility::DecodePassword(QStringLiteral("bfl")), QStringLiteral("abc"));
    EXPECT_EQ(IniUtility::DecodePassword(QString()), QString());
}
