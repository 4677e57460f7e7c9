#pragma once

#include "database/LoadRecord.h"
#include "printers/FontTransfer.h"
#include "printers/FormSource.h"
#include "printers/PrinterTables.h"

#include <chrono>

class Clock;
class EventLog;
class TicketForms;

namespace model {
struct Installation;
}

/// What one device is to hold of one kind.
struct Payload {
    LoadKind kind = LoadKind::Members;
    QByteArray content;                   ///< as `LoadWatch` describes it
    QString fault;                        ///< why it cannot be sent, for a user; there is no content then
    std::optional<FormSource> form;       ///< of form and logos
    LetterSet letters = LetterSet::Table; ///< of letters
};

/// Builds what the devices of an installation are to hold, with the builders that the loads themselves use.
///
/// - A hub: its member list, the configuration block, its clock.
/// - A printer: tables, form, logos if its form has some, letters, and its clock if it stands on the bus itself: no
///   command for its clock is relayed by a hub.
/// - A counter and a display hold nothing that is loaded.
///
/// The form of a printer is made from what was sent to it last, else from what was sent last to any printer, else from
/// the form that was open last in the window. In the same way it is decided which letters it gets.
class Payloads {
public:
    /// The references must outlive this object.
    struct Parts {
        const model::Installation& installation;
        const TicketForms& forms;
        const LoadRecord& record;
        const Clock& clock;
        PrinterTables::CounterList counterListOfService;
        EventLog& log; ///< what the tables lose is written there
    };

    explicit Payloads(Parts parts);

    /// In the order in which they are loaded. What is the same for several devices is built once: for each new state
    /// of the installation a new object is made. @param object index in `QObjects`.
    std::vector<Payload> Of(qint16 object);

    /// How long it takes to load it, all answers and pauses included.
    /// @param baud bit/s. @param isRelayed the device stands behind a hub.
    static std::chrono::milliseconds LoadTime(const Payload& payload, int baud, bool isRelayed);

private:
    Payload Members(qint16 object) const;
    Payload Block();
    Payload Tables();
    std::vector<Payload> FormAndLogos(const DeviceIdentity& device);
    Payload Letters(const DeviceIdentity& device);

    const Parts m_parts;
    std::optional<Payload> m_block;
    std::optional<Payload> m_tables;
    std::map<QString, Result<CompiledForm>> m_forms; ///< by the text of their source
    std::map<LetterSet, Payload> m_letters;
};
