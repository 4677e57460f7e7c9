#include "printers/PrinterConfig.h"

#include "core/HubTable.h"
#include "hubs/HubRouter.h"
#include "tests/support/AnsweringEnd.h"
#include "tests/support/BusWorld.h"
#include "tests/support/Files.h"
#include "tests/support/TestDialogs.h"
#include "tests/support/Waiting.h"

namespace {

/// Two services, a printer on the bus, and one behind a hub.
class PrinterConfigTest : public BusWorld {
protected:
    PrinterConfigTest() {
        Open(m_end.Terminal.Path());
        ::QObject::connect(&m_config, &PrinterConfig::Progress,
                           [this](const QString& name, const QString&, int done, int total) {
                               m_progress += QStringLiteral("%1 %2/%3").arg(name).arg(done).arg(total);
                           });
        for (const QString& name : {QStringLiteral("A"), QStringLiteral("B")}) {
            model::QService& service = m_installation->QServices[static_cast<std::size_t>(m_installation->NumServices)];
            service.Name = name;
            service.SeriesIndex = m_installation->NumServices++;
            service.Button = static_cast<quint8>(m_installation->NumServices);
        }
        Add(1, 1, model::Counter, 0);
        Add(2, 32, model::Printer, 0);
        Add(3, 33, model::Printer, 4);
        Add(4, 64, model::Hub, 0);
        BuildHubTable(*m_installation, m_log);
    }

    static QByteArray Row(const QByteArray& head, const QByteArray& name) {
        return head + name.leftJustified(64, '\0') + QByteArray(64, '\0');
    }

    AnsweringEnd m_end;
    HubRouter m_router{m_bus, *m_installation};
    TestDialogs m_dialogs;
    PrinterConfig m_config{
        {*m_installation, m_router, m_clock, m_dialogs, m_log}, m_folder.path(), [](qint32) { return QString(); }};
    QStringList m_progress;
};

bool IsLetter(const QByteArray& command, char letter) {
    return command[2] == letter;
}

} // namespace

TEST_F(PrinterConfigTest, AFullLoadSendsTablesAndClosesThem) {
    EXPECT_TRUE(Await(m_config.SendPrinterConfig(1, PrinterConfig::Load::Full)));
    EXPECT_EQ(m_end.Commands,
              (QByteArrayList{"P K0201021", "P P", "P " + Row("M000", "A"), "P " + Row("M011", "B"), "P N"}));
    EXPECT_EQ(m_clock.Waits, (std::vector<int>{200, 5000}));
    EXPECT_TRUE(m_messages.isEmpty());
    EXPECT_EQ(m_progress.first(), QStringLiteral("object 2 0/5"));
    EXPECT_EQ(m_progress.last(), QStringLiteral("object 2 5/5"));
    EXPECT_TRUE(ReadFile(m_folder.filePath(QStringLiteral("TDSVCfg.log")))
                    .startsWith("Button Table:\n0x02,0x01,0x02,0,0,0,0\n"));
}

TEST_F(PrinterConfigTest, AStartUpLoadLeavesTheTableOpenAndAlwaysSucceeds) {
    m_end.IsSilent = [](const QByteArray& command) { return IsLetter(command, 'K'); };
    EXPECT_TRUE(Await(m_config.SendPrinterConfig(1, PrinterConfig::Load::StartUp)));
    EXPECT_EQ(m_end.Commands, (QByteArrayList{"P K020102!", "P P", "P " + Row("M000", "A"), "P " + Row("M011", "B")}));
    EXPECT_EQ(m_messages, QStringList{QStringLiteral("Error on set btn table")});
}

TEST_F(PrinterConfigTest, BehindAHubEverythingIsRelayedWithinTheBracket) {
    EXPECT_TRUE(Await(m_config.SendPrinterConfig(2, PrinterConfig::Load::Full)));
    EXPECT_EQ(m_end.Commands, (QByteArrayList{"p J0", "p NQK0201021", "p NQP", "p NQ" + Row("M000", "A"),
                                              "p NQ" + Row("M011", "B"), "p NQN", "p J1"}));
}

TEST_F(PrinterConfigTest, AFailedRowIsTriedTwiceLoggedAndPassedOver) {
    m_end.IsSilent = [](const QByteArray& command) { return command.startsWith("P M00"); };
    EXPECT_TRUE(Await(m_config.SendPrinterConfig(1, PrinterConfig::Load::Full)));
    const QByteArray row = "P " + Row("M000", "A");
    EXPECT_EQ(m_end.Commands, (QByteArrayList{"P K0201021", "P P", row, row, "P " + Row("M011", "B"), "P N"}));
    EXPECT_EQ(m_messages, QStringList{QStringLiteral("Error on set service table")});
}

TEST_F(PrinterConfigTest, WithoutTheClosingAnswerTheLoadFailsAtOnceAndTheNextPrinterFollows) {
    m_end.IsSilent = [](const QByteArray& command) { return command == "p NQN" || command == "P N"; };
    EXPECT_EQ(Await(m_config.ConfigAllPrinters()), (QStringList{u"object 2"_qs, u"object 3"_qs}));
    EXPECT_EQ(m_end.Commands.mid(4, 4), (QByteArrayList{"P N", "P N", "p J0", "p NQK0201021"}));
    EXPECT_EQ(m_end.Commands.last(3), (QByteArrayList{"p NQN", "p NQN", "p J1"}));
    EXPECT_EQ(m_clock.Waits, (std::vector<int>{200, 200}));
    EXPECT_EQ(m_messages.count(QStringLiteral("Error on set service table")), 2);
}

TEST_F(PrinterConfigTest, APrinterThatItsHubDoesNotListGetsNothing) {
    m_installation->HubTable[3].Count = 0;
    EXPECT_FALSE(Await(m_config.SendPrinterConfig(2, PrinterConfig::Load::Full)));
    EXPECT_TRUE(m_end.Commands.isEmpty());
    EXPECT_EQ(m_messages.size(), 4);
}

TEST_F(PrinterConfigTest, WithoutServicesOnlyTheButtonTableAndTheEndGoOut) {
    m_installation->NumServices = 0;
    EXPECT_TRUE(Await(m_config.SendPrinterConfig(1, PrinterConfig::Load::Full)));
    EXPECT_EQ(m_end.Commands, (QByteArrayList{"P K001", "P P", "P N"}));
    EXPECT_EQ(ReadFile(m_folder.filePath(QStringLiteral("TDSVCfg.log"))),
              "Button Table:\n0x00,0,0,0,0\nService Table:\n");
}
