#include "benchmarks/Benchmarks.h"

#include "benchmarks/PacedPrinter.h"
#include "printers/PrinterConfig.h"
#include "widgets/WindowDialogs.h"

namespace {

void DescribeServices(model::Installation& installation) {
    installation.NumServices = model::SlotCount;
    for (std::size_t i = 0; i < model::SlotCount; ++i) {
        model::QService& service = installation.QServices[i];
        service.Name = QStringLiteral("Service number %1").arg(i);
        service.Description = QStringLiteral("Please go to counter $1");
        service.Button = static_cast<quint8>(i);
        service.SeriesIndex = static_cast<qint16>(i);
    }
}

} // namespace

void BenchmarkPrinterLoad() {
    for (const int baud : {9600, 115200}) {
        PacedPrinter printer(baud);
        DescribeServices(*printer.Installation);
        WindowDialogs dialogs;
        PrinterConfig config({*printer.Installation, printer.Router, printer.Waits, dialogs, printer.Log},
                             printer.Folder.path(), [](qint32) { return QStringLiteral("1, 2, 3"); });
        printer.Measure("Load of a printer, 64 services",
                        [&] { return QCoro::waitFor(config.SendPrinterConfig(0, PrinterConfig::Load::Full)); });
    }
}
