#pragma once

#include "tickets/FormCompiler.h"

#include <QObject>

#include <qcoro/qcorotask.h>

class Clock;
class Dialogs;
class EventLog;
class HubRouter;

namespace model {
struct Installation;
}

/// Sends a compiled form and its logos to ticket printers.
///
/// Form: `L` with its length (four hexadecimal digits), `O` with up to 64 bytes each, `V` with "1" or "!". Logo block,
/// ten seconds later: `X`, `Y` with up to 64 bytes each, `Z`. Each goes out up to twice, with 0.8 s for the answer.
class FormTransfer : public ::QObject {
    Q_OBJECT

public:
    /// The references must outlive this object.
    FormTransfer(const model::Installation& installation, HubRouter& router, Clock& clock, Dialogs& dialogs,
                 EventLog& log, ::QObject* parent = nullptr);

    /// Sends form and, if wanted and there are any, logos to one printer.
    ///
    /// After a failed `O` the printer is still told the end of the form, and its answer to that decides.
    /// @param object       index in `QObjects`, 0 to 63.
    /// @param interactive  true, for the designer: failures come in boxes, and `V` carries "1". False, for the
    /// start-up:
    ///                     failures are logged, `V` carries "!", and logos stay here.
    QCoro::Task<bool> SendFormAndLogo(qint16 object, CompiledForm form, bool withLogo, bool interactive);

    /// Sends to one printer for the designer, with its hub told, and shows the outcome in a box.
    QCoro::Task<bool> SendToPrinter(qint16 object, CompiledForm form, bool withLogo);

    /// Sends to every printer, in object order, each with its hub told. After a failure the user is asked whether to go
    /// on. @return true if all succeeded, also if there is none.
    QCoro::Task<bool> SendFormToAllPrinters(CompiledForm form, bool withLogo);

    /// Tells the user of a logo block that is too large to be sent. @return true if it was.
    QCoro::Task<bool> RefuseLogos(const CompiledForm& form, bool withLogo);

    /// Lets the running transfer end as if its next frame had failed. A form is still told its end.
    void Cancel() { m_cancelled = true; }

Q_SIGNALS:
    /// How far the transfer to one printer is: `done` of `total` frames of a phase ("form", "logos") have gone out;
    /// both 0 while it waits.
    void Progress(const QString& printerName, const QString& phase, int done, int total);

private:
    QCoro::Task<bool> Send(qint16 object, char letter, QByteArray data);
    QCoro::Task<bool> SendBlock(qint16 object, char letter, QByteArray block, QString phase);
    QCoro::Task<> Wait(int milliseconds);
    QCoro::Task<> Report(qint16 object, bool interactive, QString text);

    const model::Installation& m_installation;
    HubRouter& m_router;
    Clock& m_clock;
    Dialogs& m_dialogs;
    EventLog& m_log;
    bool m_cancelled = false;
};
