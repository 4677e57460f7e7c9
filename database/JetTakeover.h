#pragma once

#include <QPointer>
#include <QString>
#include <qcoro/qcorotask.h>

#include <chrono>

class Clock;
class Dialogs;
class EventLog;
class ImporterRun;

/// Makes a file that the user chose ready to be opened as the station's store. An Access/Jet file is taken over by the
/// program `JetImport`, whose breakdown costs a message and nothing else.
class JetTakeover {
public:
    enum class Result {
        Done,      ///< the file is a store now
        Declined,  ///< the user answered No
        Cancelled, ///< the user stopped it, or `Close` came; nothing has changed
        Failed,    ///< the user was told why; nothing has changed
    };

    /// An importer that tells nothing for so long is taken for hung.
    static constexpr std::chrono::milliseconds Patience{60'000};

    /// The references must outlive this. @param importer path of the program `JetImport`.
    JetTakeover(Dialogs& dialogs, Clock& clock, EventLog& log, QString importer,
                std::chrono::milliseconds patience = Patience);
    JetTakeover(const JetTakeover&) = delete;
    JetTakeover& operator=(const JetTakeover&) = delete;
    ~JetTakeover();

    /// To be called before `OpenDatabase`. A sound store with all tables is left as it is; an Access/Jet file is taken
    /// over if the user agrees; for anything else a box names the file and says what is wrong.
    /// @return true if `path` can be opened as a store now.
    QCoro::Task<bool> Prepare(QString path);

    /// Asks, then takes the Access/Jet file over into a new store beside it, which then takes its name. The old file
    /// is kept as NAME.jet.mdb (NAME.jet-2.mdb and so on if that is taken). At every moment a whole database bears
    /// the name; what a killed run left is removed by the next.
    QCoro::Task<Result> TakeOver(QString file);

    /// Kills a running import and ends every operation; later ones end at once. Call before this is destroyed, as long
    /// as an operation may be suspended.
    void Close();

    /// What is wrong with the store `path`: it cannot be opened, is damaged, or lacks tables. Empty if nothing is.
    static QString StoreFault(const QString& path);

private:
    QCoro::Task<Result> TakeOverLocked(QString file);
    QCoro::Task<Result> Fail(QString file, QString reason);

    Dialogs& m_dialogs;
    Clock& m_clock;
    EventLog& m_log;
    QString m_importer;
    std::chrono::milliseconds m_patience;
    QPointer<ImporterRun> m_run;
    bool m_closed = false;
};
