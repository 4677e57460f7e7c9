// Loads and initializes a hall again and again, in real time on a real line, and looks whether anything grows.

#include "ctl/LineDialogs.h"
#include "platform/Clock.h"
#include "platform/SerialControl.h"
#include "simulator/SimulatedBus.h"
#include "station/Station.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <array>
#include <cstdio>

namespace {

qint64 Descriptors() {
    return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::Files | QDir::System | QDir::NoDotAndDotDot).size();
}

/// Resident memory in KB.
qint64 Memory() {
    QFile status(QStringLiteral("/proc/self/statm"));
    constexpr int PageKilobytes = 4;
    return status.open(QIODevice::ReadOnly) ? status.readAll().split(' ').value(1).toLongLong() * PageKilobytes : 0;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments();
    if (words.size() != 3) {
        std::puts("usage: soak STORE MINUTES");
        return 2;
    }
    QString problem;
    const auto installation = BusInstallation::Read(words[1], problem);
    if (!installation) {
        std::puts(qUtf8Printable(problem));
        return 2;
    }
    SimulatedBus devices(*installation);
    FaultSettings faults;
    faults.DropRequest = faults.DropReply = faults.Corrupt = 0.02;
    faults.Noise = faults.Slice = 0.1;
    faults.Foreign = 0.01;
    devices.SetFaults(faults);
    if (problem = devices.Open(); !problem.isEmpty())
        qFatal("%s", qPrintable(problem));

    const QTemporaryDir folder;
    const QString store = folder.filePath(QStringLiteral("Harbinet.mdb"));
    if (!QFile::copy(words[1], store))
        qFatal("the store cannot be copied");
    SystemClock clock;
    SerialControl port;
    LineDialogs user(true);
    Station station({folder.path(), folder.path()}, {clock, port, user});
    QCoro::waitFor(station.ReadSettings());
    station.UsePort(devices.SlavePath(), QStringLiteral("115200"));
    if (!QCoro::waitFor(station.Start(store)).IsDone() || !station.LineIsOpen())
        qFatal("the station does not start");

    constexpr qint64 Minute = 60'000;
    const qint64 end = words[2].toLongLong() * Minute;
    std::array<int, 4> ends{};
    qint64 memory = 0;
    qint64 descriptors = 0;
    qint64 nextReport = 0;
    QElapsedTimer elapsed;
    elapsed.start();
    for (int run = 0; elapsed.elapsed() < end; ++run) {
        const Outcome outcome = QCoro::waitFor(run % 2 == 0 ? station.SetServiceConfig() : station.InitAllObjects());
        ++ends[static_cast<std::size_t>(outcome.end)];
        if (elapsed.elapsed() < nextReport)
            continue;
        nextReport = elapsed.elapsed() + Minute;
        std::printf("%3lld min: %d done, %d refused, %d failed, %d cancelled; %lld KB, %lld descriptors\n",
                    elapsed.elapsed() / Minute, ends[0], ends[1], ends[2], ends[3], Memory(), Descriptors());
        std::fflush(stdout);
        // The trace of the line and the libraries fill up first.
        if (elapsed.elapsed() < end / 3 || memory == 0) {
            memory = Memory();
            descriptors = Descriptors();
        }
    }
    const qint64 grown = Memory() - memory;
    std::printf("since a third of the time: %lld KB and %lld descriptors more; %llu commands at the devices\n", grown,
                Descriptors() - descriptors, static_cast<unsigned long long>(devices.Counts().Commands));
    QCoro::waitFor(station.End());
    const bool isSteady = Descriptors() <= descriptors && grown < memory / 5;
    return isSteady && ends[1] + ends[3] == 0 ? 0 : 1;
}
