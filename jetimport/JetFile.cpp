#include "jetimport/JetFile.h"

#include "database/StoreKind.h"
#include "jetimport/JetValue.h"
#include "platform/AnsiText.h"

#include <QFile>
#include <QtEndian>

#include <glib.h>
#include <mdbtools.h>

#include <span>
#include <utility>

namespace jet {
namespace {

// Marks in the place that a page's row table gives for a row.
constexpr int PlaceMask = 0x1FFF;
constexpr int PointsElsewhere = 0x4000;
constexpr int NotHere = 0x8000;

// A row that has moved more often than this is a ring.
constexpr int LongestChain = 16;

QString SqlType(int type) {
    switch (type) {
    case MDB_BOOL:
        return QStringLiteral("BIT");
    case MDB_BYTE:
        return QStringLiteral("TINYINT");
    case MDB_INT:
        return QStringLiteral("SMALLINT");
    case MDB_LONGINT:
        return QStringLiteral("INTEGER");
    case MDB_FLOAT:
    case MDB_DOUBLE:
        return QStringLiteral("REAL");
    case MDB_DATETIME:
        return QStringLiteral("DATETIME");
    case MDB_TEXT:
    case MDB_MEMO:
    case MDB_MONEY:
    case MDB_NUMERIC:
        return QStringLiteral("TEXT");
    default:
        return QStringLiteral("BLOB");
    }
}

const MdbColumn& ColumnAt(const MdbTableDef& table, unsigned index) {
    return *static_cast<MdbColumn*>(g_ptr_array_index(table.columns, index));
}

// The value of a field of fixed width, or nothing if the row holds fewer bytes than its type needs.
template <typename T>
QVariant Fixed(const QByteArray& bytes, QVariant (*convert)(T)) {
    return bytes.size() < qsizetype(sizeof(T)) ? QVariant() : convert(qFromLittleEndian<T>(bytes.constData()));
}

} // namespace

Table::Table(S_MdbTableDef* definition)
    : m_definition(definition)
    , m_jet3(definition->entry->mdb->f->jet_version == MDB_VER_JET3) {
    for (unsigned i = 0; i < definition->num_cols; ++i) {
        const MdbColumn& column = ColumnAt(*definition, i);
        m_columns.push_back({QString::fromUtf8(column.name), SqlType(column.col_type)});
    }
    MdbHandle* mdb = definition->entry->mdb;
    if (mdb_read_pg(mdb, definition->entry->table_pg))
        m_counter = qint32(mdb_pg_get_int32(mdb, m_jet3 ? 16 : 20));
}

Table::Table(Table&& other) noexcept
    : m_definition(std::exchange(other.m_definition, nullptr))
    , m_columns(std::move(other.m_columns))
    , m_counter(other.m_counter)
    , m_jet3(other.m_jet3) {}

Table::~Table() {
    if (m_definition)
        mdb_free_tabledef(m_definition);
}

qint64 Table::RowCount() const {
    return m_definition->num_rows;
}

QString Table::ForEachRow(const RowHandler& handler) {
    MdbHandle* mdb = m_definition->entry->mdb;
    mdb_rewind_table(m_definition);
    qint64 count = 0;
    QVariantList values;
    while (mdb_read_next_dpg(m_definition)) {
        const quint32 page = m_definition->cur_phys_pg;
        const int rows = mdb_get_int16(mdb->pg_buf, mdb->fmt->row_count_offset);
        for (int row = 0; row < rows; ++row) {
            bool present = false;
            const QString error = ReadRow(row, &values, &present);
            if (!error.isEmpty())
                return QStringLiteral("row %1 on page %2 %3").arg(row).arg(page).arg(error);
            // A row that had moved, or a long value, left another page in the buffer.
            if (mdb->cur_pg != page && !mdb_read_pg(mdb, page))
                return QStringLiteral("page %1 cannot be read").arg(page);
            if (!present)
                continue;
            ++count;
            if (!handler(values))
                return {};
        }
    }
    if (count < RowCount())
        return QStringLiteral("only %1 of its %2 rows can be read").arg(count).arg(RowCount());
    return {};
}

QString Table::ReadRow(int row, QVariantList* values, bool* present) {
    MdbHandle* mdb = m_definition->entry->mdb;
    int place = 0;
    size_t size = 0;
    for (int moves = 0;; ++moves) {
        if (mdb_find_row(mdb, row, &place, &size) != 0)
            return QStringLiteral("lies outside of its page");
        const int marks = place & (PointsElsewhere | NotHere);
        // Deleted, or reached through the pointer that its first page holds.
        if (marks == (PointsElsewhere | NotHere) || (marks == NotHere && moves == 0))
            return {};
        place &= PlaceMask;
        if ((marks & PointsElsewhere) == 0)
            break;
        if (size < 4 || moves == LongestChain)
            return QStringLiteral("points nowhere");
        const auto pointer = quint32(mdb_get_int32(mdb->pg_buf, place));
        row = int(pointer & 0xFF);
        if (!mdb_read_pg(mdb, pointer >> 8) || mdb->pg_buf[0] != MDB_PAGE_DATA)
            return QStringLiteral("points to a page that is not there");
    }

    std::vector<MdbField> fields(m_columns.size());
    // The result counts the columns that the row was written with, dropped ones included.
    if (size == 0 || mdb_crack_row(m_definition, place, size, fields.data()) < 0)
        return QStringLiteral("is damaged");
    // Long values are read through the same page buffer: take all bytes out first.
    std::vector<QByteArray> bytes(m_columns.size());
    for (const MdbField& field : fields) {
        if (field.colnum < 0 || field.colnum >= int(m_columns.size()))
            return QStringLiteral("is damaged");
        const MdbColumn& column = ColumnAt(*m_definition, unsigned(field.colnum));
        if (column.col_type == MDB_BOOL) {
            // The row's null mask holds the value itself.
            bytes[size_t(field.colnum)] = QByteArray(1, field.is_null ? '\0' : '\1');
            continue;
        }
        if (field.is_null)
            continue;
        if (field.start < place || field.siz < 0 || field.start + field.siz > place + int(size))
            return QStringLiteral("is damaged in column ") + QString::fromUtf8(column.name);
        bytes[size_t(field.colnum)] =
            field.siz == 0 ? QByteArray("")
                           : QByteArray(reinterpret_cast<const char*>(mdb->pg_buf) + field.start, field.siz);
    }

    values->clear();
    for (size_t i = 0; i < bytes.size(); ++i) {
        const MdbColumn& column = ColumnAt(*m_definition, unsigned(i));
        QByteArray value = bytes[i];
        if (value.isNull()) {
            values->append(QVariant());
            continue;
        }
        const QString damaged = QStringLiteral("is damaged in column ") + m_columns[i].name;
        if (column.col_type == MDB_MEMO || column.col_type == MDB_OLE) {
            const QString error = ReadLongValue(bytes[i], &value);
            if (!error.isEmpty())
                return damaged + QStringLiteral(" (%1)").arg(error);
        }
        QVariant converted;
        switch (column.col_type) {
        case MDB_BOOL:
            converted = int(value[0]);
            break;
        case MDB_BYTE:
            converted = Fixed<quint8>(value, [](quint8 n) { return QVariant(int(n)); });
            break;
        case MDB_INT:
            converted = Fixed<qint16>(value, [](qint16 n) { return QVariant(int(n)); });
            break;
        case MDB_LONGINT:
            converted = Fixed<qint32>(value, [](qint32 n) { return QVariant(n); });
            break;
        case MDB_FLOAT:
            converted = Fixed<float>(value, [](float n) { return QVariant(double(n)); });
            break;
        case MDB_DOUBLE:
            converted = Fixed<double>(value, [](double n) { return QVariant(n); });
            break;
        case MDB_DATETIME:
            converted = Fixed<double>(value, [](double n) { return Moment(n); });
            break;
        case MDB_MONEY:
            converted = Fixed<qint64>(value, [](qint64 n) { return QVariant(Money(n)); });
            break;
        case MDB_NUMERIC:
            converted = Numeric(value, column.col_scale);
            break;
        case MDB_TEXT:
        case MDB_MEMO: {
            const QString text = m_jet3 ? ansi::Decode(value) : Text4(value);
            converted = text.isNull() ? QStringLiteral("") : text;
            break;
        }
        default:
            converted = value;
            break;
        }
        if (converted.isNull())
            return damaged;
        values->append(converted);
    }
    *present = true;
    return {};
}

// A long value is a reference of 12 bytes, with the value itself behind it, or in a row of another page, or in a chain
// of rows that each begin with the pointer to the next.
QString Table::ReadLongValue(const QByteArray& reference, QByteArray* value) const {
    constexpr quint32 Inline = 0x80000000;
    constexpr quint32 SingleRow = 0x40000000;
    constexpr int ReferenceSize = 12;
    constexpr quint32 LengthMask = 0x00FFFFFF;

    if (reference.size() < ReferenceSize)
        return QStringLiteral("its reference is cut off");
    const auto head = qFromLittleEndian<quint32>(reference.constData());
    const qsizetype length = head & LengthMask;
    if ((head & Inline) != 0) {
        *value = reference.mid(ReferenceSize);
        return {};
    }
    value->clear();
    *value = QByteArray("");
    auto pointer = qFromLittleEndian<quint32>(reference.constData() + 4);
    const bool chained = (head & SingleRow) == 0;
    while (pointer != 0) {
        void* page = nullptr;
        int start = 0;
        size_t size = 0;
        if (mdb_find_pg_row(m_definition->entry->mdb, int(pointer), &page, &start, &size) != 0)
            return QStringLiteral("a part of it is not there");
        QByteArrayView part(static_cast<const char*>(page) + (start & PlaceMask), qsizetype(size));
        pointer = 0;
        if (chained) {
            if (part.size() <= 4)
                return QStringLiteral("a part of it is cut off");
            pointer = qFromLittleEndian<quint32>(part.data());
            part = part.sliced(4);
        }
        value->append(part);
        if (value->size() > length)
            break;
    }
    if (value->size() < length)
        return QStringLiteral("%1 of %2 bytes are there").arg(value->size()).arg(length);
    value->truncate(length);
    return {};
}

struct JetFile::Handle {
    MdbHandle* mdb = nullptr;

    Handle() = default;
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle() {
        if (mdb)
            mdb_close(mdb);
    }

    std::span<gpointer> Catalogue() const { return {mdb->catalog->pdata, mdb->catalog->len}; }
};

JetFile::JetFile(std::unique_ptr<Handle> handle)
    : m_handle(std::move(handle)) {}

JetFile::~JetFile() = default;

std::unique_ptr<JetFile> JetFile::Open(const QString& path, QString* error) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("it cannot be read: ") + file.errorString();
        return nullptr;
    }
    const QByteArray head = file.read(0x98);
    file.close();
    if (!IsJet(StoreKindOf(head))) {
        *error = QStringLiteral("it is not an Access database");
        return nullptr;
    }
    *error = Protection(head);
    if (!error->isEmpty())
        return nullptr;
    auto handle = std::make_unique<Handle>();
    handle->mdb = mdb_open(QFile::encodeName(path).constData(), MDB_NOFLAGS);
    if (!handle->mdb || !mdb_read_catalog(handle->mdb, MDB_TABLE) || !handle->mdb->catalog) {
        *error = QStringLiteral("its list of tables cannot be read");
        return nullptr;
    }
    return std::unique_ptr<JetFile>(new JetFile(std::move(handle)));
}

QStringList JetFile::TableNames() const {
    QStringList names;
    for (gpointer item : m_handle->Catalogue()) {
        auto* entry = static_cast<MdbCatalogEntry*>(item);
        if (mdb_is_user_table(entry))
            names += QString::fromUtf8(entry->object_name);
    }
    return names;
}

std::unique_ptr<Table> JetFile::OpenTable(const QString& name, QString* error) {
    for (gpointer item : m_handle->Catalogue()) {
        auto* entry = static_cast<MdbCatalogEntry*>(item);
        if (!mdb_is_user_table(entry) || QString::fromUtf8(entry->object_name) != name)
            continue;
        MdbTableDef* definition = mdb_read_table(entry);
        if (!definition)
            break;
        // Both are put on the definition and go with it.
        if (mdb_read_columns(definition) && definition->columns && definition->columns->len == definition->num_cols &&
            definition->num_cols > 0)
            return std::make_unique<Table>(definition);
        mdb_free_tabledef(definition);
        break;
    }
    *error = QStringLiteral("the description of table %1 is damaged").arg(name);
    return nullptr;
}

} // namespace jet
