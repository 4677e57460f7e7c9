#pragma once

#include "platform/RegistryStore.h"

#include <QVariant>

#include <optional>

/// One position in the registry, and what can be done there. Made anew for each use.
class cRegistry {
public:
    /// What a write or a delete can end in.
    struct Error {
        quint32 number = 0;  ///< 26001, or 0x800469A9 for a value that could not be written
        QString source;      ///< name of the program, and ".cRegistry"
        QString description; ///< for a user to read
    };

    /// @param store must outlive this.
    explicit cRegistry(const RegistryStore& store);

    qint32 ClassKey = 0; ///< the root, such as `RegistryStore::LocalMachine`
    QString SectionKey;  ///< path of the key under the root
    QString ValueKey;    ///< name of the value, empty for the default value of the key
    qint32 ValueType =
        0;            ///< 1 string, 2 string with variables, 3 bytes, 4 number, 5 number in big-endian order, 7 list
    QVariant Default; ///< what `Value` gives where nothing can be read

    /// The value, by the type that is found, which `ValueType` then holds: text for 1, 2 (with the variables of the
    /// environment in place of their names between "%") and 7, a number for 4 and 5, otherwise bytes. `Default` if
    /// there is none; `ValueType` then stays.
    QVariant Value();

    /// Writes a value as `ValueType`. A text goes as type 2 if it holds something between two "%", otherwise as 1;
    /// numbers go as 4, and what is no number then goes nowhere, without an error.
    std::optional<Error> SetValue(const QVariant& value);

    std::optional<Error> DeleteValue();

private:
    Error MakeError(quint32 number, const QString& description) const;

    const RegistryStore& m_store;
    QString m_lastWritten;
};
