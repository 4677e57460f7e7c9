#pragma once

#include "core/EventLog.h"
#include "database/Loaders.h"
#include "station/Payloads.h"

/// How what a device holds stands to what it is to hold.
enum class StepState : quint8 {
    Nothing,     ///< there is nothing that it holds
    InStep,      ///< it holds just what would be sent now
    NotAsked,    ///< it was loaded with that, and the printer was not asked since whether it is good
    Changed,     ///< it was loaded well, and would be given something else now
    NeverLoaded, ///< by what the record knows
    Failed,      ///< the last load of it failed, the printer reports an error in it, or it cannot be sent
};

/// One or two words for a user: "in step".
QString NameOf(StepState state);

/// One thing that a device is to hold.
struct HeldItem {
    LoadKind kind = LoadKind::Members;
    StepState state = StepState::NeverLoaded;
    QString what;                      ///< when and why, for a user
    qint64 size = 0;                   ///< bytes of what would be sent now
    std::chrono::milliseconds time{0}; ///< that a load of it takes
};

/// One device of the store with what it is to hold.
struct DeviceState {
    qint16 object = 0; ///< in the order of the store's devices, as in `QObjects` after a reload
    qint32 key = 0;    ///< `d_Id`
    QString name;      ///< VNI
    quint8 type = 0;
    quint8 address = 0;
    QString hub;                          ///< name of the hub that it stands behind, VNI, empty for none
    std::vector<HeldItem> items;          ///< in the order in which they are loaded
    StepState state = StepState::Nothing; ///< the worst of them
    QString what;                         ///< of the worst ones, for a user; empty if it is in step
};

/// Which devices of the installation are in step. Computed at each look from the store as it stands and the record of
/// loads, never kept.
///
/// A thing is in step if the last load of it was answered whole by the device itself, if its hash is that of what would
/// be sent now, and if the printer, asked after that load, has reported no error in it: of the tables by its first two
/// flags, of form and logos by the third, of the letters by the fourth.
class HallState {
public:
    /// The references must outlive this object.
    HallState(Database& database, const LoadRecord& record, const TicketForms& forms, const Options& options,
              const Clock& clock);
    ~HallState();

    /// @param baud bit/s of the line, for the times.
    /// @return all devices that can be loaded into the model, in its order; a failure if the store cannot be read.
    Result<std::vector<DeviceState>> Look(int baud);

    /// The state of one thing. @param payload what would be sent now.
    static HeldItem StateOf(const Payload& payload, const DeviceIdentity& device, const LoadRecord& record);

private:
    Result<> LoadScratch();

    const LoadRecord& m_record;
    const TicketForms& m_forms;
    const Clock& m_clock;
    EventLog m_quiet; ///< the loaders have logged all of it when they really loaded
    const std::unique_ptr<model::Installation> m_scratch;
    Loaders m_loaders;
};

/// Why a printer with these flags is not in order with a thing; empty if it is.
QString FlagFault(LoadKind kind, const QString& flags);
