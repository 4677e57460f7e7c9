#include "tickets/TicketPaper.h"

#include <gtest/gtest.h>

namespace {

/// Runs a stream and looks at the paper.
class TicketPaperTest : public ::testing::Test {
protected:
    /// The dots between two heights, in from the margin.
    static QRect Dark(const QImage& paper, int top = 0, int bottom = 1'000'000) {
        QRect dark;
        for (int y = std::max(top, 0); y < std::min(bottom, paper.height()); ++y) {
            for (int x = 0; x < paper.width(); ++x) {
                if (paper.constScanLine(y)[x] == 0)
                    dark |= QRect(x, y, 1, 1);
            }
        }
        return dark;
    }

    QImage Print(const QByteArray& stream, const QByteArray& logos = {}) {
        return m_paper.Print("cs" + stream + "14", logos, m_values, nullptr);
    }

    TicketValues m_values{"name", "", "", "0042", "", "", "", ""};
    TicketPaper m_paper;
};

constexpr int Margin = 16;

} // namespace

TEST_F(TicketPaperTest, SizesBoldAndAlignmentAreThoseOfTheCommands) {
    const QRect plain = Dark(Print("\x1B@HHHH\n"));
    ASSERT_FALSE(plain.isEmpty());
    EXPECT_LE(plain.right(), 48);
    const QRect wide = Dark(Print("\x1B@\x1D!\x10HHHH\n"));
    EXPECT_NEAR(wide.width(), 2 * plain.width(), 4);
    EXPECT_EQ(wide.height(), plain.height());
    const QRect triple = Dark(Print("\x1B@\x1D!\x22HHHH\n"));
    EXPECT_NEAR(triple.width(), 3 * plain.width(), 6);
    EXPECT_NEAR(triple.height(), 3 * plain.height(), 3);
    EXPECT_EQ(Dark(Print("\x1B@\x1B"
                         "E1HHHH\n"))
                  .width(),
              plain.width() + 1);
    EXPECT_EQ(Dark(Print("\x1B@\x1B"
                         "a2HHHH\n"))
                  .left(),
              plain.left() + TicketPaper::Width - 48);
    EXPECT_EQ(Dark(Print("\x1B@\x1B"
                         "a1HHHH\n"))
                  .left(),
              plain.left() + (TicketPaper::Width - 48) / 2);
    EXPECT_EQ(Print(QByteArray("\x1B@\0\0\0HHHH\n", 10)), Print("\x1B@HHHH\n"));
}

TEST_F(TicketPaperTest, LinesAdvanceAndWrap) {
    EXPECT_EQ(Print("\x1B@\n\n").height(), 2 * 34 + 2 * Margin);
    EXPECT_EQ(Print("\x1B@\x1B\x33\x3C\n").height(), 33 + 2 * Margin);
    EXPECT_EQ(Print("\x1B@\x1D!\x22H\n").height(), 72 + 2 * Margin);
    EXPECT_EQ(Print("\x1B@" + QByteArray(49, 'H') + "\n").height(), 2 * 34 + 2 * Margin) << "48 stand in a line";
}

TEST_F(TicketPaperTest, FieldsPrintTheirValuesAndOtherTextItself) {
    EXPECT_EQ(Print("\x1B@$VAR(0)=$VAR(3)\n"), Print("\x1B@name=0042\n"));
    EXPECT_EQ(Print("\x1B@$VAR(8)$VAR(x)$VAR(\n"), Print("\x1B@$VAR(8\x01)$VAR(x)$VAR(\n"));
    EXPECT_TRUE(Dark(Print("\x1B@$VAR(1)\n")).isEmpty());
}

TEST_F(TicketPaperTest, LettersComeFromPageFontAndImage) {
    m_values[0] = "a\xF9";
    const QImage letter = Print("\x1B@$VAR(0)\n");
    EXPECT_FALSE(Dark(letter).isEmpty());
    EXPECT_EQ(Print("\x1B@\x1Bt\x1E\xB8\n"), letter) << "a page of small letters";
    EXPECT_EQ(Print("a\xF9\n"), letter) << "a printer with a VNI font";
    EXPECT_EQ(Print("\x1B@\x1Bt\x02\xA0\n"), letter) << "code page 850";
    EXPECT_NE(Print("\x1B@\x1Bt\x1F\xB8\n"), letter) << "its capital";
    // Two columns: a full one and one with the topmost dot.
    const QImage image = Print(QByteArray("\x1B@\x1B*\0\2\0\xFF\x80\n", 10));
    EXPECT_EQ(Dark(image), QRect(0, Margin, 4, 24));
    EXPECT_EQ(Dark(image, Margin + 3).width(), 2);
}

TEST_F(TicketPaperTest, LogosStandWhereTheyAreCalled) {
    const QByteArray logos("\x1C\x71\x02"
                           "\1\0\1\0\x80\0\0\0\0\0\0\1"
                           "\1\0\1\0\xFF\0\0\0\0\0\0\0",
                           27);
    const QImage paper = Print(QByteArray("\x1B@\x1B"
                                          "a1\x1C\x70\2\0\x1C\x70\1\0\x1C\x70\3\0",
                                          17),
                               logos);
    EXPECT_EQ(paper.height(), 16 + 2 * Margin);
    EXPECT_EQ(Dark(paper, 0, Margin + 8), QRect(284, Margin, 1, 8));
    EXPECT_EQ(Dark(paper, Margin + 8), QRect(284, Margin + 8, 8, 8));
    for (qsizetype length = 0; length < logos.size(); ++length)
        Print(QByteArray("\x1B@\x1C\x70\2\0", 6), logos.first(length));
}

TEST_F(TicketPaperTest, AnyBytesCostNoMoreThanPaper) {
    quint32 dice = 1;
    for (int round = 0; round < 300; ++round) {
        QByteArray stream(round % 2 == 0 ? "\x1B@" : "");
        for (int i = 0; i < 400; ++i) {
            dice = dice * 1664525 + 1013904223;
            const char commands[] = {'\x1B', '\x1C', '\x1D', '*', 'p', '!', '\n', '$'};
            stream += dice % 3 == 0 ? commands[(dice >> 8) % 8] : static_cast<char>(dice >> 16);
        }
        EXPECT_EQ(Print(stream, stream).width(), TicketPaper::Width);
    }
    EXPECT_LT(Print(QByteArray(100'000, '\n')).height(), 25'000);
}
