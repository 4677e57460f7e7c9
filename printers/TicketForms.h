#pragma once

#include "printers/FontTransfer.h"
#include "printers/FormTransfer.h"
#include "printers/PrinterTables.h"
#include "tickets/FormCompiler.h"
#include "tickets/TicketValues.h"
#include "tickets/VniTable.h"

class IniUtility;

/// Ticket forms apart from the window in which they are designed: options, compilation, files and sending.
///
/// Forms and logos lie in the folder Data of the program folder.
class TicketForms : public ::QObject {
    Q_OBJECT

public:
    /// The references must outlive this object.
    TicketForms(QString programFolder, const model::Installation& installation, HubRouter& router, Clock& clock,
                Dialogs& dialogs, const IniUtility& ini, PrinterTables::CounterList counterListOfService, EventLog& log,
                ::QObject* parent = nullptr);

    PrinterFamily family;      ///< which printers forms are compiled for
    qint16 TicketCopies = 1;   ///< copies of each ticket, 1 to 6
    qint16 m_TicketDigits = 4; ///< digits of the ticket number, 1 to 4
    VniTable letters;
    FormTransfer transfer;
    FontTransfer fonts;

    /// Reads VNIl.dat and VCODE.dat of the program folder. What is wrong with them is told in boxes.
    QCoro::Task<> LoadLetters();

    /// Change an option and write it to the settings.
    void SetTicketCopies(qint16 copies);
    void SetTicketDigits(qint16 digits);

    QString DataFolder() const;
    /// The setting of the form that was open last, empty if there is none.
    QString LastForm() const;
    void SetLastForm(const QString& path);
    /// Keeps the name of the logo that was edited last.
    void SetLastLogo(const QString& name);

    /// Compiles without telling anyone, for a preview. @param formPath file of the document, empty if it has none.
    CompilerResult Compile(const TicketDocument& document, const QString& formPath) const;

    /// Values for the fields of a preview: those of the first loaded service, else plausible ones.
    TicketValues SampleValues() const;

    /// Compiles the document, keeps it in the file of one printer, sends it, and tells the outcome.
    /// @param object index in `QObjects`, 0 to 63.
    QCoro::Task<> SendToPrinter(qint16 object, TicketDocument document, QString formPath, bool withLogo);

    /// Compiles the document, keeps it in Ticket.bin, sends it to every printer, and tells the outcome.
    QCoro::Task<> SendToAllPrinters(TicketDocument document, QString formPath, bool withLogo);

    /// Sends the form of Ticket.bin to one printer, without logos, as the start-up does: nothing is sent if there is no
    /// such file or it is damaged, and failures go to the log.
    QCoro::Task<> SendStoredForm(qint16 object);

    /// Loads letters into every printer and says that it is done. @param zoneRich sets the family.
    QCoro::Task<> LoadVniFont(bool zoneRich);

    /// A transfer runs.
    bool IsRunning() const { return m_running; }

Q_SIGNALS:
    void RunningChanged(bool running);

private:
    class Transfer;

    /// Compiles, tells what there is to tell, and writes the form file. Nothing if the compilation was given up.
    QCoro::Task<std::optional<CompiledForm>> CompileForm(TicketDocument document, QString formPath,
                                                         QString printerNumber);
    QString FolderOf(const QString& formPath) const;

    QString m_programFolder;
    const model::Installation& m_installation;
    Clock& m_clock;
    Dialogs& m_dialogs;
    const IniUtility& m_ini;
    PrinterTables::CounterList m_counterListOfService;
    EventLog& m_log;
    QString m_letterFault = QStringLiteral("VNIl.dat has not been read.");
    bool m_running = false;
};
