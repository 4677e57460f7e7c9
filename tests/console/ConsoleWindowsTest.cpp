#include "console/frmBusMonitor.h"
#include "console/frmTest.h"
#include "tests/support/ConsoleWorld.h"
#include "tests/support/Files.h"
#include "tests/support/WindowDriver.h"

#include <QClipboard>
#include <QLabel>
#include <QListWidget>
#include <QPointer>
#include <QTableView>

namespace {

class ConsoleWindowsTest : public ConsoleWorld {
protected:
    template <typename Window, typename... Arguments>
    Window* Show(Arguments&... arguments) {
        auto* window = new Window(arguments...);
        m_window = window;
        window->show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window));
        m_hands.emplace(*window);
        return window;
    }

    ~ConsoleWindowsTest() override { delete m_window; }

    QPointer<QWidget> m_window;
    std::optional<WindowDriver> m_hands;
};

} // namespace

TEST_F(ConsoleWindowsTest, TheBenchBeginsWithItsDefaultsAndTracesWhatGoesOut) {
    OpenLine();
    auto* window = Show<frmTest>(m_station);
    const std::pair<const char*, const char*> defaults[] = {
        {"txtOU", "1"},       {"txtTD", "32"},       {"txtINF", "40"}, {"txtPU", "100"},
        {"txtHUBaddr", "64"}, {"txtValue", "Value"}, {"Text2", "0"}};
    for (const auto& [name, value] : defaults)
        EXPECT_EQ(m_hands->Find<QLineEdit>(name).text(), QString::fromLatin1(value));
    EXPECT_EQ(m_hands->Find<QComboBox>("cboSub").currentText(), QStringLiteral("Combo1"));
    EXPECT_EQ(m_hands->Find<QComboBox>("cboSub").count(), 32);
    EXPECT_EQ(m_hands->Find<QComboBox>("cboHub").currentText(), QStringLiteral("HUB"));

    m_dialogs.ExpectMessage(BoxKind::Plain, QString());
    m_hands->ClickButton("cmdTestHub");
    const auto* traced = window->findChild<QLabel*>(QStringLiteral("Label8"));
    EXPECT_EQ(traced->text(), QStringLiteral("\u25B8p001P53\u25C2>>>"));
    auto* tested = window->findChild<QPushButton*>(QStringLiteral("cmdTestHub"));
    EXPECT_FALSE(tested->isEnabled()) << "a second click does not start a second command";
    EXPECT_TRUE(WaitUntil([&] { return tested->isEnabled(); }));
    m_hands->ClickButton("cmdU");
    EXPECT_TRUE(traced->text().startsWith(u'\u25B8' + QStringLiteral("p"))) << "a broadcast is not shown";

    QTest::mouseMove(&m_hands->Find<QLabel>("picQObj"), QPoint(3, 4));
    EXPECT_TRUE(WaitUntil([&] { return !m_hands->Find<QLabel>("Label2").text().isEmpty(); }));
    EXPECT_EQ(m_hands->Find<QLabel>("Label2").text(), QStringLiteral("X=45,Y=60"));
}

TEST_F(ConsoleWindowsTest, APollRunsUntilItIsCancelledOrTheWindowIsClosedAndNotByHiding) {
    OpenLine();
    Await(m_station.printers.SendPrinterConfig(1, PrinterConfig::Load::Full));
    m_devices->FindAs<TicketPrinter>(32)->PressButton(8);
    auto* window = Show<frmTest>(m_station);
    m_hands->ClickButton("cmdPoolTD");
    auto* pool = window->findChild<QPushButton*>(QStringLiteral("cmdPoolTD"));
    EXPECT_FALSE(pool->isEnabled());
    auto* list = window->findChild<QListWidget*>(QStringLiteral("List2"));
    ASSERT_TRUE(WaitUntil([&] { return list->count() == 1; }));
    EXPECT_EQ(list->item(0)->text(), QStringLiteral("1*"));
    m_hands->ClickButton("cmdCancelP");
    ASSERT_TRUE(WaitUntil([&] { return pool->isEnabled(); }));

    const auto goesOn = [&] {
        const qsizetype sent = m_sent.size();
        return WaitUntil([&] { return m_sent.size() > sent + 2; }, 1000);
    };
    m_hands->ClickButton("cmdPoolTD");
    EXPECT_TRUE(goesOn());
    m_hands->ClickButton("cmdCancel");
    EXPECT_FALSE(window->isVisible());
    EXPECT_TRUE(goesOn()) << "hidden it stays as it is";
    window->show();
    window->close();
    EXPECT_TRUE(WaitUntil([&] { return m_window.isNull(); }));
    EXPECT_FALSE(goesOn());
}

TEST_F(ConsoleWindowsTest, TheMonitorShowsFiltersCopiesAndSavesTheLine) {
    OpenLine();
    Await(m_station.bus.SendCommand(1, 'P', {}));
    auto* window = Show<frmBusMonitor>(m_station);
    auto& table = m_hands->Find<QTableView>("tblFrames");
    EXPECT_EQ(table.model()->rowCount(), 2) << "what went before it was opened too";
    Await(m_station.bus.SendCommand(32, 'P', {}));
    EXPECT_TRUE(WaitUntil([&] { return table.model()->rowCount() == 4; }));

    auto& object = m_hands->Find<QComboBox>("cboObject");
    object.setCurrentIndex(object.findText(QStringLiteral("Main (address 32)")));
    EXPECT_EQ(table.model()->rowCount(), 2);
    table.selectAll();
    m_hands->ClickButton("cmdCopy");
    EXPECT_EQ(QGuiApplication::clipboard()->text().count(u'\n'), 3);

    const QString path = m_folder.filePath(QStringLiteral("trace.csv"));
    m_dialogs.ExpectChoice(path);
    m_hands->ClickButton("cmdSaveCsv");
    EXPECT_TRUE(WaitUntil([&] { return ReadFile(path).count('\n') == 3; }));
    m_dialogs.ExpectChoice(m_folder.filePath(QStringLiteral("missing/trace.txt")));
    m_dialogs.ExpectMessage(BoxKind::Exclamation, QString());
    m_hands->ClickButton("cmdSaveText");

    object.setCurrentIndex(0);
    m_hands->ClickButton("cmdClear");
    EXPECT_EQ(table.model()->rowCount(), 0);
    EXPECT_EQ(m_station.trace.First(), m_station.trace.End());
    window->close();
    EXPECT_TRUE(WaitUntil([&] { return m_window.isNull(); }));
}
