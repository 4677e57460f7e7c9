#pragma once

#include <QVariant>

#include <concepts>
#include <limits>
#include <optional>

class EventLog;

/// Takes the fields of one row of the store for the model. A field that the model cannot hold is logged with its column
/// and the row's key, and spoils the row: its reader skips it.
class RowReader {
public:
    /// @param key what the log calls the row.
    RowReader(EventLog& log, const QVariant& key)
        : m_log(log)
        , m_key(key.toString()) {}

    /// False once a field could not be taken. What the other operations give for that field, and for all later ones,
    /// means nothing.
    bool IsGood() const { return m_isGood; }

    /// A whole number that must be there and fit `T`.
    template <std::integral T>
    T Needed(const QVariant& value, const char* column) {
        return static_cast<T>(Read(value, column, std::numeric_limits<T>::min(), std::numeric_limits<T>::max(), {}));
    }

    /// A whole number that must fit `T`; `whenNull` for a null.
    template <std::integral T>
    T NeededOr(const QVariant& value, const char* column, T whenNull) {
        return static_cast<T>(
            Read(value, column, std::numeric_limits<T>::min(), std::numeric_limits<T>::max(), whenNull));
    }

    /// A yes/no that must be there.
    bool NeededYesNo(const QVariant& value, const char* column);

    /// A yes/no; a null reads as no. Any number but 0 is yes.
    static bool YesNo(const QVariant& value) { return value.toBool(); }

private:
    qint64 Read(const QVariant& value, const char* column, qint64 low, qint64 high, std::optional<qint64> whenNull);
    qint64 Refuse(const char* column, const char* fault);

    EventLog& m_log;
    QString m_key;
    bool m_isGood = true;
};
