#include "database/RowReader.h"

#include "core/EventLog.h"

#include <cmath>

bool RowReader::NeededYesNo(const QVariant& value, const char* column) {
    if (value.isNull())
        Refuse(column, "empty");
    return YesNo(value);
}

qint64 RowReader::Read(const QVariant& value, const char* column, qint64 low, qint64 high,
                       std::optional<qint64> whenNull) {
    if (value.isNull())
        return whenNull ? *whenNull : Refuse(column, "empty");
    if (value.typeId() == QMetaType::LongLong) {
        const qint64 number = value.toLongLong();
        return number >= low && number <= high ? number : Refuse(column, "too large");
    }
    // A store that others made may hold numbers in other forms.
    bool isNumber = false;
    const double number = std::nearbyint(value.toDouble(&isNumber));
    if (!isNumber || !std::isfinite(number))
        return Refuse(column, "no number");
    if (number < static_cast<double>(low) || number > static_cast<double>(high))
        return Refuse(column, "too large");
    return static_cast<qint64>(number);
}

qint64 RowReader::Refuse(const char* column, const char* fault) {
    if (m_isGood) {
        m_log.WriteLog(QStringLiteral("Load database: column %1 of row %2 is %3.")
                           .arg(QString::fromLatin1(column), m_key, QString::fromLatin1(fault)),
                       EventLog::Error);
    }
    m_isGood = false;
    return 0;
}
