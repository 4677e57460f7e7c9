#include "tickets/FormCompiler.h"

#include "tests/support/Files.h"
#include "tickets/Bitmap24.h"
#include "tickets/LogoCells.h"
#include "tickets/VniTable.h"
#include "tickets/VniText.h"

#include <QTemporaryDir>

namespace {

constexpr PrinterFamily Db9{};
constexpr PrinterFamily Db25{.PrinterDB25 = true};
constexpr PrinterFamily T81{.PrinterT81 = true, .PrinterDB25 = true};
constexpr PrinterFamily ZoneRich{.PrinterZoneRich = true};
constexpr CharacterFormat Plain{};

/// A letter table in which letter i has i modulo 9 columns with the numbers of their places.
QByteArray TableFile() {
    QByteArray file;
    for (int i = 0; i < VniTable::Records; ++i) {
        const vni::Letter& letter = vni::Letters()[static_cast<std::size_t>(i)];
        QByteArray record(VniTable::RecordLength, '\0');
        record[0] = letter.second ? static_cast<char>(letter.first) : '\0';
        record[1] = static_cast<char>(letter.second ? letter.second : letter.first);
        record[2] = static_cast<char>(i % 9);
        for (int column = 0; column < i % 9; ++column)
            record[3 + column] = static_cast<char>(column + 1);
        file += record;
    }
    return file;
}

class FormCompilerTest : public ::testing::Test {
protected:
    FormCompilerTest() {
        WriteFile(Path("VNIl.dat"), TableFile());
        EXPECT_TRUE(m_letters.LoadVNITable(Path("VNIl.dat")));
    }

    QString Path(const char* name) const { return m_folder.filePath(QString::fromLatin1(name)); }

    /// Paragraphs in one format each.
    static TicketDocument Document(const std::vector<std::pair<QString, CharacterFormat>>& paragraphs) {
        TicketDocument document{{}};
        for (const auto& [text, format] : paragraphs) {
            document.paragraphs.push_back({{}, Alignment::Left, format});
            document.paragraphs.back().Append(text, format);
        }
        return document;
    }

    static TicketDocument Document(const QString& text) { return Document({{text, Plain}}); }

    CompilerResult Compile(const TicketDocument& document, const PrinterFamily& family = Db9) const {
        return CompileForm(document, m_folder.path(), family, m_letters, 1, 4);
    }

    /// The body of a form of the DB9 family: what stands between start state and end.
    QByteArray Body(const TicketDocument& document) const {
        const QByteArray form = Compile(document).form.value_or(CompiledForm()).PrnForm;
        return form.size() < 27 ? QByteArray("too short") : form.sliced(19, form.size() - 27);
    }

    /// A white bitmap with a dot at the left and one at the bottom right.
    void MakeLogo(const char* name, qint32 width, qint32 height, quint8 dark = 0) const {
        Bitmap24 bitmap{width, height, QByteArray(Bitmap24::StrideOf(width) * height, '\xFF')};
        bitmap.data[(height - 1) * Bitmap24::StrideOf(width) + 2] = static_cast<char>(dark);
        bitmap.data[(width - 1) * 3 + 2] = static_cast<char>(dark);
        WriteFile(Path(name), BitmapFile(bitmap));
    }

    QTemporaryDir m_folder;
    VniTable m_letters;
};

} // namespace

TEST_F(FormCompilerTest, OneLetterAndALineEnd) {
    const CompilerResult result = Compile(Document({{QStringLiteral("A"), Plain}, {QString(), Plain}}));
    ASSERT_TRUE(result.form.has_value());
    const QByteArray form = QByteArray::fromHex("03D91B401B74021B45301D2100000000"
                                                "1B6130410D0A1B6D0D0A0D0A3134");
    EXPECT_EQ(result.form->PrnForm.toHex(), form.toHex());
    EXPECT_TRUE(VerifyFormChecksum(form));
    EXPECT_TRUE(WriteFormFile(Path("Ticket.bin"), form));
    EXPECT_EQ(ReadFile(Path("Ticket.bin")), QByteArray("\x1E\0", 2) + form);
    EXPECT_EQ(ReadFormFile(Path("Ticket.bin")), form);
}

TEST_F(FormCompilerTest, TheHeadIsThatOfTheFamily) {
    const struct {
        PrinterFamily family;
        const char* form;
    } cases[] = {
        {Db9, "1b401b7402"
              "1b45301d21000000001b6130"
              "1b6d0d0a0d0a3134"},
        {Db25, "1b401b7402"
               "1b333c"
               "1b45301d21000000001b6130"
               "1b6d0d0a0d0a3134"},
        {T81, "1b401b7402"
              "1b45301d21000000001b6130"
              "1b6d0d0a0d0a3134"},
        {ZoneRich, "1b45301d21000000001b6130"
                   "1b6d0d0a0d0a3134"},
        {{.PrinterZoneRich = true, .PrinterDB25 = true},
         "1b333c"
         "1b45301d21000000001b6130"
         "1b6d0d0a0d0a3134"},
    };
    for (const auto& [family, form] : cases)
        EXPECT_EQ(Compile(TicketDocument(), family).form->PrnForm.sliced(2).toHex(), form);
}

TEST_F(FormCompilerTest, AChangeOfFormatGoesOutBeforeItsFirstCharacter) {
    const CharacterFormat all{true, 16, 0xFF0000};
    TicketDocument document = Document({{QStringLiteral("a"), Plain}, {QStringLiteral("b"), all}});
    document.paragraphs[1].alignment = Alignment::Centre;
    EXPECT_EQ(Body(document), QByteArray("a\r\n\x1B"
                                         "E1\x1D!\x11\0\0\0\x1B"
                                         "a1b",
                                         16));
    // A line end is set like the last character before it, an empty paragraph's like itself.
    EXPECT_EQ(Body(Document({{QStringLiteral("a"), {true}}, {QString(), {false, 22}}, {QStringLiteral("b"), Plain}})),
              QByteArray("\x1B"
                         "E1a\r\n\x1B"
                         "E0\x1D!\x22\r\n\x1D!\0b",
                         18));
    const std::pair<double, int> sizes[] = {{1, 1},    {10, 1}, {10.5, 4}, {12, 4},
                                            {12.5, 2}, {20, 2}, {20.5, 3}, {99, 3}};
    for (const auto& [points, sizeClass] : sizes)
        EXPECT_EQ(SizeClass(points), sizeClass) << points;
}

TEST_F(FormCompilerTest, LettersGoOutInTheWayOfTheFamily) {
    const QString text = QStringLiteral("a\u00F9o\u00FF"); // a pair and two single ones, of which the last is none
    const QByteArray head = Compile(TicketDocument(), T81).form->PrnForm.chopped(8).sliced(2);
    EXPECT_EQ(Body(Document(text)), QByteArray("\x1B*\0\0\0o\xFF", 7));
    EXPECT_EQ(Compile(Document(text), T81).form->PrnForm.sliced(2), head + "\x1Bt\x1E\xB8o\xFF\x1Bm\r\n\r\n14");
    EXPECT_TRUE(Compile(Document(text), ZoneRich).form->PrnForm.contains("a\xF9o\xFF"));
    // The first character of a letter decides its format; the second one goes with it.
    TicketDocument mixed = Document(QStringLiteral("a"));
    mixed.paragraphs[0].Append(QStringLiteral("\u00F9x"), {true});
    EXPECT_EQ(Body(mixed), QByteArray("\x1B*\0\0\0\x1B"
                                      "E1x",
                                      9));
    EXPECT_EQ(VniTable::PageCharacter(66), "\x1Bt\x1E\xAE");
    EXPECT_EQ(VniTable::PageCharacter(133), "\x1Bt\x1F\xA7");
    EXPECT_EQ(VniTable::Code(72), 161);
    EXPECT_EQ(VniTable::Code(78), 162);
}

TEST_F(FormCompilerTest, TheFirstLogoIsCalledAtTheEndTheOthersInPlace) {
    MakeLogo("one.bmp", 8, 8);
    MakeLogo("Two.BMP", 33, 9, 254);
    const QString text = QStringLiteral("a$BMP(one.bmp)b$BMP(two.bmp)c$BMP(none.bmp)dddd");
    const CompiledForm db9 = *Compile(Document(text)).form;
    EXPECT_EQ(db9.PrnForm.sliced(19).chopped(2), QByteArray("ab\x1C\x70\x02\0\x1B\x33\x3C"
                                                            "c\x1C\x70\x03\0\x1B\x33\x3C"
                                                            "dddd\x1C\x70\x01\0\x1B\x6D\r\n\r\n",
                                                            31));
    EXPECT_EQ(db9.LogoCount, 3);
    const QByteArray first = QByteArray("\1\0\1\0\x80\0\0\0\0\0\0\1", 12);
    QByteArray second("\5\0\2\0\x80", 5);
    second += QByteArray(79, '\0');
    second[4 + 32 * 2 + 1] = '\x80';
    EXPECT_EQ(db9.LogoData, "\x1C\x71\x03" + first + second + QByteArray(4, '\0'));
    EXPECT_TRUE(Compile(Document(text), T81).form->PrnForm.contains(QByteArray("b\x1C\x70\x02\0c", 6)));
    EXPECT_TRUE(Compile(Document(text), ZoneRich).form->PrnForm.contains(QByteArray("\x1C\x70\x01\0\r\n\x1B\x6D", 8)));
}

TEST_F(FormCompilerTest, WhatIsNoGoodLogo) {
    MakeLogo("wide.bmp", 577, 8);
    MakeLogo("high.bmp", 8, 129);
    MakeLogo("full.bmp", 576, 128);
    QByteArray table = ReadFile(Path("full.bmp"));
    table[10] = 55;
    WriteFile(Path("table.bmp"), table);
    const struct {
        const char16_t* text;
        const char* body;
        QString message;
        qsizetype logoData;
    } cases[] = {
        {u"x$BMP(wide.bmp)yyyyy", "xyyyyy", LogoTooLargeText(), 0},
        {u"x$BMP(high.bmp)yyyyy", "xyyyyy", LogoTooLargeText(), 0},
        {u"x$BMP(full.bmp)yyyyy", "xyyyyy\x1Cp\1", QString(), 3 + 9220},
        {u"x$BMP(table.bmp)yyyyy", "xyyyyy\x1Cp\1", InvalidBitmapText(), 3 + 4},
        {u"x$BMP(never closed", "x\x1Cp\1", QString(), 3 + 4},
        {u"x$BMP()", "x$BMP()", QString(), 0}, // too near to the end
    };
    for (const auto& [text, body, message, logoData] : cases) {
        const CompilerResult result = Compile(Document(QString::fromUtf16(text)));
        ASSERT_TRUE(result.form.has_value());
        EXPECT_TRUE(result.form->PrnForm.sliced(19).startsWith(body)) << body;
        EXPECT_EQ(result.form->LogoData.size(), logoData) << body;
        EXPECT_EQ(result.messages.size(), message.isEmpty() ? 0U : 1U) << body;
        if (!message.isEmpty() && !result.messages.empty()) {
            EXPECT_EQ(result.messages[0].text, message);
            EXPECT_EQ(result.messages[0].kind, BoxKind::Exclamation);
        }
    }
}

TEST_F(FormCompilerTest, ATooLargeFormIsGivenUp) {
    // 19 bytes of head in front; the raw form may have 4,095, the finished one 4,097.
    const auto plain = [](int length) { return Document(QString(length, u'x')); };
    EXPECT_EQ(Compile(plain(4097 - 27)).form->PrnForm.size(), 4097);
    for (const int length : {4097 - 26, 4096 - 19, 100'000}) {
        const CompilerResult result = Compile(plain(length));
        EXPECT_FALSE(result.form.has_value());
        ASSERT_EQ(result.messages.size(), 1U);
        EXPECT_EQ(result.messages[0].text, QStringLiteral("Printer form too large!"));
        EXPECT_EQ(result.messages[0].kind, BoxKind::Critical);
    }
    const CompilerResult logos = Compile(Document(QStringLiteral("$BMP(x)").repeated(256) + QString(6, u'y')));
    EXPECT_FALSE(logos.form.has_value());
    EXPECT_EQ(logos.messages.back().text, QStringLiteral("Too many logos in form!"));
}

TEST_F(FormCompilerTest, TellsMixedTokensAndWhatTheCodePageLacks) {
    TicketDocument document = Document(QStringLiteral("$VAR(0) $VAR("));
    document.paragraphs[0].Append(QStringLiteral("1) \u4E2D"), {true});
    const CompilerResult result = Compile(document);
    EXPECT_EQ(result.mixedTokens, QStringList{QStringLiteral("$VAR(1)")});
    EXPECT_EQ(result.lacking, QStringLiteral("\u4E2D"));
}

TEST_F(FormCompilerTest, ADamagedFormOrTableIsNotTaken) {
    const QByteArray form = Compile(Document(QStringLiteral("text"))).form->PrnForm;
    for (qsizetype i = 0; i < form.size(); ++i) {
        QByteArray damaged = form;
        damaged[i] = static_cast<char>(damaged[i] + 1);
        EXPECT_FALSE(VerifyFormChecksum(damaged)) << i;
    }
    EXPECT_FALSE(VerifyFormChecksum("x"));
    for (const QByteArray& file : {QByteArray(), QByteArray("\x05\0abc", 5), QByteArray("\x02\0abc", 5)}) {
        WriteFile(Path("Ticket.bin"), file);
        EXPECT_EQ(ReadFormFile(Path("Ticket.bin")), std::nullopt);
    }
    QByteArray wide = TableFile();
    wide[2 + 11 * 50] = 9;
    VniTable table;
    for (const QByteArray& file : {wide, TableFile().chopped(1), QByteArray()}) {
        WriteFile(Path("VNIl.dat"), file);
        EXPECT_TRUE(table.LoadVNITable(Path("VNIl.dat")).Error().contains(QStringLiteral("VNIl.dat")));
        EXPECT_FALSE(table.IsLoaded());
    }
    WriteFile(Path("VCODE.dat"), QByteArray("x\n").repeated(229));
    EXPECT_TRUE(LoadVCode(Path("VCODE.dat")));
    WriteFile(Path("VCODE.dat"), QByteArray("x\n").repeated(230));
    EXPECT_FALSE(LoadVCode(Path("VCODE.dat")));
    EXPECT_FALSE(LoadVCode(Path("missing")));
}
