#pragma once

#include "printers/FontTransfer.h"
#include "printers/FormSource.h"
#include "printers/FormTransfer.h"
#include "printers/PrinterTables.h"
#include "tickets/FormCompiler.h"
#include "tickets/TicketValues.h"
#include "tickets/VniTable.h"

class IniUtility;

/// Ticket forms apart from the window in which they are designed: options, compilation, files and sending.
///
/// Forms and logos lie in the folder Data of the program folder.
class TicketForms {
public:
    /// @param ini must outlive this object.
    TicketForms(const PrinterTransfer::Parts& parts, QString programFolder, const IniUtility& ini,
                PrinterTables::CounterList counterListOfService);

    VniTable letters;
    FormTransfer transfer;
    FontTransfer fonts;

    /// Reads VNIl.dat and VCODE.dat of the program folder. What is wrong with them is told in boxes.
    QCoro::Task<> LoadLetters();

    /// Which printers forms are compiled for.
    const PrinterFamily& Family() const { return m_family; }
    void ChooseFamily(const PrinterFamily& family) { m_family = family; }

    /// Copies of each ticket, 1 to 6, and digits of its number, 1 to 4.
    qint16 TicketCopies() const { return m_TicketCopies; }
    qint16 TicketDigits() const { return m_TicketDigits; }
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

    /// Compiles what a source names as it stands now, or reads it if it is compiled already; then without logos.
    /// @return a failure names the file and says what is wrong with it.
    Result<CompiledForm> CompileSource(const FormSource& source) const;

    /// What the form or logo block that was sent last is made from, for the record: what its sender has named, if that
    /// still gives just it, else the file of the compiled form.
    /// @param isIt says whether a compiled form is the one. @param printerNumber of the printer.
    /// @return nothing if no file gives it.
    std::optional<FormSource> FindSource(const std::function<bool(const CompiledForm&)>& isIt,
                                         const QString& printerNumber) const;

    /// What is being sent, as its sender has named it; nothing before the first.
    const std::optional<FormSource>& Sending() const { return m_sending; }
    void SetSending(const FormSource& source) { m_sending = source; }

    /// The form of the window, as it would be compiled now; nothing if none was ever open.
    std::optional<FormSource> LastSource() const;

    const QString& ProgramFolder() const { return m_programFolder; }

    /// Why letters of the table cannot be loaded; empty if they can.
    QString LetterFault() const { return letters.IsLoaded() ? QString() : m_letterFault; }

    /// Values for the fields of a preview: those of the first loaded service, else plausible ones.
    TicketValues SampleValues() const;

    /// Compiles the document, keeps it in the file of one printer and sends it. @param object index in `QObjects`, 0
    /// to 63.
    QCoro::Task<Outcome> SendToPrinter(qint16 object, TicketDocument document, QString formPath, Logos logos);

    /// Compiles the document, keeps it in Ticket.bin and sends it to every printer.
    QCoro::Task<Outcome> SendToAllPrinters(TicketDocument document, QString formPath, Logos logos);

    /// Sends the form of Ticket.bin to one printer, without logos, as the start-up does: nothing is sent if there is no
    /// such file or it is damaged, and failures go to the log.
    QCoro::Task<bool> SendStoredForm(qint16 object);

    /// Loads letters into every printer. Sets the family: ZONE RICH or not.
    QCoro::Task<Outcome> LoadVniFont(LetterSet letterSet);

private:
    /// Compiles, shows what there is to say, and writes the form file. Nothing if the compilation was given up.
    QCoro::Task<std::optional<CompiledForm>> CompileForm(TicketDocument document, QString formPath,
                                                         QString printerNumber);
    QString FolderOf(const QString& formPath) const;
    QString CompiledPath(const QString& printerNumber) const;
    /// Writes one setting; a failure is in the log.
    void Save(const QString& section, const QString& key, const QString& value);

    const model::Installation& m_installation;
    Clock& m_clock;
    Dialogs& m_dialogs;
    EventLog& m_log;
    QString m_programFolder;
    const IniUtility& m_ini;
    PrinterTables::CounterList m_counterListOfService;
    PrinterFamily m_family;
    qint16 m_TicketCopies = 1;
    qint16 m_TicketDigits = 4;
    std::optional<FormSource> m_sending;
    QString m_letterFault = QStringLiteral("VNIl.dat has not been read.");
};
