#include "benchmarks/Benchmarks.h"
#include "core/EventLog.h"
#include "core/IniUtility.h"
#include "tests/support/RandomEditor.h"
#include "tests/support/TestClock.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QTemporaryDir>

namespace {

/// A store that is edited without waiting for the disk.
class EditedStore {
public:
    EditedStore() {
        (void)Database::CreateEmpty(path);
        database.OpenDatabase(path);
        (void)database.Run({QStringLiteral("PRAGMA synchronous = OFF")});
    }

    QTemporaryDir folder;
    QString path = folder.filePath(QStringLiteral("Harbinet.mdb"));
    TestClock clock;
    EventLog log{folder.path(), clock};
    IniUtility ini{folder.filePath(QStringLiteral("x.ini"))};
    Database database{folder.path(), ini, log, clock};
};

/// What the history of ten years takes: 20 edits a week, of which one in 20 is a larger one.
void MeasureTenYears() {
    constexpr int Edits = 10 * 52 * 20;
    EditedStore store;
    store.database.History().SetUser(QStringLiteral("installer"));
    RandomEditor editor(store.database, 1);
    for (int i = 0; i < Edits; ++i)
        editor.Act();
    (void)store.database.Run({QStringLiteral("VACUUM")});
    const qint64 with = QFileInfo(store.path).size();
    const auto acts = store.database.History().Read(Edits * 2).ValueOr({}).size();
    QElapsedTimer timer;
    timer.start();
    store.database.OpenDatabase(store.path);
    const double opening = static_cast<double>(timer.nsecsElapsed()) / 1e6;
    (void)store.database.Run({QStringLiteral("DELETE FROM EditAct")});
    (void)store.database.Run({QStringLiteral("VACUUM")});
    std::printf("history of %d edits: %zu acts in %.2f MB, opened in %.1f ms\n", Edits, acts,
                static_cast<double>(with - QFileInfo(store.path).size()) / 1e6, opening);
}

/// Random sequences of acts, undo and redo against a reference that keeps copies.
void CountSequences() {
    const int sequences =
        qEnvironmentVariableIntValue("ORVEX_SEQUENCES") > 0 ? qEnvironmentVariableIntValue("ORVEX_SEQUENCES") : 1'000;
    constexpr int Steps = 10;
    constexpr int SequencesOfAStore = 50;
    int wrong = 0;
    qint64 undone = 0;
    for (int first = 0; first < sequences; first += SequencesOfAStore) {
        EditedStore store;
        RandomEditor editor(store.database, static_cast<quint32>(first + 1));
        EditHistory& history = store.database.History();
        std::vector<QString> before;
        std::vector<QString> after;
        for (int step = 0; step < Steps * SequencesOfAStore; ++step) {
            const QString now = DescriptionOf(store.database);
            const int what = editor.Roll(10);
            if (what < 5) {
                editor.Act();
                if (DescriptionOf(store.database) != now) {
                    before.push_back(now);
                    after.clear();
                }
                continue;
            }
            auto& from = what < 8 ? before : after;
            auto& to = what < 8 ? after : before;
            const bool done = static_cast<bool>(what < 8 ? history.Undo() : history.Redo());
            wrong += done != !from.empty() || (done && DescriptionOf(store.database) != from.back()) ? 1 : 0;
            undone += done ? 1 : 0;
            if (done && !from.empty()) {
                to.push_back(now);
                from.pop_back();
            }
        }
    }
    std::printf("%d sequences of %d acts and steps: %lld steps back or forth, %d wrong\n", sequences, Steps,
                static_cast<long long>(undone), wrong);
}

} // namespace

void BenchmarkEdits() {
    MeasureTenYears();
    CountSequences();
}
