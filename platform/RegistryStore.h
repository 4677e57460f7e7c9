#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// A registry in a file: keys with values, below numbered roots. Stands in for the registry of other systems.
///
/// Names of keys and values are taken without regard to case; an empty value name is the default value of its key. Each
/// operation reads or writes the whole file, which is replaced as a whole.
class RegistryStore {
public:
    static constexpr qint32 LocalMachine = static_cast<qint32>(0x80000002);

    struct Entry {
        qint32 type = 0; ///< 1 string, 2 string with variables, 3 bytes, 4 and 5 32-bit number, 7 list of strings
        QByteArray bytes;
    };

    /// @param autostartFolder where the entries of the desktop's automatic start lie.
    RegistryStore(QString path, QString autostartFolder);

    /// The store of this user's programs: in `folder`, with the desktop's own automatic start.
    static RegistryStore OfUser(const QString& folder);

    bool HasKey(qint32 root, const QString& section) const;
    std::optional<Entry> Read(qint32 root, const QString& section, const QString& value) const;

    /// Makes the key if there is none. A string under the local machine's Run key becomes a desktop entry that starts
    /// it with the session. @return false, and nothing changed, if that cannot be written.
    bool Write(qint32 root, const QString& section, const QString& value, const Entry& entry) const;

    /// @return false if there is no such value, or it cannot be taken out.
    bool Delete(qint32 root, const QString& section, const QString& value) const;

private:
    static bool IsRunKey(qint32 root, const QString& section);
    QString AutostartFile(const QString& value) const;

    QString m_path;
    QString m_autostartFolder;
};
