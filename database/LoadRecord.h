#pragma once

#include "platform/Result.h"

#include <QByteArray>
#include <QString>

#include <compare>
#include <map>
#include <optional>
#include <vector>

class Database;
class EventLog;

/// What a device is given to hold.
enum class LoadKind : quint8 {
    Members, ///< of a hub: which devices stand behind it
    Block,   ///< of a hub: services, counters, printers and displays
    Tables,  ///< of a printer: keys and services
    Form,    ///< of a printer
    Logos,   ///< of a printer, those of its form
    Letters, ///< of a printer
    Clock,   ///< of a hub or a printer
};

/// All kinds, in the order in which they are loaded.
inline constexpr LoadKind LoadKinds[] = {LoadKind::Members, LoadKind::Block,   LoadKind::Tables, LoadKind::Form,
                                         LoadKind::Logos,   LoadKind::Letters, LoadKind::Clock};

/// One word for a user: "tables".
QString NameOf(LoadKind kind);

/// What makes a device this one and no other: where it stands on the bus, and what it is.
struct DeviceIdentity {
    quint8 type = 0;     ///< `model::ObjectType`
    quint8 address = 0;  ///< of its own
    qint16 hub = Direct; ///< address of the hub that it stands behind

    static constexpr qint16 Direct = -1;

    auto operator<=>(const DeviceIdentity&) const = default;
};

/// One line of the record.
struct LoadEntry {
    enum class Event : quint8 {
        Begun, ///< the first frame of a load is about to go out: what the device held of that kind is gone
        Ended, ///< no more frames of the load will go out
        Asked, ///< a printer has told its flags
    };
    enum class End : quint8 {
        Done,   ///< every frame was answered by the device itself
        Failed, ///< some frame was not
        CutOff, ///< the load was left before its end
    };

    qint64 id = 0; ///< of the row, 0 until it is written
    Event event = Event::Begun;
    DeviceIdentity device;
    qint32 key = 0; ///< `d_Id` at that time
    QString name;   ///< of the device at that time, VNI
    LoadKind kind = LoadKind::Members;
    QByteArray content; ///< what was sent, without frames and stuffing; not read back by `LoadRecord::Read`
    QString hash;       ///< SHA-256 of the content, hexadecimal
    qint64 size = 0;    ///< of the content, bytes
    QString source;     ///< of a form, logos or letters: what they were made from; see `FormSource`
    qint32 frames = 0;  ///< commands
    qint32 tries = 0;   ///< frames that went out
    qint32 own = 0;     ///< commands that the device itself has answered
    qint32 foreign = 0; ///< commands that something else has answered
    QString flags;      ///< six characters, "1" for good, see `P`; empty where nobody asked
    QString begun;      ///< "yyyy-MM-dd hh:mm:ss", local time
    QString ended;      ///< the same
    QString user;
    QString port;
    QString version; ///< of this program
    End end = End::CutOff;
    QString reason; ///< why it failed, for a user
};

/// What was loaded where, when and by whom: tables of the program's own in the store, to which rows are only ever
/// added.
///
///     LoadIdentity  Identity: made with the tables, so that copied rows are told from the store's own
///     LoadRecord    a row for each event
///     LoadPayload   Hash, Content: each content once
///
/// What cannot be written at once stays in memory and is written with a later entry; until then it counts all the same.
/// A store that cannot be written to at all keeps nothing, and `Fault` says why.
class LoadRecord {
public:
    /// What is known of one kind of load at one device.
    struct Standing {
        LoadEntry last;                ///< the last load that was begun or ended
        std::optional<LoadEntry> good; ///< the last one that ended well
        QString document;              ///< source of the last load that was made from one, and not compiled before
        quint64 order = 0;             ///< of `last` among all that is known
    };

    /// The references must outlive the record.
    LoadRecord(Database& database, EventLog& log);

    /// Takes over what the open store holds; forgets what was known before. To be called after the store was opened.
    void Open();

    /// Adds an entry, which counts from now on. It is in the store after the next `Flush`.
    void Append(LoadEntry entry);

    /// Writes what is not written yet, as far as the store takes it; waits for another program as `Sqlite` does. To be
    /// called before the store is closed. What cannot be written: see `Fault`.
    void Flush();

    /// Writes like `Flush`, and where there is nothing to write tries whether the store takes something.
    /// @return failed with `Fault` if it does not.
    Result<> Try();

    /// Why the store does not take entries, for a user; empty if it does.
    const QString& Fault() const { return m_fault; }

    /// The loads of a kind at a device, nothing if there never was one.
    const Standing* Of(const DeviceIdentity& device, LoadKind kind) const;
    /// The last load of a kind that ended well, at whatever device; nothing if there never was one.
    const LoadEntry* LastGood(LoadKind kind) const;
    /// What the device has told of itself last, if that was after its last load of this kind; otherwise empty.
    QString FlagsSince(const DeviceIdentity& device, LoadKind kind) const;
    /// The device has told something else before, or has got a load since.
    bool IsNews(const DeviceIdentity& device, const QString& flags) const;

    /// The content that has this hash, nothing if the store does not have it.
    std::optional<QByteArray> Content(const QString& hash) const;

    /// The newest entries first: loads that ended or were cut off, and what printers told. At most `most` of them.
    Result<std::vector<LoadEntry>> Read(int most) const;

    /// SHA-256, hexadecimal.
    static QString HashOf(const QByteArray& content);

private:
    using Place = std::pair<DeviceIdentity, LoadKind>;
    struct Told {
        QString flags;
        quint64 order = 0;
    };

    void Note(const LoadEntry& entry);
    /// Makes room among what waits.
    void ForgetOne();
    /// Follows whether the store takes entries.
    void Tell(const Result<>& written);
    Result<> Write(const LoadEntry& entry) const;
    Result<> Learn();
    Result<> ReadIdentity();
    Result<> ReadStandings();

    Database& m_database;
    EventLog& m_log;
    QString m_identity;
    bool m_isKnown = false; ///< what the store holds has been read
    QString m_fault;
    std::vector<LoadEntry> m_unwritten;
    std::map<Place, Standing> m_standings;
    std::map<DeviceIdentity, Told> m_told;
    std::map<LoadKind, LoadEntry> m_lastGood;
    quint64 m_order = 0;
};
