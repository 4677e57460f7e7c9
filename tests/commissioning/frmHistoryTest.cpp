#include "commissioning/frmHistory.h"

#include "tests/support/ConsoleWorld.h"
#include "tests/support/WindowDriver.h"

#include <QAbstractItemModel>
#include <QComboBox>
#include <QDir>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTreeView>

namespace {

class frmHistoryTest : public ConsoleWorld {
protected:
    frmHistoryTest() { (void)m_station.OpenStore(m_store); }

    void Edit(const char* statement) {
        ASSERT_TRUE(m_station.database.Edit({}, {Statement{QString::fromLatin1(statement)}})) << statement;
    }

    QString Names() {
        auto rows = m_station.database.Select({QStringLiteral("SELECT group_concat(d_Name) FROM Display")});
        return rows && rows->next() ? rows->value(0).toString() : QString();
    }
};

} // namespace

TEST_F(frmHistoryTest, GoesBackToBeforeAnEditAndToACopyAndForthAgain) {
    const QString first = Names();
    Edit("UPDATE Display SET d_Name='X' WHERE d_Id=1");
    const QString renamed = Names();
    Edit("DELETE FROM Display WHERE d_Id<3");

    frmHistory* window = new frmHistory(m_station);
    window->setAttribute(Qt::WA_DeleteOnClose, false);
    const std::unique_ptr<frmHistory> owner(window);
    window->show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    const WindowDriver hands(*window);
    auto& tree = hands.Find<QTreeView>("treEvents");
    const auto& details = hands.Find<QPlainTextEdit>("txtDetails");
    const auto choose = [&tree](int row) {
        const QModelIndex day = tree.model()->index(0, 0);
        tree.setCurrentIndex(tree.model()->index(row, 0, day));
        return tree.model()->index(row, 1, day).data().toString();
    };
    ASSERT_EQ(tree.model()->rowCount(), 1) << "one day";
    ASSERT_EQ(tree.model()->rowCount(tree.model()->index(0, 0)), 2);
    EXPECT_TRUE(choose(1).startsWith(QStringLiteral("X: Name "))) << qPrintable(choose(1));
    EXPECT_TRUE(choose(0).startsWith(QStringLiteral("Object deleted: X "))) << qPrintable(choose(0));
    EXPECT_EQ(details.toPlainText().count(u'\n'), 1) << qPrintable(details.toPlainText());

    // To before the deletion, which takes it back; then to the copy from before that.
    m_dialogs.ExpectQuestion(BoxKind::Exclamation, QString(), true);
    hands.ClickButton("cmdGoBack");
    EXPECT_TRUE(WaitUntil([&] { return Names() == renamed; }));
    auto* kind = window->findChild<QComboBox*>(QStringLiteral("cboKind"));
    EXPECT_TRUE(WaitUntil([&] { return tree.model()->rowCount(tree.model()->index(0, 0)) == 4; }));
    kind->setCurrentIndex(3);
    ASSERT_EQ(tree.model()->rowCount(tree.model()->index(0, 0)), 1);
    EXPECT_EQ(choose(0), QStringLiteral("Copy of the database, made before: going back"));
    EXPECT_TRUE(details.toPlainText().contains(QStringLiteral("Object deleted: X")))
        << qPrintable(details.toPlainText());
    m_dialogs.ExpectQuestion(BoxKind::Exclamation, QString(), true);
    hands.ClickButton("cmdGoBack");
    EXPECT_TRUE(WaitUntil([&] { return Names() != renamed && Names() != first; }));
    EXPECT_TRUE(m_station.UndoEdit().IsDone());
    EXPECT_EQ(Names(), renamed);

    // Where no copy can be made the user decides.
    QDir(m_folder.filePath(QStringLiteral("Snapshots"))).removeRecursively();
    QFile blocker(m_folder.filePath(QStringLiteral("Snapshots")));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    kind->setCurrentIndex(1);
    (void)choose(tree.model()->rowCount(tree.model()->index(0, 0)) - 1);
    m_dialogs.ExpectQuestion(BoxKind::Exclamation, QString(), true);
    m_dialogs.ExpectQuestion(BoxKind::Exclamation, QString(), false);
    hands.ClickButton("cmdGoBack");
    EXPECT_EQ(Names(), renamed);
}
