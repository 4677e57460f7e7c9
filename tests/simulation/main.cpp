// Simulates halls in a time of their own and looks whether every law holds.

#include "tests/simulation/Memory.h"
#include "tests/simulation/World.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QHashSeed>

#include <cstdio>

namespace {

QString CommandOf(const Plan& plan) {
    QString command = QStringLiteral("simulation --seed %1 --acts %2").arg(plan.seed).arg(plan.acts);
    if (plan.kept) {
        QStringList kept;
        for (const int act : *plan.kept)
            kept += QString::number(act);
        command += QStringLiteral(" --keep %1").arg(kept.isEmpty() ? QStringLiteral("none") : kept.join(u','));
    }
    if (!plan.without.empty())
        command +=
            QStringLiteral(" --without %1").arg(QStringList(plan.without.begin(), plan.without.end()).join(u','));
    return command;
}

constexpr int WarmUp = 50;
constexpr std::size_t LargestLeak = 2000; ///< bytes a world, on the average

Report Simulate(const Plan& plan) {
    return World(plan).Run();
}

/// Leaves out what the failure does not need: halves of the acts first, then smaller pieces, then kinds of fault.
Plan Shrink(Plan plan, const Report& first) {
    const auto law = [](const Report& report) { return report.broken.section(QStringLiteral(" s: "), 1).left(24); };
    const auto fails = [&](const Plan& smaller) { return law(Simulate(smaller)) == law(first); };
    plan.isTraced = false;
    std::vector<int> acts(first.actsDone.begin(), first.actsDone.end());
    for (std::size_t piece = std::max<std::size_t>(acts.size() / 2, 1); piece > 0; piece /= 2) {
        for (std::size_t at = 0; at < acts.size();) {
            std::vector<int> fewer = acts;
            fewer.erase(fewer.begin() + static_cast<std::ptrdiff_t>(at),
                        fewer.begin() + static_cast<std::ptrdiff_t>(std::min(at + piece, acts.size())));
            plan.kept = std::set<int>(fewer.begin(), fewer.end());
            if (fails(plan))
                acts = fewer;
            else
                at += piece;
        }
    }
    plan.kept = std::set<int>(acts.begin(), acts.end());
    for (const QString& fault : first.faults) {
        plan.without.insert(fault);
        if (!fails(plan))
            plan.without.erase(fault);
    }
    return plan;
}

int Show(const Plan& plan, const Report& report) {
    std::printf("seed %llu: %s\n", static_cast<unsigned long long>(plan.seed), qUtf8Printable(report.broken));
    const Plan small = Shrink(plan, report);
    std::printf("repeat it with: %s --trace\n", qUtf8Printable(CommandOf(small)));
    return 1;
}

} // namespace

int main(int argc, char** argv) {
    qputenv("TZ", "UTC");
    QHashSeed::setDeterministicGlobalSeed();
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    const QString number = QStringLiteral("n");
    parser.addOptions({
        {QStringLiteral("seed"), QStringLiteral("One world, or the first of them."), number, QStringLiteral("1")},
        {QStringLiteral("worlds"), QStringLiteral("How many worlds, one if not told."), number, QStringLiteral("1")},
        {QStringLiteral("seconds"), QStringLiteral("Worlds until so many seconds are over."), number},
        {QStringLiteral("acts"), QStringLiteral("Acts in a world."), number, QStringLiteral("40")},
        {QStringLiteral("keep"), QStringLiteral("Only these acts, by number."), QStringLiteral("list")},
        {QStringLiteral("without"), QStringLiteral("No faults of these kinds."), QStringLiteral("list")},
        {QStringLiteral("hours"), QStringLiteral("Hours that the station runs on at the end."), number},
        {QStringLiteral("transactions"), QStringLiteral("Commands to single devices at the end."), number},
        {QStringLiteral("trace"), QStringLiteral("Print all that happens.")},
        {QStringLiteral("hashes"), QStringLiteral("Print the hash of each trace.")},
    });
    parser.process(application);

    Plan plan;
    plan.seed = parser.value(QStringLiteral("seed")).toULongLong();
    plan.acts = parser.value(QStringLiteral("acts")).toInt();
    plan.idleHours = parser.value(QStringLiteral("hours")).toInt();
    plan.transactions = parser.value(QStringLiteral("transactions")).toInt();
    plan.transactions = parser.value(QStringLiteral("transactions")).toInt();
    plan.isTraced = parser.isSet(QStringLiteral("trace"));
    if (parser.isSet(QStringLiteral("keep"))) {
        plan.kept.emplace();
        for (const QString& act : parser.value(QStringLiteral("keep")).split(u',')) {
            if (act != u"none")
                plan.kept->insert(act.toInt());
        }
    }
    for (const QString& fault : parser.value(QStringLiteral("without")).split(u',', Qt::SkipEmptyParts))
        plan.without.insert(fault);

    const bool isTimed = parser.isSet(QStringLiteral("seconds"));
    const qint64 milliseconds = parser.value(QStringLiteral("seconds")).toLongLong() * 1000;
    const int worlds = parser.value(QStringLiteral("worlds")).toInt();
    QElapsedTimer elapsed;
    elapsed.start();
    double hours = 0;
    quint64 tries = 0;
    int done = 0;
    std::size_t memory = 0;
    for (; isTimed ? elapsed.elapsed() < milliseconds : done < worlds; ++done, ++plan.seed) {
        const Report report = Simulate(plan);
        if (parser.isSet(QStringLiteral("hashes")))
            std::printf("%llu %016llx\n", static_cast<unsigned long long>(plan.seed),
                        static_cast<unsigned long long>(report.hash));
        hours += report.hours;
        tries += report.tries;
        if (!report.broken.isEmpty())
            return Show(plan, report);
        // Tables of the libraries fill up in the first worlds.
        if (done == WarmUp)
            memory = UsedMemory();
        else if (done > WarmUp && UsedMemory() > memory + static_cast<std::size_t>(done) * LargestLeak) {
            std::printf("%d worlds left %zu bytes behind\n", done, UsedMemory() - memory);
            return 1;
        }
    }
    const double seconds = static_cast<double>(elapsed.elapsed()) / 1000;
    std::printf("%d worlds, %.0f simulated hours, %llu commands in %.1f s\n", done, hours,
                static_cast<unsigned long long>(tries), seconds);
    return 0;
}
