#include "tests/app/ProgramWorld.h"

#include "commissioning/frmCommission.h"
#include "operator/frmMain.h"
#include "setup/frmQueue.h"
#include "station/Station.h"
#include "tests/support/StoreFile.h"
#include "widgets/DataGrid.h"

#include <QAction>
#include <QLabel>
#include <QMenu>
#include <QScreen>
#include <QStatusBar>

namespace {

/// All windows of the program, on every screen there is.
class ScreensTest : public ProgramWorld {
protected:
    ScreensTest() {
        QStringList rows;
        for (int i = 1; i <= 16; ++i)
            rows += QStringLiteral("INSERT INTO Display (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) "
                                   "VALUES (%1, %1, %1, 'Q%1', 1, %2, 0)")
                        .arg(i)
                        .arg(i == 16 ? 1 : 0);
        MakeStore(m_store, rows);
        ExpectNoPort();
        Start(false, m_store);
        m_setup = FindWindow<frmQueue>();
        m_main = FindWindow<frmMain>();
    }

    /// Opens what the main window's menus and buttons open.
    std::vector<QWidget*> AllWindows() {
        for (const char* item : {"mnSetpoty", "mnLineTest", "mnBusMonitor", "mnCommission", "mnHistory", "mnRecord",
                                 "mnDBmaintenance", "mnQOptions", "mnAbout", "mnTicketForm"})
            m_main->findChild<QAction*>(QLatin1String(item))->trigger();
        for (const char* item : {"mnSetHubCounter", "mnMainWindow"})
            m_setup->findChild<QAction*>(QLatin1String(item))->trigger();
        m_main->findChild<QAbstractButton*>(QStringLiteral("Command1"))->click();
        QApplication::processEvents();
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* const editor = widget->findChild<QAction*>(QStringLiteral("mnEditLogo")))
                editor->trigger();
        }
        QApplication::processEvents();
        std::vector<QWidget*> windows;
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (widget->isVisible() && widget->objectName().startsWith(QStringLiteral("frm")))
                windows.push_back(widget);
        }
        return windows;
    }

    frmQueue* m_setup = nullptr;
    frmMain* m_main = nullptr;
};

TEST_F(ScreensTest, EveryWindowIsInsideEveryScreen) {
    constexpr QSize Frame(8, 36);
    const std::vector<QWidget*> windows = AllWindows();
    EXPECT_GE(windows.size(), 14U);
    for (QScreen* const screen : QGuiApplication::screens()) {
        const QRect room = screen->availableGeometry();
        for (QWidget* const window : windows) {
            window->hide();
            window->setScreen(screen);
            window->move(room.bottomRight() - QPoint(200, 100));
            window->show();
            QApplication::processEvents();
            EXPECT_TRUE(room.contains(QRect(window->pos(), window->size() + Frame)))
                << window->objectName().toStdString() << " on " << screen->name().toStdString() << ": "
                << window->width() << " x " << window->height() << " at " << window->x() - room.x() << ", "
                << window->y() << ", smallest " << window->minimumSizeHint().width() << " x "
                << window->minimumSizeHint().height();
        }
    }
}

TEST_F(ScreensTest, TheListOfObjectsHasRoom) {
    const QList<QScreen*> screens = QGuiApplication::screens();
    QScreen* const laptop = *std::find_if(screens.begin(), screens.end(), [](const QScreen* screen) {
        return screen->name() == QStringLiteral("laptop");
    });
    m_setup->hide();
    m_setup->setScreen(laptop);
    m_setup->show();
    m_setup->resize(laptop->availableSize() - QSize(8, 36));
    QApplication::processEvents();
    const auto& objects = *m_setup->findChild<DataGrid*>(QStringLiteral("TDBGridDisplay"));
    EXPECT_TRUE(objects.viewport()->rect().contains(objects.visualRect(objects.model()->index(12, 0))))
        << objects.viewport()->height() << " pixels for rows of " << objects.rowHeight(0);
    const auto& log = *m_setup->findChild<QWidget*>(QStringLiteral("txtLog1"));
    EXPECT_GE(log.height(), 2 * log.fontMetrics().lineSpacing());
}

} // namespace
