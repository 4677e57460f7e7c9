#include "tests/setup/SetupWindow.h"

#include <QAction>
#include <QClipboard>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QTabWidget>

namespace {

/// A hall in the setup window, whose whole description can be told.
class UndoTest : public SetupWindow {
protected:
    UndoTest()
        : SetupWindow(
              {QStringLiteral("INSERT INTO Queue (q_Id, q_Number, q_On, q_Name) VALUES (1, 1, 1, 'Gôûi tieàn')"),
               QStringLiteral("INSERT INTO Display (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) "
                              "VALUES (1, 1, 1, 'C1', 1, 0, 0), (2, 2, 2, 'C2', 1, 0, 5), (4, 4, 40, 'D', 1, "
                              "2, 0), (5, 5, 64, 'H', 1, 3, 0)"),
               QStringLiteral("INSERT INTO [Queue-Display] (ID, q_Id, d_Id) VALUES (1, 1, 1), (2, 1, 2)"),
               QStringLiteral("INSERT INTO ScanPlan (ID, d_Id, [Order]) VALUES (1, 1, 2), (2, 2, 1)"),
               QStringLiteral("INSERT INTO [Info-Direction] (inf_Id,d_Id,Dir_Id) VALUES (4, 1, 2)")}) {
        (void)m_station.reload.ReloadAll();
    }

    QString Description() {
        QStringList all;
        for (const char* const table : changeset::Tables())
            all += Stored(QStringLiteral("SELECT * FROM [%1] ORDER BY 1,2").arg(QLatin1String(table)));
        return all.join(u'\n');
    }

    QAction& Menu(const char* name) const { return *m_window->findChild<QAction*>(QString::fromLatin1(name)); }
    QString MenuText(const char* name) const { return Menu(name).text().remove(u'&'); }

    void Press(const char* keys) const {
        QTest::keySequence(m_window.get(), QKeySequence(QString::fromLatin1(keys)));
        QApplication::processEvents();
    }

    void GoToTab(int number) const {
        QTest::keyClick(m_window.get(), static_cast<Qt::Key>(Qt::Key_0 + number), Qt::AltModifier);
        QApplication::processEvents();
    }

    void Answer(const char* button, BoxKind kind, const char* question) {
        m_dialogs.ExpectQuestion(kind, QString::fromLatin1(question), true);
        m_hands->ClickButton(button);
    }
};

} // namespace

TEST_F(UndoTest, EveryActOfEveryTabIsOneStepThatTheMenuNames) {
    Show();
    ASSERT_FALSE(Menu("mnUndo").isEnabled());
    const std::pair<std::function<void()>, const char*> acts[] = {
        {[this] { WindowDriver::Type(m_hands->Grid("TDBGridDisplay"), 0, 2, QStringLiteral("7")); },
         "C1: Address 1 to 7"},
        {[this] { WindowDriver::Type(m_hands->Grid("TDBGridQueue"), 1, 1, QStringLiteral("New")); },
         "New service: New (Active No)"},
        {[this] { Answer("cmdDelAll", BoxKind::Plain, "Are you sure to remove all counter from List ?"); },
         "remove all counters of Gởi tiền"},
        {[this] {
             GoToTab(2);
             Answer("cmdAuto", BoxKind::Exclamation, "This will delete all scan list. Do you want to continue?");
         },
         "build the scan plan"},
        {[this] {
             GoToTab(3);
             WindowDriver::Choose(m_hands->Grid("TDBGrid1"), 0, 1, QStringLiteral("U"));
             EXPECT_EQ(MenuText("mnUndo"), QStringLiteral("Undo: choice of a direction"));
             Press("Ctrl+Z");
             EXPECT_FALSE(m_window->findChild<QLabel*>(QStringLiteral("lblUnstored"))->isVisible());
             Press("Ctrl+Shift+Z");
             m_dialogs.ExpectMessage(BoxKind::Plain, QStringLiteral("Update Done."));
             m_hands->ClickButton("cmdUpdate");
         },
         "Direction at D to C1: Right to Up, and 1 more"},
        {[this] {
             GoToTab(4);
             Answer("cmdRemAll", BoxKind::Plain, "Are you sure to remove all counter from List ?");
         },
         "remove all counters of H"},
        {[this] {
             GoToTab(1);
             Answer("cmdEmpty", BoxKind::Critical, "Are you sure You want to delete all database?");
         },
         "Empty Database"},
    };
    std::vector<QString> states{Description()};
    for (const auto& [act, name] : acts) {
        if (states.size() == 3)
            WindowDriver::Click(m_hands->Grid("TDBGridQueue"), 0, 1);
        act();
        EXPECT_EQ(MenuText("mnUndo"), QStringLiteral("Undo: ") + QString::fromUtf8(name));
        states.push_back(Description());
        ASSERT_NE(states.back(), states[states.size() - 2]) << name;
    }
    EXPECT_EQ(QDir(m_folder.filePath(QStringLiteral("Snapshots"))).entryList(QDir::Files).size(), 1)
        << "the store is copied before it is emptied";
    for (std::size_t i = std::size(acts); i-- > 0;) {
        Press("Ctrl+Z");
        EXPECT_EQ(Description(), states[i]) << acts[i].second;
        EXPECT_EQ(MenuText("mnRedo"), QStringLiteral("Redo: ") + QString::fromUtf8(acts[i].second));
    }
    EXPECT_FALSE(Menu("mnUndo").isEnabled());
    EXPECT_EQ(m_hands->Grid("TDBGridDisplay").model()->rowCount(), 5) << "the lists show it";
    EXPECT_EQ(m_station.installation->DirectionOf(4, 1), 2) << "and the model has the directions";
    for (std::size_t i = 0; i < std::size(acts); ++i) {
        Press("Ctrl+Shift+Z");
        EXPECT_EQ(Description(), states[i + 1]) << acts[i].second;
    }
}

TEST_F(UndoTest, DirectionsChosenTogetherGoTogetherAndOutliveAStepBack) {
    Show();
    GoToTab(3);
    DataGrid& matrix = m_hands->Grid("TDBGrid1");
    const auto shown = [&matrix] { return WindowDriver::Column(matrix, 1) + " " + WindowDriver::Column(matrix, 2); };
    const std::string before = shown();
    matrix.setFocus();
    matrix.setCurrentIndex(matrix.model()->index(0, 1));
    QApplication::clipboard()->setText(QStringLiteral("Left\tDown"));
    QTest::keySequence(&matrix, QKeySequence(QKeySequence::Paste));
    const std::string chosen = shown();
    EXPECT_EQ(chosen, "Left|None Down|None");
    Press("Ctrl+Z");
    EXPECT_EQ(shown(), before);
    Press("Ctrl+Shift+Z");
    EXPECT_EQ(shown(), chosen);

    // A step back in another window reads the lists anew.
    ASSERT_TRUE(m_station.database.Edit({}, {Statement{QStringLiteral("DELETE FROM [Info-Direction]")}}));
    ASSERT_TRUE(m_station.UndoEdit().IsDone());
    EXPECT_EQ(shown(), chosen);
    for (int time = 0; time < 2; ++time) {
        m_dialogs.ExpectMessage(BoxKind::Plain, QStringLiteral("Update Done."));
        m_hands->ClickButton("cmdUpdate");
    }
    EXPECT_EQ(Stored(QStringLiteral("SELECT d_Id,Dir_Id FROM [Info-Direction] ORDER BY d_Id")),
              QStringLiteral("1,1|2,4"));
    Press("Ctrl+Z");
    EXPECT_EQ(shown(), before) << "what was stored once more as it was is no act";
}

TEST_F(UndoTest, WhatIsTypedInAnOpenCellHasItsOwnUndo) {
    Show();
    WindowDriver::Type(m_hands->Grid("TDBGridDisplay"), 0, 2, QStringLiteral("7"));
    WindowDriver::Click(m_hands->Grid("TDBGridDisplay"), 0, 0);
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("xyz"));
    auto* editor = qobject_cast<QLineEdit*>(QApplication::focusWidget());
    ASSERT_NE(editor, nullptr);
    QTest::keySequence(editor, QKeySequence(QStringLiteral("Ctrl+Z")));
    EXPECT_NE(editor->text(), QStringLiteral("xyz"));
    QTest::keyClick(editor, Qt::Key_Escape);
    EXPECT_EQ(Stored(QStringLiteral("SELECT d_Address FROM Display WHERE d_Id=1")), QStringLiteral("7"));
}

TEST_F(UndoTest, AStepOverAnotherProgramsEditIsToldAndLeavesAllAsItIs) {
    Show();
    WindowDriver::Type(m_hands->Grid("TDBGridDisplay"), 0, 2, QStringLiteral("7"));
    Run(QStringLiteral("UPDATE Display SET d_Address = 9 WHERE d_Id = 1"));
    const QString before = Description();
    m_dialogs.ExpectMessage(BoxKind::Exclamation,
                            QStringLiteral("It was not done: a row of table Display (C1) was changed since by other "
                                           "means. Everything is as it was."));
    Press("Ctrl+Z");
    EXPECT_EQ(Description(), before);
    EXPECT_FALSE(Menu("mnUndo").isEnabled());
}
