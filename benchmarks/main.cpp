#include "benchmarks/Benchmarks.h"

#include <QCoreApplication>

/// usage: orvex_benchmarks [transactions] [load] [reload]; without a name all of them.
int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QStringList names = QCoreApplication::arguments().mid(1);
    const auto isAsked = [&names](const char* name) { return names.isEmpty() || names.contains(QLatin1String(name)); };
    if (isAsked("transactions"))
        BenchmarkTransactions();
    if (isAsked("reload"))
        BenchmarkReload();
    if (isAsked("load"))
        BenchmarkPrinterLoad();
    return 0;
}
