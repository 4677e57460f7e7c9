#include "station/InstallationCheck.h"

#include "core/IniUtility.h"
#include "core/Options.h"
#include "database/TicketRecords.h"
#include "tests/support/StoreFile.h"
#include "tests/support/TestClock.h"

#include <gtest/gtest.h>

#include <QFileInfo>
#include <QTemporaryDir>

namespace {

/// A store without findings: two services, a counter and a printer on the bus, a display, a hub with a counter.
class InstallationCheckTest : public ::testing::Test {
protected:
    InstallationCheckTest() {
        const QString store = m_folder.filePath(QStringLiteral("Harbinet.mdb"));
        MakeStore(
            store,
            {QStringLiteral("INSERT INTO Queue (q_Id, q_Number, q_Series, q_On, q_Name, q_Description) VALUES (1, 1, "
                            "1000, 1, 'A', '$1'), (2, 2, 2000, 1, 'B', ''), (3, 1, 0, 0, 'off', '')"),
             QStringLiteral("INSERT INTO Display (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) VALUES "
                            "(1, 1, 1, 'C1', 1, 0, 0), (2, 2, 2, 'C2', 1, 0, 5), (3, 3, 32, 'P', 1, 1, 0), "
                            "(4, 4, 40, 'D', 1, 2, 0), (5, 5, 64, 'H', 1, 3, 0), (6, 1, 1, 'off', 0, 0, 0)")});
        m_database.OpenDatabase(store);
    }

    /// Findings as "table key field: text".
    std::vector<std::string> Findings() {
        std::vector<std::string> lines;
        for (const Finding& finding : m_check.FindFaults()) {
            const QString line = QStringLiteral("%1 %2 %3: %4").arg(finding.table).arg(finding.key);
            lines.push_back(line.arg(finding.field, finding.text).toStdString());
        }
        return lines;
    }

    void Run(const QString& statement) {
        const Result<> done = m_database.Run({statement});
        ASSERT_TRUE(done) << qPrintable(done.Error());
    }

    QTemporaryDir m_folder;
    TestClock m_clock;
    EventLog m_log{m_folder.path(), m_clock};
    IniUtility m_ini{m_folder.filePath(QStringLiteral("Tallora.ini"))};
    Options m_options;
    Database m_database{m_folder.path(), m_ini, m_log, m_clock};
    const std::unique_ptr<model::Installation> m_installation = std::make_unique<model::Installation>();
    InstallationCheck m_check{m_database, m_options, m_clock};
};

} // namespace

TEST_F(InstallationCheckTest, NamesTheRowAndTheColumnAtFault) {
    const struct {
        const char* change; ///< a statement
        const char* finding;
    } cases[] = {
        {"UPDATE Display SET d_Address = 1 WHERE d_Id = 3",
         "Display 3 d_Address: Object 'P': address 1 is taken by 'C1', so it is not loaded."},
        {"UPDATE Display SET d_Address = NULL WHERE d_Id = 3",
         "Display 3 d_Address: Object 'P': it has no address and is not loaded."},
        {"UPDATE Display SET d_Number = NULL WHERE d_Id = 3",
         "Display 3 d_Number: Object 'P': it has no number and is not loaded."},
        {"UPDATE Display SET d_direction = NULL WHERE d_Id = 3",
         "Display 3 d_Address: Object 'P': it cannot be loaded; the log of the next load says why."},
        {"UPDATE Display SET d_Number = 1 WHERE d_Id = 3",
         "Display 3 d_Number: Object 'P': number 1 is also that of 'C1'."},
        {"UPDATE Queue SET q_Number = 1 WHERE q_Id = 2",
         "Queue 2 q_Number: Service 'B': number 1 is also that of 'A'."},
        {"UPDATE Queue SET q_route = 7 WHERE q_Id = 2",
         "Queue 2 q_route: Service 'B': no active service has the number 7 of its route."},
        {"UPDATE Queue SET q_route = 2 WHERE q_Id = 2",
         "Queue 2 q_route: Service 'B': its route leads to 'B', which is routed itself."},
        {"UPDATE Display SET d_Address = 127 WHERE d_Id = 3",
         "Display 3 d_Address: Object 'P': address 127 is that of the broadcast."},
        {"UPDATE Display SET d_Address = 208 WHERE d_Id = 3",
         "Display 3 d_Address: Object 'P': nothing can be sent to address 208, only to 0 to 207."},
        {"UPDATE Display SET d_Address = 208 WHERE d_Id = 5",
         "Display 5 d_Address: Object 'H': nothing can be sent to address 208, only to 0 to 207."},
        {"UPDATE Queue SET q_series = 65536 WHERE q_Id = 1",
         "Queue 1 q_series: Service 'A': series 65536 does not fit the hub's block, which takes 0 to 65535."},
        {"INSERT INTO [Info-Direction] (inf_Id,d_Id,Dir_Id) VALUES (4, 2, 208)",
         "Info-Direction 4 Dir_Id: Display 'D', counter 'C2': direction 208 does not fit the hub's block, which takes "
         "0 to 207."},
        {"UPDATE Display SET d_HubId = 3 WHERE d_Id = 2",
         "Display 2 d_HubId: Object 'C2': it stands behind a hub that does not exist. Click to free it."},
        {"UPDATE Display SET d_HubId = 99 WHERE d_Id = 6",
         "Display 6 d_HubId: Object 'off': it stands behind a hub that does not exist. Click to free it."},
        {"UPDATE Display SET d_On = 0 WHERE d_Id = 5",
         "Display 2 d_Name: Object 'C2': the hub that it stands behind is not loaded."},
        {"UPDATE Display SET d_Type = NULL WHERE d_Id = 1",
         "Display 1 d_Type: Object 'C1': it has no type. It is taken for a counter, and the hubs' lists lack it."},
        {"INSERT INTO ScanPlan (ID, d_Id, [Order]) VALUES (8, 77, 3)",
         "ScanPlan 8 d_Id: Scan plan: an entry (order 3, counter 77) names no object. Click to remove it."},
        {"INSERT INTO ScanPlan (ID, d_Id, [Order]) VALUES (9, NULL, NULL)",
         "ScanPlan 9 d_Id: Scan plan: an entry (order none, counter none) names no object. Click to remove it."},
        {"UPDATE Display SET d_Id = 32768, d_HubId = 0 WHERE d_Id = 2",
         "Display 32768 d_Name: Object 'C2': no direction can be stored for it, since its key 32768 is above 32767."},
    };
    EXPECT_EQ(Findings(), std::vector<std::string>{});
    for (const auto& [change, finding] : cases) {
        Run(QStringLiteral("SAVEPOINT untouched"));
        Run(QString::fromLatin1(change));
        EXPECT_EQ(Findings(), std::vector<std::string>{finding}) << change;
        Run(QStringLiteral("ROLLBACK TO untouched"));
        Run(QStringLiteral("RELEASE untouched"));
    }
}

TEST_F(InstallationCheckTest, TextsAreCountedAsThePrinterTakesThem) {
    const QString name(63, u'n');
    Run(QStringLiteral("UPDATE Queue SET q_Name = '%1', q_Description = '%2$1' WHERE q_Id = 1")
            .arg(name, name.chopped(1)));
    Run(QStringLiteral("INSERT INTO [Queue-Display] (q_Id, d_Id) VALUES (1, 1)"));
    EXPECT_EQ(Findings(), std::vector<std::string>{});
    Run(QStringLiteral("UPDATE Queue SET q_Name = 'n' || q_Name WHERE q_Id = 1"));
    Run(QStringLiteral("INSERT INTO [Queue-Display] (q_Id, d_Id) VALUES (1, 2)"));
    const std::string service = "Service '" + std::string(64, 'n') + "': ";
    EXPECT_EQ(Findings(),
              (std::vector<std::string>{"Queue 1 q_Name: " + service + "the name has 64 characters, printers take 63.",
                                        "Queue 1 q_Description: " + service +
                                            "the description has 66 characters with its counters, printers take 63."}));
}

TEST_F(InstallationCheckTest, CountsWhatIsLoadedAndWhatAHubTakes) {
    // Fifteen more behind the hub, then the one too many; a disabled one does not count.
    Run(QStringLiteral("WITH RECURSIVE n(i) AS (SELECT 10 UNION ALL SELECT i + 1 FROM n WHERE i < 24) INSERT INTO "
                       "Display (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) SELECT i, i, i, 'M' || i, "
                       "1, 1, 5 FROM n"));
    EXPECT_EQ(Findings(), std::vector<std::string>{});
    Run(QStringLiteral("INSERT INTO Display (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) VALUES (25, 25, "
                       "25, 'M25', 0, 1, 5), (26, 26, 26, 'M26', 1, 1, 5)"));
    const std::string full = "Display 26 d_Name: Object 'M26': hub 'H' has 16 devices already.";
    EXPECT_EQ(Findings(), std::vector<std::string>{full});

    Run(QStringLiteral(
        "WITH RECURSIVE n(i) AS (SELECT 50 UNION ALL SELECT i + 1 FROM n WHERE i < 113) INSERT INTO "
        "Display (d_Id, d_Number, d_Address, d_Name, d_On, d_Type) SELECT i, i, i + 20, 'X', 1, 1 FROM n"));
    Run(QStringLiteral("DELETE FROM Display WHERE d_Id BETWEEN 10 AND 26"));
    Run(QStringLiteral("UPDATE Display SET d_Address = 200 WHERE d_Address = 127"));
    const std::vector<std::string> lost = Findings();
    ASSERT_EQ(lost.size(), 5U) << "five are loaded besides 59 of these 64";
    EXPECT_EQ(lost.front(), "Display 109 d_Address: Object 'X': only 64 active objects are loaded, not this one.");

    Run(QStringLiteral("DELETE FROM Display"));
    Run(QStringLiteral("WITH RECURSIVE n(i) AS (SELECT 10 UNION ALL SELECT i + 1 FROM n WHERE i < 72) INSERT INTO "
                       "Queue (q_Id, q_Number, q_On, q_Name) SELECT i, i, 1, 'S' FROM n"));
    EXPECT_EQ(Findings(), std::vector<std::string>{
                              "Queue 72 q_On: Service 'S': only 64 active services are loaded, not this one."});
}

TEST_F(InstallationCheckTest, TellsABlockThatItsFrameCannotCount) {
    Run(QStringLiteral("WITH RECURSIVE n(i) AS (SELECT 10 UNION ALL SELECT i + 1 FROM n WHERE i < 71) INSERT INTO "
                       "Queue (q_Id, q_Number, q_Series, q_On, q_Name) SELECT i, i, 1000, 1, 'S' || i FROM n"));
    const auto addPrinters = [this](int first, int last) {
        Run(QStringLiteral("WITH RECURSIVE n(i) AS (SELECT %1 UNION ALL SELECT i + 1 FROM n WHERE i < %2) INSERT INTO "
                           "Display (d_Number, d_Address, d_Name, d_On, d_Type) SELECT i, i, 'X', 1, 1 FROM n")
                .arg(first)
                .arg(last));
    };
    Run(QStringLiteral("UPDATE Queue SET q_Series = 256 * 9"));
    Run(QStringLiteral("DELETE FROM Display WHERE d_Type IN (0, 2)"));
    // Besides 64 services of 3 characters there are 14 characters, so that 24 printers of 2 characters fit.
    addPrinters(100, 122);
    EXPECT_EQ(Findings(), std::vector<std::string>{}) << "254 characters";
    addPrinters(130, 130);
    EXPECT_EQ(Findings(), std::vector<std::string>{
                              " 0 : The configuration of the hubs has 256 characters; above 254 the length field of "
                              "its frame wraps."});
    Run(QStringLiteral("DELETE FROM Display WHERE d_Type = 3"));
    EXPECT_EQ(Findings(), std::vector<std::string>{}) << "nobody gets it";
}

TEST_F(InstallationCheckTest, LeavesNoTraceAndTakesAClosedDatabase) {
    Run(QStringLiteral("UPDATE Display SET d_Address = 1 WHERE d_Id = 3"));
    EXPECT_EQ(Findings().size(), 1U);
    EXPECT_EQ(m_installation->NumObjects, 0);
    EXPECT_FALSE(QFileInfo::exists(m_folder.filePath(QStringLiteral("Log"))));
    m_database.CloseDatabase();
    EXPECT_TRUE(Findings().empty());
}
