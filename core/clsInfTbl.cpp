#include "core/clsInfTbl.h"

#include <algorithm>

namespace {

constexpr int RowCharacters = 7;

/// The decimal digits that `field` begins with; at most four come in, so they fit.
qint16 Digits(QStringView field) {
    int value = 0;
    for (const QChar character : field) {
        if (character < u'0' || character > u'9')
            break;
        value = value * 10 + (character.unicode() - u'0');
    }
    return static_cast<qint16>(value);
}

QString LastDigits(qint16 value, int count) {
    return QString::number(value).rightJustified(count, u'0').right(count);
}

} // namespace

void clsInfTbl::Init(qint16 rowCount) {
    m_rows.assign(static_cast<std::size_t>(std::max<qint16>(rowCount, 0)), Row{});
    m_nextRow = 0;
    m_newRows = 0;
    m_dirty = false;
}

QString clsInfTbl::Blank(qint16 mainDisplayType) {
    if (mainDisplayType == 0)
        return QStringLiteral(";<<<;<;");
    return QString(6, QChar(22)) + QChar(27);
}

QString clsInfTbl::GetStrInf() const {
    QString text;
    const auto count = std::ssize(m_rows);
    auto index = static_cast<std::ptrdiff_t>(m_nextRow);
    for (std::ptrdiff_t shown = 0; shown < count; ++shown) {
        index = index == 0 ? count - 1 : index - 1;
        const Row& row = m_rows[static_cast<std::size_t>(index)];
        if (row.Ticket == 0)
            text += Blank(m_mainDisplayType);
        else
            text += LastDigits(row.Ticket, 4) + LastDigits(row.Counter, 2) + LastDigits(row.Direction, 1);
    }
    return text;
}

void clsInfTbl::AddItem(qint16 counter, qint16 ticket, qint16 direction) {
    if (m_rows.empty())
        return;
    m_rows[static_cast<std::size_t>(m_nextRow)] = Row{counter, ticket, direction};
    if (m_newRows >= 16384)
        m_newRows &= ~16384;
    m_newRows = static_cast<qint16>((m_newRows << 1) | 1);
    m_dirty = true;
    m_nextRow = static_cast<qint16>((m_nextRow + 1) % std::ssize(m_rows));
}

void clsInfTbl::ClrDirty() {
    m_dirty = false;
    m_newRows = 0;
}

void clsInfTbl::AddStringItems(const QString& text) {
    m_dirty = true;
    if (text.isEmpty())
        return;
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        const QStringView group = QStringView(text).mid(static_cast<qsizetype>(i) * RowCharacters, RowCharacters);
        m_rows[i] = Row{
            .Counter = Digits(group.mid(4, 2)), .Ticket = Digits(group.left(4)), .Direction = Digits(group.mid(6, 1))};
    }
}
