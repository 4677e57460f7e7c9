#include "tests/support/Files.h"
#include "tickets/LogoCells.h"

#include <QTemporaryDir>

namespace {

class BitmapTest : public ::testing::Test {
protected:
    /// The file of a bitmap in which some bytes of the headers are changed.
    std::optional<Bitmap24> Load(QByteArray file, const std::vector<std::pair<int, int>>& changes = {}) const {
        for (const auto& [place, value] : changes)
            file[place] = static_cast<char>(value);
        WriteFile(m_path, file);
        return LoadBitmap24(m_path);
    }

    QTemporaryDir m_folder;
    QString m_path = m_folder.filePath(QStringLiteral("logo.bmp"));
};

} // namespace

TEST_F(BitmapTest, AFileHasBothHeadersAndRowsFromTheBottom) {
    LogoCells cells(3, 2);
    cells.PutCell(1, 0, LogoCells::Dark);
    for (const auto& [x, y] : {std::pair(-1, 0), {3, 0}, {0, 2}})
        cells.PutCell(x, y, LogoCells::Dark);
    EXPECT_EQ(BitmapFile(cells.ToBitmap()).toHex(), "424d4e000000"
                                                    "00000000"
                                                    "36000000"
                                                    "28000000"
                                                    "03000000"
                                                    "02000000"
                                                    "01001800"
                                                    "00000000"
                                                    "18000000"
                                                    "c40e0000"
                                                    "c40e0000"
                                                    "00000000"
                                                    "00000000"
                                                    "ffffffffffffffffff000000"
                                                    "ffffff7f7f7fffffff000000");
    EXPECT_EQ(LogoCells(*Load(BitmapFile(cells.ToBitmap()))), cells);
    for (const auto& [width, stride] : {std::pair(1, 4), {4, 12}, {576, 1728}})
        EXPECT_EQ(Bitmap24::StrideOf(width), stride);
}

TEST_F(BitmapTest, OnlyTheRedByteDecides) {
    const std::pair<int, int> reds[] = {{0, 127}, {127, 127}, {128, 255}, {255, 255}};
    for (const auto& [red, cell] : reds) {
        Bitmap24 bitmap{1, 1, QByteArray("\x10\x20\0\0", 4)};
        bitmap.data[2] = static_cast<char>(red);
        EXPECT_EQ(LogoCells(bitmap).GetCell(0, 0), cell) << red;
    }
}

TEST_F(BitmapTest, AForeignFileIsAnEmptyLogoOrNone) {
    const QByteArray good = BitmapFile(LogoCells(4, 4).ToBitmap());
    EXPECT_TRUE(LogoCells(*LoadBitmap24(m_path)).IsEmpty()) << "there is no file";
    EXPECT_TRUE(LogoCells(*Load("PNG and more")).IsEmpty());
    EXPECT_TRUE(LogoCells(*Load("B")).IsEmpty());
    EXPECT_EQ(Load(good, {{10, 10}, {28, 8}})->width, 4) << "neither a small offset nor the bits are looked at";
    const struct {
        QByteArray file;
        std::vector<std::pair<int, int>> changes;
    } refused[] = {
        {good, {{10, 55}}},
        {good, {{13, 0x80}}},                                     // offset
        {good, {{25, 0xFF}, {24, 0xFF}, {23, 0xFF}, {22, 0xFC}}}, // a height of -4
        {good, {{21, 0x80}}},
        {good, {{20, 0x7F}, {21, 0x7F}, {25, 0x7F}}}, // widths and heights beyond all reason
        {good.chopped(1), {}},
        {good.first(53), {}},
        {good.first(2), {}},
    };
    for (const auto& [file, changes] : refused)
        EXPECT_FALSE(Load(file, changes).has_value()) << changes.size() << ' ' << file.size();
}

TEST_F(BitmapTest, TheFixturesAreRead) {
    const auto logo = LoadBitmap24(QStringLiteral(TEST_DATA_FOLDER "/forms/logo.bmp"));
    const auto second = LoadBitmap24(QStringLiteral(TEST_DATA_FOLDER "/forms/logo2.bmp"));
    ASSERT_TRUE(logo.has_value() && second.has_value());
    EXPECT_EQ(logo->width * 1000 + logo->height, 200'064);
    EXPECT_EQ(second->width * 1000 + second->height, 33'009);
    EXPECT_EQ(BitmapFile(*logo).sliced(54), ReadFile(QStringLiteral(TEST_DATA_FOLDER "/forms/logo.bmp")).sliced(54));
}
