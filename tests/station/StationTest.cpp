#include "station/Station.h"

#include "tests/support/Files.h"
#include "tests/support/Outcomes.h"
#include "tests/support/StationWorld.h"
#include "tickets/RichText.h"

namespace {

/// Two services (and a disabled one), a printer on the bus and one behind a hub, all simulated from the same store.
class StationTest : public StationWorld {
protected:
    StationTest()
        : StationWorld(
              {QStringLiteral(
                   "INSERT INTO Queue (q_Id, q_Number, q_Series, q_On, q_Name, q_Description, q_Button) VALUES "
                   "(1, 1, 1000, 1, 'G\u00F4\u00FBi tie\u00E0n', 'Qua\u00E0y $1', 7), (2, 2, 2000, 1, 'B', '', "
                   "NULL), (3, 3, 3000, 0, 'off', '', 9)"),
               QStringLiteral("INSERT INTO Display (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) VALUES "
                              "(1, 5, 1, 'Counter', 1, 0, 0), (2, 1, 32, 'Main', 1, 1, 0), (3, 2, 33, 'Second', 1, 1, "
                              "4), (4, 1, 64, 'HUB', 1, 3, 0)"),
               QStringLiteral("INSERT INTO [Queue-Display] (q_Id, d_Id) VALUES (1, 1)"),
               QStringLiteral("INSERT INTO ScanPlan (d_Id, [Order]) VALUES (1, 1)")}) {}

    /// Adds objects to the store and to the line.
    void AddObjects(const QString& values) {
        ASSERT_TRUE(m_station.database.Run(
            {QStringLiteral("INSERT INTO Display (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) VALUES ") +
             values}));
        Simulate(m_store);
    }
};

} // namespace

TEST_F(StationTest, AClosedDatabaseEndsTheCommandsAndLeavesTheModel) {
    (void)m_station.reload.ReloadAll();
    m_station.database.CloseDatabase();
    for (int command = 0; command < 2; ++command) {
        EXPECT_EQ(Told(command == 0 ? m_station.RefreshModel() : m_station.SetServiceConfig()),
                  "failed Exclamation: Can't open Queue database!");
    }
    EXPECT_EQ(m_station.installation->NumServices, 2);
    EXPECT_EQ(m_station.installation->NumObjects, 4);
}

TEST_F(StationTest, ABlockThatCannotBeEncodedIsNotSent) {
    OpenLine();
    ASSERT_TRUE(m_station.database.Run({QStringLiteral("UPDATE Queue SET q_Number = 300 WHERE q_Id = 2")}));
    EXPECT_EQ(Told(m_station.SetHubs()),
              "refused Exclamation: Service 'B': number 300 does not fit the hub's block, which takes 0 to 207.");
    EXPECT_EQ(m_devices->Counts().Commands, 0U);
}

TEST_F(StationTest, TestConnectAsksTheObjectOnItsWayAndTellsWhetherItAnswered) {
    OpenLine();
    constexpr const char* Yes = "done Plain: True";
    constexpr const char* No = "failed Plain: False";
    constexpr const char* Unknown = "failed Exclamation: Database not refresh, please restart application";
    constexpr const char* NoAddress = "refused Exclamation: This object has no address to ask.";
    (void)m_station.reload.ReloadAll();
    // The model does not know what was typed after it was loaded: a member that its hub does not list.
    m_station.installation->QObjects[1].Number = 200;
    m_station.installation->QObjects[2].Number = 201;
    const struct {
        std::optional<qint32> number;
        std::optional<qint32> address;
        bool listed;
        bool silent;
        const char* told;
        QByteArray command; ///< address and letter of each frame
    } cases[] = {
        {5, 1, true, false, Yes, "1P"},
        {5, 1, true, true, No, "1P"},
        {5, 32, true, false, Yes, "PP"}, // the address is that of the cell
        {201, 99, true, false, Yes, "pN"},
        {201, 99, true, true, No, "pN"},
        {201, 33, false, false, Unknown, ""},
        {77, 1, true, false, Unknown, ""},
        {std::nullopt, 1, true, false, Unknown, "1P"},
        {std::nullopt, std::nullopt, true, false, NoAddress, ""},
        {5, 256, true, false, NoAddress, ""},
        {5, std::nullopt, true, false, NoAddress, ""},
        {77, std::nullopt, true, false, Unknown, ""},
        {201, std::nullopt, true, false, Yes, "pN"},
    };
    for (const auto& [number, address, listed, silent, told, command] : cases) {
        QByteArray sent;
        const auto traced = ::QObject::connect(&m_station.bus, &Bus::FrameSent, [&](quint8, const QByteArray& frame) {
            sent += frame.sliced(1, 1) + frame.sliced(5, 1);
        });
        m_station.installation->HubTable[3].Count = listed ? 1 : 0;
        for (const int device : {1, 33})
            m_devices->SetSilent(device, silent);
        if (!number && address)
            m_dialogs.ExpectMessage(BoxKind::Plain, QStringLiteral("True"));
        EXPECT_EQ(Told(m_station.TestConnect(number, address)), told);
        EXPECT_EQ(sent, command);
        ::QObject::disconnect(traced);
    }
}

TEST_F(StationTest, ReloadingDirectionsLeavesFirstServicesAndFollowsTheObjects) {
    (void)m_station.reload.ReloadAll();
    model::Installation& installation = *m_station.installation;
    installation.QObjects[0].FirstServiceIndex = 1;
    ASSERT_TRUE(
        m_station.database.Run({QStringLiteral("INSERT INTO [Info-Direction] (inf_Id,d_Id,Dir_Id) VALUES (9, 1, 4)")}));
    ASSERT_TRUE(m_station.database.Run({QStringLiteral("UPDATE Display SET d_Name = 'new' WHERE d_Id = 1")}));
    EXPECT_EQ(Told(m_station.ReloadDirections()), "done Plain: ");
    EXPECT_EQ(installation.DirectionOf(9, 1), 4);
    EXPECT_EQ(installation.QObjects[0].Name, QStringLiteral("new"));
    EXPECT_EQ(installation.QObjects[0].FirstServiceIndex, 1);

    // The objects move up by one, and what goes to a device behind the hub still goes there.
    OpenLine();
    ASSERT_TRUE(m_station.database.Run({QStringLiteral("UPDATE Display SET d_On = 0 WHERE d_Id = 1")}));
    EXPECT_EQ(Told(m_station.ReloadDirections()), "done Plain: ");
    EXPECT_TRUE(Await(m_station.router.SendToObject(1, 'P', {}, Bus::DirectTimeout, 1)).ok);
}

TEST_F(StationTest, AFormWithItsLogosReachesEveryPrinterWhole) {
    ASSERT_TRUE(m_station.forms.letters.LoadVNITable(QStringLiteral(DATA_FOLDER "/VNIl.dat")));
    OpenLine();
    (void)m_station.reload.ReloadAll();
    FaultSettings faults;
    faults.DropReply = 0.03;
    faults.Noise = 0.2;
    faults.Slice = 0.2;
    m_devices->SetFaults(faults);
    const QString path = QStringLiteral(TEST_DATA_FOLDER "/forms/ticket.rtf");
    const auto form = richtext::Read(ReadFile(path));
    ASSERT_TRUE(form) << qPrintable(form.Error());
    EXPECT_EQ(Told(m_station.SendFormToAll(form->document, path, Logos::With)), "done Information: Set done.");
    EXPECT_GT(m_devices->Counts().Retries, 0U) << "the faults have struck";
    const CompiledForm compiled = *m_station.forms.Compile(form->document, path).form;
    for (const int address : {32, 33}) {
        EXPECT_EQ(m_devices->FindAs<TicketPrinter>(address)->Form(), compiled.PrnForm) << address;
        EXPECT_EQ(m_devices->FindAs<TicketPrinter>(address)->Logos(), compiled.LogoData) << address;
    }
    EXPECT_EQ(ReadFormFile(m_folder.filePath(QStringLiteral("Ticket.bin"))), compiled.PrnForm);
}

TEST_F(StationTest, TheInitializationRunGivesEveryDeviceWhatItNeeds) {
    AddObjects(QStringLiteral("(5, 6, 2, 'Behind', 1, 0, 4), (6, 9, 40, 'Board', 1, 2, 0)"));
    OpenLine();
    (void)m_station.reload.ReloadAll();
    m_station.options.SendConfigOnStart = true;
    const QByteArray form("\x04\xDF\x1B@Ticket $VAR(3)\n14", 21);
    ASSERT_TRUE(WriteFormFile(m_folder.filePath(QStringLiteral("Ticket.bin")), form));
    QList<int> gauge;
    ::QObject::connect(&m_station.init, &InitRun::presetGauge, [&](int, int max) { gauge += max; });
    ::QObject::connect(&m_station.init, &InitRun::UpdateGauge, [&](int value) { gauge += value; });
    ::QObject::connect(&m_station.init, &InitRun::closeGauge, [&] { gauge += -1; });
    EXPECT_EQ(Told(m_station.InitAllObjects()), "failed Plain: ")
        << "a clock is not relayed to the printer behind the hub";
    EXPECT_EQ(gauge, (QList<int>{6, 1, 2, 3, 4, 5, 6, -1}));
    EXPECT_TRUE(m_station.run.QueueRunning());
    for (const int address : {32, 33}) {
        const TicketPrinter& printer = *m_devices->FindAs<TicketPrinter>(address);
        EXPECT_EQ(printer.LoadFlag(), '!');
        EXPECT_EQ(printer.ServiceRows().size(), 2U);
        EXPECT_EQ(printer.Form(), form);
    }
    const DeviceHub& hub = *m_devices->FindAs<DeviceHub>(64);
    EXPECT_EQ(hub.Members(), (std::vector<DeviceHub::Member>{{1, 33}, {0, 2}}));
    EXPECT_EQ(hub.SlotTexts().at(1), "0");

    // A damaged form is not sent, and a run that is cancelled stops behind its object.
    WriteFile(m_folder.filePath(QStringLiteral("Ticket.bin")), "\x03");
    m_station.CancelInit();
    m_station.run.SetRunning(false);
    gauge.clear();
    EXPECT_EQ(Told(m_station.InitAllObjects()), "cancelled");
    EXPECT_EQ(gauge, (QList<int>{6, -1}));
    EXPECT_FALSE(m_station.run.QueueRunning());
}

TEST_F(StationTest, AResetForgetsTicketsAndLetsNumbersBeginAnewWhoeverAnswers) {
    ASSERT_TRUE(m_station.database.RunTogether(
        {{QStringLiteral("INSERT INTO rData (ServiceId, TicketNo, Flags) VALUES (1, 1007, 0)")},
         {QStringLiteral("UPDATE Display SET LastInfo='text'")}}));
    (void)m_station.reload.ReloadAll();
    model::Installation& model = *m_station.installation;
    model.LastTicketNumber = 1500;
    model.QServices[0].NextNumber = 1008;
    ASSERT_TRUE(model.QServices[0].WaitRing.RingAdd({.TicketNo = 1007}));
    ASSERT_TRUE(model.QServices[1].FlaggedRing.RingAdd({.TicketNo = 2007}));
    for (const bool open : {false, true}) {
        if (open)
            OpenLine();
        EXPECT_EQ(Told(m_station.ResetSystem()), "done Information: System reset done. Please restart Orvex.");
        EXPECT_EQ(model.LastTicketNumber, 1001);
        EXPECT_EQ(model.QServices[0].NextNumber, 1001);
        EXPECT_EQ(model.QServices[1].NextNumber, 2001);
        EXPECT_EQ(model.QServices[0].WaitRing.Count, 0);
        EXPECT_EQ(model.QServices[1].FlaggedRing.Count, 0);
        EXPECT_EQ(m_station.tickets.RecoverTickets(), std::optional<qint16>(1)) << "no ticket is left in the store";
    }
    EXPECT_EQ(m_station.trace.Row(0).frame.mid(1, 5), "\xAF*08R");

    // What cannot be deleted is not passed over.
    m_station.database.CloseDatabase();
    m_dialogs.ExpectMessage(BoxKind::Exclamation,
                            QStringLiteral("The tickets could not be deleted: The database is closed."));
    EXPECT_EQ(Told(m_station.ResetSystem()), "done Information: System reset done. Please restart Orvex.");
    EXPECT_FALSE(m_devices->FindAs<TicketPrinter>(32)->Summary().isEmpty());
}

TEST_F(StationTest, TheUserEndsALoadAndTheHubIsToldItsEnd) {
    OpenLine();
    m_devices->SetSilent(33, true);
    bool isCancelled = false;
    ::QObject::connect(&m_station, &Station::ProgressChanged, [&](const QString& text, int done, int) {
        if (!isCancelled && text.contains(QStringLiteral("Second")) && done == 1) {
            EXPECT_TRUE(m_station.CanCancel());
            m_station.CancelOperation();
            isCancelled = true;
        }
    });
    EXPECT_EQ(Told(m_station.SetServiceConfig()), "cancelled");
    EXPECT_TRUE(isCancelled);
    EXPECT_FALSE(m_devices->FindAs<DeviceHub>(64)->InTransfer()) << "its bracket is closed";
    EXPECT_EQ(m_devices->FindAs<TicketPrinter>(32)->ServiceRows().size(), 2U) << "this one came before";
    EXPECT_FALSE(m_station.CanCancel());
    // The next one is not cancelled.
    m_devices->SetSilent(33, false);
    EXPECT_EQ(Told(m_station.ConfigPrinters()), "done Information: Set config to all objects OK.");
    EXPECT_TRUE(m_devices->FindAs<TicketPrinter>(33)->ServiceRows().size() == 2U);
}

TEST_F(StationTest, AMemberThatNoListCanNameIsNotSent) {
    OpenLine();
    ASSERT_TRUE(m_station.database.Run({QStringLiteral("UPDATE Display SET d_Address = 211 WHERE d_HubId <> 0")}));
    (void)m_station.reload.ReloadAll();
    const quint64 before = m_devices->Counts().Commands;
    const std::string told = Told(m_station.InitHubs());
    EXPECT_TRUE(told.starts_with("refused Exclamation: Object '") &&
                told.ends_with("address 211 does not fit the hub's member list, which takes 0 to 207."))
        << told;
    EXPECT_EQ(m_devices->Counts().Commands, before);
}

TEST_F(StationTest, EachHubThatDoesNotTakeItsMembersIsNamed) {
    AddObjects(QStringLiteral("(7, 31, 65, 'HUB2', 1, 3, 0), (8, 32, 66, 'HUB3', 1, 3, 0)"));
    (void)m_station.reload.ReloadAll();
    OpenLine();
    Silence({65});
    m_dialogs.ExpectMessage(BoxKind::Exclamation, QStringLiteral("Set config to Hub number: 31 fail."));
    const Outcome outcome = Await(m_station.InitHubs());
    EXPECT_EQ(Told(outcome), "failed Information: Init done.");
    EXPECT_EQ(outcome.silent, QStringList{u"HUB2"_qs});
    EXPECT_EQ(m_devices->FindAs<DeviceHub>(64)->Members(), (std::vector<DeviceHub::Member>{{1, 33}}));
    EXPECT_EQ(m_devices->FindAs<DeviceHub>(66)->Members(), std::vector<DeviceHub::Member>());
}

TEST_F(StationTest, TheTickCountsDownAndWakesTheObjectsUp) {
    (void)m_station.reload.ReloadAll();
    model::Installation& model = *m_station.installation;
    m_station.options.WakeupTime = 2;
    model.QObjects[0].CommandDelay = 1;
    model.QObjects[1].RetryDelay = 3;
    model.QObjects[2].State = 1;
    for (model::QObject& object : model.LoadedObjects())
        object.Changed = false;
    const auto changed = [&] {
        QByteArray flags;
        for (const model::QObject& object : model.LoadedObjects())
            flags += object.Changed ? '1' : '0';
        return flags;
    };
    for (int tick = 0; tick < 3; ++tick)
        m_station.run.CountSecond();
    EXPECT_EQ(model.QObjects[0].CommandDelay, 0);
    EXPECT_EQ(model.QObjects[1].RetryDelay, 0);
    EXPECT_EQ(changed(), "0000") << "no clients are to be woken";
    m_station.options.ActiveClients = true;
    for (int tick = 0; tick < 2; ++tick)
        m_station.run.CountSecond();
    EXPECT_EQ(changed(), "0000") << "the counter went on";
    m_station.run.CountSecond();
    EXPECT_EQ(changed(), "1101");

    OpenLine();
    EXPECT_EQ(m_station.run.RxActivity(), 0);
    Await(m_station.bus.SendCommand(32, 'P', {}));
    EXPECT_EQ(m_station.run.RxActivity(), 5);
    for (int tick = 0; tick < 7; ++tick)
        m_station.run.CountSecond();
    EXPECT_EQ(m_station.run.RxActivity(), 0);
}

TEST_F(StationTest, TheLighterRefreshFollowsEditsAndDevicesBehindHubsStayReachable) {
    (void)m_station.reload.ReloadAll();
    OpenLine();
    int changes = 0;
    ::QObject::connect(&m_station, &Station::ModelChanged, [&] { ++changes; });
    Await(m_station.RefreshIfChanged());
    EXPECT_EQ(changes, 0) << "nothing was edited";

    // The objects move up by one.
    ASSERT_TRUE(m_station.database.Run({QStringLiteral("UPDATE Display SET d_On=0 WHERE d_Id=1")}));
    // Each service that a running system cannot take gets a warning.
    ASSERT_TRUE(m_station.database.Run({QStringLiteral("INSERT INTO Queue (q_Id, q_On) VALUES (70, 1), (71, 1)")}));
    m_station.NoteStoreChanged();
    for (int i = 0; i < 2; ++i) {
        m_dialogs.ExpectMessage(BoxKind::Exclamation, QStringLiteral("Warning, Queue system has changed, you must"
                                                                     " restart program to apply these changes."));
    }
    Await(m_station.RefreshIfChanged());
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(m_station.installation->NumObjects, 3);
    EXPECT_TRUE(Await(m_station.router.SendToObject(1, 'P', {}, Bus::DirectTimeout, 1)).ok);
}

TEST_F(StationTest, TheVoiceProgramIsToldByItsType) {
    QStringList logged;
    ::QObject::connect(&m_station.log, &EventLog::Written, [&](const QString& message) { logged += message; });
    for (const qint16 type : {0, 1, 2}) {
        m_station.options.VoiceType = type;
        m_station.CloseVoice();
    }
    EXPECT_EQ(logged, QStringList{QStringLiteral("Closing voice:localnet Not support!")});
}
