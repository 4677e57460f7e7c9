#include "hubs/HubRouter.h"
#include "core/HubTable.h"

#include "link/Frames.h"
#include "tests/support/BusWorld.h"
#include "tests/support/PseudoTerminal.h"
#include "tests/support/Waiting.h"

using namespace std::chrono_literals;

namespace {

class HubRouterTest : public BusWorld {
protected:
    HubRouterTest() { Open(m_terminal.Path()); }

    QByteArray Line(qsizetype count) {
        QByteArray line;
        EXPECT_TRUE(WaitUntil([&] { return (line += m_terminal.Read()).size() >= count; }));
        return line;
    }

    PseudoTerminal m_terminal;
    HubRouter m_router{m_bus, *m_installation};
};

} // namespace

TEST_F(HubRouterTest, MembersStandInObjectOrderWhereverTheirHubStands) {
    Add(1, 1, model::Counter, 9);
    Add(2, 2, model::Counter);
    Add(9, 64, model::Hub);
    Add(3, 3, model::Printer, 9);
    Add(10, 65, model::Hub, 9);
    BuildHubTable(*m_installation, m_log);
    EXPECT_EQ(m_installation->HubTable[2].Count, 3);
    EXPECT_EQ(m_installation->HubTable[4].Count, 0);
    for (const auto& [object, slot] : {std::pair<qint16, qint16>{0, 0}, {3, 1}}) {
        const auto place = m_installation->PlaceBehindHub(object);
        ASSERT_TRUE(place.has_value()) << object;
        EXPECT_EQ(place->hub, 2);
        EXPECT_EQ(place->slot, slot);
        EXPECT_EQ(m_installation->QObjects[static_cast<std::size_t>(object)].HubSlot, slot);
    }
    EXPECT_FALSE(m_installation->PlaceBehindHub(1).has_value());
    EXPECT_TRUE(m_messages.isEmpty());
}

TEST_F(HubRouterTest, TheSeventeenthMemberIsNamedAndUnreachable) {
    Add(9, 64, model::Hub);
    for (int id = 20; id < 38; ++id)
        Add(id, static_cast<quint8>(id), model::Counter, 9);
    BuildHubTable(*m_installation, m_log);
    EXPECT_EQ(m_installation->HubTable[0].Count, 16);
    EXPECT_TRUE(m_installation->PlaceBehindHub(16).has_value());
    EXPECT_FALSE(m_installation->PlaceBehindHub(17).has_value());
    ASSERT_EQ(m_messages.size(), 2);
    EXPECT_TRUE(m_messages[0].contains(QStringLiteral("'object 36'")));
    EXPECT_FALSE(Await(m_router.SendToObject(18, 'P', QByteArray(), 1s, 1)).ok);
    Await(m_router.HubTransferBegin(18));
    EXPECT_EQ(m_terminal.Read(), "");
}

TEST_F(HubRouterTest, ARebuiltTableForgetsWhatIsNoHubAnyMore) {
    Add(9, 64, model::Hub);
    Add(1, 1, model::Counter, 9);
    BuildHubTable(*m_installation, m_log);
    ASSERT_TRUE(m_installation->PlaceBehindHub(1).has_value());
    m_installation->QObjects[0].Type = model::Counter;
    BuildHubTable(*m_installation, m_log);
    EXPECT_FALSE(m_installation->PlaceBehindHub(1).has_value());
    m_installation->QObjects[1].HubId = 77;
    m_installation->QObjects[0].Type = model::Hub;
    BuildHubTable(*m_installation, m_log);
    EXPECT_FALSE(m_installation->PlaceBehindHub(1).has_value());
    EXPECT_FALSE(Await(m_router.SendToObject(1, 'P', QByteArray(), 1s, 1)).ok);
    EXPECT_EQ(m_terminal.Read(), "");
}

TEST_F(HubRouterTest, SendsDirectlyOrThroughTheHub) {
    Add(9, 64, model::Hub);
    Add(7, 33, model::Printer, 9);
    Add(6, 32, model::Printer);
    BuildHubTable(*m_installation, m_log);
    const QByteArray table = "00"
                             "1";
    const struct {
        qint16 object;
        QByteArray frame;
        QByteArray answer;
        QByteArray read;
    } cases[] = {
        {2, frames::BuildFrame("P004K001"), frames::BuildFrame("P002Kok"), "\x02P002Kok"},
        {1, frames::BuildFrame("p006NQK001"), frames::BuildFrame("p004NKok"), "\x02p004Kok"},
    };
    for (const auto& [object, frame, answer, read] : cases) {
        Reply reply;
        const auto running = [](HubRouter& router, qint16 to, QByteArray data, Reply& result) -> QCoro::Task<> {
            result = co_await router.SendToObject(to, 'K', data, 2s, 1);
        }(m_router, object, table, reply);
        EXPECT_EQ(Line(frame.size()), frame);
        m_terminal.Write(answer);
        ASSERT_TRUE(WaitUntil([&] { return running.isReady(); }));
        EXPECT_TRUE(reply.ok);
        EXPECT_EQ(reply.frame.chopped(3), read);
        EXPECT_EQ(Line(1), "\x06");
    }
}

TEST_F(HubRouterTest, BracketsALongTransferForDevicesBehindAHubOnly) {
    Add(9, 64, model::Hub);
    Add(7, 33, model::Printer, 9);
    Add(6, 32, model::Printer);
    BuildHubTable(*m_installation, m_log);
    Await(m_router.HubTransferBegin(2));
    EXPECT_EQ(m_terminal.Read(), "");
    const auto begin = m_router.HubTransferBegin(1);
    EXPECT_EQ(Line(10), frames::BuildFrame("p002J0"));
    m_terminal.Write(frames::BuildFrame("p002J"));
    ASSERT_TRUE(WaitUntil([&] { return begin.isReady(); }));
    const auto end = m_router.HubTransferEnd(1);
    EXPECT_EQ(Line(11), "\x06" + frames::BuildFrame("p102J1"));
}
