#pragma once

#include "commissioning/FindingTable.h"
#include "station/AddressScan.h"

class LineStatistics;

namespace model {
struct Installation;
}

/// What a line test and a search for devices have found, as rows of a table.
namespace findings {

/// Device, address, hub, answers, foreign answers, bad sums, noise, three round trips, verdict.
std::vector<FindingTable::Column> TestColumns();
std::vector<FindingTable::Row> TestRows(const LineTest::Result& result);

/// Address, hub, device, what was found.
std::vector<FindingTable::Column> ScanColumns();
std::vector<FindingTable::Row> ScanRows(const AddressScan::Result& result);

/// What became of the commands to each address, and in all in the first row.
std::vector<FindingTable::Column> CountColumns();
std::vector<FindingTable::Row> CountRows(const LineStatistics& statistics, const model::Installation& installation);

} // namespace findings
