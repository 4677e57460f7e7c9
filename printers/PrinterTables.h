#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <vector>

class EventLog;

namespace model {
struct Installation;
}

/// The two tables that tell a ticket printer what its keys mean and what it prints for each service.
///
/// Button Table, the data of command `K`, characters:
///
///     1      2 each           1
///     count  Button of each   flag: "1" full load, "!" start-up load
///
/// with the numbers in two upper-case hexadecimal digits. Service Table row, the data of command `M`, 131 characters:
///
///     1      3            4     67  68           131
///     index  SeriesIndex  Name  0   Description  0
///
/// index in two upper-case hexadecimal digits, SeriesIndex as a small number, both texts in Windows-1252 cut to 63
/// characters and filled with bytes of value 0. Rows are sent as they stand, without byte stuffing.
class PrinterTables {
public:
    static constexpr int TextPlaces = 63;
    static constexpr int RowLength = 131;

    /// Text of the numbers of the counters that serve the service with that `q_Id`.
    using CounterList = std::function<QString(qint32 serviceId)>;

    /// Builds the tables of the services as they stand now. A character that the code page lacks becomes "?", a control
    /// character a blank; both are logged with the service's name.
    PrinterTables(const model::Installation& installation, const CounterList& counterListOfService, EventLog& log);

    QByteArray ButtonTable(bool fullLoad) const;

    /// The rows in service order; 0 to 64 of them.
    const std::vector<QByteArray>& ServiceTable() const { return m_rows; }

    /// The readable copy of both tables, as it stands in TDSVCfg.log:
    ///
    ///     Button Table:
    ///     0x02,0x01,0x02,0,0,0,0
    ///     Service Table:
    ///     {'0',{71,...},{81,...}},
    ///     {'1',{82,...},{81,...}}
    ///
    /// the braces holding the 64 bytes of name and description as decimal numbers. Lines end in a line feed.
    QByteArray Listing() const;

private:
    QByteArray m_buttons;
    std::vector<QByteArray> m_rows;
};

/// `text` with each "$1" replaced by the counters of the service, of its route target if it has one. A "$" at the very
/// end is dropped, any other "$" is kept as typed.
QString ExpandServiceText(const QString& text, qint16 serviceIndex, const model::Installation& installation,
                          const PrinterTables::CounterList& counterListOfService);
