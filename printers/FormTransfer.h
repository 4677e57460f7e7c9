#pragma once

#include "platform/Outcome.h"
#include "printers/PrinterTransfer.h"
#include "tickets/FormCompiler.h"

/// Whether a form goes with its logos.
enum class Logos { With, Without };

/// Sends a compiled form and its logos to ticket printers.
///
/// Form: `L` with its length (four hexadecimal digits), `O` with up to 64 bytes each, `V` with "1" or "!". Logo block,
/// ten seconds later: `X`, `Y` with up to 64 bytes each, `Z`. Each goes out up to twice, with 0.8 s for the answer.
class FormTransfer : public PrinterTransfer {
    Q_OBJECT

public:
    /// From the designer failures come in boxes and `V` carries "1". At the start-up they are logged, `V` carries "!",
    /// and logos stay here. While a hall is commissioned `V` carries "1", and the caller tells what failed.
    enum class Occasion { Designer, StartUp, Commissioning };

    using PrinterTransfer::PrinterTransfer;

    /// Sends form and, if wanted and there are any, logos to one printer. After a failed `O` the printer is still told
    /// the end of the form, and its answer to that decides.
    /// @param object index in `QObjects`, 0 to 63.
    QCoro::Task<bool> SendFormAndLogo(qint16 object, CompiledForm form, Logos logos, Occasion occasion);

    /// Sends one part of a form to one printer, with its hub told, as the commissioning does.
    enum class Part { Form, Logos };
    QCoro::Task<bool> LoadPart(qint16 object, CompiledForm form, Part part);

    /// Sends to one printer for the designer, with its hub told. The box about the outcome comes before the hub is told
    /// the end, so the outcome has no text.
    QCoro::Task<Outcome> SendToPrinter(qint16 object, CompiledForm form, Logos logos);

    /// Sends to every printer, in object order, each with its hub told. After a failure the user is asked whether to go
    /// on. The outcome names the printers that failed.
    QCoro::Task<Outcome> SendFormToAllPrinters(CompiledForm form, Logos logos);

private:
    QCoro::Task<bool> SendForm(qint16 object, QByteArray form, Occasion occasion);
    QCoro::Task<bool> SendLogos(qint16 object, QByteArray logos, Occasion occasion);
    QCoro::Task<> Wait(int milliseconds);
    QCoro::Task<> Report(qint16 object, Occasion occasion, QString text);
};
