#pragma once

#include "printers/PrinterTables.h"

#include <QObject>

#include <qcoro/qcorotask.h>

class Clock;
class HubRouter;

/// Loads the Button Table and the Service Table into the ticket printers.
class PrinterConfig : public ::QObject {
    Q_OBJECT

public:
    /// The references must outlive this object; `programFolder` is where TDSVCfg.log goes.
    PrinterConfig(QString programFolder, const model::Installation& installation, HubRouter& router, Clock& clock,
                  PrinterTables::CounterList counterListOfService, EventLog& log, ::QObject* parent = nullptr);

    /// Sends the Button Table and the Service Table to one printer.
    ///
    /// Rewrites `TDSVCfg.log` first, whatever the printer answers. A failed `K` or `M` is logged and the load goes on.
    /// @param object    index in `QObjects`, 0 to 63; must be of type Printer.
    /// @param fullLoad  true: table flag "1" and closing `N`; false: start-up load, flag "!".
    /// @return false only if the closing `N` of a full load got no answer. Takes at least 5.2 s otherwise.
    QCoro::Task<bool> SendPrinterConfig(qint16 object, bool fullLoad);

    /// A full load of every printer, in object order. A failed one does not stop the run.
    /// @return true if all succeeded, also if there is no printer.
    QCoro::Task<bool> ConfigAllPrinters();

Q_SIGNALS:
    /// How far the load of one printer is: `done` of `total` commands have gone out.
    void Progress(const QString& printerName, int done, int total);

private:
    void WriteListing(const PrinterTables& tables);

    QString m_programFolder;
    const model::Installation& m_installation;
    HubRouter& m_router;
    Clock& m_clock;
    PrinterTables::CounterList m_counterListOfService;
    EventLog& m_log;
};
