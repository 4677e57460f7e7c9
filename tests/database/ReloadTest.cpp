#include "tests/database/World.h"

namespace {

class ReloadTest : public ::testing::Test {
protected:
    ReloadTest() {
        world.Sql(
            QStringLiteral("INSERT INTO Queue (q_Id, q_Number, q_On, q_Name) VALUES (1, 1, 1, 'A'), (2, 2, 1, 'B'),"
                           " (3, 3, 0, 'C'), (4, 4, 0, 'D')"));
        world.Sql(
            QStringLiteral("INSERT INTO Display (d_Id, d_Number, d_Address, d_On, d_Type, d_HubId, LastInfo) VALUES"
                           " (10, 10, 10, 1, 3, 0, NULL), (11, 11, 11, 1, 0, 10, '2'),"
                           " (12, 12, 12, 1, 2, 0, '0123114'), (13, 13, 13, 1, 0, 0, 'x')"));
        world.Sql(QStringLiteral("INSERT INTO [Queue-Display] (d_Id, q_Id) VALUES (11, 2), (13, 3)"));
        world.Sql(QStringLiteral("INSERT INTO ScanPlan (d_Id, [Order]) VALUES (11, 1)"));
        world.database.OpenDatabase(world.store);
    }

    void AddTickets(int count, int service, const char* display, int flag) {
        world.Sql(
            QStringLiteral("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<%1)"
                           " INSERT INTO rData (TicketNo, ServiceId, DisplayId, DateTime, Flags, Announced, TicketFlag)"
                           " SELECT i, %2, %3, '2026-11-18 06:13:38', 0, 0, %4 FROM n")
                .arg(count)
                .arg(service)
                .arg(QString::fromLatin1(display))
                .arg(flag));
    }

    World world;
    model::Installation& model = *world.installation;
};

TEST_F(ReloadTest, BuildsTheWholeModel) {
    EXPECT_TRUE(world.reload.ReloadAll());
    EXPECT_EQ(model.NumServices, 2);
    EXPECT_EQ(model.NumObjects, 4);
    EXPECT_EQ(model.QObjects[0].FirstServiceIndex, -1);
    EXPECT_EQ(model.QObjects[1].FirstServiceIndex, 1);
    EXPECT_EQ(model.QObjects[3].FirstServiceId, 3);
    EXPECT_EQ(model.QObjects[3].FirstServiceIndex, -1);
    EXPECT_EQ(model.HubTable[0].Count, 1);
    EXPECT_EQ(model.HubTable[0].Slots[0], 1);
    EXPECT_TRUE(model.QObjects[2].InfoTable->GetStrInf().endsWith(QStringLiteral("0123114")));
}

TEST_F(ReloadTest, LeavesTheModelAloneWhereTheStoreCannotBeRead) {
    EXPECT_TRUE(world.reload.ReloadAll());
    world.Sql(QStringLiteral("UPDATE Queue SET q_Name='new', q_On=1"));
    world.Sql(QStringLiteral("UPDATE Display SET d_Name='new'"));
    world.TakeLines();
    const auto expectOldModel = [&] {
        world.reload.NoteStoreChanged();
        EXPECT_FALSE(world.reload.ReloadAll());
        EXPECT_FALSE(world.reload.Refresh());
        EXPECT_TRUE(world.reload.IsStoreChanged());
        EXPECT_EQ(world.tickets.RecoverTickets().has_value(), world.database.IsOpen());
        EXPECT_EQ(model.NumServices, 2);
        EXPECT_EQ(model.QServices[0].Name, QStringLiteral("A"));
        EXPECT_EQ(model.QObjects[0].Name, QString());
        EXPECT_EQ(model.NumScanEntries, 1);
    };
    world.Sql(QStringLiteral("ALTER TABLE ScanPlan RENAME TO Other"));
    expectOldModel();
    EXPECT_TRUE(world.TakeLines().contains(QStringLiteral("Load database: ScanPlan: no such table: ScanPlan")));
    world.Sql(QStringLiteral("DELETE FROM Other")); // no transaction was left open
    world.database.CloseDatabase();
    expectOldModel();
    EXPECT_EQ(world.database.LastInfo(12), QString());
    EXPECT_FALSE(world.tickets.ClearTicketRecords());
}

TEST_F(ReloadTest, RefreshesLoadedServicesAndCountsTheNewOnes) {
    world.options.RoutedSeries = true;
    EXPECT_TRUE(world.reload.ReloadAll());
    model.QServices[0].NextNumber = 40;
    model.QServices[1].NextNumber = 50;
    EXPECT_EQ(model.QServices[1].SeriesIndex, 1);
    // The first is off but stays; the second joins its series; two are new.
    world.Sql(QStringLiteral(
        "UPDATE Queue SET q_On = q_Id <> 1, q_Name = 'new', q_route = CASE q_Id WHEN 2 THEN 1 ELSE 0 END"));
    world.Sql(QStringLiteral("UPDATE Display SET d_Name='new'"));
    world.Sql(QStringLiteral("DELETE FROM ScanPlan"));

    world.reload.NoteStoreChanged();
    EXPECT_EQ(world.reload.Refresh().ValueOr(-1), 2);
    EXPECT_FALSE(world.reload.IsStoreChanged());
    EXPECT_EQ(model.NumServices, 2);
    EXPECT_EQ(model.QServices[0].Name, QStringLiteral("A"));
    EXPECT_EQ(model.QServices[1].Name, QStringLiteral("new"));
    EXPECT_EQ(model.QServices[1].SeriesIndex, 0);
    EXPECT_EQ(model.QServices[0].NextNumber, 40);
    EXPECT_EQ(model.QServices[1].NextNumber, 50);
    EXPECT_EQ(model.QObjects[0].Name, QStringLiteral("new"));
    EXPECT_EQ(model.NumScanEntries, 0);
}

TEST_F(ReloadTest, FilesWaitingTicketsByObjectThenServiceThenRoute) {
    EXPECT_EQ(world.tickets.RecoverTickets(), 1);
    AddTickets(3, 2, "NULL", 0);
    AddTickets(1, 2, "11", 0);
    AddTickets(2, 2, "11", 1);
    AddTickets(1, 1, "99", 1); // no such object
    AddTickets(1, 77, "0", 0); // no such service: the first
    world.Sql(QStringLiteral(
        "INSERT INTO rData (TicketNo, ServiceId, Flags, Announced) VALUES (900, 2, 0, 1), (950, 2, 4, 1)"));
    const auto counts = [&] {
        QStringList text;
        for (const model::TicketRing* ring :
             {&model.QServices[0].WaitRing, &model.QServices[0].FlaggedRing, &model.QServices[1].WaitRing,
              &model.QServices[1].FlaggedRing, &model.QObjects[1].WaitRing, &model.QObjects[1].FlaggedRing})
            text += QString::number(ring->Count);
        return text.join(u',');
    };
    EXPECT_TRUE(world.reload.ReloadAll());
    EXPECT_EQ(world.tickets.RecoverTickets(), 901);
    EXPECT_EQ(counts(), QStringLiteral("1,1,3,0,1,2"));
    const model::TicketEntry& oldest = model.QServices[1].WaitRing.Entries[1];
    EXPECT_EQ(oldest.TicketNo, 1);
    EXPECT_EQ(oldest.RecordId, 1);
    EXPECT_EQ(oldest.ServiceIndex, 1);
    EXPECT_EQ(oldest.Seconds, 6 * 3600 + 13 * 60 + 38);

    // The route counts whatever the option says; the entry keeps the service that it was drawn for.
    world.Sql(QStringLiteral("UPDATE Queue SET q_route=1 WHERE q_Id=2"));
    EXPECT_TRUE(world.reload.ReloadAll());
    world.tickets.RecoverTickets();
    EXPECT_EQ(counts(), QStringLiteral("4,1,0,0,1,2"));
    EXPECT_EQ(model.QServices[0].WaitRing.Entries[1].ServiceIndex, 1);
}

TEST_F(ReloadTest, LogsEachTicketThatFindsNoRoom) {
    const QString lost = QStringLiteral("Lost Ticket, no buffer!");
    AddTickets(513, 2, "11", 0);
    EXPECT_TRUE(world.reload.ReloadAll());
    world.TakeLines();
    EXPECT_EQ(world.tickets.RecoverTickets(), 514);
    EXPECT_EQ(world.TakeLines(), QStringList(lost)) << "the service had room for the last one";
    EXPECT_EQ(model.QObjects[1].WaitRing.Count, 512);
    EXPECT_EQ(model.QServices[1].WaitRing.Count, 1);

    world.Sql(QStringLiteral("UPDATE rData SET DisplayId=0"));
    EXPECT_TRUE(world.reload.ReloadAll());
    world.TakeLines();
    world.tickets.RecoverTickets();
    EXPECT_EQ(world.TakeLines(), QStringList(lost));
    EXPECT_EQ(model.QServices[1].WaitRing.Count, 512);

    world.Sql(QStringLiteral("DELETE FROM Queue"));
    world.Sql(QStringLiteral("DELETE FROM rData WHERE ID > 2"));
    world.Sql(QStringLiteral("UPDATE rData SET TicketNo=32767"));
    EXPECT_TRUE(world.reload.ReloadAll());
    world.TakeLines();
    EXPECT_EQ(world.tickets.RecoverTickets(), 32767);
    EXPECT_EQ(world.TakeLines(),
              QStringList({lost, lost, QStringLiteral("Load database: the next ticket number 32768 is too large.")}));
    EXPECT_EQ(model.QServices[0].WaitRing.Count, 0) << "the first service is nobody";
}

TEST_F(ReloadTest, TellsAndClearsTheLastTicketOfACounter) {
    AddTickets(1, 1, "0", 0);
    AddTickets(1, 2, "0", 0);
    EXPECT_TRUE(world.reload.ReloadAll());
    const model::TicketEntry last = world.tickets.GetLastTicket(11);
    EXPECT_EQ(last.TicketNo, 1);
    EXPECT_EQ(last.RecordId, 2);
    EXPECT_EQ(last.ServiceIndex, 1);
    for (const quint8 number : {10, 13, 99}) // nothing served, no number, no such object
        EXPECT_EQ(world.tickets.GetLastTicket(number).RecordId, 0) << int(number);

    world.Sql(
        QStringLiteral("CREATE TEMP TRIGGER keep BEFORE UPDATE ON Display BEGIN SELECT RAISE(ABORT, 'kept'); END"));
    EXPECT_EQ(world.tickets.ClearTicketRecords().Error(), QStringLiteral("kept"));
    EXPECT_EQ(world.Values(QStringLiteral("SELECT COUNT(*) FROM rData")), QStringLiteral("2"));
    world.Sql(QStringLiteral("DROP TRIGGER keep"));
    EXPECT_TRUE(world.tickets.ClearTicketRecords());
    EXPECT_EQ(world.Values(QStringLiteral("SELECT COUNT(*) FROM rData")), QStringLiteral("0"));
    EXPECT_EQ(world.database.LastInfo(12), QStringLiteral("0123114")) << "shown until the next start";
    world.database.OpenDatabase(world.store);
    EXPECT_EQ(world.database.LastInfo(12), QString());
}

} // namespace
