#include "database/Sqlite.h"
#include "simulator/BusInstallation.h"
#include "simulator/SimulatedBus.h"
#include "tests/support/Files.h"
#include "tests/support/StoreFile.h"
#include "tests/support/Waiting.h"

#include <gtest/gtest.h>

#include <QProcess>
#include <QTemporaryDir>

namespace {

/// The real program at a line with simulated devices.
class ControlTest : public ::testing::Test {
protected:
    ControlTest() {
        MakeStore(
            m_store,
            {QStringLiteral("INSERT INTO Queue (q_Id, q_Number, q_Series, q_On, q_Name, q_Button) VALUES "
                            "(1, 1, 1000, 1, 'A', 7), (2, 2, 2000, 1, 'B', 8)"),
             QStringLiteral("INSERT INTO Display (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) VALUES "
                            "(1, 5, 1, 'Counter', 1, 0, 0), (2, 1, 32, 'Main', 1, 1, 0), "
                            "(3, 9, 64, 'HUB', 1, 3, 0), (4, 6, 2, 'Far', 1, 0, 3)"),
             QStringLiteral("INSERT INTO ScanPlan (d_Id, [Order]) VALUES (1, 1)")});
        QString problem;
        m_devices = std::make_unique<SimulatedBus>(*BusInstallation::Read(m_store, problem));
        EXPECT_EQ(m_devices->Open(), QString());
    }

    /// Runs the program while the devices go on. @return its exit status.
    int Run(const QStringList& words) {
        QProcess program;
        program.start(QStringLiteral(ORVEXCTL),
                      words + QStringList{QStringLiteral("--folder"), m_folder.filePath(QStringLiteral("home"))});
        EXPECT_TRUE(WaitUntil([&] { return program.state() == QProcess::NotRunning; }, 60'000));
        m_output = QString::fromUtf8(program.readAllStandardOutput());
        m_errors = QString::fromUtf8(program.readAllStandardError());
        return program.exitStatus() == QProcess::NormalExit ? program.exitCode() : -1;
    }

    int RunOnLine(const char* verb) {
        return Run({QString::fromLatin1(verb), m_store, QStringLiteral("--port"), m_devices->SlavePath(),
                    QStringLiteral("--baud"), QStringLiteral("115200")});
    }

    QTemporaryDir m_folder;
    QString m_store = m_folder.filePath(QStringLiteral("Hall.mdb"));
    std::unique_ptr<SimulatedBus> m_devices;
    QString m_output;
    QString m_errors;
};

} // namespace

TEST_F(ControlTest, AHallIsCommissionedAndWhatIsMissingIsNamed) {
    EXPECT_EQ(RunOnLine("commission"), 1);
    EXPECT_TRUE(m_errors.contains(u"Main: form never loaded (no form has been chosen"_qs)) << qPrintable(m_errors);
    EXPECT_EQ(m_devices->FindAs<TicketPrinter>(32)->Flags().first(2), "11") << "its tables";
    EXPECT_EQ(RunOnLine("verify"), 1);
    EXPECT_TRUE(m_errors.contains(u"1 of 4 devices are not in step"_qs)) << qPrintable(m_errors);
    EXPECT_FALSE(m_errors.contains(u"tables"_qs)) << "the record of the first run counts in the second";
}

TEST_F(ControlTest, ALoadThatNobodyCouldWriteDownIsNoSuccess) {
    Sqlite store;
    ASSERT_TRUE(store.Open(m_store));
    ASSERT_TRUE(store.Run({u"CREATE TABLE LoadRecord (x)"_qs}));
    store.Close();
    EXPECT_EQ(RunOnLine("load"), 1);
    EXPECT_TRUE(m_errors.contains(u"Loads were not recorded: "_qs)) << qPrintable(m_errors);
    EXPECT_EQ(m_devices->FindAs<TicketPrinter>(32)->Flags().first(2), "11");
}

TEST_F(ControlTest, ACommandLineThatMakesNoSenseIsRefused) {
    const QStringList lines[] = {{},
                                 {u"load"_qs},
                                 {u"explode"_qs, m_store},
                                 {u"load"_qs, m_store, u"more"_qs},
                                 {u"load"_qs, m_store, u"--baud"_qs, u"fast"_qs},
                                 {u"load"_qs, m_store, u"--loudly"_qs}};
    for (const QStringList& words : lines) {
        EXPECT_EQ(Run(words), 2) << qPrintable(words.join(u' '));
        EXPECT_TRUE(m_errors.startsWith(u"orvexctl: "_qs) && m_output.isEmpty()) << qPrintable(m_errors);
    }
    EXPECT_EQ(Run({u"--help"_qs}), 0);
    for (const char* verb : {"check", "load", "hubs", "init"})
        EXPECT_TRUE(m_output.contains(QStringLiteral("\n  %1").arg(QLatin1String(verb)))) << verb;
    EXPECT_EQ(m_devices->Counts().Commands, 0U);
}

TEST_F(ControlTest, CheckListsWhatCannotBeLoadedAndNeedsNoLine) {
    EXPECT_EQ(Run({u"check"_qs, m_store}), 0) << qPrintable(m_errors);
    EXPECT_EQ(m_output, QString());

    const QString faulty = m_folder.filePath(QStringLiteral("Faulty.mdb"));
    MakeStore(faulty, {QStringLiteral("INSERT INTO Display (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) "
                                      "VALUES (1, 5, 1, 'Qua\u00E0y', 1, 0, 0), (2, 6, 1, 'Twin', 1, 0, 0)")});
    EXPECT_EQ(Run({u"check"_qs, faulty}), 1);
    EXPECT_TRUE(m_output.contains(u"'Twin'"_qs)) << qPrintable(m_output);
    EXPECT_FALSE(m_output.contains(u"Qua\u00E0y"_qs)) << "letters are true ones outside the store";

    const QString missing = m_folder.filePath(QStringLiteral("missing.mdb"));
    EXPECT_EQ(Run({u"check"_qs, missing}), 1);
    EXPECT_TRUE(m_errors.contains(missing)) << qPrintable(m_errors);
}

TEST_F(ControlTest, DevicesEndUpHoldingWhatTheStoreDescribesAndTheStatusSaysWhoWasSilent) {
    EXPECT_EQ(RunOnLine("load"), 0) << qPrintable(m_errors);
    EXPECT_TRUE(m_errors.contains(u"Set config to all objects OK."_qs));
    EXPECT_EQ(m_devices->FindAs<TicketPrinter>(32)->ServiceRows().size(), 2U);
    EXPECT_EQ(RunOnLine("hubs"), 0) << qPrintable(m_errors);
    EXPECT_TRUE(m_devices->FindAs<DeviceHub>(64)->Configuration().contains("Na_Relt"));
    EXPECT_EQ(RunOnLine("init"), 0) << qPrintable(m_errors);
    EXPECT_EQ(m_devices->FindAs<DeviceHub>(64)->Members()->size(), 1U);

    // What the store holds and no device gets is no success.
    Sqlite store;
    ASSERT_TRUE(store.Open(m_store));
    ASSERT_TRUE(
        store.Run({u"UPDATE Display SET d_Address = NULL, d_Name = 'New' || char(10) || 'line' WHERE d_Id = 4"_qs}));
    EXPECT_EQ(RunOnLine("load"), 1);
    EXPECT_TRUE(m_errors.contains(u"Set config to all objects OK."_qs) && m_errors.contains(u"has no address"_qs))
        << qPrintable(m_errors);
    EXPECT_EQ(m_errors.count(u'\n'), m_errors.count(u"orvexctl: "_qs)) << "one finding a line";
    ASSERT_TRUE(store.Run({u"UPDATE Display SET d_Address = 2, d_Name = 'Far' WHERE d_Id = 4"_qs}));

    m_devices->SetSilent(32, true);
    EXPECT_EQ(RunOnLine("load"), 4);
    EXPECT_TRUE(m_errors.contains(u"Error on setting config to all objects."_qs) && m_errors.contains(u"Main"_qs));
    EXPECT_EQ(RunOnLine("init"), 4);
    EXPECT_TRUE(m_errors.contains(u"Main"_qs));
    m_devices->SetSilent(64, true);
    EXPECT_EQ(RunOnLine("hubs"), 4);
    EXPECT_TRUE(m_errors.contains(u"HUB"_qs)) << qPrintable(m_errors);
}

TEST_F(ControlTest, WithoutALineNothingIsDone) {
    EXPECT_EQ(Run({u"load"_qs, m_store}), 5) << "no port is configured";
    EXPECT_EQ(Run({u"init"_qs, m_store, u"--port"_qs, m_folder.filePath(u"none"_qs), u"--baud"_qs, u"9600"_qs}), 5);
    EXPECT_TRUE(m_errors.contains(u"COM port used by another program!"_qs)) << qPrintable(m_errors);
    FaultSettings faults;
    faults.HangUpAfter = 3;
    m_devices->SetFaults(faults);
    EXPECT_EQ(RunOnLine("load"), 5) << "the adapter was pulled: " << qPrintable(m_errors);
}

TEST_F(ControlTest, AnOlderDatabaseIsTakenOverOnlyWithAYes) {
    const QString file = m_folder.filePath(QStringLiteral("Old.mdb"));
    ASSERT_TRUE(QFile::copy(QStringLiteral(TEST_DATA_FOLDER "/Harbinet-jet4.mdb"), file));
    const QByteArray before = ReadFile(file);
    EXPECT_EQ(Run({u"check"_qs, file}), 1);
    EXPECT_TRUE(m_errors.contains(u"--yes"_qs)) << qPrintable(m_errors);
    EXPECT_EQ(ReadFile(file), before);
    EXPECT_EQ(Run({u"check"_qs, file, u"--yes"_qs}), 1) << "it has a finding";
    EXPECT_TRUE(ReadFile(file).startsWith("SQLite format 3"));
    EXPECT_EQ(ReadFile(m_folder.filePath(QStringLiteral("Old.jet.mdb"))), before);
    EXPECT_FALSE(m_output.isEmpty());
}
