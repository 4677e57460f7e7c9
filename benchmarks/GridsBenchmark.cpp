#include "benchmarks/Benchmarks.h"

#include "benchmarks/FilledStore.h"
#include "benchmarks/Report.h"
#include "platform/Clock.h"
#include "setup/frmQueue.h"
#include "tests/support/OpenStation.h"
#include "widgets/WindowDialogs.h"

#include <QApplication>
#include <QPushButton>
#include <QTemporaryDir>

namespace {

constexpr double Aim = 100; ///< milliseconds

} // namespace

void BenchmarkGrids() {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("Harbinet.mdb"));
    FillStore(path);
    SystemClock clock;
    WindowDialogs dialogs;
    SerialControl port;
    OpenStation station({folder.path(), folder.path()}, {clock, port, dialogs});
    station.database.OpenDatabase(path);
    (void)station.reload.ReloadAll();

    std::unique_ptr<frmQueue> window;
    const double load = BestSeconds(5, [&] {
        window = std::make_unique<frmQueue>(station);
        window->show();
        QApplication::processEvents();
    });
    auto* refresh = window->findChild<QPushButton*>(QStringLiteral("cmdRefresh"));
    const double again = BestSeconds(5, [&] {
        refresh->click();
        QApplication::processEvents();
    });
    Report("Setup window with 64 services and 64 objects", load * 1000, "ms", "aim", Aim);
    Report("Refresh of all its grids and of the model", again * 1000, "ms", "aim", Aim);
}
