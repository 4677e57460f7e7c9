#include "commissioning/Findings.h"

#include "tickets/VniText.h"

#include <QCoreApplication>

namespace {

QString Said(const char* text) {
    return QCoreApplication::translate("Findings", text);
}

/// Milliseconds; nothing where nothing was measured.
QString Measured(const LineTest::Device& device, RoundTrips::Time time) {
    return device.trips.Count() == 0 ? QString() : QString::number(static_cast<double>(time.count()) / 1000, 'f', 1);
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
        rows.push_back(
            {{vni::ToUnicode(device.name), QString::number(device.address), vni::ToUnicode(device.hubName), answers,
              QString::number(device.foreign), QString::number(device.badSums), QString::number(device.noise),
              Measured(device, device.trips.Quantile(0.5)), Measured(device, device.trips.Quantile(0.95)),
              Measured(device, device.trips.Largest()), LineTest::TextOf(device)},
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
