#pragma once

#include "printers/PrinterTables.h"
#include "printers/PrinterTransfer.h"

/// Loads the Button Table and the Service Table into the ticket printers.
class PrinterConfig : public PrinterTransfer {
    Q_OBJECT

public:
    /// Full: table flag "1" and closing `N`. At start-up: flag "!" and no `N`. Sure: as in full, and what the printer
    /// itself did not answer, `K` or a row, is logged with its name and sent again, up to three times each.
    enum class Load { Full, StartUp, Sure };

    /// @param programFolder where TDSVCfg.log goes.
    PrinterConfig(const Parts& parts, QString programFolder, PrinterTables::CounterList counterListOfService);

    /// Sends the Button Table and the Service Table to one printer.
    ///
    /// Rewrites `TDSVCfg.log` first, whatever the printer answers. A failed `K` or `M` is logged and the load goes on.
    /// @param object index in `QObjects`, 0 to 63; must be of type Printer.
    /// @return false only if the closing `N` of a full load got no answer. Takes at least 5.2 s otherwise.
    QCoro::Task<bool> SendPrinterConfig(qint16 object, Load load);

    /// A full load of every printer, in object order. A failed one does not stop the run.
    /// @return the names of the printers that failed.
    QCoro::Task<QStringList> ConfigAllPrinters();

private:
    void WriteListing(const PrinterTables& tables);

    QString m_programFolder;
    PrinterTables::CounterList m_counterListOfService;
};
