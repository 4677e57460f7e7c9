#pragma once

#include "platform/Outcome.h"
#include "platform/Result.h"

#include <QPointer>
#include <QString>
#include <qcoro/qcorotask.h>

#include <chrono>

class Clock;
class Dialogs;
class EventLog;
class ImporterRun;
enum class StoreKind;

/// Makes a file that the user chose ready to be opened as the station's store. An Access/Jet file is taken over by the
/// program `JetImport`, whose breakdown costs a message and nothing else.
class JetTakeover {
public:
    /// An importer that tells nothing for so long is taken for hung.
    static constexpr std::chrono::milliseconds Patience{60'000};

    /// The references must outlive this. @param importer path of the program `JetImport`.
    JetTakeover(Dialogs& dialogs, Clock& clock, EventLog& log, QString importer,
                std::chrono::milliseconds patience = Patience);
    JetTakeover(const JetTakeover&) = delete;
    JetTakeover& operator=(const JetTakeover&) = delete;
    ~JetTakeover();

    /// To be called before `OpenDatabase`. A sound store with all tables is left as it is; an Access/Jet file is taken
    /// over if the user agrees.
    /// @return done if `path` can be opened as a store now; failed with the file's name and what is wrong with it;
    /// refused without a word if the user does not want a file taken over; cancelled if the user stopped it, or `Close`
    /// came. Nothing has changed unless it is done.
    QCoro::Task<Outcome> Prepare(QString path);

    /// Asks, then takes the Access/Jet file over into a new store beside it, which then takes its name. The old file
    /// is kept as NAME.jet.mdb (NAME.jet-2.mdb and so on if that is taken). At every moment a whole database bears
    /// the name; what a killed run left is removed by the next.
    QCoro::Task<Outcome> TakeOver(QString file);

    /// Kills a running import and ends every operation; later ones end at once. Call before this is destroyed, as long
    /// as an operation may be suspended.
    void Close();

    /// What is wrong with the store `path`: it cannot be opened, is damaged, or lacks tables.
    static Result<> CheckStore(const QString& path);

private:
    QCoro::Task<> WaitUntilFree(QString path, StoreKind kind);
    QCoro::Task<Outcome> TakeOverLocked(QString file);
    Outcome NotTakenOver(const QString& file, const QString& reason);

    Dialogs& m_dialogs;
    Clock& m_clock;
    EventLog& m_log;
    QString m_importer;
    std::chrono::milliseconds m_patience;
    QPointer<ImporterRun> m_run;
    bool m_closed = false;
};
