#include "benchmarks/Benchmarks.h"

#include "benchmarks/Report.h"
#include "console/TraceModel.h"
#include "core/EventLog.h"
#include "core/Installation.h"
#include "link/Bus.h"
#include "link/BusTrace.h"
#include "link/Frames.h"
#include "link/LineStatistics.h"
#include "platform/Clock.h"
#include "platform/SerialControl.h"

#include <QTemporaryDir>

namespace {

constexpr int Transactions = 1'000'000;
constexpr int Rounds = 3;
constexpr int BetweenFollows = 1'800; ///< transactions of a tenth of a second at 18,000 a second
constexpr double AllowedShare = 0.02;

enum class Watching { Nobody, Statistics, Trace, Monitor };

/// Microseconds that the signals of one transaction take, with what listens to them.
double SignalTime(Watching watching) {
    const QTemporaryDir folder;
    SystemClock clock;
    EventLog log(folder.path(), clock);
    SerialControl control;
    Bus bus(control, clock, log);
    const auto installation = std::make_unique<model::Installation>();
    std::unique_ptr<BusTrace> trace;
    std::unique_ptr<TraceModel> model;
    std::unique_ptr<LineStatistics> statistics;
    if (watching == Watching::Statistics)
        statistics = std::make_unique<LineStatistics>(bus, clock);
    if (watching == Watching::Trace || watching == Watching::Monitor)
        trace = std::make_unique<BusTrace>(bus, clock);
    if (watching == Watching::Monitor)
        model = std::make_unique<TraceModel>(*trace, *installation);
    const QByteArray command = frames::BuildFrame("P001P");
    const QByteArray answer = frames::BuildFrame("P007PP11111");
    return 1e6 / Transactions * BestSeconds(Rounds, [&] {
               for (int i = 0; i < Transactions; ++i) {
                   // A frame of its own each time, as on the line.
                   Q_EMIT bus.FrameSent(32, QByteArray(command.constData(), command.size()), 1);
                   Q_EMIT bus.FrameReceived(QByteArray(answer.constData(), answer.size()), true, true);
                   Q_EMIT bus.ReplyTaken(32, answer);
                   if (model && i % BetweenFollows == 0)
                       model->Follow();
               }
           });
}

} // namespace

void BenchmarkMonitor() {
    const double plain = TransactionRate([](Bus&, const std::function<void()>& work) { work(); });
    const double traced = TransactionRate([](Bus& bus, const std::function<void()>& work) {
        const SystemClock clock;
        const BusTrace trace(bus, clock);
        work();
    });
    Report("Transactions while their frames are kept", traced, "1/s", "not kept", plain);
    const double allowed = AllowedShare * 1e6 / plain;
    const double nobody = SignalTime(Watching::Nobody);
    constexpr double AllowedTime = 0.4; ///< microseconds, for the two frames of a transaction
    Report("Counting a transaction", SignalTime(Watching::Statistics) - nobody, "us", "0.2 us a frame", AllowedTime);
    Report("Keeping the frames of a transaction", SignalTime(Watching::Trace) - nobody, "us", "2 % of a transaction",
           allowed);
    Report("The same with the monitor open", SignalTime(Watching::Monitor) - nobody, "us", "2 % of a transaction",
           allowed);
}
