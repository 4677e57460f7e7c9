#include "tests/setup/SetupWindow.h"
#include "widgets/WindowPlaces.h"

#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QSplitter>
#include <QTabWidget>

namespace {

const QString MustSelect = QStringLiteral("Must Select Service and Counter in Lists!");
const QString RemoveAll = QStringLiteral("Are you sure to remove all counter from List ?");

/// The four tabs on a store with two services, two counters, a printer, a display and a hub with one of the counters.
class SetupPagesTest : public SetupWindow {
protected:
    SetupPagesTest()
        : SetupWindow(
              {QStringLiteral("INSERT INTO Queue (q_Id, q_Number, q_On, q_Name) VALUES (1, 1, 1, 'A'), (2, 2, 1, "
                              "'B')"),
               QStringLiteral("INSERT INTO Display (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) VALUES "
                              "(1, 1, 1, 'C1', 1, 0, 0), (2, 2, 2, 'C2', 1, 0, 5), (3, 3, 32, 'P', 1, 1, 0), "
                              "(4, 4, 40, 'D', 1, 2, 0), (5, 5, 64, 'H', 1, 3, 0)"),
               QStringLiteral("INSERT INTO [Queue-Display] (ID, q_Id, d_Id) VALUES (1, 1, 1), (2, 1, 2), (3, 2, "
                              "1), (4, 99, 1)"),
               QStringLiteral("INSERT INTO ScanPlan (ID, d_Id, [Order]) VALUES (1, 1, 2), (2, 2, 1), (3, 77, 3)"),
               QStringLiteral("INSERT INTO [Info-Direction] (inf_Id,d_Id,Dir_Id) VALUES (4, 1, 2)")}) {
        (void)m_station.reload.ReloadAll();
    }

    void Show(int tab = 1) {
        SetupWindow::Show();
        GoToTab(tab);
    }

    void GoToTab(int number) const {
        QTest::keyClick(m_window.get(), static_cast<Qt::Key>(Qt::Key_0 + number), Qt::AltModifier);
        QApplication::processEvents();
    }

    DataGrid& Grid(const char* name) const { return m_hands->Grid(name); }
    std::string Column(const char* grid, int column) const { return WindowDriver::Column(Grid(grid), column); }

    std::string StoredText(const QString& query) { return Stored(query).toStdString(); }

    /// Clicks a button whose question is answered.
    void ClickAndAnswer(const char* button, BoxKind kind, const QString& question, bool yes) {
        m_dialogs.ExpectQuestion(kind, question, yes);
        m_hands->ClickButton(button);
    }
};

} // namespace

TEST_F(SetupPagesTest, TheListOfCountersFollowsTheSelectedService) {
    Show();
    EXPECT_EQ(Column("TDBGridQD", 0), "1|2");
    EXPECT_EQ(Column("TDBGridQD", 2), "C1|C2");
    WindowDriver::Click(Grid("TDBGridQueue"), 1, 3);
    EXPECT_EQ(m_hands->Find<QLabel>("lblService").text(), QStringLiteral("B"));
    EXPECT_EQ(Column("TDBGridQD", 2), "C1");
    WindowDriver::Type(Grid("TDBGridQueue"), 1, 1, QStringLiteral("new"));
    WindowDriver::Press(Qt::Key_Up);
    EXPECT_EQ(m_hands->Find<QLabel>("lblService").text(), QStringLiteral("new"));
    EXPECT_EQ(Column("TDBGridQD", 1), "new");
    WindowDriver::Click(Grid("TDBGridQueue"), 2, 1);
    EXPECT_EQ(Column("TDBGridQD", 2), "") << "the blank row is no service";
}

TEST_F(SetupPagesTest, CountersAreRemovedOneByOneAndTogetherAfterAQuestion) {
    Show();
    (void)m_station.reload.Refresh();
    WindowDriver::Click(Grid("TDBGridQD"), 1, 2);
    const QString one = QStringLiteral("Are you sure to remove counter 'C2' from List ?");
    ClickAndAnswer("cmdDelete", BoxKind::Plain, one, false);
    EXPECT_EQ(Column("TDBGridQD", 2), "C1|C2");
    ClickAndAnswer("cmdDelete", BoxKind::Plain, one, true);
    EXPECT_EQ(Column("TDBGridQD", 2), "C1");
    ClickAndAnswer("cmdDelAll", BoxKind::Plain, RemoveAll, false);
    ClickAndAnswer("cmdDelAll", BoxKind::Plain, RemoveAll, true);
    EXPECT_EQ(StoredText(QStringLiteral("SELECT ID FROM [Queue-Display]")), "3|4");
    m_hands->ClickButton("cmdDelete");
    m_hands->ClickButton("cmdDelAll");
    EXPECT_FALSE(m_station.reload.IsStoreChanged());

    m_hands->ClickButton("cmdNew");
    EXPECT_TRUE(m_station.reload.IsStoreChanged());
    EXPECT_EQ(Column("TDBGridQD", 2), "C1");
    Grid("TDBGridQD").setFocus();
    WindowDriver::Press(Qt::Key_Delete);
    EXPECT_EQ(Column("TDBGridQD", 2), "") << "rows of this list may be deleted in it";
}

TEST_F(SetupPagesTest, ADeletedObjectLeavesAllListsAtOnce) {
    Show();
    Grid("TDBGridDisplay").selectRow(1);
    Grid("TDBGridDisplay").setFocus();
    WindowDriver::Press(Qt::Key_Delete);
    EXPECT_EQ(Column("TDBGridDisplay", 0), "C1|P|D|H");
    EXPECT_EQ(Column("TDBGridQD", 2), "C1|") << "the pair stays, without its counter";
    EXPECT_TRUE(m_station.reload.IsStoreChanged());
    GoToTab(2);
    EXPECT_EQ(Column("TDBGridDisplayList", 0), "C1|P|D|H");
    EXPECT_EQ(Column("TDBGridPlan", 2), "C1");
    GoToTab(4);
    EXPECT_EQ(Column("TDBGridHubCounters", 0), "");
    EXPECT_EQ(Column("TDBGridCounters", 0), "C1|P|D");
}

TEST_F(SetupPagesTest, ColumnsAndChoicesOfTheObjects) {
    Show();
    DataGrid& objects = Grid("TDBGridDisplay");
    EXPECT_EQ(Column("TDBGridDisplay", 3), "Counter|Counter|Printer|Display|Hub");
    EXPECT_EQ(Column("TDBGridDisplay", 5), "||||");
    QStringList choices;
    for (const auto& [value, text] : static_cast<GridModel*>(objects.model())->Columns()[3].values)
        choices += QStringLiteral("%1 %2").arg(value).arg(text);
    EXPECT_EQ(choices.join(u'|'), QStringLiteral("3 Hub|2 Display|1 Printer|0 Counter"));
    WindowDriver::Type(objects, 5, 0, QStringLiteral("new"));
    EXPECT_EQ(
        StoredText(QStringLiteral("SELECT d_Name,d_Number,d_On,d_HubId,d_direction,d_VoiceLocal,d_Type FROM Display "
                                  "WHERE d_Id = 6")),
        "new,null,0,0,0,0,0");
    m_dialogs.ExpectMessage(BoxKind::Exclamation, QStringLiteral("Address takes a whole number from 0 to 255."));
    WindowDriver::Type(objects, 5, 2, QStringLiteral("256"));
    EXPECT_TRUE(WaitUntil([&] { return !objects.HasRefusedText() && WindowDriver::Editor(); }));
    WindowDriver::Press(Qt::Key_Escape);
}

TEST_F(SetupPagesTest, PassingThroughAListWritesNothingThatNobodyChose) {
    Run(QStringLiteral("UPDATE Display SET d_Type = NULL, d_On = NULL WHERE d_Id = 1"));
    Run(QStringLiteral("UPDATE Display SET d_Type = 9 WHERE d_Id = 2"));
    Show();
    DataGrid& objects = Grid("TDBGridDisplay");
    for (const int row : {0, 1}) {
        for (const Qt::Key end : {Qt::Key_Tab, Qt::Key_Return}) {
            WindowDriver::Click(objects, row, 3);
            WindowDriver::Press(Qt::Key_F2);
            WindowDriver::Press(end);
            WindowDriver::Click(objects, row, 0);
        }
    }
    EXPECT_EQ(StoredText(QStringLiteral("SELECT d_Type, d_On FROM Display WHERE d_Id < 3")), "null,null|9,1");
    // Keys go through the list until the cell is left.
    WindowDriver::Click(objects, 4, 3);
    WindowDriver::Press(Qt::Key_F2);
    WindowDriver::Press(Qt::Key_Down);
    WindowDriver::Press(Qt::Key_Down);
    WindowDriver::Press(Qt::Key_Return);
    EXPECT_EQ(WindowDriver::Shown(objects, 4, 3), QStringLiteral("Printer"));
}

TEST_F(SetupPagesTest, ARefusedTextComesBackWithItsTab) {
    Show();
    WindowDriver::Click(Grid("TDBGridDisplay"), 0, 1);
    WindowDriver::Keys(QStringLiteral("abc"));
    m_dialogs.ExpectMessage(BoxKind::Exclamation, QStringLiteral("Number takes a whole number from 0 to 255."));
    GoToTab(2);
    EXPECT_TRUE(WaitUntil([] { return WindowDriver::Editor() && WindowDriver::Editor()->isVisible(); }));
    EXPECT_EQ(WindowDriver::Editor()->text(), QStringLiteral("abc"));
    WindowDriver::Press(Qt::Key_Escape);
}

TEST_F(SetupPagesTest, TestConnectTakesTheRowAndIsDisabledWhileItRuns) {
    Show();
    WindowDriver::Click(Grid("TDBGridDisplay"), 2, 0);
    m_dialogs.ExpectMessage(BoxKind::Plain, QStringLiteral("False"));
    m_hands->ClickButton("cmdTestConnect");
    m_dialogs.ExpectMessage(BoxKind::Exclamation, QStringLiteral("This object has no address to ask."));
    WindowDriver::Click(Grid("TDBGridDisplay"), 5, 0);
    m_hands->ClickButton("cmdTestConnect");
    EXPECT_TRUE(m_hands->Find<QPushButton>("cmdTestConnect").isEnabled());
}

TEST_F(SetupPagesTest, ThePlanIsChangedByHandAndOrderedByTyping) {
    Show(2);
    (void)m_station.reload.Refresh();
    EXPECT_TRUE(Grid("TDBGridDisplayList").isColumnHidden(3));
    EXPECT_EQ(Column("TDBGridPlan", 2), "C2|C1") << "an entry without its object is not shown";
    Run(QStringLiteral("UPDATE Display SET d_Number = NULL WHERE d_Id = 4"));
    m_hands->ClickButton("cmdPlan_3");
    WindowDriver::Click(Grid("TDBGridDisplayList"), 3, 0);
    m_hands->ClickButton("cmdPlan_0");
    m_hands->ClickButton("cmdPlan_0");
    EXPECT_EQ(Column("TDBGridPlan", 2), "D|D|C2|C1") << "an object may come twice, its number may be missing";
    EXPECT_FALSE(m_station.reload.IsStoreChanged());
    for (const auto& [typed, refusal] :
         {std::pair("", "CounterID must name an object."), {"88", "CounterID 88 is not the number of an object."}}) {
        m_dialogs.ExpectMessage(BoxKind::Exclamation, QString::fromLatin1(refusal));
        WindowDriver::Type(Grid("TDBGridPlan"), 0, 1, QString::fromLatin1(typed),
                           *typed == '\0' ? Qt::Key_Delete : Qt::Key_Return);
        // The text comes back to be typed again.
        ASSERT_TRUE(WaitUntil([] { return WindowDriver::Editor() != nullptr; }));
        EXPECT_EQ(WindowDriver::Editor()->text(), QString::fromLatin1(typed));
        WindowDriver::Press(Qt::Key_Escape);
    }
    WindowDriver::Type(Grid("TDBGridPlan"), 0, 3, QStringLiteral("9"));
    EXPECT_TRUE(m_station.reload.IsStoreChanged());
    WindowDriver::Type(Grid("TDBGridPlan"), 1, 2, QStringLiteral("Door"));
    EXPECT_EQ(Column("TDBGridPlan", 2), "Door|Door|C2|C1");
    EXPECT_EQ(Column("TDBGridDisplayList", 0), "C1|C2|P|Door|H");
    m_hands->ClickButton("cmdPlan_3");
    EXPECT_EQ(Column("TDBGridPlan", 3), "|1|2|9");
    WindowDriver::Click(Grid("TDBGridPlan"), 3, 0);
    m_hands->ClickButton("cmdPlan_1");
    EXPECT_EQ(Column("TDBGridPlan", 2), "Door|C2|C1");

    const QString question = QStringLiteral("Are you sure you want to delete all scan list?");
    ClickAndAnswer("cmdPlan_2", BoxKind::Exclamation, question, false);
    EXPECT_EQ(Column("TDBGridPlan", 2), "Door|C2|C1");
    ClickAndAnswer("cmdPlan_2", BoxKind::Exclamation, question, true);
    EXPECT_EQ(StoredText(QStringLiteral("SELECT * FROM ScanPlan")), "");
    m_hands->ClickButton("cmdPlan_1");
    EXPECT_EQ(Column("TDBGridPlan", 2), "");
}

TEST_F(SetupPagesTest, ARefusedPlanLeavesTheOldOne) {
    Show(2);
    Run(QStringLiteral(
        "CREATE TEMP TRIGGER full BEFORE INSERT ON ScanPlan WHEN NEW.[Order] > 2 BEGIN SELECT RAISE(FAIL, "
        "'disk full'); END"));
    m_dialogs.ExpectQuestion(BoxKind::Exclamation,
                             QStringLiteral("This will delete all scan list. Do you want to continue?"), true);
    m_dialogs.ExpectMessage(BoxKind::Exclamation, QStringLiteral("disk full"));
    m_hands->ClickButton("cmdAuto");
    EXPECT_EQ(StoredText(QStringLiteral("SELECT ID FROM ScanPlan")), "1|2|3");
}

TEST_F(SetupPagesTest, DirectionsAreStoredTogetherAndNotForgottenInSilence) {
    Show(3);
    DataGrid& matrix = Grid("TDBGrid1");
    EXPECT_EQ(WindowDriver::Shown(matrix, 0, 1) + WindowDriver::Shown(matrix, 0, 2), QStringLiteral("RightNone"));
    EXPECT_EQ(matrix.model()->headerData(0, Qt::Horizontal).toString(), QStringLiteral("Display \\ Counter"));
    WindowDriver::Click(matrix, 1, 1);
    WindowDriver::Press(Qt::Key_Return);
    EXPECT_EQ(qobject_cast<QComboBox*>(QApplication::focusWidget()), nullptr) << "the last row is no display";

    const QString question = QStringLiteral("The directions were changed but not stored. Store them now?");
    WindowDriver::Click(matrix, 0, 2);
    QApplication::processEvents();
    ASSERT_NE(QApplication::activePopupWidget(), nullptr) << "one click opens the list";
    QTest::keyClick(QApplication::activePopupWidget()->focusWidget(), Qt::Key_Escape);
    WindowDriver::Press(Qt::Key_Escape);
    EXPECT_EQ(Column("TDBGrid1", 2), "None|None");
    WindowDriver::Choose(matrix, 0, 2, QStringLiteral("D"));
    EXPECT_TRUE(m_hands->Find<QLabel>("lblUnstored").isVisible());
    // Esc leaves everything as it is, on the way to another tab and out of the program.
    m_dialogs.ExpectThreeWay(BoxKind::Exclamation, question, Answer::Cancel);
    GoToTab(1);
    EXPECT_TRUE(matrix.isVisible());
    m_dialogs.ExpectThreeWay(BoxKind::Exclamation, question, Answer::Cancel);
    EXPECT_FALSE(m_window->close());
    EXPECT_EQ(Column("TDBGrid1", 2), "Down|None");
    m_dialogs.ExpectThreeWay(BoxKind::Exclamation, question, Answer::No);
    GoToTab(1);
    GoToTab(3);
    EXPECT_EQ(Column("TDBGrid1", 2), "None|None");

    WindowDriver::Choose(matrix, 0, 2, QStringLiteral("D"));
    Run(QStringLiteral("CREATE TEMP TRIGGER full BEFORE INSERT ON [Info-Direction] WHEN NEW.d_Id = 2 BEGIN SELECT "
                       "RAISE(FAIL, 'disk full'); END"));
    m_dialogs.ExpectMessage(BoxKind::Exclamation, QStringLiteral("disk full"));
    m_hands->ClickButton("cmdUpdate");
    EXPECT_EQ(StoredText(QStringLiteral("SELECT inf_Id,d_Id,Dir_Id FROM [Info-Direction]")), "4,1,2");
    m_dialogs.ExpectThreeWay(BoxKind::Exclamation, question, Answer::Yes);
    m_dialogs.ExpectMessage(BoxKind::Exclamation, QStringLiteral("disk full"));
    EXPECT_FALSE(m_window->close());
    m_dialogs.ExpectThreeWay(BoxKind::Exclamation, question, Answer::Yes);
    m_dialogs.ExpectMessage(BoxKind::Exclamation, QStringLiteral("disk full"));
    GoToTab(1);
    EXPECT_EQ(Column("TDBGrid1", 2), "Down|None") << "what could not be stored stays";
    Run(QStringLiteral("DROP TRIGGER full"));
    m_dialogs.ExpectThreeWay(BoxKind::Exclamation, question, Answer::Yes);
    m_window->close();
    EXPECT_TRUE(WaitUntil([this] { return !m_window->isVisible(); }));
    EXPECT_EQ(StoredText(QStringLiteral("SELECT inf_Id,d_Id,Dir_Id FROM [Info-Direction] ORDER BY d_Id")),
              "4,1,2|4,2,4");
    EXPECT_EQ(m_station.installation->DirectionOf(4, 2), 4);
}

TEST_F(SetupPagesTest, TheMatrixTakesDevicesFromTheStoreAndDirectionsFromTheModel) {
    Run(QStringLiteral("UPDATE [Info-Direction] SET Dir_Id = 1"));
    Run(QStringLiteral("UPDATE Display SET d_Id = 40000, d_HubId = 0 WHERE d_Id = 2"));
    Show(3);
    EXPECT_EQ(Column("TDBGrid1", 1), "Right|None");
    EXPECT_EQ(Grid("TDBGrid1").model()->columnCount(), 2) << "the table takes keys to 32767";
    m_hands->ClickButton("cmdReloadDir");
    EXPECT_EQ(Column("TDBGrid1", 1), "Left|None");
    Run(QStringLiteral("DELETE FROM Display WHERE d_Type = 2"));
    GoToTab(1);
    m_hands->ClickButton("cmdRefresh");
    GoToTab(3);
    EXPECT_EQ(Column("TDBGrid1", 0), "--------");
    m_dialogs.ExpectMessage(BoxKind::Plain, QStringLiteral("Update Done."));
    m_hands->ClickButton("cmdUpdate");
    EXPECT_EQ(StoredText(QStringLiteral("SELECT inf_Id,d_Id,Dir_Id FROM [Info-Direction]")), "");
}

TEST_F(SetupPagesTest, DevicesGoBehindTheHubAndBack) {
    Run(QStringLiteral("INSERT INTO Display (d_Id, d_Name, d_Type, d_HubId) VALUES (6, 'H2', 3, 0), (7, 'null', 0, "
                       "NULL)"));
    Show(4);
    EXPECT_TRUE(Grid("TDBGridHUB").isColumnHidden(3) && Grid("TDBGridHubCounters").isColumnHidden(2));
    EXPECT_EQ(Column("TDBGridCounters", 0), "C1|P|D") << "no hubs, no members, no null";
    EXPECT_EQ(Column("TDBGridHubCounters", 0), "C2");
    (void)m_station.reload.Refresh();
    WindowDriver::Click(Grid("TDBGridHUB"), 1, 0);
    EXPECT_EQ(m_hands->Find<QLabel>("lblHub").text(), QStringLiteral("H2"));
    EXPECT_EQ(Column("TDBGridHubCounters", 0), "");
    m_hands->ClickButton("cmdRemCounterFromHub");
    WindowDriver::Click(Grid("TDBGridHUB"), 0, 0);
    WindowDriver::Click(Grid("TDBGridCounters"), 1, 0);
    m_hands->ClickButton("cmdAddCounterToHub");
    EXPECT_EQ(Column("TDBGridHubCounters", 0), "C2|P");
    EXPECT_EQ(Column("TDBGridCounters", 0), "C1|D");
    const QString one = QStringLiteral("Are you sure to remove counter 'C2' from List ?");
    WindowDriver::Click(Grid("TDBGridHubCounters"), 0, 0);
    ClickAndAnswer("cmdRemCounterFromHub", BoxKind::Plain, one, false);
    ClickAndAnswer("cmdRemCounterFromHub", BoxKind::Plain, one, true);
    EXPECT_EQ(Column("TDBGridCounters", 0), "C1|C2|D");
    EXPECT_EQ(m_station.installation->HubTable[4].Slots[0], 1) << "the model follows by the refresh";
    m_hands->ClickButton("cmdRefreshHub");
    EXPECT_EQ(m_station.installation->HubTable[4].Slots[0], 2);
    ClickAndAnswer("cmdRemAll", BoxKind::Plain, RemoveAll, true);
    EXPECT_EQ(StoredText(QStringLiteral("SELECT COUNT(*) FROM Display WHERE d_HubId <> 0")), "0");
    EXPECT_FALSE(m_station.reload.IsStoreChanged());

    Run(QStringLiteral("DELETE FROM Display"));
    m_hands->ClickButton("cmdRefreshHub");
    EXPECT_EQ(m_hands->Find<QLabel>("lblHub").text(), QString());
    m_dialogs.ExpectMessage(BoxKind::Exclamation, MustSelect);
    m_hands->ClickButton("cmdAddCounterToHub");
    m_hands->ClickButton("cmdRemAll");
    GoToTab(1);
    m_hands->ClickButton("cmdRefresh");
    m_dialogs.ExpectMessage(BoxKind::Exclamation, MustSelect);
    m_hands->ClickButton("cmdNew");
}

TEST_F(SetupPagesTest, TabGoesOnOverLockedCellsAndTheEndsOfRows) {
    Show();
    DataGrid& objects = Grid("TDBGridDisplay");
    WindowDriver::Click(objects, 0, 4);
    WindowDriver::Press(Qt::Key_Return);
    ASSERT_NE(qobject_cast<QComboBox*>(QApplication::focusWidget()), nullptr);
    WindowDriver::Press(Qt::Key_Tab);
    EXPECT_EQ(objects.currentIndex(), objects.model()->index(1, 0)) << "the cells behind Active are locked";
    ASSERT_NE(WindowDriver::Editor(), nullptr);
    WindowDriver::Keys(QStringLiteral("new"));
    WindowDriver::Press(Qt::Key_Backtab);
    EXPECT_EQ(objects.currentIndex(), objects.model()->index(0, 4));
    EXPECT_EQ(WindowDriver::Shown(objects, 1, 0), QStringLiteral("new"));
}

TEST_F(SetupPagesTest, AFindingIsCountedMarkedAndGoneTo) {
    Show();
    auto& count = m_hands->Find<QPushButton>("cmdFindings");
    // What no grid shows is mended from the list.
    EXPECT_EQ(count.text(), QStringLiteral("Check: 1 finding"));
    Run(QStringLiteral("UPDATE Display SET d_HubId = 99 WHERE d_Id = 3"));
    m_hands->ClickButton("cmdRefresh");
    EXPECT_TRUE(WaitUntil([&] { return count.text() == QStringLiteral("Check: 2 findings"); }));
    QTest::mouseClick(&count, Qt::LeftButton);
    auto& findings = m_hands->Find<QListWidget>("lstFindings");
    const auto mend = [&](const QString& question) {
        m_dialogs.ExpectQuestion(BoxKind::Plain, question, true);
        QTest::mouseClick(findings.viewport(), Qt::LeftButton, {}, findings.visualItemRect(findings.item(0)).center());
    };
    mend(QStringLiteral("Put 'P' on the bus itself?"));
    EXPECT_TRUE(WaitUntil([&] { return count.text() == QStringLiteral("Check: 1 finding"); }));
    mend(QStringLiteral("Remove the entry (order 3, counter 77) from the scan plan?"));
    EXPECT_TRUE(WaitUntil([&] { return count.text() == QStringLiteral("Check: nothing found"); }));
    QTest::mouseClick(&count, Qt::LeftButton);

    WindowDriver::Type(Grid("TDBGridDisplay"), 3, 2, QStringLiteral("127"));
    EXPECT_TRUE(WaitUntil([&] { return count.text() == QStringLiteral("Check: 1 finding"); }));
    const QString text = QStringLiteral("Object 'D': address 127 is that of the broadcast.");
    EXPECT_EQ(Grid("TDBGridDisplay").model()->index(3, 2).data(Qt::ToolTipRole).toString(), text);
    WindowDriver::Click(Grid("TDBGridQueue"), 0, 1);
    GoToTab(4);
    QTest::mouseClick(&count, Qt::LeftButton);
    auto& list = m_hands->Find<QListWidget>("lstFindings");
    ASSERT_EQ(list.count(), 2);
    EXPECT_EQ(list.item(0)->text(), text);
    EXPECT_TRUE(list.item(1)->text().startsWith(QStringLiteral("Hint: "))) << "what is not in step is no fault";
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, list.visualItemRect(list.item(0)).center());
    DataGrid& objects = Grid("TDBGridDisplay");
    EXPECT_TRUE(objects.hasFocus());
    EXPECT_EQ(objects.currentIndex(), objects.model()->index(3, 2));
    EXPECT_TRUE(m_hands->Find<QPushButton>("cmdCheck").isChecked());
    WindowDriver::Keys(QStringLiteral("41"));
    WindowDriver::Press(Qt::Key_Return);
    EXPECT_TRUE(WaitUntil([&] { return list.count() == 1; }));
    m_hands->ClickButton("cmdCheck");
    EXPECT_FALSE(list.isVisible());
}

TEST_F(SetupPagesTest, PlacesAreKeptForTheNextTime) {
    const WindowPlaces places(Path(QStringLiteral("Windows.ini")));
    Show();
    m_window->resize(1200, 690);
    QApplication::processEvents();
    auto& splitter = m_hands->Find<QSplitter>("splObjects");
    splitter.setSizes({300, 800});
    m_hands->ClickButton("cmdCheck");
    const QList<int> sizes = splitter.sizes();
    QHeaderView& head = *Grid("TDBGridDisplay").horizontalHeader();
    const QPoint edge(head.sectionViewportPosition(1) - 1, head.height() / 2);
    QTest::mousePress(head.viewport(), Qt::LeftButton, {}, edge);
    QTest::mouseMove(head.viewport(), edge + QPoint(40, 0));
    QTest::mouseRelease(head.viewport(), Qt::LeftButton, {}, edge + QPoint(60, 0));
    const int width = head.sectionSize(0);
    GoToTab(4);
    m_window->close();
    SetupWindow::Show();
    EXPECT_EQ(m_hands->Find<QTabWidget>("TabStrip1").currentIndex(), 3);
    GoToTab(1);
    EXPECT_EQ(Grid("TDBGridDisplay").horizontalHeader()->sectionSize(0), width);
    EXPECT_EQ(m_window->size(), QSize(1200, 690));
    EXPECT_EQ(m_hands->Find<QSplitter>("splObjects").sizes(), sizes);
    EXPECT_TRUE(m_hands->Find<QListWidget>("lstFindings").isVisible());
}

TEST_F(SetupPagesTest, EmptyingLeavesNothingInAnyList) {
    Show();
    ClickAndAnswer("cmdEmpty", BoxKind::Critical, QStringLiteral("Are you sure You want to delete all database?"),
                   true);
    EXPECT_EQ(Column("TDBGridDisplay", 0) + Column("TDBGridQD", 0), "");
    GoToTab(2);
    EXPECT_EQ(Column("TDBGridDisplayList", 0) + Column("TDBGridPlan", 0), "");
    GoToTab(3);
    EXPECT_EQ(Grid("TDBGrid1").model()->rowCount(), 0);
    GoToTab(4);
    EXPECT_EQ(Column("TDBGridHUB", 0) + Column("TDBGridCounters", 0) + Column("TDBGridHubCounters", 0), "");
    EXPECT_EQ(m_station.installation->NumObjects, 5) << "the model stays until a reload";
}
