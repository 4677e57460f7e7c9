#include "commissioning/frmCommission.h"

#include "commissioning/frmRecord.h"
#include "tests/support/ConsoleWorld.h"
#include "tests/support/WindowDriver.h"

#include <QAbstractItemModel>
#include <QComboBox>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QTableView>
#include <QTreeView>

namespace {

class frmCommissionTest : public ConsoleWorld {
protected:
    frmCommissionTest() {
        (void)m_station.OpenStore(m_store);
        OpenLine();
    }

    QString Text(const QModelIndex& row, int column) const { return row.siblingAtColumn(column).data().toString(); }
};

} // namespace

TEST_F(frmCommissionTest, WhatIsCheckedIsLoadedAndTheRecordTellsIt) {
    QPointer<frmCommission> window = new frmCommission(m_station);
    window->show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    const WindowDriver hands(*window);
    QAbstractItemModel& hall = *hands.Find<QTreeView>("treHall").model();
    const auto& selected = *window->findChild<QPushButton*>(QStringLiteral("cmdSelected"));
    EXPECT_EQ(hands.Find<QLabel>("lblSummary").text(), QStringLiteral("0 of 3 devices that are loaded are in step."));
    EXPECT_FALSE(selected.isEnabled());

    const QModelIndex main = hall.index(1, 0);
    const QModelIndex tables = hall.index(0, 0, main);
    EXPECT_EQ(Text(main, 0), QStringLiteral("Main (address 32)"));
    EXPECT_EQ(Text(tables, 1), QStringLiteral("never loaded"));
    EXPECT_TRUE(hall.setData(tables, Qt::Checked, Qt::CheckStateRole));
    EXPECT_EQ(main.data(Qt::CheckStateRole).toInt(), int(Qt::PartiallyChecked));
    m_dialogs.ExpectMessage(BoxKind::Information, QStringLiteral("What was chosen is loaded and in step."));
    hands.ClickButton("cmdSelected");
    EXPECT_FALSE(selected.isEnabled()) << "a second click does not start a second run";
    EXPECT_TRUE(WaitUntil([&] { return Text(tables, 1) == QStringLiteral("in step"); }));
    EXPECT_TRUE(WaitUntil([&] { return selected.isEnabled(); })) << "what was checked stays so";
    EXPECT_EQ(m_devices->FindAs<TicketPrinter>(32)->ServiceRows().size(), 3U);
    EXPECT_FALSE(m_devices->FindAs<TicketPrinter>(33)->Buttons());

    // A device that is silent is told in place of its state.
    Silence({64});
    m_dialogs.ExpectMessage(BoxKind::Exclamation, QString());
    hands.ClickButton("cmdVerify");
    EXPECT_TRUE(WaitUntil([&] { return Text(hall.index(4, 0), 1) == QStringLiteral("silent"); }));
    EXPECT_TRUE(
        WaitUntil([&] { return Text(hall.index(2, 0), 1) == QStringLiteral("behind hub HUB, which is silent"); }));
    EXPECT_TRUE(WaitUntil([&] { return !m_station.IsBusy(); }));

    const std::unique_ptr<frmRecord> record = std::make_unique<frmRecord>(m_station);
    record->setAttribute(Qt::WA_DeleteOnClose, false);
    const auto* table = record->findChild<QTableView*>(QStringLiteral("tblRecord"));
    ASSERT_EQ(table->model()->rowCount(), 4) << "the load, and what both printers told before and one behind it";
    EXPECT_EQ(table->model()->index(1, 2).data().toString(), QStringLiteral("tables"));
    EXPECT_EQ(table->model()->index(1, 3).data().toString(), QStringLiteral("done"));
    record->findChild<QComboBox*>(QStringLiteral("cboDevice"))->setCurrentIndex(1);
    EXPECT_EQ(table->model()->rowCount(), 3);

    // A window may go while its run waits for the silent hub, and the run is cancelled from another.
    window->findChild<QPushButton*>(QStringLiteral("cmdLoad"))->click();
    window->close();
    EXPECT_TRUE(WaitUntil([&] { return window.isNull(); }));
    EXPECT_TRUE(m_station.IsBusy());
    m_station.CancelOperation();
    EXPECT_TRUE(WaitUntil([&] { return !m_station.IsBusy(); }));
}

TEST_F(frmCommissionTest, AnEchoAndLateAnswersDoNotPassForAHall) {
    const std::unique_ptr<frmCommission> window = std::make_unique<frmCommission>(m_station);
    window->setAttribute(Qt::WA_DeleteOnClose, false);
    window->show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    const WindowDriver hands(*window);
    FaultSettings echo;
    echo.Echo = true;
    FaultSettings late;
    late.LateMilliseconds = 900;
    for (const auto& [faults, words] : {std::pair(echo, QStringLiteral("The adapter echoes what is sent")),
                                        {late, QStringLiteral("of 5 devices are not in step")}}) {
        m_devices->SetFaults(faults);
        m_dialogs.ExpectMessage(BoxKind::Exclamation, QString());
        hands.ClickButton("cmdVerify");
        EXPECT_TRUE(WaitUntil([&] { return !m_station.IsBusy(); }, 60'000));
        EXPECT_TRUE(m_dialogs.LastText.contains(words)) << qPrintable(m_dialogs.LastText);
    }
    EXPECT_EQ(hands.Find<QLabel>("lblSummary").text().section(u'.', 0, 0),
              QStringLiteral("0 of 3 devices that are loaded are in step"));
}
