#include "tests/setup/SetupWindow.h"

#include <QLabel>
#include <QLineEdit>

namespace {

class FindTest : public SetupWindow {
protected:
    FindTest()
        : SetupWindow({QStringLiteral("INSERT INTO Queue (q_Id, q_Number, q_On, q_Name, q_Button) VALUES "
                                      "(1, 1, 1, 'Göûi tieàn', 1)"),
                       QStringLiteral("INSERT INTO Display (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) "
                                      "VALUES (1, 10, 7, 'Quaày 10', 1, 0, 0), (2, 2, 3, 'Quaày 2', 1, 0, 0), "
                                      "(3, 9, 32, 'Ñaø Naüng', 1, 1, 0), (4, NULL, 40, NULL, 1, 2, 0)")}) {}

    DataGrid& Objects() const { return m_hands->Grid("TDBGridDisplay"); }

    std::string Shown(int column) const {
        QStringList texts;
        for (int row = 0; row + 1 < Objects().model()->rowCount(); ++row)
            texts += Objects().model()->index(row, column).data(Qt::AccessibleTextRole).toString();
        return texts.join(u'|').toStdString();
    }

    void ClickHead(int column) const {
        QHeaderView& head = *Objects().horizontalHeader();
        QTest::mouseClick(head.viewport(), Qt::LeftButton, {},
                          QPoint(head.sectionViewportPosition(column) + 5, head.height() / 2));
    }
};

} // namespace

TEST_F(FindTest, WhatIsTypedWithoutMarksIsFoundInTurnAndEscapeGoesBackToTheList) {
    Show();
    WindowDriver::Click(Objects(), 0, 1);
    EXPECT_EQ(Find<QLabel>("lblPlace").text(), QStringLiteral("Row 1 of 4"));
    QTest::keySequence(&Objects(), QKeySequence(QStringLiteral("Ctrl+F")));
    auto& text = Find<QLineEdit>("txtFind");
    ASSERT_TRUE(text.hasFocus());
    const auto found = [this] { return Find<QLabel>("lblFound").text().toStdString(); };
    QTest::keyClicks(&text, QStringLiteral("quay"));
    EXPECT_EQ(found(), "2 of 2") << "behind the current cell";
    EXPECT_EQ(Objects().currentIndex().row(), 1);
    QTest::keyClick(&text, Qt::Key_Return);
    EXPECT_EQ(found(), "1 of 2") << "round about";
    EXPECT_EQ(Objects().currentIndex().row(), 0);
    QTest::keyClick(&text, Qt::Key_F3, Qt::ShiftModifier);
    EXPECT_EQ(found(), "2 of 2");
    text.setText(QStringLiteral("DA nang"));
    EXPECT_EQ(found(), "1 of 1");
    EXPECT_EQ(Objects().currentIndex().row(), 2);
    text.setText(QStringLiteral("nobody"));
    EXPECT_EQ(found(), "not found");
    QTest::keyClick(&text, Qt::Key_Escape);
    EXPECT_TRUE(Objects().hasFocus());
    EXPECT_EQ(Objects().currentIndex().row(), 2);
}

TEST_F(FindTest, AClickOnAColumnSortsWhatIsShownAndNothingElse) {
    Show();
    const QString before = Stored(QStringLiteral("SELECT * FROM Display"));
    ClickHead(0);
    EXPECT_EQ(Shown(0), "Đà Nẵng|Quầy 2|Quầy 10|") << "numbers in names by their size, empty ones last";
    ClickHead(0);
    EXPECT_EQ(Shown(0), "Quầy 10|Quầy 2|Đà Nẵng|");
    ClickHead(1);
    EXPECT_EQ(Shown(1), "2|9|10|");
    // The current row stays the current one, and an edit lands where it was made.
    WindowDriver::Type(Objects(), 2, 2, QStringLiteral("8"));
    EXPECT_EQ(Stored(QStringLiteral("SELECT d_Address FROM Display WHERE d_Id=1")), QStringLiteral("8"));
    ClickHead(2);
    EXPECT_EQ(Shown(2), "3|8|32|40");
    EXPECT_EQ(Objects().currentIndex().row(), 3) << "Enter has gone down from the typed cell";
    // A new row comes last, and stays there until the list is sorted anew.
    WindowDriver::Type(Objects(), 4, 2, QStringLiteral("5"));
    EXPECT_EQ(Shown(2), "3|8|32|40|5");
    ClickHead(2);
    ClickHead(2);
    EXPECT_EQ(Shown(2), "8|3|32|40|5") << "the order of the store";
    m_window->close();
    EXPECT_NE(Stored(QStringLiteral("SELECT * FROM Display")), before);
    EXPECT_EQ(Stored(QStringLiteral("SELECT d_Id FROM Display")), QStringLiteral("1|2|3|4|5"));
}
