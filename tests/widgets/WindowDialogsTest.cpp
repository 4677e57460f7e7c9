#include "widgets/WindowDialogs.h"

#include "platform/Completion.h"
#include "tests/support/Waiting.h"
#include "widgets/OperationStatus.h"
#include "widgets/OutcomeBox.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QMainWindow>
#include <QMessageBox>
#include <QPushButton>
#include <QStatusBar>
#include <QTest>

namespace {

class WindowDialogsTest : public ::testing::Test {
protected:
    static void Activate(QWidget& window) {
        window.show();
        window.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    }

    static QMessageBox* Box() {
        QMessageBox* found = nullptr;
        EXPECT_TRUE(WaitUntil([&] {
            for (QWidget* widget : QApplication::topLevelWidgets()) {
                if (auto* box = qobject_cast<QMessageBox*>(widget); box && box->isVisible())
                    found = box;
            }
            return found != nullptr;
        }));
        return found;
    }

    /// Waits for a box, and closes it. @return what it stands over, and blocks.
    static QWidget* OwnerOfTheBox() {
        QPointer<QMessageBox> box(Box());
        QWidget* owner = box ? box->parentWidget() : nullptr;
        EXPECT_TRUE(box && box->windowModality() == Qt::WindowModal);
        if (box)
            box->close();
        EXPECT_TRUE(WaitUntil([&] { return box.isNull(); }));
        return owner;
    }

    WindowDialogs m_dialogs;
    QWidget m_first;
    QWidget m_second;
};

QCoro::Task<Outcome> Finish(Completion<int>& completion) {
    co_await completion.Wait();
    co_return Outcome::Done(BoxKind::Information, QStringLiteral("done."));
}

} // namespace

TEST_F(WindowDialogsTest, ABoxStandsOverTheWindowThatItBelongsTo) {
    Activate(m_first);
    Completion<int> work;
    auto shown = ShowOutcome(m_dialogs, Finish(work));
    Activate(m_second);
    work.Finish(1);
    EXPECT_EQ(OwnerOfTheBox(), &m_first) << "the operation was begun there";
    m_dialogs.Warn(QStringLiteral("now"));
    EXPECT_EQ(OwnerOfTheBox(), &m_second);

    // Another program is in front.
    QApplication::setActiveWindow(nullptr);
    m_dialogs.Warn(QStringLiteral("behind"));
    EXPECT_EQ(OwnerOfTheBox(), &m_second);

    // A window that closes itself does not take its message with it.
    auto* dialog = new QDialog(&m_second);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    Activate(*dialog);
    const QPointer<QDialog> closing(dialog);
    dialog->close();
    m_dialogs.Warn(QStringLiteral("not saved"));
    EXPECT_TRUE(WaitUntil([&] { return closing.isNull(); }));
    EXPECT_EQ(Box()->text(), QStringLiteral("not saved"));
    EXPECT_EQ(OwnerOfTheBox(), &m_second);
}

TEST(OperationStatus, LongTextsNeverMakeAWindowWide) {
    QMainWindow window;
    OperationStatus status(*window.statusBar());
    window.resize(400, 100);
    window.show();
    QStringList names;
    for (int i = 0; i < 60; ++i)
        names += QStringLiteral("a device with a long name %1").arg(i % 30);
    status.ShowResult(names.join(QStringLiteral(", ")), names);
    QApplication::processEvents();
    EXPECT_EQ(window.width(), 400);
    EXPECT_EQ(status.Devices().size(), 30);
    auto* cancel = window.findChild<QPushButton*>(QStringLiteral("cmdCancelOperation"));
    for (const auto& [isBusy, canCancel] : {std::pair(true, true), {true, false}, {false, true}}) {
        status.SetBusy(isBusy, canCancel);
        EXPECT_EQ(cancel->isVisible(), isBusy && canCancel);
    }
    EXPECT_TRUE(status.Devices().isEmpty()) << "of the run before";
}
