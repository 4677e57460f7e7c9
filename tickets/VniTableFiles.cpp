#include "tickets/VniTable.h"

#include "platform/WholeFile.h"

#include <algorithm>

namespace {

constexpr int MostCodeLines = 229;
constexpr qint64 LargestFile = 1'000'000; ///< bytes

} // namespace

Result<> VniTable::LoadVNITable(const QString& path) {
    m_records.clear();
    m_indexes.clear();
    const Result<QByteArray> content = ReadWhole(path, LargestFile);
    if (!content)
        return Failure{content.Error()};
    const Result<> taken = TakeRecords(content->first(std::min<qsizetype>(content->size(), Records * RecordLength)));
    if (!taken)
        return Failure{QStringLiteral("%1 is damaged: %2").arg(path, taken.Error())};
    return {};
}

bool LoadVCode(const QString& path) {
    const Result<QByteArray> content = ReadWhole(path, LargestFile);
    if (!content)
        return false;
    const bool isEnded = content->isEmpty() || content->endsWith('\n');
    return content->count('\n') + (isEnded ? 0 : 1) <= MostCodeLines;
}
