#pragma once

#include <QString>

#include <vector>

/// The lines of one information display: a ring of rows, each a ticket number, a counter number and a direction.
///
/// Text form of a row, 7 characters: the last four digits of the ticket, the last two of the counter, the last one of
/// the direction, each filled with zeros on the left. A row with ticket 0 is empty and shows blanking characters.
class clsInfTbl {
public:
    /// @param mainDisplayType 0: an empty row shows ";<<<;<;"; else six characters of code 22 and one of code 27.
    explicit clsInfTbl(qint16 mainDisplayType)
        : m_mainDisplayType(mainDisplayType) {}

    /// Makes the table with `rowCount` empty rows; a count below 0 counts as 0.
    void Init(qint16 rowCount);

    /// The text for the display, newest row first: RowCount times 7 characters.
    QString GetStrInf() const;

    /// Writes the next row of the ring. Does nothing in a table without rows.
    void AddItem(qint16 counter, qint16 ticket, qint16 direction);

    /// One bit for each row added since the last `ClrDirty`, the newest in bit 0; 15 bits wide.
    qint16 InfNewRows() const { return m_newRows; }

    bool IsDirty() const { return m_dirty; }
    void ClrDirty();

    /// Fills the rows from a stored text, seven characters a row, row 0 first; `NextRow` stays. An empty text changes
    /// nothing but `IsDirty`. A field counts as the decimal digits that it begins with, 0 if there are none.
    void AddStringItems(const QString& text);

    QString Name() const { return m_name; }
    void SetName(const QString& name) { m_name = name; }

    /// What an empty row shows, 7 characters.
    static QString Blank(qint16 mainDisplayType);

private:
    struct Row {
        qint16 Counter = 0;
        qint16 Ticket = 0;
        qint16 Direction = 0;
    };

    std::vector<Row> m_rows;
    qint16 m_mainDisplayType;
    qint16 m_nextRow = 0;
    qint16 m_newRows = 0;
    bool m_dirty = false;
    QString m_name;
};
