#pragma once

#include "platform/Result.h"

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>

/// The letters that the form compiler puts in place of VNI bytes, read from the file VNIl.dat.
///
/// 134 records of 11 bytes, the small letters and then their capitals, in the order of `vni::Letters`:
///
///     1          2                    3              4 to 3 + n
///     first byte second, or the only  n, 0 to 8      dot columns from left to right, topmost dot in the highest bit
///     of a pair  byte of a key        dot columns
///
/// with 0 as first byte of a key of one byte.
class VniTable {
public:
    static constexpr int Records = 134;
    static constexpr int RecordLength = 11;

    /// Reads the table. @return what is wrong with the file, nothing if it is good; the table is empty then.
    Result<> LoadVNITable(const QString& path);

    /// Takes the records as they stand in the file. @return what is wrong with them.
    Result<> TakeRecords(const QByteArray& records);

    bool IsLoaded() const { return !m_records.isEmpty(); }

    /// Index of the first record with that key, of one or two bytes; -1 if there is none.
    int FindVNI(QByteArrayView key) const { return m_indexes.value(key.toByteArray(), -1); }

    /// The letter as a bit image of ESC * in 8-dot single density. @param index 0 to 133.
    QByteArray Image(int index) const;

    /// A letter as a character of the printer's code page 30 (small) or 31 (capital), with the command that selects the
    /// page. @param index 0 to 133.
    static QByteArray PageCharacter(int index);

    /// The byte of a letter in TCVN-3. @param index 0 to 133.
    static quint8 Code(int index);

    /// Records `first` to `first` + `count` - 1 as they stand in the file, those that exist.
    QByteArray RecordBytes(int first, int count) const;

private:
    QByteArray m_records;
    QHash<QByteArray, int> m_indexes;
};

/// Reads VCODE.dat, whose lines nothing uses any more. @return false if it is missing or has more than 229 lines.
bool LoadVCode(const QString& path);
