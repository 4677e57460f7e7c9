#pragma once

class QAbstractItemModel;
class Station;

/// Asks for a file and writes the table into it, see `tabletext::Csv`; how that went is shown in a box. The model may
/// go away meanwhile: nothing is written then.
void SaveAsCsv(Station& station, const QAbstractItemModel& model);
