#include "database/LoadRecord.h"

#include "core/EventLog.h"
#include "database/Database.h"

#include <QCryptographicHash>
#include <QUuid>

#include <algorithm>
#include <array>

namespace {

/// How many entries wait for a store that takes none.
constexpr std::size_t MostUnwritten = 1000;

constexpr std::array<const char*, std::size(LoadKinds)> KindNames = {"members", "block",   "tables", "form",
                                                                     "logos",   "letters", "clock"};
constexpr std::array<const char*, 3> EventNames = {"begun", "ended", "asked"};
constexpr std::array<const char*, 3> EndNames = {"done", "failed", "cut off"};

template <typename T, std::size_t N>
QString TextOf(T value, const std::array<const char*, N>& names) {
    return QString::fromLatin1(names[static_cast<std::size_t>(value)]);
}

/// Nothing for a text that is none of the names, which only others can have written.
template <typename T, std::size_t N>
std::optional<T> ValueOf(const QString& text, const std::array<const char*, N>& names) {
    const auto found =
        std::find_if(names.begin(), names.end(), [&](const char* name) { return text == QLatin1String(name); });
    if (found == names.end())
        return std::nullopt;
    return static_cast<T>(found - names.begin());
}

QString Columns() {
    return QStringLiteral("[Event],[Type],[Address],[HubAddress],[Device],[Name],[Kind],[Hash],[Size],[Source],"
                          "[Frames],[Tries],[Own],[Foreign],[Flags],[Begun],[Ended],[User],[Port],[Version],[Outcome],"
                          "[Reason]");
}

std::optional<LoadEntry> EntryOf(const QSqlQuery& row) {
    LoadEntry entry;
    int column = 0;
    const auto next = [&] { return row.value(column++); };
    entry.id = next().toLongLong();
    const auto event = ValueOf<LoadEntry::Event>(next().toString(), EventNames);
    entry.device = {static_cast<quint8>(next().toUInt()), static_cast<quint8>(next().toUInt()), DeviceIdentity::Direct};
    if (const QVariant hub = next(); !hub.isNull())
        entry.device.hub = static_cast<qint16>(hub.toInt());
    entry.key = next().toInt();
    entry.name = next().toString();
    const auto kind = ValueOf<LoadKind>(next().toString(), KindNames);
    entry.hash = next().toString();
    entry.size = next().toLongLong();
    entry.source = next().toString();
    for (qint32* count : {&entry.frames, &entry.tries, &entry.own, &entry.foreign})
        *count = next().toInt();
    for (QString* text : {&entry.flags, &entry.begun, &entry.ended, &entry.user, &entry.port, &entry.version})
        *text = next().toString();
    const auto end = ValueOf<LoadEntry::End>(next().toString(), EndNames);
    entry.reason = next().toString();
    const bool isWhole =
        event && (kind || *event == LoadEntry::Event::Asked) && (end || *event != LoadEntry::Event::Ended);
    if (!isWhole)
        return std::nullopt;
    entry.event = *event;
    entry.kind = kind.value_or(LoadKind::Members);
    entry.end = end.value_or(LoadEntry::End::CutOff);
    return entry;
}

} // namespace

QString NameOf(LoadKind kind) {
    switch (kind) {
    case LoadKind::Members:
        return QStringLiteral("member list");
    case LoadKind::Block:
        return QStringLiteral("configuration block");
    default:
        return TextOf(kind, KindNames);
    }
}

LoadRecord::LoadRecord(Database& database, EventLog& log)
    : m_database(database)
    , m_log(log) {}

QString LoadRecord::HashOf(const QByteArray& content) {
    return QString::fromLatin1(QCryptographicHash::hash(content, QCryptographicHash::Sha256).toHex());
}

Result<> LoadRecord::ReadIdentity() {
    if (const Result<> made = m_database.MakeOwnTables(); !made)
        return made;
    // A column that is missing would be found at the first load only.
    auto columns = m_database.Select({QStringLiteral("SELECT %1 FROM LoadRecord LIMIT 0").arg(Columns())});
    if (!columns)
        return Failure{columns.Error()};
    auto row = m_database.Select({QStringLiteral("SELECT [Identity] FROM LoadIdentity ORDER BY rowid LIMIT 1")});
    if (!row)
        return Failure{row.Error()};
    if (row->next() && !row->value(0).toString().isEmpty()) {
        m_identity = row->value(0).toString();
        return {};
    }
    row->finish();
    const QString made = QUuid::createUuid().toString(QUuid::WithoutBraces);
    const Result<> written =
        m_database.Run({QStringLiteral("INSERT INTO LoadIdentity ([Identity]) VALUES (?)"), {made}});
    if (written)
        m_identity = made;
    return written;
}

void LoadRecord::Open() {
    m_unwritten.clear();
    m_fault.clear();
    m_isKnown = false;
    if (!m_database.IsOpen()) {
        m_standings.clear();
        m_told.clear();
        m_lastGood.clear();
        m_fault = QStringLiteral("No database is open.");
        return;
    }
    if (const Result<> known = Learn(); !known) {
        m_fault = known.Error();
        m_log.WriteLog(QStringLiteral("Loads are not recorded: ") + m_fault, EventLog::Error);
    }
}

Result<> LoadRecord::Learn() {
    m_standings.clear();
    m_told.clear();
    m_lastGood.clear();
    m_identity.clear();
    Result<> known = ReadIdentity();
    if (known)
        known = ReadStandings();
    m_isKnown = static_cast<bool>(known);
    // What is not written yet counts all the same.
    for (const LoadEntry& entry : m_unwritten)
        Note(entry);
    return known;
}

Result<> LoadRecord::ReadStandings() {
    // What counts of each kind at each device: the last event, the last good load, the last one from a document.
    const QString select =
        QStringLiteral("SELECT [ID],%1 FROM LoadRecord WHERE [ID] IN ("
                       "SELECT MAX([ID]) FROM LoadRecord WHERE [Installation]=?1 "
                       "GROUP BY [Type],[Address],[HubAddress],[Kind],[Event],[Outcome],IFNULL([Source],'') LIKE "
                       "'%.bin%') ORDER BY [ID]");
    auto rows = m_database.Select({select.arg(Columns()), {m_identity}});
    while (rows && rows->next()) {
        if (const std::optional<LoadEntry> entry = EntryOf(*rows))
            Note(*entry);
    }
    if (!rows || rows->lastError().isValid())
        return Failure{rows ? Sqlite::TextOf(rows->lastError()) : rows.Error()};
    return {};
}

void LoadRecord::Note(const LoadEntry& entry) {
    if (entry.event == LoadEntry::Event::Asked) {
        m_told[entry.device] = {entry.flags, ++m_order};
        return;
    }
    Standing& standing = m_standings[{entry.device, entry.kind}];
    standing.order = ++m_order;
    standing.last = entry;
    standing.last.content.clear();
    if (!entry.source.isEmpty() && !entry.source.contains(QStringLiteral(".bin")))
        standing.document = entry.source;
    if (entry.event == LoadEntry::Event::Ended && entry.end == LoadEntry::End::Done) {
        standing.good = standing.last;
        m_lastGood[entry.kind] = standing.last;
    }
}

void LoadRecord::Append(LoadEntry entry) {
    entry.size = entry.content.size();
    if (entry.event == LoadEntry::Event::Ended && entry.hash.isEmpty())
        entry.hash = HashOf(entry.content);
    Note(entry);
    if (!m_database.IsOpen())
        return;
    if (m_unwritten.size() >= MostUnwritten)
        ForgetOne();
    m_unwritten.push_back(std::move(entry));
}

void LoadRecord::ForgetOne() {
    // Rather one that says nothing any more because the same was loaded again.
    auto oldest = m_unwritten.begin();
    while (oldest != m_unwritten.end() &&
           std::none_of(std::next(oldest), m_unwritten.end(), [&oldest](const LoadEntry& later) {
               return later.device == oldest->device && later.kind == oldest->kind &&
                      later.event == LoadEntry::Event::Begun;
           }))
        ++oldest;
    m_unwritten.erase(oldest == m_unwritten.end() ? m_unwritten.begin() : oldest);
}

void LoadRecord::Tell(const Result<>& written) {
    if (written.Error() == m_fault)
        return;
    m_fault = written.Error();
    if (written)
        m_log.WriteLog(QStringLiteral("Loads are recorded again."));
    else
        m_log.WriteLog(QStringLiteral("Loads are not recorded: ") + m_fault, EventLog::Error);
}

Result<> LoadRecord::Try() {
    if (m_unwritten.empty()) {
        Result<> taken = m_isKnown ? Result<>() : Learn();
        if (taken)
            taken = m_database.Run({QStringLiteral("UPDATE LoadIdentity SET [Identity]=[Identity]")});
        Tell(taken);
    } else {
        Flush();
    }
    return m_fault.isEmpty() ? Result<>() : Failure{m_fault};
}

void LoadRecord::Flush() {
    while (!m_unwritten.empty()) {
        const Result<> known = m_isKnown ? Result<>() : Learn();
        const Result<> written = known ? Write(m_unwritten.front()) : known;
        Tell(written);
        if (!written)
            return;
        m_unwritten.erase(m_unwritten.begin());
    }
}

Result<> LoadRecord::Write(const LoadEntry& entry) const {
    const QVariant none;
    const auto textOrNone = [&none](const QString& text) { return text.isEmpty() ? none : QVariant(text); };
    const bool isLoad = entry.event != LoadEntry::Event::Asked;
    const bool isEnd = entry.event == LoadEntry::Event::Ended;
    std::vector<Statement> statements;
    if (isEnd && !entry.content.isEmpty())
        statements.push_back({QStringLiteral("INSERT OR IGNORE INTO LoadPayload ([Hash],[Content]) VALUES (?,?)"),
                              {entry.hash, entry.content}});
    statements.push_back({QStringLiteral("INSERT INTO LoadRecord ([Installation],%1) "
                                         "VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)")
                              .arg(Columns()),
                          {m_identity,
                           TextOf(entry.event, EventNames),
                           entry.device.type,
                           entry.device.address,
                           entry.device.hub == DeviceIdentity::Direct ? none : QVariant(entry.device.hub),
                           entry.key,
                           entry.name,
                           isLoad ? QVariant(TextOf(entry.kind, KindNames)) : none,
                           textOrNone(entry.hash),
                           isEnd ? QVariant(entry.size) : none,
                           textOrNone(entry.source),
                           isEnd ? QVariant(entry.frames) : none,
                           isEnd ? QVariant(entry.tries) : none,
                           isEnd ? QVariant(entry.own) : none,
                           isEnd ? QVariant(entry.foreign) : none,
                           textOrNone(entry.flags),
                           entry.begun,
                           textOrNone(entry.ended),
                           entry.user,
                           entry.port,
                           entry.version,
                           isEnd ? QVariant(TextOf(entry.end, EndNames)) : none,
                           textOrNone(entry.reason)}});
    return m_database.RunTogether(statements);
}

const LoadRecord::Standing* LoadRecord::Of(const DeviceIdentity& device, LoadKind kind) const {
    const auto found = m_standings.find({device, kind});
    return found == m_standings.end() ? nullptr : &found->second;
}

const LoadEntry* LoadRecord::LastGood(LoadKind kind) const {
    const auto found = m_lastGood.find(kind);
    return found == m_lastGood.end() ? nullptr : &found->second;
}

QString LoadRecord::FlagsSince(const DeviceIdentity& device, LoadKind kind) const {
    const auto told = m_told.find(device);
    const Standing* const standing = Of(device, kind);
    const bool isSince = told != m_told.end() && (!standing || standing->order < told->second.order);
    return isSince ? told->second.flags : QString();
}

bool LoadRecord::IsNews(const DeviceIdentity& device, const QString& flags) const {
    return std::any_of(std::begin(LoadKinds), std::end(LoadKinds),
                       [&](LoadKind kind) { return kind != LoadKind::Clock && FlagsSince(device, kind) != flags; });
}

std::optional<QByteArray> LoadRecord::Content(const QString& hash) const {
    for (const LoadEntry& entry : m_unwritten) {
        if (entry.hash == hash)
            return entry.content;
    }
    auto row = m_database.Select({QStringLiteral("SELECT [Content] FROM LoadPayload WHERE [Hash]=?"), {hash}});
    if (!row || !row->next())
        return std::nullopt;
    const QByteArray content = row->value(0).toByteArray();
    // Others may have written there.
    if (HashOf(content) != hash)
        return std::nullopt;
    return content;
}

Result<std::vector<LoadEntry>> LoadRecord::Read(int most) const {
    // A beginning is told by its end, unless it never came to one.
    auto rows = m_database.Select(
        {QStringLiteral("SELECT [ID],%1 FROM LoadRecord AS one WHERE [Installation]=? AND ([Event]<>'begun' OR (SELECT "
                        "next.[Event] FROM LoadRecord AS next WHERE next.[Installation]=one.[Installation] AND "
                        "next.[Type]=one.[Type] AND next.[Address]=one.[Address] AND next.[HubAddress] IS "
                        "one.[HubAddress] AND next.[Kind]=one.[Kind] AND next.[ID]>one.[ID] ORDER BY next.[ID] LIMIT 1"
                        ") IS NOT 'ended') ORDER BY [ID] DESC LIMIT ?")
             .arg(Columns()),
         {m_identity, most}});
    if (!rows)
        return Failure{rows.Error()};
    std::vector<LoadEntry> entries;
    while (rows->next()) {
        if (const std::optional<LoadEntry> entry = EntryOf(*rows))
            entries.push_back(*entry);
    }
    if (rows->lastError().isValid())
        return Failure{Sqlite::TextOf(rows->lastError())};
    return entries;
}
