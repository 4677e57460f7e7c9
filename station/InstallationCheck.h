#pragma once

#include "core/EventLog.h"
#include "core/Installation.h"
#include "database/Loaders.h"

#include <memory>
#include <vector>

/// Something in the store that the model cannot hold or the line cannot carry.
struct Finding {
    QString text;   ///< for a user; names the service or object
    QString table;  ///< where it is typed: "Queue", "Display" or "Info-Direction"; empty if no row is at fault
    qint32 key = 0; ///< `q_Id` of the service; `d_Id` of the object, or of the display of a direction
    QString field;  ///< the column
    /// The question before the fault is mended, where no row of a grid could be edited for that: an entry of "ScanPlan"
    /// is removed, an object of "Display" is taken out from behind its hub. Empty for all others.
    QString mend = {};
};

/// Looks through the store for what would go wrong once it is loaded and sent. It forbids nothing: what the store takes
/// may stand there, and the loaders know what to do with it.
///
/// - A row that is active but is not loaded: address taken, address or number missing, beyond the 64th.
/// - An object without a type, which is taken for a counter and stands in no list of the hubs.
/// - An entry of the scan plan for an object that is not there, and a device behind a hub that is not there: no grid
///   shows either.
/// - A number of two services or of two objects.
/// - A route to a number that no active service has, or to a service that is routed itself.
/// - A name or description, with its counters, that is longer than its 63 places in the printer.
/// - A device behind a hub that is not loaded, or beyond the 16 that its hub takes.
/// - The address 127 of the broadcast, and addresses above 207.
/// - What the hubs' configuration block cannot carry, and a block whose frame's length field wraps.
/// - A counter or display whose key is above 32767, which has no place in table `Info-Direction`.
class InstallationCheck {
public:
    /// The references must outlive the check.
    InstallationCheck(Database& database, const Options& options, const Clock& clock);
    ~InstallationCheck();

    /// What the store holds now is looked at; the running model is not touched.
    /// @return services first, then objects, then what concerns both; empty while the database is closed, and the
    /// reason alone if it cannot be read.
    std::vector<Finding> FindFaults();

private:
    /// A row of table Queue or Display that is active.
    struct ActiveRow {
        qint32 key;
        QString name;
        QVariant number;
        QVariant address; ///< of an object
    };

    Result<> LoadScratch();
    std::vector<ActiveRow> ActiveRows(const QString& statement) const;
    void FindLostServices();
    void FindLostObjects();
    QString WhyLost(const ActiveRow& row) const;
    void CheckServices();
    void CheckTexts(qint16 service);
    void CheckObjects();
    void CheckHubs();
    void FindOrphans();
    void CheckBlock();
    void Add(const char* table, qint32 key, const char* field, const QString& text);

    Database& m_database;
    EventLog m_quiet; ///< the loaders have logged all of it when they really loaded
    const std::unique_ptr<model::Installation> m_scratch;
    Loaders m_loaders;
    std::vector<Finding> m_findings;
};
