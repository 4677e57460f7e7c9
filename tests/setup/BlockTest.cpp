#include "tests/setup/SetupWindow.h"

#include <QAction>
#include <QClipboard>
#include <QMenu>
#include <QTimer>

namespace {

/// Two services, two counters and a printer in the setup window.
class BlockTest : public SetupWindow {
protected:
    BlockTest()
        : SetupWindow({QStringLiteral("INSERT INTO Queue (q_Id, q_Number, q_On, q_Name, q_Button) VALUES "
                                      "(1, 1, 1, 'Dòch vuï 1', 1), (2, 2, 1, 'B', 2)"),
                       QStringLiteral("INSERT INTO Display (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) "
                                      "VALUES (1, 1, 1, 'Quaày 1', 1, 0, 0), (2, 2, 3, 'Quaày 2', 1, 0, 0), "
                                      "(3, 9, 32, 'P', 1, 1, 0)")}) {}

    void Press(const char* keys, DataGrid& grid) const {
        QTest::keySequence(&grid, QKeySequence(QString::fromLatin1(keys)));
        QApplication::processEvents();
    }

    DataGrid& Objects() const { return m_hands->Grid("TDBGridDisplay"); }

    /// Selects from one cell to another.
    void Select(int row, int column, int lastRow, int lastColumn) const {
        WindowDriver::Click(Objects(), row, column);
        QTest::mouseClick(Objects().viewport(), Qt::LeftButton, Qt::ShiftModifier,
                          WindowDriver::Place(Objects(), lastRow, lastColumn));
    }

    QString Rows() {
        return Stored(QStringLiteral("SELECT d_Name,d_Number,d_Address,d_Type,d_On FROM Display ORDER BY d_Id"));
    }

    static void FromOutside(const QString& text) { QApplication::clipboard()->setText(text); }
};

const QString Before = QStringLiteral("Quaày 1,1,1,0,1|Quaày 2,2,3,0,1|P,9,32,1,1");

} // namespace

TEST_F(BlockTest, ABlockFromASpreadsheetFillsRowsAndAddsNewOnesAsOneAct) {
    Show();
    WindowDriver::Click(Objects(), 2, 0);
    FromOutside(
        QStringLiteral("\"Máy in \"\"A\"\"\"\t10\t33\tprinter\tNo\r\nQuầy 7\t7\t7\tCounter\tyes\r\nQuầy 8\t8\r\n"));
    Press("Ctrl+V", Objects());
    EXPECT_EQ(Rows(), QStringLiteral("Quaày 1,1,1,0,1|Quaày 2,2,3,0,1|Maùy in \"A\",10,33,1,0|Quaày 7,7,7,0,1|"
                                     "Quaày 8,8,null,0,0"));
    EXPECT_EQ(Objects().model()->rowCount(), 6);
    Press("Ctrl+Z", Objects());
    EXPECT_EQ(Rows(), Before) << "one act";
}

TEST_F(BlockTest, ARowIsTypedWithoutTheMouseAndALetterChoosesForAll) {
    Show();
    Objects().setFocus();
    Objects().setCurrentIndex(Objects().model()->index(3, 0));
    for (const char* const text : {"Q5", "5", "5", "C", "Y"}) {
        if (auto* box = qobject_cast<QComboBox*>(QApplication::focusWidget()))
            QTest::keyClicks(box, QString::fromLatin1(text));
        else
            WindowDriver::Keys(QString::fromLatin1(text));
        WindowDriver::Press(Qt::Key_Tab);
    }
    // Tab has gone on to the first cell of the next row.
    WindowDriver::Keys(QStringLiteral("Q6"));
    WindowDriver::Press(Qt::Key_Return);
    EXPECT_EQ(Rows(), Before + QStringLiteral("|Q5,5,5,0,1|Q6,null,null,0,0"));
    EXPECT_EQ(Objects().currentIndex(), Objects().model()->index(5, 0)) << "Enter goes down";
    Press("Ctrl+D", Objects());
    EXPECT_EQ(Rows(), Before + QStringLiteral("|Q5,5,5,0,1|Q6,null,null,0,0|Q7,null,null,0,0")) << "the row above";
    Objects().setCurrentIndex(Objects().model()->index(4, 2));
    Press("Ctrl+'", Objects());
    EXPECT_EQ(Stored(QStringLiteral("SELECT d_Address FROM Display WHERE d_Name='Q6'")), QStringLiteral("5"));

    Select(0, 3, 1, 3);
    QTest::keyClick(&Objects(), Qt::Key_D);
    EXPECT_EQ(Stored(QStringLiteral("SELECT d_Type FROM Display WHERE d_Id<4")), QStringLiteral("2|2|1"));
    Press("Ctrl+Z", Objects());
    EXPECT_EQ(Stored(QStringLiteral("SELECT d_Type FROM Display WHERE d_Id<4")), QStringLiteral("0|0|1"));

    WindowDriver::Click(Objects(), 0, 0);
    WindowDriver::Keys(QStringLiteral("left"));
    WindowDriver::Press(Qt::Key_Tab, Qt::ControlModifier);
    EXPECT_FALSE(Objects().isAncestorOf(QApplication::focusWidget()));
    EXPECT_EQ(Stored(QStringLiteral("SELECT d_Name FROM Display WHERE d_Id=1")), QStringLiteral("left"));
}

TEST_F(BlockTest, AMenuBesideTheCellsDoesTheSame) {
    Show();
    const auto choose = [this](DataGrid& grid, int row, const QString& entry) {
        WindowDriver::Click(grid, row, 0);
        // The menu runs in an event loop of its own.
        QStringList entries;
        QTimer::singleShot(0, m_window.get(), [&] {
            auto* const menu = m_window->findChild<QMenu*>(QStringLiteral("gridMenu"));
            ASSERT_NE(menu, nullptr);
            for (QAction* action : menu->actions()) {
                entries += action->text().remove(u'&').section(u'\t', 0, 0);
                if (entries.last() == entry)
                    action->trigger();
            }
            menu->close();
        });
        Q_EMIT grid.customContextMenuRequested(WindowDriver::Place(grid, row, 0));
        return entries;
    };
    EXPECT_TRUE(choose(Objects(), 1, QStringLiteral("Duplicate Row")).contains(QStringLiteral("Test Connect")));
    EXPECT_EQ(Rows(), Before + QStringLiteral("|Quaày 3,3,4,0,1"));
    EXPECT_FALSE(choose(m_hands->Grid("TDBGridQueue"), 0, QStringLiteral("Delete Row"))
                     .contains(QStringLiteral("Test Connect")));
    EXPECT_EQ(Stored(QStringLiteral("SELECT q_Id FROM Queue")), QStringLiteral("2"));
}

TEST_F(BlockTest, AnEmptyRowOfABlockEmptiesItsCellAndMakesNoRecord) {
    Show();
    WindowDriver::Click(Objects(), 0, 2);
    FromOutside(QStringLiteral("11\n\n13\n"));
    Press("Ctrl+V", Objects());
    EXPECT_EQ(Rows(), QStringLiteral("Quaày 1,1,11,0,1|Quaày 2,2,null,0,1|P,9,13,1,1"));
    Press("Ctrl+Z", Objects());
    WindowDriver::Click(Objects(), 2, 0);
    FromOutside(QStringLiteral("X\r\n\r\n\r\nY\r\nZ\r\n"));
    Press("Ctrl+V", Objects());
    EXPECT_EQ(Rows(), QStringLiteral("Quaày 1,1,1,0,1|Quaày 2,2,3,0,1|X,9,32,1,1|Y,null,null,0,0|Z,null,null,0,0"));
    Press("Ctrl+Z", Objects());
    EXPECT_EQ(Rows(), Before);
    // What is typed in an open cell is no reason to delete its row.
    WindowDriver::Click(Objects(), 0, 0);
    WindowDriver::Keys(QStringLiteral("typed"));
    QTest::keySequence(m_window.get(), QKeySequence(QStringLiteral("Ctrl+Shift+Delete")));
    EXPECT_EQ(Objects().model()->rowCount(), 4);
}

TEST_F(BlockTest, ARefusedCellRefusesTheWholeBlockAndIsNamed) {
    Show();
    const std::pair<const char*, const char*> blocks[] = {
        {"X\t4\t400\nY\tfive\t6", "Nothing was changed:\nRow 1, Address: Address takes a whole number from 0 to "
                                  "255.\nRow 2, Number: Number takes a whole number from 0 to 255."},
        {"X\t4\t4\tClock", "Nothing was changed:\nRow 1, Type: \"Clock\" is none of Hub, Display, Printer, Counter."},
        {"1\t2\t3\t0\t1\t6\t7\t8\t9",
         "Nothing was changed: the block is 9 columns wide, and there are 8 from here on."},
    };
    for (const auto& [block, told] : blocks) {
        WindowDriver::Click(Objects(), 0, 0);
        FromOutside(QString::fromUtf8(block));
        m_dialogs.ExpectMessage(BoxKind::Exclamation, QString::fromUtf8(told));
        Press("Ctrl+V", Objects());
        EXPECT_EQ(Rows(), Before) << told;
    }
    EXPECT_FALSE(m_station.database.History().NextUndo()) << "nothing was done that could be undone";
}

TEST_F(BlockTest, CopiedRowsKeepTheirLettersWithinTheProgramAndAreUnicodeElsewhere) {
    Show();
    Select(0, 0, 1, 3);
    Press("Ctrl+C", Objects());
    EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("Quầy 1\t1\t1\tCounter\nQuầy 2\t2\t3\tCounter"));
    WindowDriver::Click(Objects(), 3, 0);
    Press("Ctrl+V", Objects());
    EXPECT_EQ(Rows(), Before + QStringLiteral("|Quaày 1,1,1,0,0|Quaày 2,2,3,0,0"));
    Press("Ctrl+Z", Objects());
    // By way of another program the letters are made anew.
    Select(0, 0, 1, 0);
    Press("Ctrl+C", Objects());
    FromOutside(QApplication::clipboard()->text());
    WindowDriver::Click(Objects(), 1, 0);
    Press("Ctrl+V", Objects());
    EXPECT_EQ(Rows(), QStringLiteral("Quaày 1,1,1,0,1|Quaày 1,2,3,0,1|Quaày 2,9,32,1,1"));
}

TEST_F(BlockTest, FillsDuplicatesAndDeletesAreOneActEach) {
    Show();
    const std::pair<std::function<void()>, QString> acts[] = {
        {[this] {
             Select(0, 2, 2, 2);
             Press("Ctrl+Shift+D", Objects());
         },
         QStringLiteral("Quaày 1,1,1,0,1|Quaày 2,2,2,0,1|P,9,3,1,1")},
        {[this] {
             Select(0, 3, 2, 4);
             Press("Ctrl+D", Objects());
         },
         QStringLiteral("Quaày 1,1,1,0,1|Quaày 2,2,3,0,1|P,9,32,0,1")},
        {[this] {
             WindowDriver::Click(Objects(), 0, 1);
             Press("Ctrl+D", Objects());
         },
         Before + QStringLiteral("|Quaày 3,3,2,0,1")},
        {[this] {
             Select(0, 1, 1, 2);
             QTest::keyClick(&Objects(), Qt::Key_Delete);
         },
         QStringLiteral("Quaày 1,null,null,0,1|Quaày 2,null,null,0,1|P,9,32,1,1")},
        {[this] {
             Select(0, 0, 1, 0);
             m_dialogs.ExpectQuestion(BoxKind::Exclamation, QStringLiteral("Delete 2 rows?"), true);
             Press("Ctrl+Shift+Delete", Objects());
         },
         QStringLiteral("P,9,32,1,1")},
        {[this] {
             Select(0, 0, 1, 0);
             FromOutside(QStringLiteral("same"));
             Press("Ctrl+V", Objects());
         },
         QStringLiteral("same,1,1,0,1|same,2,3,0,1|P,9,32,1,1")},
    };
    for (const auto& [act, after] : acts) {
        act();
        EXPECT_EQ(Rows(), after);
        Press("Ctrl+Z", Objects());
        EXPECT_EQ(Rows(), Before);
    }
}
