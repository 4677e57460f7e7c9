#include "hubs/HubRouter.h"
#include "simulator/BusInstallation.h"
#include "simulator/SimulatedBus.h"
#include "tests/support/BusWorld.h"
#include "tests/support/Waiting.h"

#include <QElapsedTimer>

#include <set>

using namespace std::chrono_literals;

namespace {

constexpr int Transactions = 10'000;

struct Tally {
    int answered = 0;
    int failed = 0;
    std::set<QByteArray> replies;
};

QCoro::Task<> SendMany(HubRouter& router, int count, Bus::Milliseconds timeout, Tally& tally) {
    const QByteArray none;
    for (int i = 0; i < count; ++i) {
        const auto object = static_cast<qint16>(i % 3);
        const Reply reply = co_await router.SendToObject(object, 'P', none, timeout, 1);
        ++(reply.ok ? tally.answered : tally.failed);
        // Without the check sum: a damaged "1B" may read "1b", which says the same.
        if (reply.ok)
            tally.replies.insert(reply.frame.chopped(3));
    }
}

using FaultyLineTest = BusWorld;

} // namespace

TEST_F(FaultyLineTest, EveryAcceptedReplyIsOneThatADeviceSentWhole) {
    QString problem;
    const auto installation = BusInstallation::Parse(QStringLiteral("counter 1 1\nprinter 32 1\nhub 64 1\n"),
                                                     QStringLiteral("test"), problem);
    ASSERT_TRUE(installation.has_value()) << qPrintable(problem);
    SimulatedBus devices(*installation);
    ASSERT_EQ(devices.Open(), QString());
    Open(devices.SlavePath());
    Add(1, 1, model::Counter);
    Add(2, 32, model::Printer);
    Add(3, 64, model::Hub);

    HubRouter router(m_bus, *m_installation);
    // Every reply that there can be: three devices, ten sequence digits.
    Tally whole;
    Await(SendMany(router, 30, 800ms, whole));
    ASSERT_EQ(whole.replies.size(), 30U);

    FaultSettings faults;
    faults.DropRequest = 0.025;
    faults.DropReply = 0.025;
    faults.Corrupt = 0.05;
    faults.Noise = 0.2;
    faults.Slice = 0.1;
    faults.Seed = 11;
    devices.SetFaults(faults);

    Tally tally;
    QElapsedTimer elapsed;
    elapsed.start();
    const auto running = SendMany(router, Transactions, 4ms, tally);
    EXPECT_TRUE(WaitUntil([&] { return running.isReady(); }, 100'000));
    EXPECT_EQ(tally.answered + tally.failed, Transactions);
    for (const QByteArray& reply : tally.replies)
        EXPECT_TRUE(whole.replies.contains(reply)) << reply.toHex(' ').constData();
    EXPECT_GT(tally.answered, Transactions * 3 / 4);
    EXPECT_GT(tally.failed, Transactions / 20);
    std::printf("%d answered, %d failed, %d damaged frames refused, %.1f s\n", tally.answered, tally.failed,
                static_cast<int>(m_bus.Counts().BadSums), static_cast<double>(elapsed.elapsed()) / 1000);
}
