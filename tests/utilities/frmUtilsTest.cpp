#include "utilities/frmUtils.h"

#include "tests/support/Files.h"
#include "tests/support/WindowDriver.h"
#include "tests/utilities/TicketStore.h"

#include <QCheckBox>
#include <QProgressBar>
#include <QRadioButton>

namespace {

class frmUtilsTest : public TicketStore {};

} // namespace

TEST_F(frmUtilsTest, TheWindowKeepsItsSettingsAtOnceAndLocksWhatIsNotChosen) {
    auto* window = new frmUtils(m_station);
    window->show();
    const WindowDriver hands(*window);
    EXPECT_TRUE(hands.Find<QRadioButton>("optFromYear").isChecked());
    EXPECT_FALSE(hands.Find<QLineEdit>("txtYear").isReadOnly());
    EXPECT_TRUE(hands.Find<QLineEdit>("txtFromDate").isReadOnly());
    hands.Find<QRadioButton>("optFromDate").click();
    EXPECT_TRUE(hands.Find<QLineEdit>("txtYear").isReadOnly());
    EXPECT_FALSE(hands.Find<QLineEdit>("txtToDate").isReadOnly());
    hands.Find<QCheckBox>("chkAutoDelete").click();
    hands.Find<QLineEdit>("txtDelYear").setText(QStringLiteral("3 years"));
    const QByteArray settings = ReadFile(m_station.ProgramFolder + QStringLiteral("/Tallora.ini"));
    EXPECT_TRUE(settings.contains("Enable=yes") && settings.contains("FromYear=3 years"));
    EXPECT_EQ(m_station.options.AutoDeleteFromYear, QStringLiteral("3"));

    hands.Find<QRadioButton>("optFromYear").click();
    m_dialogs.ExpectMessage(BoxKind::Exclamation, QStringLiteral("Please enter year as 'yyyy' format."));
    hands.ClickButton("cmdDel");
    EXPECT_EQ(window->focusWidget(), &hands.Find<QLineEdit>("txtYear"));
    hands.Find<QLineEdit>("txtYear").setText(QStringLiteral("2025"));
    m_dialogs.ExpectQuestion(BoxKind::Exclamation, QString(), true);
    m_dialogs.ExpectMessage(BoxKind::Information, QStringLiteral("Done."));
    bool wasShown = false;
    ::QObject::connect(&m_maintenance, &DataMaintenance::Progress, [&](qint64, qint64 total) {
        if (total == 0)
            return;
        wasShown = hands.Find<QProgressBar>("prgDelete").value() == 1000;
        window->close();
        EXPECT_TRUE(window->isVisible()) << "not while it deletes";
    });
    hands.ClickButton("cmdDel");
    EXPECT_TRUE(wasShown);
    EXPECT_EQ(Left(), QStringLiteral("4 5 6 7 8 9 10"));
    hands.ClickButton("cmdOK");
    EXPECT_FALSE(window->isVisible());
}
