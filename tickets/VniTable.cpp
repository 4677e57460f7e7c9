#include "tickets/VniTable.h"

namespace {

constexpr int SmallLetters = 67;
constexpr int MostColumns = 8;

/// The bytes of the small letters. A capital has its small letter's byte, but for three.
constexpr quint8 SmallCodes[SmallLetters] = {
    184, 181, 182, 183, 185, 168, 190, 187, 188, 189, 198, 169, 202, 199, 200, 201, 203, 208, 204, 206, 207, 209, 170,
    213, 210, 211, 212, 214, 221, 215, 216, 220, 222, 227, 223, 225, 226, 228, 171, 232, 229, 230, 231, 233, 172, 237,
    234, 235, 236, 238, 243, 239, 241, 242, 244, 173, 248, 245, 246, 247, 249, 253, 250, 251, 252, 254, 174,
};
constexpr int CapitalABreve = 72;
constexpr int CapitalACircumflex = 78;
constexpr int CapitalDStroke = 133;

constexpr char SmallPage = 30;
constexpr char CapitalPage = 31;

} // namespace

Result<> VniTable::TakeRecords(const QByteArray& records) {
    m_records.clear();
    m_indexes.clear();
    if (records.size() != Records * RecordLength)
        return Failure{QStringLiteral("it has %1 of %2 bytes.").arg(records.size()).arg(Records * RecordLength)};
    for (int i = 0; i < Records; ++i) {
        if (static_cast<quint8>(records[i * RecordLength + 2]) > MostColumns)
            return Failure{QStringLiteral("letter %1 has more than %2 dot columns.").arg(i + 1).arg(MostColumns)};
    }
    m_records = records;
    // From the end on, so that the first record of a key is the one that stays.
    for (int i = Records - 1; i >= 0; --i) {
        const QByteArray record = records.mid(i * RecordLength, 2);
        m_indexes.insert(record[0] == 0 ? record.sliced(1) : record, i);
    }
    return {};
}

QByteArray VniTable::Image(int index) const {
    const QByteArray record = m_records.mid(index * RecordLength, RecordLength);
    QByteArray image("\x1B*\0", 3);
    image += record[2];
    image += '\0';
    return image + record.mid(3, record[2]);
}

QByteArray VniTable::PageCharacter(int index) {
    QByteArray character("\x1Bt");
    character += index >= SmallLetters ? CapitalPage : SmallPage;
    character += static_cast<char>(Code(index));
    return character;
}

quint8 VniTable::Code(int index) {
    switch (index) {
    case CapitalABreve:
        return 161;
    case CapitalACircumflex:
        return 162;
    case CapitalDStroke:
        return 167;
    default:
        return SmallCodes[index % SmallLetters];
    }
}

QByteArray VniTable::RecordBytes(int first, int count) const {
    return m_records.mid(first * RecordLength, count * RecordLength);
}
