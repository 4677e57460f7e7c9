#include "commissioning/Findings.h"

#include "core/Installation.h"
#include "link/Frames.h"
#include "link/LineStatistics.h"
#include "tickets/VniText.h"

#include <QCoreApplication>

#include <algorithm>

namespace {

QString Said(const char* text) {
    return QCoreApplication::translate("Findings", text);
}

/// Milliseconds; nothing where nothing was measured.
QString Measured(const RoundTrips& trips, RoundTrips::Time time) {
    return trips.Count() == 0 ? QString() : QString::number(static_cast<double>(time.count()) / 1000, 'f', 1);
}

/// Median, 95 % and largest.
QStringList Measured(const RoundTrips& trips) {
    return {Measured(trips, trips.Quantile(0.5)), Measured(trips, trips.Quantile(0.95)),
            Measured(trips, trips.Largest())};
}

FindingTable::Row CountRow(const QString& name, const QString& address, const LineStatistics::Counters& counters) {
    QStringList texts{name, address};
    for (const quint64 count : {counters.commands, counters.answeredOnce, counters.retries, counters.missed,
                                counters.foreign, counters.badSums, counters.unasked})
        texts += QString::number(count);
    return {texts + Measured(counters.roundTrips), counters.foreign + counters.badSums > 0};
}

} // namespace

std::vector<FindingTable::Column> findings::TestColumns() {
    return {
        {Said(QT_TRANSLATE_NOOP("Findings", "Device"))},        {Said(QT_TRANSLATE_NOOP("Findings", "Address")), true},
        {Said(QT_TRANSLATE_NOOP("Findings", "Behind hub"))},    {Said(QT_TRANSLATE_NOOP("Findings", "Answers")), true},
        {Said(QT_TRANSLATE_NOOP("Findings", "Foreign")), true}, {Said(QT_TRANSLATE_NOOP("Findings", "Bad sums")), true},
        {Said(QT_TRANSLATE_NOOP("Findings", "Noise")), true},   {Said(QT_TRANSLATE_NOOP("Findings", "Median")), true},
        {Said(QT_TRANSLATE_NOOP("Findings", "95 %")), true},    {Said(QT_TRANSLATE_NOOP("Findings", "Largest")), true},
        {Said(QT_TRANSLATE_NOOP("Findings", "Verdict"))}};
}

std::vector<FindingTable::Row> findings::TestRows(const LineTest::Result& result) {
    using Verdict = LineTest::Verdict;
    std::vector<FindingTable::Row> rows;
    rows.reserve(result.devices.size());
    for (const LineTest::Device& device : result.devices) {
        const QString answers =
            device.asked == 0 ? QString()
                              : Said(QT_TRANSLATE_NOOP("Findings", "%1 of %2")).arg(device.answers).arg(device.asked);
        rows.push_back({QStringList{vni::ToUnicode(device.name), QString::number(device.address),
                                    vni::ToUnicode(device.hubName), answers, QString::number(device.foreign),
                                    QString::number(device.badSums), QString::number(device.noise)} +
                            Measured(device.trips) + QStringList(LineTest::TextOf(device)),
                        device.verdict > Verdict::Healthy && device.verdict != Verdict::SilentDisplay});
    }
    return rows;
}

std::vector<FindingTable::Column> findings::ScanColumns() {
    return {{Said(QT_TRANSLATE_NOOP("Findings", "Address")), true},
            {Said(QT_TRANSLATE_NOOP("Findings", "Behind hub"))},
            {Said(QT_TRANSLATE_NOOP("Findings", "Device"))},
            {Said(QT_TRANSLATE_NOOP("Findings", "Found"))}};
}

std::vector<FindingTable::Row> findings::ScanRows(const AddressScan::Result& result) {
    using Kind = AddressScan::Kind;
    std::vector<FindingTable::Row> rows;
    rows.reserve(result.rows.size());
    for (const AddressScan::Row& row : result.rows) {
        rows.push_back({{QString::number(row.address), vni::ToUnicode(row.hubName), vni::ToUnicode(row.name),
                         AddressScan::TextOf(row)},
                        row.kind != Kind::Known && row.kind != Kind::SilentDisplay});
    }
    return rows;
}

std::vector<FindingTable::Column> findings::CountColumns() {
    return {{Said(QT_TRANSLATE_NOOP("Findings", "Device"))},
            {Said(QT_TRANSLATE_NOOP("Findings", "Address")), true},
            {Said(QT_TRANSLATE_NOOP("Findings", "Commands")), true},
            {Said(QT_TRANSLATE_NOOP("Findings", "First try")), true},
            {Said(QT_TRANSLATE_NOOP("Findings", "Retries")), true},
            {Said(QT_TRANSLATE_NOOP("Findings", "Missed")), true},
            {Said(QT_TRANSLATE_NOOP("Findings", "Foreign")), true},
            {Said(QT_TRANSLATE_NOOP("Findings", "Bad sums")), true},
            {Said(QT_TRANSLATE_NOOP("Findings", "Not awaited")), true},
            {Said(QT_TRANSLATE_NOOP("Findings", "Median")), true},
            {Said(QT_TRANSLATE_NOOP("Findings", "95 %")), true},
            {Said(QT_TRANSLATE_NOOP("Findings", "Largest")), true}};
}

std::vector<FindingTable::Row> findings::CountRows(const LineStatistics& statistics,
                                                   const model::Installation& installation) {
    std::vector<FindingTable::Row> rows{
        CountRow(Said(QT_TRANSLATE_NOOP("Findings", "All")), QString(), statistics.All())};
    for (int address = 0; address < LineStatistics::Addresses; ++address) {
        const LineStatistics::Counters& counters = statistics.Of(static_cast<quint8>(address));
        const auto objects = installation.LoadedObjects();
        const auto object = std::find_if(objects.begin(), objects.end(),
                                         [address](const model::QObject& one) { return one.Address == address; });
        const bool wasHeard = counters.roundTrips.Count() + counters.foreign + counters.badSums + counters.unasked > 0;
        // A search asks many addresses at which nobody is.
        if (!wasHeard && (counters.commands == 0 || object == objects.end()))
            continue;
        const QString name = address == frames::Broadcast ? Said(QT_TRANSLATE_NOOP("Findings", "all devices"))
                             : object == objects.end()    ? QString()
                                                          : vni::ToUnicode(object->Name);
        rows.push_back(CountRow(name, QString::number(address), counters));
    }
    return rows;
}
