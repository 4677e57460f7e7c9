#include "designer/frmEditLogo.h"

#include "designer/LogoSurface.h"
#include "designer/frmImportLogo.h"
#include "tests/support/Files.h"
#include "tests/support/OpenStation.h"
#include "tests/support/WindowDriver.h"
#include "tickets/LogoImport.h"

#include <QLabel>
#include <QScrollBar>
#include <QSlider>

namespace {

const QString Question = QStringLiteral("The file was changed, would you want to save?");

class EditLogoTest : public StationFolder {
protected:
    EditLogoTest() {
        m_window.setAttribute(Qt::WA_DeleteOnClose, false);
        m_window.resize(800, 640);
        m_window.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&m_window));
    }

    void Trigger(const char* name) { m_window.findChild<QAction*>(QString::fromLatin1(name))->trigger(); }
    void Open(const QString& path, const QString& message = {}) {
        m_dialogs.ExpectChoice(path);
        if (!message.isEmpty())
            m_dialogs.ExpectMessage(BoxKind::Exclamation, message);
        Trigger("mnOpen");
    }
    LogoSurface& Surface() { return *m_window.findChild<LogoSurface*>(QStringLiteral("picEdit")); }
    QString MakeLogo(const QString& name, qint32 width, qint32 height) {
        WriteFile(Path(name), BitmapFile(LogoCells(width, height).ToBitmap()));
        return Path(name);
    }

    IniUtility& m_ini = m_station.ini;
    frmEditLogo m_window{m_station};
};

} // namespace

TEST_F(EditLogoTest, DrawsErasesUndoesAndSaves) {
    QTest::mouseClick(&Surface(), Qt::LeftButton, {}, QPoint(2, 2));
    Trigger("mnSave");
    EXPECT_TRUE(Surface().Cells().IsEmpty()) << "there is no logo yet";
    Trigger("mnNew");
    EXPECT_EQ(Surface().size(), QSize(577 * 4, 129 * 4));
    QTest::mousePress(&Surface(), Qt::LeftButton, {}, QPoint(4, 8));
    QTest::mouseMove(&Surface(), QPoint(15, 8));
    QTest::mouseRelease(&Surface(), Qt::LeftButton, {}, QPoint(15, 8));
    QTest::mouseMove(&Surface(), QPoint(41, 22));
    EXPECT_EQ(m_window.findChild<QLabel*>(QStringLiteral("lblPixprop"))->text(), QStringLiteral("X=10,Y=5"));
    LogoCells drawn(576, 128);
    drawn.PutCell(1, 2, LogoCells::Dark);
    drawn.PutCell(3, 2, LogoCells::Dark); // fast moves leave gaps
    EXPECT_EQ(Surface().Cells(), drawn);
    QTest::mouseClick(&Surface(), Qt::RightButton, {}, QPoint(4, 8));
    EXPECT_EQ(Surface().Cells().GetCell(1, 2), LogoCells::White);
    Trigger("mnUndo");
    EXPECT_EQ(Surface().Cells(), drawn);
    Trigger("mnUndo");
    EXPECT_EQ(Surface().Cells(), LogoCells(576, 128));
    Trigger("mnRedo");

    const QString path = Path(QStringLiteral("new.bmp"));
    m_dialogs.ExpectChoice(QString());
    Trigger("mnSave");
    m_dialogs.ExpectChoice(path);
    Trigger("mnSave");
    EXPECT_EQ(ReadFile(path), BitmapFile(drawn.ToBitmap()));
    // It is new until it is opened, and changed until then. Without a name nothing is lost.
    m_dialogs.ExpectThreeWay(BoxKind::Plain, Question, Answer::Yes);
    m_dialogs.ExpectChoice(QString());
    Trigger("mnNew");
    EXPECT_EQ(Surface().Cells(), drawn);
    m_dialogs.ExpectThreeWay(BoxKind::Plain, Question, Answer::Cancel);
    EXPECT_FALSE(m_window.close());
    m_dialogs.ExpectThreeWay(BoxKind::Plain, Question, Answer::No);
    Open(path);
    EXPECT_TRUE(m_window.close());
    EXPECT_TRUE(ReadFile(m_ini.IniPath).contains("Filename=" + path.toUtf8()));
}

TEST_F(EditLogoTest, APlaceOutsideMarksTheLogoAsChanged) {
    Open(MakeLogo(QStringLiteral("small.bmp"), 100, 50));
    EXPECT_EQ(Surface().size(), QSize(101 * 4, 51 * 4));
    QTest::mouseClick(&Surface(), Qt::LeftButton, {}, QPoint(402, 10));
    EXPECT_EQ(Surface().Cells(), LogoCells(100, 50));
    m_dialogs.ExpectThreeWay(BoxKind::Plain, Question, Answer::Yes);
    m_window.close();
    EXPECT_TRUE(WaitUntil([this] { return !m_window.isVisible(); }));
}

TEST_F(EditLogoTest, AFileThatIsNoLogoCostsAMessageAndNothingElse) {
    const QString good = MakeLogo(QStringLiteral("good.bmp"), 10, 10);
    Open(good);
    Open(MakeLogo(QStringLiteral("wide.bmp"), 577, 1), LogoTooLargeText());
    EXPECT_EQ(m_window.findChild<QLabel*>(QStringLiteral("Label1"))->text(), good);
    const QByteArray damaged = ReadFile(good).chopped(1);
    WriteFile(Path(QStringLiteral("damaged.bmp")), damaged);
    Open(Path(QStringLiteral("damaged.bmp")), InvalidBitmapText());
    Trigger("mnSave");
    EXPECT_EQ(ReadFile(Path(QStringLiteral("damaged.bmp"))), damaged);
}

TEST_F(EditLogoTest, ScrollsAndZooms) {
    auto& bar = *m_window.findChild<QScrollBar*>(QStringLiteral("HScroll1"));
    Open(MakeLogo(QStringLiteral("small.bmp"), 20, 20));
    EXPECT_FALSE(bar.isEnabled());
    Trigger("mnNew");
    EXPECT_TRUE(bar.isEnabled());
    EXPECT_EQ(bar.minimum() * 100'000 + bar.maximum(), 132'767);
    EXPECT_EQ(bar.pageStep(), 8191);
    EXPECT_EQ(bar.singleStep(), 1);
    bar.setValue(1500);
    EXPECT_EQ(Surface().x(), -100);
    Trigger("mnZoomIn");
    EXPECT_EQ(Surface().size(), QSize(577 * 5, 129 * 5));
    EXPECT_EQ(Surface().ChangePosition(QPoint(14, 15)), QPoint(2, 3));
}

TEST_F(EditLogoTest, APictureIsImportedInTwoLevels) {
    QImage grey(1152, 100, QImage::Format_ARGB32);
    grey.fill(QColor(100, 100, 100));
    ASSERT_TRUE(grey.save(Path(QStringLiteral("grey.png"))));
    m_dialogs.ExpectChoice(Path(QStringLiteral("grey.png")));
    Trigger("mnImport");
    auto* import = m_window.findChild<frmImportLogo*>();
    ASSERT_NE(import, nullptr);
    EXPECT_EQ(import->Logo().Width() * 1000 + import->Logo().Height(), 576'050);
    EXPECT_EQ(import->Logo().GetCell(5, 5), LogoCells::Dark);
    import->findChild<QSlider*>(QStringLiteral("sldThreshold"))->setValue(90);
    EXPECT_EQ(import->Logo().GetCell(5, 5), LogoCells::White);
    QTest::mouseClick(import->findChild<QPushButton*>(QStringLiteral("cmdOK")), Qt::LeftButton);
    EXPECT_EQ(Surface().Cells().Height(), 50);
    Trigger("mnUndo");
    EXPECT_TRUE(Surface().Cells().IsEmpty());
    Trigger("mnRedo");

    WriteFile(Path(QStringLiteral("text.png")), "no picture");
    m_dialogs.ExpectThreeWay(BoxKind::Plain, Question, Answer::No);
    m_dialogs.ExpectChoice(Path(QStringLiteral("text.png")));
    m_dialogs.ExpectMessage(BoxKind::Exclamation, QString());
    Trigger("mnImport");
    EXPECT_EQ(Surface().Cells().Height(), 50);
}

TEST_F(EditLogoTest, SpreadDotsAreAsDenseAsThePictureIsDark) {
    for (const int value : {0, 64, 128, 255}) {
        QImage picture(100, 100, QImage::Format_Grayscale8);
        picture.fill(value);
        const LogoCells logo = LogoFromPicture(picture, LogoLevels::FloydSteinberg, 128);
        int dark = 0;
        for (int y = 0; y < 100; ++y) {
            for (int x = 0; x < 100; ++x)
                dark += logo.GetCell(x, y) == LogoCells::Dark;
        }
        EXPECT_NEAR(dark, 10'000 * (255 - value) / 255, 200) << value;
    }
    EXPECT_TRUE(LogoFromPicture(QImage(), LogoLevels::Threshold, 128).IsEmpty());
    QImage clear(10, 10, QImage::Format_ARGB32);
    clear.fill(Qt::transparent);
    EXPECT_EQ(LogoFromPicture(clear, LogoLevels::Threshold, 255), LogoCells(10, 10)) << "never scaled up";
}
