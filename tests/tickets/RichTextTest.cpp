#include "tickets/RichText.h"

#include "tests/support/Files.h"
#include "tickets/VniText.h"

#include <gtest/gtest.h>

#include <QProcess>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>
#include <utility>

namespace {

richtext::Document ReadGood(const QByteArray& file) {
    const auto read = richtext::Read(file);
    EXPECT_TRUE(read) << read.Error().toStdString();
    return read.ValueOr({});
}

QByteArray Wrapped(const QByteArray& body) {
    return "{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0\\fswiss\\fcharset0 Arial{\\*\\falt x;};}{\\f1\\fcharset163 A;}"
           "{\\f2\\fcharset204 A;}{\\f3\\fcharset128 A;}{\\f4\\fcharset238 A;}{\\f5\\fcharset177 A;}{\\f6\\fcharset1 "
           "A;}"
           "{\\f7\\fcharset161 A;}{\\f8\\fcharset162 A;}{\\f9\\fcharset186 A;}{\\f10\\fcharset2 A;}}"
           "{\\colortbl;\\red255\\green0\\blue0;\\red300\\green-4\\blue128;;}{\\stylesheet{\\s1\\b Heading;}}" +
           body + '}';
}

/// The lines of a document, joined by "|".
QString TextOf(const QByteArray& body) {
    return ReadGood(Wrapped(body)).document.Text().replace(QStringLiteral("\r\n"), QStringLiteral("|"));
}

TEST(RichText, ReadsCharactersAndLineEnds) {
    const std::pair<QByteArray, QString> cases[] = {
        {"", QString()},
        {"A\\par}", QStringLiteral("A|")},
        {"\r\nA\r\n\r\nB\\line C\\\nD\\\r\nE\\page F\\sect", QStringLiteral("AB|C|D|E|F|")},
        {"\\\\\\{\\}a\\tab b\tc\\~\\-\\_", QStringLiteral("\\{}a\tb\tc\u00A0\u00AD\u2011")},
        {"\\lquote a\\rquote\\ldblquote b\\rdblquote\\bullet\\endash\\emdash  c\\emspace\\enspace",
         QStringLiteral("‘a’“b”•–— c\u2003\u2002")},
        {"\\'e9\\'80\\'FCa\xE4\\'8", QStringLiteral("é€üaä8")},
        {"\\u233?\\u-1?\\u8364\\'80x\\u-10179?\\u-8704?y", QStringLiteral("é\uFFFF€x\U0001F600y")},
        {"\\u-10179?a\\u-8704?\\u-10179?\\par\\u128512 ?", QStringLiteral("\uFFFDa\uFFFD\uFFFD|\U0001F600")},
        {"\\uc2\\u233ab{\\uc0\\u233}\\u233\\'41\\'42c{\\u233 a}bc", QStringLiteral("ééécébc")},
        {"\\uc3\\u233\\ldblquote\\{\\bin2 }}a\\u233 x\\b yz\\u233{a}", QStringLiteral("éaéyzéa")},
        {"\\upr{old}{\\*\\ud new}", QStringLiteral("new")},
        {"{\\upr{old\\par}{\\*\\ud n\\b0 ew}} x", QStringLiteral("new x")},
        {"a\\u0 ?\\'00\\u10?b\\unknown-12 c\\u1?", QStringLiteral("a|bc\u0001")},
        {"a\\bin3 }}}b{\\*\\none\\bin1 {}c", QStringLiteral("abc")},
        {"\\f1\\'d0\\'ec\\'fd\\f2\\'cf\\'f0{\\f4\\'b3\\'e6}\\'e8\\plain\\'e9", QStringLiteral("Đ\u0301ưПрłćиé")},
        {"\\f7\\'e1\\f8\\'f0\\f9\\'eb\\f10\\'b7\\f99\\'e9", QStringLiteral("αğė·é")},
        {"\\ansicpg1251\\f6\\'cf\\f0\\'cf", QStringLiteral("ПÏ")},
        {"\\trowd\\intbl A\\cell B\\cell\\row\\pard C", QStringLiteral("A\tB\t|C")},
        {"a{\\field{\\*\\fldinst HYPERLINK \"x\"}{\\fldrslt{\\b link}}}b", QStringLiteral("alinkb")},
        {"a{\\pict\\wmetafile8 00ff{x}}{\\*\\shppict{\\pict 00}}{\\info{\\author x}}{\\footnote\\pard x\\par}b",
         QStringLiteral("ab")},
        {"{\\listtext\\pard\\plain\\f10 \\'b7\\tab}a{\\v b\\v0 c}{\\deleted d}e", QStringLiteral("·\tace")},
        {"{\\*\\unknown a{b}\\par}{\\*\\b c}d", QStringLiteral("d")},
        // Broken: groups left open, too many ends, cut off in the middle of a word.
        {"a{\\b b{\\i c", QStringLiteral("abc")},
        {"a}}}\\par b", QStringLiteral("a")},
        {"a\\'", QStringLiteral("a")},
        {"a\\u999999999999?\\u-999999999999?\\fs999999999999 b\\-", QStringLiteral("ab\u00AD")},
    };
    for (const auto& [body, text] : cases)
        EXPECT_EQ(TextOf(body).toStdString(), vni::FromUnicode(text, vni::Origin::Unicode).toStdString())
            << body.toStdString();
    for (const char* cut : {"{\\rtf", "{\\rtf1 \\", "{\\rtf1\\f", "{\\rtf1\\bin99 a", "{\\rtf1{"})
        EXPECT_EQ(ReadGood(cut).document.Text(), QString()) << cut;
    EXPECT_EQ(ReadGood("\xEF\xBB\xBF \r\n{\\rtf1 a}\0\0").document.Text(), QStringLiteral("a"));
}

/// A document in a line: "L[12]plain[8.5 b ff0000]bold | C(12)", the last of an empty centred paragraph.
QString Outline(const TicketDocument& document) {
    const auto name = [](const CharacterFormat& format) {
        return QString::number(format.size) + (format.bold ? QStringLiteral(" b") : QString()) +
               (format.colour == 0 ? QString() : u' ' + QString::number(format.colour, 16));
    };
    QStringList outlines;
    for (const TicketDocument::Paragraph& paragraph : document.paragraphs) {
        QString outline(u"LRC"[static_cast<int>(paragraph.alignment)]);
        for (const TicketDocument::Run& run : paragraph.runs)
            outline += u'[' + name(run.format) + u']' + run.text;
        outlines += paragraph.runs.empty() ? outline + u'(' + name(paragraph.empty) + u')' : outline;
    }
    return outlines.join(QStringLiteral(" | "));
}

TEST(RichText, TheNameOfTheFontTellsWhatItsLettersAre) {
    const struct {
        const char* fonts;
        const char* body;
        QString text;
    } cases[] = {
        // All Latin-1, and still Unicode; a word processor's code page with combining marks too.
        {"{\\f0 Times New Roman;}", "Ph\\'f2ng kh\\'e1m", QStringLiteral("Phoøng khaùm")},
        {"{\\f0\\fcharset163 Arial;}", "Ti\\'ea\\'ccn, D\\u7883?ch", QStringLiteral("Tieàn, Dòch")},
        // VNI, whatever stands beside it and whatever character set the font is said to have.
        {"{\\f0 VNI-Aptima;}", "D\\'f2ch S\\'f4n \\u8594?", QStringLiteral("Dòch Sôn →")},
        {"{\\f0\\fcharset163{\\*\\fname vni-times;}vni-times;}", "D\\'f2ch S\\'f4n", QStringLiteral("Dòch Sôn")},
        {"{\\f0 Arial;}{\\f1 VNI-Times;}", "D\\'f2{\\f1 D\\'f2ch\\u432?}", QStringLiteral("DoøDòchö")},
        // No name: as the words tell.
        {"{\\f0\\fnil;}", "D\\'f2ch Tie\\'e0n", QStringLiteral("Dòch Tieàn")},
        {"", "D\\'f2ch", QStringLiteral("Doøch")},
    };
    for (const auto& [fonts, body, text] : cases) {
        const QByteArray file = QByteArray("{\\rtf1\\ansi\\deff0{\\fonttbl") + fonts + '}' + body + '}';
        const TicketDocument document = ReadGood(file).document;
        EXPECT_EQ(document.Text().toStdString(), text.toStdString()) << file.toStdString();
        EXPECT_TRUE(ReadGood(richtext::Write(document)).document == document);
    }
}

TEST(RichText, ReadsFormatsAndAlignments) {
    const std::pair<QByteArray, const char*> cases[] = {
        {"", "L(12)"},
        {"a{\\b b}c\\b d\\b0 e\\b1\\plain f", "L[12]a[12 b]b[12]c[12 b]d[12]ef"},
        {"\\fs17 a\\fs b\\fs0 c\\fs-5 d\\fs9999 e", "L[8.5]a[12]b[0.5]cd[1638]e"},
        {"\\cf1 a\\cf2 b\\cf0 c\\cf3 d\\cf-1\\cf9 e\\cf1 f\\cf g", "L[12 ff0000]a[12 ff0080]b[12]cde[12 ff0000]f[12]g"},
        {"\\qc a\\par b\\qr\\line{\\ql c}\\par\\qj d\\par\\qc\\pard\\fs40 \\par\\qr\\b",
         "C[12]a | R[12]b | R[12]c | L[12]d | L(20) | R(20 b)"},
        {"\\qc{\\b\\u-10179?}{\\fs30 \\u-8704?}{\\ql\\cf1 ", "C[15]\xF0\x9F\x98\x80"},
    };
    for (const auto& [body, outline] : cases)
        EXPECT_EQ(Outline(ReadGood(Wrapped(body)).document).toStdString(), outline) << body.toStdString();
}

TEST(RichText, TellsWhatIsLost) {
    const std::pair<QByteArray, const char16_t*> cases[] = {
        {"{\\i }{\\i\\plain x}\\i0\\ulnone\\strike0\\ulc1\\qj a\\i\\par\\i0\\f3 b\\f10\\'b7", u""},
        {"{\\pict 00}a{\\pict 00}", u"pictures"},
        {"{\\shp{\\*\\shpinst{\\shptxt x}}}{\\object x}", u"drawings, embedded objects"},
        {"\\trowd\\intbl a\\cell\\row", u"tables"},
        {"{\\footerf x}{\\header x}{\\footnote x}{\\*\\annotation x}", u"headers and footers, footnotes, comments"},
        {"{\\field{\\*\\fldinst PAGE}{\\fldrslt 1}}{\\v a}", u"fields and hyperlinks, hidden text"},
        {"\\i a\\uldb b\\strike c", u"italics, underlining, strike-through"},
        {"{\\super a}{\\dn6 b\\dn0}\\caps d\\plain\\highlight7 e",
         u"superscript and subscript, capitals, highlighting"},
        {"\\f3\\'83A\\'83\\'41b", u"characters of a foreign code page"},
        {"\\f5\\'e0", u"characters of a foreign code page"},
    };
    for (const auto& [body, losses] : cases)
        EXPECT_EQ(ReadGood(Wrapped(body)).losses.join(QStringLiteral(", ")), QString::fromUtf16(losses))
            << body.toStdString();
    EXPECT_EQ(TextOf("\\f3\\'83A\\'83\\'41b\\'b1c"), QStringLiteral("??b?c"));
}

TEST(RichText, RefusesWhatIsNoneAndWhatIsTooMuchAtOnce) {
    const QByteArray head = "{\\rtf1 ";
    const QString none = QStringLiteral("This is no rich text file.");
    const QString deep = QStringLiteral("The rich text nests deeper than 200 groups.");
    const std::pair<QByteArray, QString> cases[] = {
        {QByteArray(), none},
        {"{\\rt", none},
        {"x{\\rtf1 a}", none},
        {QByteArray(richtext::LargestFile, '{'), none},
        {head + QByteArray(200, '{'), deep},
        {head + "{\\*\\x" + QByteArray(199, '{'), deep},
        {head + QByteArray(richtext::LargestFile - head.size(), '{'), deep},
        {head + QByteArray(richtext::LargestFile, ' '), QStringLiteral("The file is larger than 100 MB.")},
        {head + QByteArray("\\par").repeated(richtext::MostPieces),
         QStringLiteral("The rich text holds more than 1000000 paragraphs and changes of format.")},
    };
    for (const auto& [file, expected] : cases) {
        EXPECT_EQ(richtext::Read(file).Error(), expected) << file.left(20).toStdString();
    }
    ReadGood(head + QByteArray(199, '{') + QByteArray(100000, '}'));
}

TicketDocument RandomDocument(QRandomGenerator& random) {
    static const quint32 colours[] = {0, 0xFF0000, 0x00FF00, 0x123456, 0xFFFFFF};
    const auto format = [&] {
        return CharacterFormat{random.bounded(2) == 1, random.bounded(1, 3277) / 2.0, colours[random.bounded(5)]};
    };
    const auto character = [&] {
        switch (random.bounded(4)) {
        case 0:
            return QString(QStringLiteral("\t\\{}?;'09 a-")[random.bounded(12)]);
        case 1:
            return QString(QChar(random.bounded(0x0E, 0x100)));
        case 2:
            return QString(QChar(random.bounded(2) == 1 ? random.bounded(1, 10) : random.bounded(0xE000, 0x10000)));
        default:
            char32_t code = static_cast<char32_t>(random.bounded(0x0E, 0x10F800));
            code += code < 0xD800 ? 0 : 0x800;
            return vni::FromUnicode(QString::fromUcs4(&code, 1), vni::Origin::Unicode);
        }
    };
    TicketDocument document;
    document.paragraphs.resize(random.bounded(1, 6));
    for (TicketDocument::Paragraph& paragraph : document.paragraphs) {
        paragraph.alignment = static_cast<Alignment>(random.bounded(3));
        for (int run = random.bounded(4); run > 0; --run) {
            const CharacterFormat ofRun = format();
            for (int i = random.bounded(1, 20); i > 0; --i)
                paragraph.Append(character(), ofRun);
        }
        if (paragraph.runs.empty())
            paragraph.empty = format();
    }
    return document;
}

TEST(RichText, WhatIsWrittenReadsTheSame) {
    QRandomGenerator random(20);
    for (int i = 0; i < 3000; ++i) {
        const TicketDocument document = RandomDocument(random);
        const QByteArray file = richtext::Write(document);
        ASSERT_TRUE(std::all_of(file.begin(), file.end(),
                                [](char each) { return each == '\n' || (each >= ' ' && each < 127); }));
        const richtext::Document read = ReadGood(file);
        ASSERT_TRUE(read.document == document) << file.toStdString();
        ASSERT_EQ(read.losses, QStringList());
    }
}

TEST(RichText, WritesWhatAWordProcessorShowsAlike) {
    const QString office = QStandardPaths::findExecutable(QStringLiteral("soffice"));
    if (office.isEmpty())
        GTEST_SKIP() << "no word processor here";
    const QStringList lines = {QStringLiteral("Dòch vuï {1} \\ 50%"), QString(), QStringLiteral("a\tb ‘€’ é"),
                               QStringLiteral("中 Số ễ \U0001F600 9"), QStringLiteral("?")};
    TicketDocument document;
    document.paragraphs.resize(lines.size());
    for (qsizetype i = 0; i < lines.size(); ++i)
        document.paragraphs[i].Append(lines[i], {i % 2 == 0, 10.5 + i, i == 2 ? 0xFF0000u : 0u});

    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("form.rtf"));
    WriteFile(path, richtext::Write(document));
    const QString profile =
        QStringLiteral("-env:UserInstallation=file://") + folder.filePath(QStringLiteral("profile"));
    QProcess converter;
    converter.start(office, {profile, QStringLiteral("--headless"), QStringLiteral("--convert-to"),
                             QStringLiteral("txt:Text"), QStringLiteral("--outdir"), folder.path(), path});
    ASSERT_TRUE(converter.waitForFinished(120000));
    EXPECT_EQ(QString::fromUtf8(ReadFile(folder.filePath(QStringLiteral("form.txt")))).toStdString(),
              (lines.join(u'\n') + u'\n').toStdString())
        << converter.readAllStandardError().toStdString();
}

} // namespace
