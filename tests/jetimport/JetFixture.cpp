#include "tests/jetimport/JetFixture.h"

#include "tests/support/Files.h"

#include <QProcess>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QVariant>
#include <QtEndian>

namespace jetfixture {
namespace {

constexpr int TicketMapPage = 62; // one bit a page
constexpr int RowTable = 14;
constexpr int RowSize = 27;
constexpr int RowsOffset = 12;
constexpr int FirstTicketPlace = 0xFE5;

template <typename T>
void Put(QByteArray& bytes, qsizetype at, T value) {
    qToLittleEndian<T>(value, bytes.data() + at);
}

quint16 Place(const QByteArray& bytes, int row) {
    return qFromLittleEndian<quint16>(bytes.constData() + TicketPage * PageSize + RowTable + 2 * row);
}

void SetRowCount(QByteArray& bytes, int rows) {
    Put<quint32>(bytes, TicketDefinitionPage * PageSize + 16, quint32(rows));
}

QByteArray Page(const QByteArrayList& rows, quint16 marks, quint32 owner = TicketDefinitionPage) {
    QByteArray page(PageSize, '\0');
    page[0] = page[1] = 1;
    Put<quint32>(page, 4, owner);
    Put<quint16>(page, RowsOffset, quint16(rows.size()));
    int place = PageSize;
    for (int row = 0; row < rows.size(); ++row) {
        place -= int(rows[row].size());
        page.replace(place, rows[row].size(), rows[row]);
        Put<quint16>(page, RowTable + 2 * row, quint16(place | marks));
    }
    Put<quint16>(page, 2, quint16(place - RowTable - 2 * int(rows.size())));
    return page;
}

int Append(QByteArray& bytes, const QByteArray& page, int mapPage = TicketMapPage) {
    const int number = int(bytes.size() / PageSize);
    bytes += page;
    char& eight = bytes.data()[mapPage * PageSize + 4 + number / 8];
    eight = char(eight | 1 << number % 8);
    return number;
}

template <typename T>
QByteArray Little(T value) {
    QByteArray bytes(sizeof(T), '\0');
    Put<T>(bytes, 0, value);
    return bytes;
}

// A row of one fixed column of four bytes and one of any length.
QByteArray MessageRow(qint32 id, const QByteArray& value) {
    const auto end = quint16(6 + value.size());
    return Little<quint16>(2) + Little(id) + value + Little(end) + Little<quint16>(6) + Little<quint16>(1) +
           (value.isEmpty() ? '\1' : '\3');
}

QByteArray Reference(qsizetype length, quint32 kind, int page, int row) {
    return Little(quint32(length) | kind) + Little(quint32(page) << 8 | quint32(row)) + Little<quint32>(0);
}

} // namespace

QByteArray Bytes() {
    return ReadFile(QStringLiteral(TEST_DATA_FOLDER "/Harbinet-jet4.mdb"));
}

QByteArray WithTickets(int count) {
    constexpr int RowsPerPage = (PageSize - RowTable) / (RowSize + 2);
    constexpr double FirstMoment = 46348 + 8 / 24.0;
    QByteArray bytes = Bytes();
    const QByteArray pattern = bytes.mid(TicketPage * PageSize + FirstTicketPlace, RowSize);
    bytes.reserve(bytes.size() + (count / RowsPerPage + 1) * PageSize);
    QByteArrayList rows;
    for (int n = 0; n < count; ++n) {
        QByteArray row = pattern;
        Put<qint32>(row, 2, 8 + n);
        Put<qint16>(row, 6, qint16(n % 9999));
        Put<qint32>(row, 8, 1 + n % 6);
        Put<double>(row, 16, FirstMoment + n / 86400.0);
        row[RowSize - 1] = char((n % 10 == 0 ? 0x37 : 0x3F) | (n % 2 == 0 ? 0x40 : 0));
        rows += row;
        if (rows.size() == RowsPerPage || n == count - 1) {
            Append(bytes, Page(rows, 0));
            rows.clear();
        }
    }
    SetRowCount(bytes, 7 + count);
    Put<qint32>(bytes, TicketDefinitionPage * PageSize + 20, 7 + count);
    return bytes;
}

QByteArray WithMovedTicket(int row) {
    QByteArray bytes = Bytes();
    const quint16 place = Place(bytes, row);
    const int page = Append(bytes, Page({bytes.mid(TicketPage * PageSize + place, RowSize)}, 0x8000));
    Put<quint16>(bytes, TicketPage * PageSize + RowTable + 2 * row, quint16(place | 0x4000));
    Put<quint32>(bytes, TicketPage * PageSize + place, quint32(page) << 8);
    return bytes;
}

QByteArray WithoutTickets() {
    QByteArray bytes = Bytes();
    for (int row = 0; row < 7; ++row)
        Put<quint16>(bytes, TicketPage * PageSize + RowTable + 2 * row, quint16(Place(bytes, row) | 0xC000));
    SetRowCount(bytes, 0);
    return bytes;
}

QByteArray WithMessages(const QByteArray& text) {
    constexpr int DefinitionPage = 41;
    constexpr int MapOfMaps = 42;
    constexpr quint32 LongValues = 0x4C41564C; // "LVAL" in place of the owner
    QByteArray bytes = Bytes();
    const auto values = int(bytes.size() / PageSize);
    const qsizetype half = text.size() / 2;
    bytes += Page({text, Little(quint32(values) << 8 | 2) + text.first(half), Little<quint32>(0) + text.sliced(half)},
                  0, LongValues);
    const int map = values + 1;
    bytes += QByteArray("\5\1", 2) + QByteArray(PageSize - 2, '\0');
    Put<quint32>(bytes, MapOfMaps * PageSize + 0xFBC, quint32(map));
    Append(bytes,
           Page({MessageRow(1, Reference(text.size(), 0x80000000, 0, 0) + text),
                 MessageRow(2, Reference(text.size(), 0x40000000, values, 0)),
                 MessageRow(3, Reference(text.size(), 0, values, 1)), MessageRow(4, {})},
                0, DefinitionPage),
           map);
    Put<quint32>(bytes, DefinitionPage * PageSize + 16, 4);
    return bytes;
}

Finished Import(const QString& source, const QString& target) {
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(QStringLiteral(JETIMPORT_PROGRAM), {source, target});
    if (!process.waitForFinished(60'000))
        return {};
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput())};
}

QStringList Rows(const QString& store, const QString& statement) {
    QStringList lines;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("listing"));
        database.setDatabaseName(store);
        database.open();
        QSqlQuery query(database);
        if (!query.exec(statement))
            lines += query.lastError().text();
        while (query.next()) {
            QStringList values;
            for (int i = 0; i < query.record().count(); ++i) {
                const QVariant value = query.value(i);
                values += value.isNull()                         ? QStringLiteral("-")
                          : value.typeId() == QMetaType::QString ? u'\'' + value.toString() + u'\''
                                                                 : value.toString();
            }
            lines += values.join(u'|');
        }
    }
    QSqlDatabase::removeDatabase(QStringLiteral("listing"));
    return lines;
}

} // namespace jetfixture
