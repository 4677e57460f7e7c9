#pragma once

#include "platform/Result.h"

#include <QString>

#include <optional>
#include <vector>

/// A new store that begins with the description of another one: services, objects, assignments, scan plan, directions
/// and hubs. Tickets, the record of loads and the history of edits stay behind, and so does what others have put into
/// the file.
class StoreTemplate {
public:
    /// What numbers and addresses of the objects get added.
    struct Shift {
        int number = 0;
        int address = 0;
    };

    /// An object as it is, and as it will be.
    struct Object {
        QString name; ///< VNI
        QString newName;
        std::optional<int> number; ///< none for a null
        std::optional<int> newNumber;
        std::optional<int> address;
        std::optional<int> newAddress;
        QString fault; ///< why it cannot be, for a user; empty if it can
    };

    /// @param source path of the other store.
    explicit StoreTemplate(QString source)
        : m_source(std::move(source)) {}

    /// What would become of the objects, in the order of the store. Where a name ends with the object's number
    /// ("Counter 5"), it ends with the new one then. A failure names the file.
    Result<std::vector<Object>> Preview(Shift shift) const;

    /// Makes the new store. A file that is there already is never replaced.
    /// @return failed if it could not be made, or if one of the objects cannot be; nothing is left of it then.
    Result<> Make(const QString& target, Shift shift) const;

private:
    Failure Fault(const QString& why) const;

    const QString m_source;
};
