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
    return bytes.size() < static_cast<qsizetype>(sizeof(T)) ? QVariant()
                                                            : convert(qFromLittleEndian<T>(bytes.constData()));
}

// The value of a column of that type; nothing if the bytes are none.
QVariant Converted(const MdbColumn& column, const QByteArray& bytes, bool jet3) {
    switch (column.col_type) {
    case MDB_BOOL:
        return static_cast<int>(bytes[0]);
    case MDB_BYTE:
        return Fixed<quint8>(bytes, [](quint8 n) { return QVariant(static_cast<int>(n)); });
    case MDB_INT:
        return Fixed<qint16>(bytes, [](qint16 n) { return QVariant(static_cast<int>(n)); });
    case MDB_LONGINT:
        return Fixed<qint32>(bytes, [](qint32 n) { return QVariant(n); });
    case MDB_FLOAT:
        return Fixed<float>(bytes, [](float n) { return QVariant(static_cast<double>(n)); });
    case MDB_DOUBLE:
        return Fixed<double>(bytes, [](double n) { return QVariant(n); });
    case MDB_DATETIME:
        return Fixed<double>(bytes, [](double n) { return Moment(n); });
    case MDB_MONEY:
        return Fixed<qint64>(bytes, [](qint64 n) { return QVariant(Money(n)); });
    case MDB_NUMERIC:
        return Numeric(bytes, column.col_scale);
    case MDB_TEXT:
    case MDB_MEMO: {
        const QString text = jet3 ? ansi::Decode(bytes) : Text4(bytes);
        return text.isNull() ? QStringLiteral("") : text;
    }
    default:
        return bytes;
    }
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
        m_counter = static_cast<qint32>(mdb_pg_get_int32(mdb, m_jet3 ? 16 : 20));
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

Result<> Table::ForEachRow(const RowHandler& handler) {
    MdbHandle* mdb = m_definition->entry->mdb;
    mdb_rewind_table(m_definition);
    qint64 count = 0;
    while (mdb_read_next_dpg(m_definition)) {
        const quint32 page = m_definition->cur_phys_pg;
        const int rows = mdb_get_int16(mdb->pg_buf, mdb->fmt->row_count_offset);
        for (int row = 0; row < rows; ++row) {
            const Result<std::optional<QVariantList>> values = ReadRow(row);
            if (!values)
                return Failure{QStringLiteral("row %1 on page %2 %3").arg(row).arg(page).arg(values.Error())};
            // A row that had moved, or a long value, left another page in the buffer.
            if (mdb->cur_pg != page && !mdb_read_pg(mdb, page))
                return Failure{QStringLiteral("page %1 cannot be read").arg(page)};
            if (!*values)
                continue;
            ++count;
            if (!handler(**values))
                return {};
        }
    }
    if (count < RowCount())
        return Failure{QStringLiteral("only %1 of its %2 rows can be read").arg(count).arg(RowCount())};
    return {};
}

Result<std::optional<QVariantList>> Table::ReadRow(int row) {
    const Result<std::optional<Place>> place = FindRow(row);
    if (!place)
        return Failure{place.Error()};
    if (!*place)
        return std::optional<QVariantList>();
    // Long values are read through the same page buffer: take all bytes out first.
    const Result<std::vector<QByteArray>> fields = ReadFields(**place);
    if (!fields)
        return Failure{fields.Error()};
    QVariantList values;
    for (size_t i = 0; i < fields->size(); ++i) {
        const MdbColumn& column = ColumnAt(*m_definition, static_cast<unsigned>(i));
        QByteArray bytes = (*fields)[i];
        if (bytes.isNull()) {
            values.append(QVariant());
            continue;
        }
        const QString damaged = QStringLiteral("is damaged in column ") + m_columns[i].name;
        if (column.col_type == MDB_MEMO || column.col_type == MDB_OLE) {
            const Result<QByteArray> longValue = ReadLongValue(bytes);
            if (!longValue)
                return Failure{damaged + QStringLiteral(" (%1)").arg(longValue.Error())};
            bytes = *longValue;
        }
        const QVariant value = Converted(column, bytes, m_jet3);
        if (value.isNull())
            return Failure{damaged};
        values.append(value);
    }
    return std::optional(std::move(values));
}

Result<std::optional<Table::Place>> Table::FindRow(int row) {
    MdbHandle* mdb = m_definition->entry->mdb;
    Place place{};
    for (int moves = 0;; ++moves) {
        if (mdb_find_row(mdb, row, &place.start, &place.size) != 0)
            return Failure{QStringLiteral("lies outside of its page")};
        const int marks = place.start & (PointsElsewhere | NotHere);
        // Deleted, or reached through the pointer that its first page holds.
        if (marks == (PointsElsewhere | NotHere) || (marks == NotHere && moves == 0))
            return std::optional<Place>();
        place.start &= PlaceMask;
        if ((marks & PointsElsewhere) == 0)
            return std::optional(place);
        if (place.size < 4 || moves == LongestChain)
            return Failure{QStringLiteral("points nowhere")};
        const auto pointer = static_cast<quint32>(mdb_get_int32(mdb->pg_buf, place.start));
        row = static_cast<int>(pointer & 0xFF);
        if (!mdb_read_pg(mdb, pointer >> 8) || mdb->pg_buf[0] != MDB_PAGE_DATA)
            return Failure{QStringLiteral("points to a page that is not there")};
    }
}

Result<std::vector<QByteArray>> Table::ReadFields(Place place) {
    const auto* page = reinterpret_cast<const char*>(m_definition->entry->mdb->pg_buf);
    const int end = place.start + static_cast<int>(place.size);
    std::vector<MdbField> fields(m_columns.size());
    // The result counts the columns that the row was written with, dropped ones included.
    if (place.size == 0 || mdb_crack_row(m_definition, place.start, place.size, fields.data()) < 0)
        return Failure{QStringLiteral("is damaged")};
    std::vector<QByteArray> values(m_columns.size());
    for (const MdbField& field : fields) {
        if (field.colnum < 0 || field.colnum >= static_cast<int>(m_columns.size()))
            return Failure{QStringLiteral("is damaged")};
        const MdbColumn& column = ColumnAt(*m_definition, static_cast<unsigned>(field.colnum));
        QByteArray& value = values[static_cast<size_t>(field.colnum)];
        if (column.col_type == MDB_BOOL) {
            // The row's null mask holds the value itself.
            value = QByteArray(1, field.is_null ? '\0' : '\1');
            continue;
        }
        if (field.is_null)
            continue;
        if (field.start < place.start || field.siz < 0 || field.start + field.siz > end)
            return Failure{QStringLiteral("is damaged in column ") + QString::fromUtf8(column.name)};
        value = field.siz == 0 ? QByteArray("") : QByteArray(page + field.start, field.siz);
    }
    return values;
}

// A long value is a reference of 12 bytes, with the value itself behind it, or in a row of another page, or in a chain
// of rows that each begin with the pointer to the next.
Result<QByteArray> Table::ReadLongValue(const QByteArray& reference) const {
    constexpr quint32 Inline = 0x80000000;
    constexpr quint32 SingleRow = 0x40000000;
    constexpr int ReferenceSize = 12;
    constexpr quint32 LengthMask = 0x00FFFFFF;

    if (reference.size() < ReferenceSize)
        return Failure{QStringLiteral("its reference is cut off")};
    const auto head = qFromLittleEndian<quint32>(reference.constData());
    const qsizetype length = head & LengthMask;
    if ((head & Inline) != 0)
        return reference.mid(ReferenceSize);
    QByteArray value("");
    auto pointer = qFromLittleEndian<quint32>(reference.constData() + 4);
    const bool chained = (head & SingleRow) == 0;
    while (pointer != 0) {
        void* page = nullptr;
        int start = 0;
        size_t size = 0;
        if (mdb_find_pg_row(m_definition->entry->mdb, static_cast<int>(pointer), &page, &start, &size) != 0)
            return Failure{QStringLiteral("a part of it is not there")};
        QByteArrayView part(static_cast<const char*>(page) + (start & PlaceMask), static_cast<qsizetype>(size));
        pointer = 0;
        if (chained) {
            if (part.size() <= 4)
                return Failure{QStringLiteral("a part of it is cut off")};
            pointer = qFromLittleEndian<quint32>(part.data());
            part = part.sliced(4);
        }
        value.append(part);
        if (value.size() > length)
            break;
    }
    if (value.size() < length)
        return Failure{QStringLiteral("%1 of %2 bytes are there").arg(value.size()).arg(length)};
    value.truncate(length);
    return value;
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

Result<std::unique_ptr<JetFile>> JetFile::Open(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return Failure{QStringLiteral("it cannot be read: ") + file.errorString()};
    const QByteArray head = file.read(0x98);
    file.close();
    if (!IsJet(StoreKindOf(head)))
        return Failure{QStringLiteral("it is not an Access database")};
    const QString protection = Protection(head);
    if (!protection.isEmpty())
        return Failure{protection};
    auto handle = std::make_unique<Handle>();
    handle->mdb = mdb_open(QFile::encodeName(path).constData(), MDB_NOFLAGS);
    if (!handle->mdb || !mdb_read_catalog(handle->mdb, MDB_TABLE) || !handle->mdb->catalog)
        return Failure{QStringLiteral("its list of tables cannot be read")};
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

Result<std::unique_ptr<Table>> JetFile::OpenTable(const QString& name) {
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
    return Failure{QStringLiteral("the description of table %1 is damaged").arg(name)};
}

} // namespace jet
