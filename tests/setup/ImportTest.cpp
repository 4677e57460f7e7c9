#include "setup/frmImport.h"
#include "tests/setup/SetupWindow.h"

#include <QAction>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QMenu>
#include <QTableWidget>

namespace {

class ImportTest : public SetupWindow {
protected:
    ImportTest()
        : SetupWindow({QStringLiteral("INSERT INTO Display (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) "
                                      "VALUES (1, 1, 1, 'Quaày 1', 1, 0, 0)")}) {}

    /// Chooses the entry for objects.
    void Trigger(const char* menu) const {
        m_window->findChild<QMenu*>(QString::fromLatin1(menu))->actions().at(1)->trigger();
        QApplication::processEvents();
    }

    QString Save(const QByteArray& content) {
        const QString path = m_folder.filePath(QStringLiteral("list.csv"));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        return path;
    }
};

} // namespace

TEST_F(ImportTest, ATableIsShownCheckedAndTakenOverAsOneAct) {
    Show();
    const QString path =
        Save("Counter Name;Number;Address;Type\nQu\xE1\xBA\xA7y A;1;7;counter\nM\xC3\xA1y in;9;320;Printer\n");
    m_dialogs.ExpectChoice(path);
    Trigger("mnImport");
    auto* first = m_window->findChild<frmImport*>();
    ASSERT_NE(first, nullptr);
    auto* import = first->findChild<QPushButton*>(QStringLiteral("cmdImport"));
    auto& cells = *first->findChild<QTableWidget*>(QStringLiteral("tblCells"));
    EXPECT_FALSE(import->isEnabled());
    EXPECT_EQ(cells.item(2, 2)->toolTip(), QStringLiteral("Address takes a whole number from 0 to 255."));
    EXPECT_TRUE(cells.item(1, 2)->toolTip().isEmpty());
    first->close();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    m_dialogs.ExpectChoice(
        Save("Counter Name;Number;Address;Type\nQu\xE1\xBA\xA7y A;1;7;counter\nM\xC3\xA1y in;9;32;Printer\n"));
    Trigger("mnImport");
    auto* window = m_window->findChild<frmImport*>();
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(window->findChild<QLabel*>(QStringLiteral("lblResult"))->text(),
              QStringLiteral("1 rows are new, 1 are there already and take these values."));
    m_dialogs.ExpectMessage(BoxKind::Information,
                            QStringLiteral("Objects: 1 rows added, 1 rows taken over that were there."));
    window->findChild<QPushButton*>(QStringLiteral("cmdImport"))->click();
    const QString rows = QStringLiteral("SELECT d_Name,d_Number,d_Address,d_Type FROM Display ORDER BY d_Id");
    EXPECT_EQ(Stored(rows), QStringLiteral("Quaày A,1,7,0|Maùy in,9,32,1"));
    EXPECT_EQ(m_hands->Grid("TDBGridDisplay").model()->rowCount(), 3) << "the list shows it";
    EXPECT_EQ(QDir(m_folder.filePath(QStringLiteral("Snapshots"))).entryList(QDir::Files).size(), 1);
    m_window->findChild<QAction*>(QStringLiteral("mnUndo"))->trigger();
    EXPECT_EQ(Stored(rows), QStringLiteral("Quaày 1,1,1,0"));
}

TEST_F(ImportTest, WhatIsNoTableIsToldAndAListIsExported) {
    Show();
    const QString path = Save("\n\n");
    m_dialogs.ExpectChoice(path);
    m_dialogs.ExpectMessage(BoxKind::Exclamation, path + QStringLiteral(": There are no rows in it."));
    Trigger("mnImport");
    m_dialogs.ExpectChoice(path);
    m_dialogs.ExpectMessage(BoxKind::Information, QStringLiteral("Saved to %1.").arg(path));
    Trigger("mnExport");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(),
              "\xEF\xBB\xBFID,Counter Name,Number,Address,Type,Active,HUB\r\n1,Qu\xE1\xBA\xA7y 1,1,1,Counter,Yes,\r\n");
}
