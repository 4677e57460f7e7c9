#include "tests/setup/SetupWindow.h"
#include "tickets/VniText.h"
#include "widgets/LogBox.h"

#include <QAction>
#include <QClipboard>
#include <QLabel>
#include <QTabWidget>

namespace {

constexpr int NameColumn = 1;
constexpr int NumberColumn = 2;
constexpr int SeriesColumn = 4;
constexpr int ButtonColumn = 5;
constexpr int ActiveColumn = 6;

/// The setup window on a store with two services, driven by keys and clicks.
class frmQueueTest : public SetupWindow {
protected:
    frmQueueTest()
        : SetupWindow({QStringLiteral("INSERT INTO Queue (q_Id, q_Number, q_Series, q_On, q_Name, q_Button) VALUES "
                                      "(1, 2, 1000, 1, 'second', 5), (2, 1, 2000, 1, 'first', 6)")}) {}

    void Show() {
        SetupWindow::Show();
        ::QObject::connect(m_window.get(), &frmQueue::Closed, [this] { ++m_closed; });
    }

    DataGrid& Grid() const { return Find<DataGrid>("TDBGridQueue"); }
    void Click(int row, int column) const { WindowDriver::Click(Grid(), row, column); }
    void Type(int row, int column, const QString& text, Qt::Key end = Qt::Key_Return) const {
        WindowDriver::Type(Grid(), row, column, text, end);
    }
    static void Press(Qt::Key key) { WindowDriver::Press(key); }
    static void Keys(const QString& text) { WindowDriver::Keys(text); }
    static QLineEdit* Editor() { return WindowDriver::Editor(); }

    /// The editor that has come back with a refused text.
    QLineEdit* ResumedEditor() const {
        EXPECT_TRUE(WaitUntil([this] { return !Grid().HasRefusedText() && Editor(); }));
        return Editor();
    }

    QString Shown(int row, int column) const { return WindowDriver::Shown(Grid(), row, column); }

    /// A field of the services in key order, values joined by "|".
    QString Stored(const QString& field) {
        return SetupWindow::Stored(QStringLiteral("SELECT %1 FROM Queue ORDER BY q_Id").arg(field));
    }

    int m_closed = 0;
};

} // namespace

TEST_F(frmQueueTest, ShowsTheServicesByNumberAndARowForANewOne) {
    Show();
    EXPECT_EQ(Grid().model()->rowCount(), 3);
    EXPECT_EQ(Shown(0, NameColumn), QStringLiteral("first"));
    EXPECT_EQ(Shown(1, ActiveColumn), QStringLiteral("Yes"));
    EXPECT_EQ(Grid().model()->headerData(2, Qt::Vertical).toString(), QStringLiteral("*"));
    EXPECT_TRUE(Grid().isColumnHidden(SeriesColumn));
    EXPECT_EQ(Find<QTabWidget>("TabStrip1").count(), 4);
    m_station.options.MultiTicketSeries = true;
    Show();
    EXPECT_FALSE(Grid().isColumnHidden(SeriesColumn));
}

TEST_F(frmQueueTest, WhatIsLeftInACellStandsInTheStore) {
    Show();
    Type(0, NameColumn, QStringLiteral("Teller"));
    Type(1, ButtonColumn, QStringLiteral("9"), Qt::Key_Tab);
    EXPECT_EQ(Stored(QStringLiteral("q_Name")), QStringLiteral("second|Teller"));
    EXPECT_EQ(Stored(QStringLiteral("q_Button")), QStringLiteral("9|6"));
    EXPECT_TRUE(m_station.reload.IsStoreChanged());
    EXPECT_EQ(m_station.installation->NumServices, 0) << "the model follows only by a reload";

    Click(0, NameColumn);
    Keys(QStringLiteral("x"));
    Click(1, NumberColumn);
    EXPECT_EQ(Stored(QStringLiteral("q_Name")), QStringLiteral("second|x"));
}

TEST_F(frmQueueTest, WhatIsNotChangedOrGivenUpIsNotWritten) {
    ASSERT_TRUE(m_station.database.Run(
        {QStringLiteral("CREATE TEMP TRIGGER t BEFORE UPDATE ON Queue BEGIN SELECT RAISE(FAIL, 'written'); END")}));
    Show();
    Type(0, NameColumn, QStringLiteral("first"));
    Type(0, NameColumn, QStringLiteral("typed"), Qt::Key_Escape);
    EXPECT_EQ(Shown(0, NameColumn), QStringLiteral("first"));
    EXPECT_FALSE(m_station.reload.IsStoreChanged());
}

TEST_F(frmQueueTest, TheIdCannotBeEdited) {
    Show();
    for (const int column : {0, 9}) {
        Type(0, column, QStringLiteral("7"));
        EXPECT_EQ(Editor(), nullptr);
    }
    EXPECT_EQ(Stored(QStringLiteral("q_Id")), QStringLiteral("1|2"));
}

TEST_F(frmQueueTest, ARefusedTextIsToldOnceAndKept) {
    const struct {
        const char16_t* text;
        Qt::Key end;
    } cases[] = {{u"300", Qt::Key_Return}, {u"many", Qt::Key_Tab}, {u"-1", Qt::Key_Return}, {u"1.5", Qt::Key_Return}};
    Show();
    for (const auto& [text, end] : cases) {
        m_dialogs.ExpectMessage(BoxKind::Exclamation, QStringLiteral("Button takes a whole number from 0 to 255."));
        Type(0, ButtonColumn, QString::fromUtf16(text), end);
        ASSERT_NE(ResumedEditor(), nullptr);
        EXPECT_EQ(Editor()->text(), QString::fromUtf16(text));
        Press(Qt::Key_Escape);
        EXPECT_EQ(Shown(0, ButtonColumn), QStringLiteral("6"));
    }
    m_dialogs.ExpectMessage(BoxKind::Exclamation, QStringLiteral("Button takes a whole number from 0 to 255."));
    Type(0, ButtonColumn, QStringLiteral("300"));
    ASSERT_NE(ResumedEditor(), nullptr);
    Keys(QStringLiteral("30"));
    Press(Qt::Key_Return);
    EXPECT_EQ(Stored(QStringLiteral("q_Button")), QStringLiteral("5|30"));
}

TEST_F(frmQueueTest, TheWindowStaysOpenWithARefusedText) {
    Show();
    Click(0, ButtonColumn);
    Keys(QStringLiteral("999"));
    m_dialogs.ExpectMessage(BoxKind::Exclamation, QStringLiteral("Button takes a whole number from 0 to 255."));
    EXPECT_FALSE(m_window->close());
    EXPECT_EQ(m_closed, 0);
    ASSERT_NE(ResumedEditor(), nullptr);
    EXPECT_EQ(Editor()->text(), QStringLiteral("999"));
    Press(Qt::Key_Escape);
    EXPECT_TRUE(m_window->close());
    EXPECT_EQ(m_closed, 1);
}

TEST_F(frmQueueTest, ClosingWritesWhatStandsInAnEditor) {
    Show();
    Click(0, NameColumn);
    Keys(QStringLiteral("last words"));
    EXPECT_TRUE(m_window->close());
    EXPECT_EQ(Stored(QStringLiteral("q_Name")), QStringLiteral("second|last words"));
}

TEST_F(frmQueueTest, TheBlankRowMakesARecordWithTheStoresKey) {
    Show();
    Type(2, NameColumn, QStringLiteral("third"));
    EXPECT_EQ(Stored(QStringLiteral("q_Id || q_Name || q_On")), QStringLiteral("1second1|2first1|3third0"));
    EXPECT_EQ(Shown(2, 0), QStringLiteral("3"));
    EXPECT_EQ(Grid().model()->rowCount(), 4);
    Type(2, NumberColumn, QStringLiteral("3"));
    EXPECT_EQ(Stored(QStringLiteral("q_Number")), QStringLiteral("2|1|3"));

    m_dialogs.ExpectMessage(BoxKind::Exclamation, QStringLiteral("Number takes a whole number from -32768 to 32767."));
    Type(3, NumberColumn, QStringLiteral("40000"));
    EXPECT_EQ(Grid().model()->rowCount(), 4);
    ASSERT_NE(ResumedEditor(), nullptr);
    EXPECT_EQ(Editor()->text(), QStringLiteral("40000"));
}

TEST_F(frmQueueTest, DeleteTakesWholeRowsOnlyAndElseEmptiesTheCell) {
    Show();
    Click(0, NameColumn);
    QTest::keyClick(&Grid(), Qt::Key_Delete);
    EXPECT_EQ(Stored(QStringLiteral("coalesce(q_Name, 'null')")), QStringLiteral("second|null"));
    // What is highlighted is the current cell or a block around it, and never all that there is.
    const auto selected = [this] { return Grid().selectionModel()->selectedIndexes(); };
    QTest::keyClick(&Grid(), Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(selected(), QModelIndexList{Grid().currentIndex()});
    for (const Qt::Key key : {Qt::Key_End, Qt::Key_Home}) {
        QTest::keyClick(&Grid(), key, Qt::ControlModifier);
        EXPECT_EQ(selected(), QModelIndexList{Grid().currentIndex()}) << key;
    }
    Click(1, NameColumn);
    QTest::keyClick(&Grid(), Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(selected().size(), 2);
    Click(0, NameColumn);
    QTest::keyClick(&Grid(), Qt::Key_Delete);
    EXPECT_EQ(Stored(QStringLiteral("q_Id")), QStringLiteral("1|2"));
    QTest::keyClick(&Grid(), Qt::Key_Space, Qt::ShiftModifier);
    QTest::keyClick(&Grid(), Qt::Key_Delete);
    EXPECT_EQ(Stored(QStringLiteral("q_Id")), QStringLiteral("1"));
    EXPECT_EQ(Grid().model()->rowCount(), 2);
}

TEST_F(frmQueueTest, ARecordThatIsGoneIsToldAndLeavesTheGrid) {
    Show();
    ASSERT_TRUE(m_station.database.Run({QStringLiteral("DELETE FROM Queue WHERE q_Id = 2")}));
    m_dialogs.ExpectMessage(BoxKind::Exclamation, QStringLiteral("This record is not in the database any more."));
    Type(0, NameColumn, QStringLiteral("x"));
    EXPECT_EQ(Shown(0, NameColumn), QStringLiteral("second"));
}

TEST_F(frmQueueTest, VietnameseTypedOrPastedIsStoredAsVni) {
    Show();
    const QString unicode = QStringLiteral("G\u1EEDi ti\u1EC1n \u0111i\u1EC7n t\u1EED");
    const QString vni = QStringLiteral("G\u00F6\u00FBi tie\u00E0n \u00F1ie\u00E4n t\u00F6\u00FB");
    Type(0, NameColumn, unicode);
    EXPECT_EQ(Stored(QStringLiteral("q_Name")), QStringLiteral("second|") + vni);

    QApplication::clipboard()->setText(unicode + QStringLiteral("\nnext line"));
    Click(1, NameColumn);
    QTest::keyClick(&Grid(), Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(Stored(QStringLiteral("q_Name")), vni + u'|' + vni + QStringLiteral("|next line"));
}

TEST_F(frmQueueTest, ATextTakesItsPlacesAndNoMore) {
    Show();
    Type(0, NameColumn, QString(70, u'n'));
    EXPECT_EQ(Stored(QStringLiteral("length(q_Name)")), QStringLiteral("6|64"));
}

TEST_F(frmQueueTest, ALetterWithoutRoomIsLeftOutWhole) {
    Show();
    const QString name = QString(62, u'n') + u'z';
    for (const bool atEnd : {true, false}) {
        Type(0, NameColumn, name);
        Press(Qt::Key_Up);
        Press(Qt::Key_F2);
        Press(atEnd ? Qt::Key_End : Qt::Key_Home);
        Keys(QStringLiteral("\u1EBF"));
        ASSERT_NE(Editor(), nullptr);
        EXPECT_EQ(Editor()->text(), name);
        Keys(QStringLiteral("a"));
        EXPECT_EQ(Editor()->text(), atEnd ? name + u'a' : u'a' + name);
        Press(Qt::Key_Return);
    }
    QApplication::clipboard()->setText(QString(63, u'n') + u'\u1EBF');
    Press(Qt::Key_Up);
    QTest::keyClick(&Grid(), Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(Shown(0, NameColumn), QString(63, u'n'));
}

TEST_F(frmQueueTest, WhatWasCopiedInTheGridIsPastedAsItStands) {
    Show();
    // By itself this reads as Unicode as well as VNI.
    const QString vni = QStringLiteral("D\u00F2ch");
    ASSERT_TRUE(m_station.database.Run({QStringLiteral("UPDATE Queue SET q_Name = ? WHERE q_Id = 2"), {vni}}));
    QTest::mouseClick(&Find<QPushButton>("cmdRefresh"), Qt::LeftButton);
    Click(0, NameColumn);
    QTest::keyClick(&Grid(), Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("D\u1ECBch")) << "what other programs get";
    Click(1, NameColumn);
    QTest::keyClick(&Grid(), Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(Shown(1, NameColumn), vni);

    Press(Qt::Key_F2);
    ASSERT_NE(Editor(), nullptr);
    QTest::keyClick(Editor(), Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("D\u1ECBch"));
    QTest::keyClick(Editor(), Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(Editor()->text(), vni);
    Press(Qt::Key_Escape);

    // Into another grid, too.
    auto& objects = Find<DataGrid>("TDBGridDisplay");
    WindowDriver::Click(objects, 0, 0);
    QTest::keyClick(&objects, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(WindowDriver::Shown(objects, 0, 0), vni);
}

TEST_F(frmQueueTest, YesAndNoAreChosenFromAList) {
    Show();
    Click(0, ActiveColumn);
    Press(Qt::Key_Return);
    auto* box = qobject_cast<QComboBox*>(QApplication::focusWidget());
    ASSERT_NE(box, nullptr);
    QTest::keyClicks(box, QStringLiteral("N"));
    Press(Qt::Key_Return);
    Click(1, NameColumn);
    EXPECT_EQ(Stored(QStringLiteral("q_On")), QStringLiteral("1|0"));
    EXPECT_EQ(Shown(0, ActiveColumn), QStringLiteral("No"));
}

TEST_F(frmQueueTest, RefreshReadsGridAndModelAnew) {
    Show();
    ASSERT_TRUE(m_station.database.Run({QStringLiteral("UPDATE Queue SET q_Name = 'new' WHERE q_Id = 1")}));
    QTest::mouseClick(&Find<QPushButton>("cmdRefresh"), Qt::LeftButton);
    EXPECT_EQ(Shown(1, NameColumn), QStringLiteral("new"));
    EXPECT_EQ(m_station.installation->NumServices, 2);
}

TEST_F(frmQueueTest, EmptyAsksFirst) {
    Show();
    const QString question = QStringLiteral("Are you sure You want to delete all database?");
    m_dialogs.ExpectQuestion(BoxKind::Critical, question, false);
    QTest::mouseClick(&Find<QPushButton>("cmdEmpty"), Qt::LeftButton);
    EXPECT_EQ(Grid().model()->rowCount(), 3);
    m_dialogs.ExpectQuestion(BoxKind::Critical, question, true);
    QTest::mouseClick(&Find<QPushButton>("cmdEmpty"), Qt::LeftButton);
    EXPECT_EQ(Grid().model()->rowCount(), 1);
    EXPECT_TRUE(Stored(QStringLiteral("q_Id")).isEmpty());
    EXPECT_FALSE(m_station.reload.IsStoreChanged());
}

TEST_F(frmQueueTest, AClosedDatabaseEndsEveryCommandInABox) {
    m_station.database.CloseDatabase();
    Show();
    const QString closed = QStringLiteral("Can't open Queue database!");
    m_dialogs.ExpectMessage(BoxKind::Exclamation, closed);
    QTest::mouseClick(&Find<QPushButton>("cmdRefresh"), Qt::LeftButton);
    m_dialogs.ExpectMessage(BoxKind::Exclamation, closed);
    m_window->findChild<QAction*>(QStringLiteral("mnSetServiceCfg"))->trigger();
    m_dialogs.ExpectQuestion(BoxKind::Critical, QStringLiteral("Are you sure You want to delete all database?"), true);
    m_dialogs.ExpectMessage(BoxKind::Exclamation, closed);
    QTest::mouseClick(&Find<QPushButton>("cmdEmpty"), Qt::LeftButton);
}

TEST_F(frmQueueTest, TheLogBoxIsEmptiedAboveItsLimitAndByADoubleClick) {
    Show();
    LogBox& box = Find<LogBox>("txtLog1");
    m_window->AddLog1(QString(6000, u'x'));
    m_window->AddLog1(QStringLiteral("y"));
    EXPECT_EQ(box.Content().size(), 6001);
    m_window->AddLog1(QStringLiteral("\x02z\x03"));
    EXPECT_EQ(box.Content(), QStringLiteral("\x02z\x03"));
    EXPECT_TRUE(WaitUntil([&] { return box.toPlainText() == QStringLiteral("\u25B8z\u25C2"); }));
    QTest::mouseDClick(box.viewport(), Qt::LeftButton);
    EXPECT_TRUE(box.toPlainText().isEmpty() && box.Content().isEmpty());
}

TEST_F(frmQueueTest, TheStatusBarKeepsDeviceAndSpeedOfAClosedLine) {
    Show();
    m_station.line.SetCommStatus(QStringLiteral("COM1"), QStringLiteral(" 9600 "), true);
    EXPECT_EQ(Find<QLabel>("lblLineState").toolTip(), QStringLiteral("The line is open"));
    m_station.line.SetCommStatus(QString(), QString(), false);
    EXPECT_EQ(Find<QLabel>("lblDevice").text(), QStringLiteral("COM1"));
    EXPECT_EQ(Find<QLabel>("lblBaud").text(), QStringLiteral(" 9600 ")) << "as it was given";
    EXPECT_EQ(Find<QLabel>("lblLineState").toolTip(), QStringLiteral("The line is closed"));
}
