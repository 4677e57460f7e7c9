#include "tests/database/World.h"

namespace {

using Installation = model::Installation;

/// One value of each of the first `count` records.
template <typename Records, typename Member>
QString Each(const Records& records, int count, Member member) {
    QStringList values;
    for (int i = 0; i < count; ++i)
        values += QString::number(records[static_cast<std::size_t>(i)].*member);
    return values.join(u',');
}

class LoadersTest : public ::testing::Test {
protected:
    QString Services(auto member) const { return Each(model.QServices, model.NumServices, member); }
    QString Objects(auto member) const { return Each(model.QObjects, model.NumObjects, member); }

    void AddService(int id, int number, int route) {
        world.Sql(QStringLiteral("INSERT INTO Queue (q_Id, q_Number, q_route, q_On) VALUES (%1, %2, %3, 1)")
                      .arg(id)
                      .arg(number)
                      .arg(route));
    }

    World world;
    Installation& model = *world.installation;
};

TEST_F(LoadersTest, LoadsEnabledServicesWithTheirNullsInTheOrderOfTheTable) {
    world.Sql(QStringLiteral(
        "INSERT INTO Queue VALUES (7, 4, 2000, 9, 1, 'N', 'D', 'O', 255), (3, 1, 1, 1, 0, 'off', '', '', 0),"
        " (2, NULL, NULL, NULL, -1, NULL, NULL, NULL, NULL), (5, 1, 1, 1, NULL, 'off', '', '', 0),"
        " (9, 1, 2000, 0, 1, 'A', '', '', 1)"));
    world.Sql(
        QStringLiteral("INSERT INTO rData (ServiceId, TicketNo, Flags) VALUES (9, 2050, 0), (9, 2999, 1), (7, 0, 0)"));
    model.QServices[1].WaitRing.Count = 3;
    model.QServices[1].SeriesIndex = 3;
    world.LoadBoth();
    EXPECT_EQ(world.TakeLines(), QStringList());
    EXPECT_EQ(Services(&model::QService::Id), QStringLiteral("2,7,9"));
    EXPECT_EQ(Services(&model::QService::Number), QStringLiteral("0,4,1"));
    EXPECT_EQ(Services(&model::QService::Button), QStringLiteral("0,255,1"));
    EXPECT_EQ(Services(&model::QService::Route), QStringLiteral("0,9,0"));
    EXPECT_EQ(Services(&model::QService::Series), QStringLiteral("1,2000,2000"));
    EXPECT_EQ(Services(&model::QService::NextNumber), QStringLiteral("2,2001,2051"));
    EXPECT_EQ(Services(&model::QService::SeriesIndex), QStringLiteral("0,0,0"));
    EXPECT_EQ(model.QServices[1].WaitRing.Count, 0);
    EXPECT_EQ(model.QServices[0].Name, QString());
    EXPECT_EQ(model.QServices[1].Name + model.QServices[1].Description + model.QServices[1].Notes,
              QStringLiteral("NDO"));
}

TEST_F(LoadersTest, StopsAtSixtyFourRecords) {
    for (const int count : {63, 64, 66}) {
        world.Sql(QStringLiteral("DELETE FROM Queue"));
        world.Sql(QStringLiteral("DELETE FROM Display"));
        const QString rows =
            QStringLiteral("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<%1) ").arg(count);
        world.Sql(rows + QStringLiteral("INSERT INTO Queue (q_Id, q_On) SELECT i, 1 FROM n"));
        // Behind the last slot not even a fault is looked at.
        world.Sql(rows + QStringLiteral("INSERT INTO Display (d_Id, d_Number, d_Address, d_On)"
                                        " SELECT i, i, CASE WHEN i > 64 THEN 1 ELSE i END, 1 FROM n"));
        world.LoadBoth();
        EXPECT_EQ(model.NumServices, std::min(count, 64));
        EXPECT_EQ(model.NumObjects, std::min(count, 64));
        const QStringList full{QStringLiteral("Load database:Invalid Service Count."),
                               QStringLiteral("Load database: Number of counter exceed maximum value.")};
        EXPECT_EQ(world.TakeLines(), count < 64 ? QStringList() : full);
    }
}

TEST_F(LoadersTest, SharesSeriesAlongRoutesOnlyWithTheOption) {
    AddService(1, 1, 0);
    AddService(2, 2, 1);
    AddService(3, 3, 0);
    AddService(4, 4, 99); // nobody's number: the first service
    AddService(5, 5, 6);  // a chain ends after one step
    AddService(6, 6, 3);
    world.Sql(
        QStringLiteral("INSERT INTO rData (ServiceId, TicketNo, Flags) VALUES (2, 50, 0), (4, 60, 0), (5, 70, 0)"));
    const auto load = [&](bool isOn) {
        world.options.RoutedSeries = isOn;
        for (model::QService& service : model.QServices)
            service.OwnSeriesIndex = 77;
        world.LoadBoth();
        world.loaders.MergeRoutedNumbers();
        world.loaders.AssignSeriesIndexes(model.NumServices);
    };
    load(false);
    EXPECT_EQ(Services(&model::QService::NextNumber), QStringLiteral("2,51,2,61,71,2"));
    EXPECT_EQ(Services(&model::QService::SeriesIndex), QStringLiteral("0,1,2,3,4,5"));
    EXPECT_EQ(Services(&model::QService::OwnSeriesIndex), QStringLiteral("0,1,2,3,4,5"));
    load(true);
    EXPECT_EQ(Services(&model::QService::NextNumber), QStringLiteral("61,51,71,61,71,71"));
    EXPECT_EQ(Services(&model::QService::SeriesIndex), QStringLiteral("0,0,1,0,77,1"));
    EXPECT_EQ(Services(&model::QService::OwnSeriesIndex), QStringLiteral("0,77,1,77,77,77"));
}

TEST_F(LoadersTest, LoadsObjectsWithTheirServices) {
    for (int id = 1; id <= 3; ++id)
        AddService(id, id, 0);
    world.Sql(QStringLiteral("UPDATE Queue SET q_On=0 WHERE q_Id=2"));
    world.Sql(QStringLiteral(
        "INSERT INTO Display (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId, d_direction, d_VoiceLocal,"
        " d_VoicerId) VALUES (1, 1, 5, 'off', 0, 0, 0, 0, 0, ''), (4, 8, 5, 'Desk', 1, NULL, NULL, 3, 1, ' Voice A '),"
        " (6, 9, 5, 'Twin', 1, 0, 0, 0, 0, ''), (7, 9, 255, 'Board', 1, 2, 4, 0, 0, NULL)"));
    world.Sql(
        QStringLiteral("INSERT INTO [Queue-Display] (d_Id, q_Id) VALUES (4, NULL), (7, 1), (4, 2), (4, 3), (4, NULL),"
                       " (4, 99), (4, 1)"));
    world.Sql(QStringLiteral("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<70)"
                             " INSERT INTO [Queue-Display] (d_Id, q_Id) SELECT 7, 3 FROM n"));
    world.LoadBoth();
    EXPECT_EQ(world.TakeLines(), QStringList({QStringLiteral("Load database: column q_Id of row 1 is empty."),
                                              QStringLiteral("Duplicate Address on display counter 'Twin'")}));
    EXPECT_EQ(Objects(&model::QObject::Id), QStringLiteral("4,7"));
    EXPECT_EQ(Objects(&model::QObject::Address), QStringLiteral("5,255"));
    EXPECT_EQ(Objects(&model::QObject::Type), QStringLiteral("0,2"));
    EXPECT_EQ(Objects(&model::QObject::HubId), QStringLiteral("0,4"));
    EXPECT_EQ(Objects(&model::QObject::FirstServiceId), QStringLiteral("2,1"));
    EXPECT_EQ(Objects(&model::QObject::ServiceCount), QStringLiteral("2,64"));
    const model::QObject& desk = model.QObjects[0];
    EXPECT_EQ(desk.VoicerId, QStringLiteral("voice a"));
    EXPECT_TRUE(desk.VoiceLocal && desk.Changed && desk.Dirty && desk.Direction == 3);
    EXPECT_EQ(desk.ServiceIndexes[0], 1);
    EXPECT_EQ(desk.ServiceIndexes[1], 0);
    EXPECT_FALSE(desk.InfoTable);
    ASSERT_TRUE(model.QObjects[1].InfoTable);
    EXPECT_EQ(model.QObjects[1].InfoTable->Name(), QStringLiteral("Board"));
    EXPECT_EQ(model.QObjects[1].InfoTable->GetStrInf().size(), 21);

    EXPECT_EQ(world.loaders.CounterListOfService(3), QStringLiteral("8") + QStringLiteral(", 9").repeated(70));
    EXPECT_EQ(world.loaders.CounterListOfService(5), QString());
    EXPECT_TRUE(world.loaders.IsAddressFree(-1, 5));
    EXPECT_TRUE(world.loaders.IsAddressFree(0, 255));
    EXPECT_FALSE(world.loaders.IsAddressFree(1, 255));
}

TEST_F(LoadersTest, SkipsRowsThatTheModelCannotHold) {
    // A store that others made has no checks.
    for (const char* table : {"Queue", "Display", "ScanPlan", "Info-Direction", "rData"}) {
        const QString name = QString::fromLatin1(table);
        const QString columns =
            world.Values(QStringLiteral("SELECT '[' || name || ']' FROM pragma_table_info('%1')").arg(name));
        world.Sql(QStringLiteral("DROP TABLE [%1]").arg(name));
        world.Sql(QStringLiteral("CREATE TABLE [%1] (%2)").arg(name, columns));
    }
    const QString service =
        QStringLiteral("INSERT INTO Queue (q_Id, q_On, q_Button, q_route, q_Number, q_Series) VALUES (%1)");
    const QString object =
        QStringLiteral("INSERT INTO Display (d_Id, d_On, d_Address, d_Number, d_direction, d_VoiceLocal,"
                       " d_Type, d_HubId) VALUES (%1)");
    const QString direction = QStringLiteral("INSERT INTO [Info-Direction] (inf_Id, d_Id, Dir_Id) VALUES (%1)");
    const QString plan = QStringLiteral("INSERT INTO ScanPlan (ID, d_Id) VALUES (%1)");
    const QString ticket =
        QStringLiteral("INSERT INTO rData (ID, TicketNo, ServiceId, DisplayId, Announced) VALUES (%1)");
    const struct {
        QString statement;
        const char* values;
        const char* fault;
    } rows[] = {
        {service, "NULL, 1, 0, 0, 0, 1", "q_Id of row 1 is empty"},
        {service, "32768, 1, 256, 0, 0, 1", "q_Id of row 32768 is too large"},
        {service, "3, 1, 256, 0, 0, 1", "q_Button of row 3 is too large"},
        {service, "4, 1, 0, -32769, 0, 1", "q_route of row 4 is too large"},
        {service, "5, 1, 0, 0, 1e40, 1", "q_Number of row 5 is too large"},
        {service, "6, 1, 0, 0, 0, 2147483648", "q_Series of row 6 is too large"},
        {service, "7, 1, 0, 0, 'one', 1", "q_Number of row 7 is no number"},
        {service, "NULL, 0, 'off', 0, 0, 1", nullptr},
        {service, "8, 1, '12', 0, 0, 2147483647", nullptr},
        {object, "NULL, 1, 1, 1, 0, 0, 0, 0", "d_Id of row 1 is empty"},
        {object, "2, 1, NULL, 1, 0, 0, 0, 0", "d_Address of row 2 is empty"},
        {object, "3, 1, 1, NULL, 0, 0, 0, 0", "d_Number of row 3 is empty"},
        {object, "4, 1, 1, 1, NULL, 0, 0, 0", "d_direction of row 4 is empty"},
        {object, "5, 1, 1, 1, 0, NULL, 0, 0", "d_VoiceLocal of row 5 is empty"},
        {object, "6, 1, -1, 1, 0, 0, 0, 0", "d_Address of row 6 is too large"},
        {object, "7, 1, 1, 1, 0, 0, 0, 1e10", "d_HubId of row 7 is too large"},
        {object, "8, 1, 1, 1, 0, 0, NULL, NULL", nullptr},
        {direction, "NULL, 1, 1", "inf_Id of row 1 is empty"},
        {direction, "1, 40000, 1", "d_Id of row 2 is too large"},
        {direction, "1, 1, NULL", "Dir_Id of row 3 is empty"},
        {direction, "8, 8, 4", nullptr},
        {plan, "1, NULL", "d_Id of row 1 is empty"},
        {plan, "2, 8", nullptr},
        {ticket, "1, NULL, 8, 0, 0", "TicketNo of row 1 is empty"},
        {ticket, "2, 1, NULL, 0, 0", "ServiceId of row 2 is empty"},
        {ticket, "3, 1, 8, 1e10, 0", "DisplayId of row 3 is too large"},
        {ticket, "4, 32768, 8, 0, 0", "TicketNo of row 4 is too large"},
        {ticket, "5, 1, 8, NULL, 0", nullptr},
    };
    QStringList expected;
    for (const auto& [statement, values, fault] : rows) {
        world.Sql(statement.arg(QString::fromLatin1(values)));
        if (fault)
            expected += QStringLiteral("Load database: column %1.").arg(QString::fromLatin1(fault));
    }
    world.TakeLines();
    EXPECT_TRUE(world.reload.ReloadAll());
    EXPECT_EQ(world.tickets.RecoverTickets(), 1);
    EXPECT_EQ(world.TakeLines(), expected);
    EXPECT_EQ(Services(&model::QService::Id), QStringLiteral("8"));
    EXPECT_EQ(Services(&model::QService::Button), QStringLiteral("12"));
    EXPECT_EQ(Services(&model::QService::NextNumber), QStringLiteral("2147483647")) << "the number wrapped";
    EXPECT_EQ(Objects(&model::QObject::Id), QStringLiteral("8"));
    EXPECT_EQ(model.NumDirections, 1);
    EXPECT_EQ(model.NumScanEntries, 1);
    EXPECT_EQ(model.QServices[0].WaitRing.Count, 1);
}

TEST_F(LoadersTest, LoadsPlanAndDirectionsInTheirOrder) {
    EXPECT_TRUE(world.reload.ReloadAll());
    EXPECT_EQ(world.TakeLines(), QStringList({QStringLiteral("Main Display direction not built."),
                                              QStringLiteral("Scan Plan not built")}));
    world.Sql(QStringLiteral("INSERT INTO Display (d_Id, d_Number, d_Address, d_On) VALUES (1, 1, 1, 1), (2, 2, 2, 1),"
                             " (3, 3, 3, 0)"));
    world.Sql(QStringLiteral("INSERT INTO ScanPlan (d_Id, [Order]) VALUES (1, 9), (3, 1), (2, 2), (2, NULL), (77, 3)"));
    world.Sql(
        QStringLiteral("INSERT INTO [Info-Direction] (inf_Id,d_Id,Dir_Id) VALUES (9, 1, 4), (2, 5, 1), (9, 1, 3)"));
    EXPECT_TRUE(world.reload.ReloadAll());
    EXPECT_EQ(model.ScanOrder, std::vector<qint16>({1, 1, 0}));
    EXPECT_EQ(world.TakeLines(), QStringList(2, QStringLiteral("Error in Scan Plan Table")));
    EXPECT_EQ(model.NumDirections, 3);
    EXPECT_EQ(model.DirectionTable[0].inf_Id, 2);
    EXPECT_EQ(model.DirectionOf(9, 1), 4);
}

} // namespace
