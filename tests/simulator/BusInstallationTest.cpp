#include "simulator/BusInstallation.h"
#include "tests/support/Files.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>

TEST(BusInstallationTest, NamesTheLineOfAFault) {
    const struct {
        const char* text;
        const char* problem;
    } rows[] = {
        {"counter 1 1 A\nprinter 1 1 B", "bus.txt:2: address 1 is already that of \"A\""},
        {"# only\nvalve 1 1 A", "bus.txt:2: unknown class \"valve\""},
        {"counter 127 1 A", "bus.txt:1: address must be 0 to 207 but not 127, number a whole number"},
        {"counter one 1 A", "bus.txt:1: expected CLASS ADDRESS NUMBER [hub=ADDRESS] NAME"},
        {"counter 1 1 A\nprinter 32 1 hub=64 B", "bus.txt:2: there is no hub at address 64"},
        {"hub 0 1 A\nprinter 32 1 hub=4294967296 B", "bus.txt:2: there is no hub at address 4294967296"},
    };
    for (const auto& row : rows) {
        QString problem;
        EXPECT_FALSE(BusInstallation::Parse(QString::fromUtf8(row.text), QStringLiteral("bus.txt"), problem));
        EXPECT_EQ(problem.toStdString(), row.problem);
    }
}

TEST(BusInstallationTest, ReadsTheEnabledRowsOfADatabase) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("a.mdb"));
    {
        QSqlDatabase store = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("made"));
        store.setDatabaseName(path);
        ASSERT_TRUE(store.open());
        QSqlQuery query(store);
        ASSERT_TRUE(query.exec(QStringLiteral("CREATE TABLE Display (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, "
                                              "d_HubId)")));
        ASSERT_TRUE(query.exec(QStringLiteral("INSERT INTO Display VALUES (1,1,32,'P',1,1,9), (2,2,33,'Off',0,1,0), "
                                              "(3,3,34,'Null',NULL,1,0), (4,4,5,'Lost',1,NULL,77), (9,1,64,'H',1,3,0), "
                                              "(10,1,5,'Twin',1,0,0), (11,1,127,'All',1,0,0), (12,1,6,'?',1,8,0)")));
    }
    QSqlDatabase::removeDatabase(QStringLiteral("made"));
    QString problem;
    const std::optional<BusInstallation> installation = BusInstallation::Read(path, problem);
    ASSERT_TRUE(installation) << qPrintable(problem);
    const std::vector<BusDevice>& devices = installation->Devices();
    ASSERT_EQ(devices.size(), 3u);
    EXPECT_EQ(devices[0].Hub, std::optional<quint8>(64));
    EXPECT_EQ(devices[1].Class, DeviceClass::Counter);
    EXPECT_TRUE(devices[1].Detached);
    EXPECT_EQ(installation->Notes().size(), 3);

    WriteFile(path, QByteArray("\0\1\0\0Standard Jet DB", 19));
    EXPECT_FALSE(BusInstallation::Read(path, problem));
    EXPECT_TRUE(problem.contains(QStringLiteral("neither a station database nor a text file")));
}
