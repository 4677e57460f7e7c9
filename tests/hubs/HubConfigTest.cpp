#include "hubs/HubConfig.h"
#include "core/HubTable.h"
#include "core/IniUtility.h"
#include "core/Options.h"
#include "hubs/DeviceClocks.h"
#include "hubs/HubOption.h"
#include "hubs/HubRouter.h"
#include "tests/support/AnsweringEnd.h"
#include "tests/support/BusWorld.h"
#include "tests/support/Outcomes.h"
#include "tests/support/Waiting.h"

namespace {

class HubConfigTest : public BusWorld {
protected:
    HubConfigTest() { Open(m_end.Terminal.Path()); }

    model::QService& AddService(qint16 number, qint32 series) {
        model::QService& service = m_installation->QServices[static_cast<std::size_t>(m_installation->NumServices++)];
        service.Number = number;
        service.Series = series;
        service.Name = QStringLiteral("S");
        return service;
    }

    model::QObject& AddNumbered(quint8 number, quint8 address, model::ObjectType type) {
        Add(100 + m_installation->NumObjects, address, type);
        model::QObject& object = m_installation->QObjects[static_cast<std::size_t>(m_installation->NumObjects - 1)];
        object.Number = number;
        return object;
    }

    AnsweringEnd m_end;
    HubConfig m_config{m_bus, *m_installation};
    DeviceClocks m_clocks{m_bus, *m_installation, m_clock};
};

} // namespace

TEST_F(HubConfigTest, BuildsTheWorkedBlock) {
    AddService(1, 1000);
    AddNumbered(1, 1, model::Counter).FirstServiceIndex = 0;
    AddNumbered(1, 32, model::Printer);
    AddNumbered(1, 40, model::Display);
    AddNumbered(1, 64, model::Hub);
    EXPECT_EQ(BuildHubConfig(*m_installation), QByteArray("18Na_Relt\0"
                                                          "11\xE8\xC0\x23"
                                                          "1110"
                                                          "11P"
                                                          "1X0",
                                                          25));
    EXPECT_EQ(Await(m_config.SetHubConfig()), QStringList());
    EXPECT_EQ(m_end.Commands, QByteArrayList{"p L" + BuildHubConfig(*m_installation)});
}

TEST_F(HubConfigTest, CountersWithoutServiceAndDirectionsHaveTheirSigns) {
    AddNumbered(7, 1, model::Counter);
    AddNumbered(10, 2, model::Counter);
    const qint32 display = AddNumbered(1, 40, model::Display).Id;
    m_installation->DirectionTable = {{static_cast<qint16>(display), 101, 4}};
    m_installation->NumDirections = 1;
    EXPECT_EQ(BuildHubConfig(*m_installation), QByteArray("17Na_Relt\0"
                                                          "0"
                                                          "271/:2/"
                                                          "0"
                                                          "1X04",
                                                          23));
}

TEST_F(HubConfigTest, TheLengthKeepsItsLowEightBits) {
    for (qint16 number = 1; number <= 64; ++number)
        AddService(number, 0x4141);
    for (quint8 number = 1; number <= 31; ++number)
        AddNumbered(number, number, model::Counter);
    const QByteArray block = BuildHubConfig(*m_installation);
    EXPECT_EQ(block.size(), 2 + 8 + 1 + 64 * 3 + 1 + 31 * 3 + 1 + 1);
    EXPECT_TRUE(block.startsWith("2BNa_Relt"));
}

TEST_F(HubConfigTest, WhatOneCharacterCannotCarryIsNamed) {
    AddService(300, 1);
    EXPECT_TRUE(BlockFaults(*m_installation).empty()) << "nobody gets the block";
    AddNumbered(1, 64, model::Hub);
    m_installation->NumServices = 0;
    EXPECT_TRUE(BlockFaults(*m_installation).empty());
    const struct {
        qint16 number;
        qint32 series;
        bool fits;
    } cases[] = {{207, 65535, true}, {208, 1, false}, {-1, 1, false}, {1, 65536, false}, {1, -1, false}};
    for (const auto& [number, series, fits] : cases) {
        m_installation->NumServices = 0;
        AddService(number, series);
        EXPECT_EQ(BlockFaults(*m_installation).empty(), fits) << number << ' ' << series;
    }
    m_installation->NumServices = 0;
    AddNumbered(208, 65, model::Hub);
    AddNumbered(255, 1, model::Display);
    EXPECT_TRUE(BlockFaults(*m_installation).empty()) << "the block holds neither a hub nor a display's number";
    AddNumbered(208, 2, model::Counter);
    ASSERT_EQ(BlockFaults(*m_installation).size(), 1U);
    EXPECT_EQ(BlockFaults(*m_installation)[0].id, 103);
    EXPECT_EQ(BlockFaults(*m_installation)[0].text,
              QStringLiteral("Object 'object 103': number 208 does not fit the hub's block, which takes 0 to 207."));
}

TEST_F(HubConfigTest, AMemberListNamesTypeAndAddress) {
    Add(9, 64, model::Hub);
    BuildHubTable(*m_installation, m_log);
    EXPECT_EQ(MemberList(*m_installation, 0), "0");
    Add(1, 1, model::Counter, 9);
    Add(2, 33, model::Printer, 9);
    BuildHubTable(*m_installation, m_log);
    EXPECT_TRUE(Await(m_config.SendHubMembers(0)));
    EXPECT_EQ(m_end.Commands, QByteArrayList{"p W2011Q"});
}

TEST_F(HubConfigTest, TheCounterOptionIsCheckedSentAndSaved) {
    Add(1, 64, model::Hub);
    IniUtility ini(m_folder.filePath(QStringLiteral("Tallora.ini")));
    Options options;
    HubOption option(m_clocks, options, ini);
    const auto saved = [&ini] {
        QString value;
        ini.ReadIni(QStringLiteral("options"), QStringLiteral("FromToval"), value);
        return value;
    };
    for (const QString& typed : {u"0"_qs, u"11"_qs, u""_qs, u"10.6"_qs, u"0.5"_qs, u"70000"_qs, u"x3"_qs}) {
        EXPECT_EQ(Told(option.Apply(typed)), "refused Exclamation: Valid value is 1..10") << qPrintable(typed);
    }
    EXPECT_TRUE(m_end.Commands.isEmpty() && saved().isEmpty());

    const std::pair<QString, QString> taken[] = {
        {u"1"_qs, u"1"_qs}, {u"10.4"_qs, u"10"_qs}, {u"1.5"_qs, u"2"_qs}, {u"7abc"_qs, u"7"_qs}};
    for (const auto& [typed, value] : taken) {
        EXPECT_EQ(Told(option.Apply(typed)), "done Information: Set config to all HUBs OK.");
        EXPECT_EQ(saved(), value);
    }
    EXPECT_EQ(m_end.Commands, (QByteArrayList{"p K1", "p K:", "p K2", "p K7"}));

    m_end.IsSilent = [](const QByteArray&) { return true; };
    EXPECT_EQ(Told(option.Apply(QStringLiteral("9"))), "failed Exclamation: Error on setting config to HUB(s).");
    EXPECT_EQ(saved(), QStringLiteral("7"));
}
