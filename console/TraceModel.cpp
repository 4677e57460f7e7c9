#include "console/TraceModel.h"

#include <QIODevice>

#include <algorithm>
#include <array>

namespace {

QByteArray CsvField(const QString& text) {
    const bool isPlain = !text.contains(u',') && !text.contains(u'"') && !text.contains(u'\n');
    if (isPlain)
        return text.toUtf8();
    return '"' + QString(text).replace(u'"', QStringLiteral("\"\"")).toUtf8() + '"';
}

} // namespace

TraceModel::TraceModel(BusTrace& trace, const model::Installation& installation, QObject* parent)
    : QAbstractTableModel(parent)
    , m_trace(trace)
    , m_text(trace, installation)
    , m_next(trace.First()) {
    Follow();
}

int TraceModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int TraceModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : TraceText::Columns;
}

QVariant TraceModel::data(const QModelIndex& index, int role) const {
    const quint64 serial = index.isValid() ? m_rows[static_cast<std::size_t>(index.row())] : 0;
    // During a pause the ring may have gone round.
    if (!index.isValid() || serial < m_trace.First())
        return {};
    switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
        if (role == Qt::ToolTipRole && index.column() != TraceText::Data)
            return {};
        return m_text.Text(serial, index.column());
    case Qt::TextAlignmentRole:
        if (index.column() == TraceText::Address || index.column() == TraceText::RoundTrip)
            return QVariant(Qt::AlignRight | Qt::AlignVCenter);
        return {};
    case IsMarkedRole:
        return m_text.IsMarked(serial);
    default:
        return {};
    }
}

QVariant TraceModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole)
        return TraceText::Title(section);
    return {};
}

bool TraceModel::IsLetThrough(quint64 serial) const {
    if (m_address && m_text.DeviceAddress(serial) != *m_address)
        return false;
    return !m_letter || m_text.Letter(serial) == *m_letter;
}

void TraceModel::SetFilter(std::optional<quint8> address, std::optional<char> letter) {
    m_address = address;
    m_letter = letter;
    beginResetModel();
    m_rows.clear();
    // What came during a pause stays for its end.
    const quint64 end = std::max(m_next, m_trace.First());
    for (quint64 serial = m_trace.First(); serial < end; ++serial) {
        if (IsLetThrough(serial))
            m_rows.push_back(serial);
    }
    endResetModel();
    Q_EMIT RowsChanged();
}

void TraceModel::SetPaused(bool paused) {
    Follow();
    m_paused = paused;
    Follow();
}

void TraceModel::Clear() {
    m_trace.Clear();
    beginResetModel();
    m_rows.clear();
    m_next = m_trace.First();
    m_waiting.reset();
    endResetModel();
    Q_EMIT RowsChanged();
}

void TraceModel::DropOverwritten() {
    const auto kept = std::lower_bound(m_rows.begin(), m_rows.end(), m_trace.First());
    if (kept == m_rows.begin())
        return;
    beginRemoveRows({}, 0, static_cast<int>(kept - m_rows.begin()) - 1);
    m_rows.erase(m_rows.begin(), kept);
    endRemoveRows();
}

void TraceModel::Follow() {
    if (m_paused)
        return;
    const quint64 end = m_trace.End();
    // The answer may have come to the row that was the last one.
    if (m_waiting && !m_rows.empty()) {
        const auto place = std::lower_bound(m_rows.begin(), m_rows.end(), *m_waiting);
        if (place != m_rows.end() && *place == *m_waiting) {
            const auto row = static_cast<int>(place - m_rows.begin());
            Q_EMIT dataChanged(index(row, 0), index(row, TraceText::Columns - 1));
        }
    }
    if (m_waiting && (*m_waiting < m_trace.First() || m_trace.Row(*m_waiting).outcome != TraceRow::Waiting))
        m_waiting.reset();
    if (end == m_next && (m_rows.empty() || m_rows.front() >= m_trace.First())) {
        return;
    }
    DropOverwritten();
    std::vector<quint64> come;
    for (quint64 serial = std::max(m_next, m_trace.First()); serial < end; ++serial) {
        if (m_trace.Row(serial).outcome == TraceRow::Waiting)
            m_waiting = serial;
        if (IsLetThrough(serial))
            come.push_back(serial);
    }
    m_next = end;
    if (!come.empty()) {
        const int first = rowCount();
        beginInsertRows({}, first, first + static_cast<int>(come.size()) - 1);
        m_rows.insert(m_rows.end(), come.begin(), come.end());
        endInsertRows();
    }
    Q_EMIT RowsChanged();
}

QStringList TraceModel::Texts(quint64 serial) const {
    QStringList texts;
    for (int column = 0; column < TraceText::Columns; ++column)
        texts += m_text.Text(serial, column);
    return texts;
}

QString TraceModel::AsText(const QModelIndexList& rows) const {
    QStringList titles;
    for (int column = 0; column < TraceText::Columns; ++column)
        titles += TraceText::Title(column);
    QString text = titles.join(u'\t') + u'\n';
    for (const QModelIndex& row : rows) {
        const quint64 serial = m_rows[static_cast<std::size_t>(row.row())];
        if (serial >= m_trace.First())
            text += Texts(serial).join(u'\t') + u'\n';
    }
    return text;
}

void TraceModel::WriteText(QIODevice& file) const {
    constexpr std::array<int, TraceText::Columns> widths = {13, 4, 4, 24, 4, 5, 22, 0, 0, 0};
    const auto write = [&](const QStringList& texts) {
        QString line;
        for (const int column : {TraceText::Time, TraceText::Direction, TraceText::Address, TraceText::Object,
                                 TraceText::Sequence, TraceText::Command, TraceText::Meaning})
            line += texts[column].leftJustified(widths[static_cast<std::size_t>(column)]);
        // The long ones last.
        line += texts[TraceText::RoundTrip].rightJustified(8) + QStringLiteral("  ") +
                texts[TraceText::Result].leftJustified(16) + texts[TraceText::Data];
        file.write(line.toUtf8() + '\n');
    };
    QStringList titles;
    for (int column = 0; column < TraceText::Columns; ++column)
        titles += column == TraceText::RoundTrip ? QStringLiteral("ms") : TraceText::Title(column);
    write(titles);
    for (const quint64 serial : m_rows) {
        if (serial >= m_trace.First())
            write(Texts(serial));
    }
}

void TraceModel::WriteCsv(QIODevice& file) const {
    const auto write = [&](const QStringList& texts) {
        QByteArrayList fields;
        for (const QString& text : texts)
            fields += CsvField(text);
        file.write(fields.join(',') + "\r\n");
    };
    QStringList titles;
    for (int column = 0; column < TraceText::Columns; ++column)
        titles += TraceText::Title(column);
    write(titles);
    for (const quint64 serial : m_rows) {
        if (serial >= m_trace.First())
            write(Texts(serial));
    }
}
