#include "benchmarks/Benchmarks.h"

#include <QApplication>

/// usage: orvex_benchmarks [transactions] [load] [reload] [grids] [forms] [monitor] [map] [commissioning] [edits]
/// [cleanup]; without a name all of them.
int main(int argc, char** argv) {
    // No window is looked at here.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const QStringList names = QCoreApplication::arguments().mid(1);
    const auto isAsked = [&names](const char* name) { return names.isEmpty() || names.contains(QLatin1String(name)); };
    if (isAsked("transactions"))
        BenchmarkTransactions();
    if (isAsked("reload"))
        BenchmarkReload();
    if (isAsked("load"))
        BenchmarkPrinterLoad();
    if (isAsked("grids"))
        BenchmarkGrids();
    if (isAsked("forms"))
        BenchmarkForms();
    if (isAsked("monitor"))
        BenchmarkMonitor();
    if (isAsked("map"))
        BenchmarkMap();
    if (isAsked("commissioning"))
        BenchmarkCommissioning();
    if (isAsked("edits"))
        BenchmarkEdits();
    if (isAsked("cleanup"))
        BenchmarkCleanup();
    return 0;
}
