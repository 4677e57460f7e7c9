#include "simulator/TicketPictures.h"

#include "simulator/TicketPrinter.h"
#include "tickets/VniTable.h"

#include <QDateTime>

namespace {

/// Check sum, text and options of a printer that has no form.
const QByteArray BareForm = QByteArrayLiteral("\0\0\x1B@\x1D!\x22$VAR(3)\n\x1Bm14");

TicketValues ValuesOf(const TicketPrinter& printer, const TicketPrinter::Ticket& ticket) {
    const QDateTime now = QDateTime::currentDateTime();
    TicketValues values;
    const auto row = printer.ServiceRows().find(ticket.Service);
    if (row != printer.ServiceRows().end()) {
        values[0] = row->second.Name;
        values[1] = row->second.Description;
    }
    const int digits = printer.Form().isEmpty() ? 4 : printer.Form().back() - '0';
    values[3] = QByteArray::number(ticket.Number).rightJustified(digits, '0');
    values[4] = now.toString(QStringLiteral("dd/MM/yyyy")).toLatin1();
    values[5] = now.toString(QStringLiteral("hh:mm:ss")).toLatin1();
    values[6] = now.toString(QStringLiteral("MM/dd/yyyy")).toLatin1();
    values[7] = now.toString(QStringLiteral("hh:mm ")).toLatin1() + values[3];
    return values;
}

} // namespace

QString TicketPictures::Save(const TicketPrinter& printer) {
    if (printer.PrintedTickets().empty())
        return {};
    VniTable letters;
    // A printer that was loaded with none prints in its own font.
    [[maybe_unused]] const Result<> taken = letters.TakeRecords(printer.Letters());
    const QImage paper =
        m_paper.Print(printer.Form().isEmpty() ? BareForm : printer.Form(), printer.Logos(),
                      ValuesOf(printer, printer.PrintedTickets().back()), letters.IsLoaded() ? &letters : nullptr);
    const QString path = QStringLiteral("%1/ticket-%2-%3.png")
                             .arg(m_folder)
                             .arg(printer.Identity().Address)
                             .arg(printer.PrintedTickets().size());
    return paper.save(path) ? path : QString();
}
