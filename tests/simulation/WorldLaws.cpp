// What must hold in a world.

#include "core/IniUtility.h"
#include "link/Encodings.h"
#include "simulator/FaultyDisk.h"
#include "tests/simulation/World.h"

#include <QCryptographicHash>
#include <QDir>

#include <sqlite3.h>

void World::CheckAnswered(const Running& running, model::ObjectType type, char letter) {
    const model::Installation& model = m_station->Model();
    for (const qint16 index : model.ObjectsOf(type)) {
        const model::QObject& object = model.Object(index);
        LineLaws::Command command = QByteArray::number(object.Address) + ' ' + letter;
        const std::optional<model::HubPlace> place = model.PlaceBehindHub(index);
        if (letter == 'N' && object.HubId != 0 && place)
            command = QByteArray::number(model.Object(place->hub).Address) + " N " +
                      QByteArray::number(object.Address) + " N";
        const auto tried = running.tried.find(command);
        if (tried == running.tried.end() || !tried->second)
            Break(QStringLiteral("\"%1\" says done, and %2 was not answered")
                      .arg(running.name, QString::fromLatin1(command)));
    }
}

void World::CheckFound(const Running& running) {
    for (const auto& [command, answered] : running.tried) {
        if (!running.isBeside && !command.endsWith(" P"))
            Break(QStringLiteral("\"%1\" sends %2").arg(running.name, QString::fromLatin1(command)));
    }
    if (!running.outcome.IsDone() || m_isDirty)
        return;
    const bool isTest = running.name == u"TestLine";
    const bool isBehind = isTest || running.name == u"ScanBehindHubs";
    std::set<QString> expected;
    for (const model::QObject& object : m_station->Model().LoadedObjects()) {
        if (object.HubId == 0 || isBehind)
            expected.insert(QStringLiteral("%1 %2").arg(object.Address).arg(object.Type != model::Display));
    }
    std::set<QString> found;
    for (const LineTest::Device& device : m_station->Tested().devices) {
        const bool isHealthy = device.verdict == LineTest::Verdict::Healthy;
        if (isTest && (isHealthy || device.verdict == LineTest::Verdict::SilentDisplay))
            found.insert(QStringLiteral("%1 %2").arg(device.address).arg(isHealthy));
    }
    for (const AddressScan::Row& row : m_station->Scanned().rows) {
        const bool isKnown = row.kind == AddressScan::Kind::Known;
        const QString what = isKnown || row.kind == AddressScan::Kind::SilentDisplay ? QString::number(isKnown)
                                                                                     : AddressScan::TextOf(row);
        if (!isTest)
            found.insert(QStringLiteral("%1 %2").arg(row.address).arg(what));
    }
    if (found != expected)
        Break(QStringLiteral("\"%1\" finds %2 on a line without faults, not %3")
                  .arg(running.name, QStringList(found.begin(), found.end()).join(u','),
                       QStringList(expected.begin(), expected.end()).join(u',')));
}

void World::CheckOutcome(const Running& running) {
    CheckModel();
    if (!m_station || IsOver())
        return;
    const Outcome& outcome = running.outcome;
    const bool anyMissed =
        std::any_of(running.tried.begin(), running.tried.end(), [](const auto& t) { return !t.second; });
    if (!outcome.silent.isEmpty() && !anyMissed && m_line->IsOpen() && !m_isDirty)
        Break(QStringLiteral("\"%1\" calls %2 silent, and all was answered")
                  .arg(running.name, outcome.silent.join(u',')));
    // What goes directly to a device behind a hub is not answered.
    const bool isDirect = running.name != u"InitAllObjects" && running.name != u"SetPrinterClocks";
    if (!m_isDirty && running.runsAlone && outcome.end == Outcome::End::Failed && !outcome.silent.isEmpty() && isDirect)
        Break(QStringLiteral("\"%1\" fails on a line without faults: %2").arg(running.name, outcome.silent.join(u',')));
    if (running.runsAlone && (running.name == u"TestLine" || running.name.startsWith(QStringLiteral("Scan"))))
        CheckFound(running);
    if (running.name == u"ResetSystem" || running.name == u"DeleteTickets")
        CheckTickets(outcome);
    if (running.name == u"SetHubCounter" && outcome.IsDone() && !FaultyDisk::Instance().IsDead()) {
        m_possibleSettings[QStringLiteral("options/FromToval")] = {QString::number(m_station->Settings().FromToval)};
    }
    const bool wasEdited = running.editsBefore != m_edits;
    CheckHoldings();
    if (running.name.startsWith(u"Commission") || running.name == u"VerifyHall")
        CheckCommissioned(running, wasEdited);
    if (!outcome.IsDone())
        return;
    const Reference reference(m_shadow, m_isRouted);
    QString fault;
    if (running.name == u"SetServiceConfig" || running.name == u"ConfigPrinters") {
        CheckAnswered(running, model::Printer, 'N');
        if (!m_isDirty && !wasEdited && running.name == u"SetServiceConfig")
            fault = reference.PrinterFault(*m_line);
    } else if (running.name == u"SetHubs") {
        CheckAnswered(running, model::Hub, 'L');
        if (!m_isDirty && !wasEdited)
            fault = reference.HubFault(*m_line);
    } else if (running.name == u"InitHubs" || running.name == u"InitAllObjects") {
        CheckAnswered(running, model::Hub, 'W');
        if (!m_isDirty)
            fault = reference.MemberFault(*m_line);
    } else if (running.name == u"ResetSystem" && !m_isDirty && !wasEdited && !m_station->Init().IsCancelled()) {
        for (const model::QObject& object : m_station->Model().LoadedObjects()) {
            const LineLaws::Command command = QByteArray::number(object.Address) + " S";
            if (object.Type != model::Hub && !running.tried.contains(command))
                Break(
                    QStringLiteral("\"ResetSystem\" says done, and %1 was not sent").arg(QString::fromLatin1(command)));
        }
    } else if (running.name == u"SendFormToAll" && !m_isDirty && !Happens(QStringLiteral("full")) &&
               !Happens(QStringLiteral("flush"))) {
        const std::optional<QByteArray> form = ReadFormFile(m_folder.filePath(QStringLiteral("Ticket.bin")));
        for (const qint16 index : m_station->Model().ObjectsOf(model::Printer)) {
            const auto* const printer = m_line->FindAs<TicketPrinter>(m_station->Model().Object(index).Address);
            if (!form || printer->Form() != *form)
                fault = printer->Title() + QStringLiteral(" holds another form");
        }
    } else if (running.name == u"SetHubClocks") {
        CheckAnswered(running, model::Hub, 'U');
        for (const qint16 hub : m_station->Model().ObjectsOf(model::Hub)) {
            const QByteArray clock = m_line->Find(m_station->Model().Object(hub).Address)->ClockText();
            if (!m_isDirty && clock != encoding::ClockText(m_clock->Now().addMSecs((running.begun - m_timeline.Now()) /
                                                                                   std::chrono::milliseconds(1))))
                fault = QStringLiteral("a hub has another time");
        }
    } else if (running.name == u"SetHubCounter") {
        CheckAnswered(running, model::Hub, 'K');
    }
    if (!fault.isEmpty())
        Break(QStringLiteral("\"%1\" says done on a line without faults, but %2").arg(running.name, fault));
}

void World::CheckTickets(const Outcome& outcome) {
    if (FaultyDisk::Instance().IsDead())
        return;
    // A delete of years works in pieces, each of which is whole.
    const int stored = StoredTickets();
    if (outcome.end == Outcome::End::Cancelled && stored >= 0 && !m_possibleTickets.contains(stored))
        Break(QStringLiteral("%1 tickets in the store after what was cancelled").arg(stored));
    if (outcome.end == Outcome::End::Cancelled && stored == 0 && m_ticketsBefore > 0)
        Break(QStringLiteral("what was cancelled has deleted the tickets"));
    if (stored >= 0) {
        m_possibleTickets = {stored};
        m_ticketsBefore = stored;
    }
}

void World::CheckModel() {
    if (!m_station)
        return;
    const auto check = [this](const model::TicketRing& ring, const QString& who) {
        if (ring.Count < 0 || ring.Count > ring.Capacity || ring.Capacity > model::TicketRing::Size || ring.Head < 0 ||
            ring.Head >= model::TicketRing::Size || ring.Tail < 0 || ring.Tail >= model::TicketRing::Size)
            Break(QStringLiteral("the ring of %1 runs over").arg(who));
    };
    const model::Installation& model = m_station->Model();
    for (const model::QService& service : model.LoadedServices()) {
        check(service.WaitRing, service.Name);
        check(service.FlaggedRing, service.Name);
    }
    for (const model::QObject& object : model.LoadedObjects()) {
        check(object.WaitRing, object.Name);
        check(object.FlaggedRing, object.Name);
    }
}

void World::CheckStatistics() {
    const LineStatistics::Counters& all = m_station->Statistics().All();
    if (all.commands + all.retries != m_laws->Tries - m_triesBefore)
        Break(QStringLiteral("%1 commands and %2 retries counted, %3 tries made")
                  .arg(all.commands)
                  .arg(all.retries)
                  .arg(m_laws->Tries - m_triesBefore));
    if (!m_isDirty && all.foreign + all.badSums + all.unasked != 0)
        Break(QStringLiteral("%1 foreign answers, %2 bad sums and %3 frames unasked on a line without faults")
                  .arg(all.foreign)
                  .arg(all.badSums)
                  .arg(all.unasked));
    if (m_isStrict && m_laws->Foreign != 0)
        Break(QStringLiteral("%1 foreign answers were taken by a strict station").arg(m_laws->Foreign));
    if (m_laws->Foreign > all.foreign)
        Break(QStringLiteral("%1 foreign answers counted, %2 taken").arg(all.foreign).arg(m_laws->Foreign));
}

QByteArray World::Digest(sqlite3* store) const {
    QCryptographicHash hash(QCryptographicHash::Md5);
    for (const char* table :
         {"Queue", "[Queue-Display]", "ScanPlan", "(SELECT inf_Id,d_Id,Dir_Id FROM [Info-Direction])", "Hub",
          "(SELECT d_Id,d_Number,d_Address,d_Name,d_On,d_Type,d_HubId FROM Display)"}) {
        sqlite3_stmt* query = nullptr;
        const QByteArray statement = QByteArray("SELECT * FROM ") + table + " ORDER BY 1,2";
        if (sqlite3_prepare_v2(store, statement.constData(), -1, &query, nullptr) != SQLITE_OK)
            return "unreadable: " + QByteArray(sqlite3_errmsg(store));
        while (sqlite3_step(query) == SQLITE_ROW) {
            for (int i = 0; i < sqlite3_column_count(query); ++i) {
                hash.addData(QByteArrayView(reinterpret_cast<const char*>(sqlite3_column_text(query, i)),
                                            sqlite3_column_bytes(query, i)));
                hash.addData(QByteArrayView("|"));
            }
        }
        sqlite3_finalize(query);
    }
    return hash.result().toHex();
}

QByteArray World::StoredDigest() {
    sqlite3* store = nullptr;
    sqlite3_open_v2(m_store.toUtf8().constData(), &store, SQLITE_OPEN_READWRITE, nullptr);
    const QByteArray digest = Digest(store);
    sqlite3_close(store);
    return digest;
}

int World::StoredTickets() {
    sqlite3* store = nullptr;
    sqlite3_open_v2(m_store.toUtf8().constData(), &store, SQLITE_OPEN_READWRITE, nullptr);
    sqlite3_stmt* query = nullptr;
    sqlite3_prepare_v2(store, "SELECT COUNT(*) FROM rData", -1, &query, nullptr);
    const int count = query && sqlite3_step(query) == SQLITE_ROW ? sqlite3_column_int(query, 0) : -1;
    sqlite3_finalize(query);
    sqlite3_close(store);
    return count;
}

void World::CheckDisk(bool wasCrash) {
    m_hasCrashed |= wasCrash;
    const auto check = [this](const QString& path, const std::set<QByteArray>& possible) {
        sqlite3* store = nullptr;
        sqlite3_open_v2(path.toUtf8().constData(), &store, SQLITE_OPEN_READWRITE, nullptr);
        sqlite3_stmt* query = nullptr;
        sqlite3_prepare_v2(store, "PRAGMA integrity_check", -1, &query, nullptr);
        const QByteArray whole = query && sqlite3_step(query) == SQLITE_ROW
                                     ? QByteArray(reinterpret_cast<const char*>(sqlite3_column_text(query, 0)))
                                     : QByteArray(sqlite3_errmsg(store));
        sqlite3_finalize(query);
        const QByteArray digest = Digest(store);
        sqlite3_close(store);
        const QString name = path.section(u'/', -1);
        if (whole != "ok")
            Break(QStringLiteral("%1 is damaged: %2").arg(name, QString::fromUtf8(whole)));
        else if (!possible.contains(digest) && !m_isAnyPossible)
            Break(QStringLiteral("%1 is neither the old nor the new one").arg(name));
    };
    // The other program that held the store is gone too.
    if (wasCrash || m_possible.size() == 1)
        check(m_store, m_possible);
    if (!m_other)
        CheckHistory();
    const QDir folder(m_folder.path());
    const bool isWell = !m_hasCrashed && !Happens(QStringLiteral("full")) && !Happens(QStringLiteral("flush")) &&
                        !Happens(QStringLiteral("busy"));
    const int weekday = m_endedOn.dayOfWeek() % 7 + 1;
    if (!wasCrash && isWell && !folder.exists(QStringLiteral("bak%1.mdb").arg(weekday)))
        Break(QStringLiteral("no backup was made at the end"));
    for (const QString& name : folder.entryList({QStringLiteral("bak*.mdb")}))
        check(folder.filePath(name), m_states);
    if (const int tickets = StoredTickets(); tickets < 0)
        Trace(QStringLiteral("another program still holds the store"));
    else if (!m_possibleTickets.contains(tickets) && m_possibleTickets.size() == 1)
        Break(QStringLiteral("%1 tickets in the store, not %2").arg(tickets).arg(*m_possibleTickets.begin()));
    else
        m_possibleTickets = {m_ticketsBefore = tickets};
    const IniUtility ini(m_folder.filePath(QStringLiteral("Tallora.ini")));
    for (auto& [name, possible] : m_possibleSettings) {
        QString value;
        ini.ReadIni(name.section(u'/', 0, 0), name.section(u'/', 1), value);
        if (!possible.contains(value))
            Break(QStringLiteral("the setting %1 is \"%2\"").arg(name, value));
        possible = {value};
    }
    if (m_possibleSettings[QStringLiteral("options/WakeupTime")] !=
        m_possibleSettings[QStringLiteral("options/KeyDelayTime")])
        Break(QStringLiteral("of two settings that were saved together one is old and one is new"));
    for (const QString& name : folder.entryList({QStringLiteral("Ticket*.bin")})) {
        const std::optional<QByteArray> form = ReadFormFile(folder.filePath(name));
        if (!form || !VerifyFormChecksum(*form))
            Break(QStringLiteral("%1 is damaged").arg(name));
    }
    // What a crash left of a journal goes with the next change of the store.
    const QStringList unfinished = m_hasCrashed ? QStringList{QStringLiteral("*.saving")}
                                                : QStringList{QStringLiteral("*.saving"), QStringLiteral("*-journal")};
    if (!wasCrash && !folder.entryList(unfinished).isEmpty())
        Break(QStringLiteral("the program left an unfinished file behind"));
    if (wasCrash) {
        // What the store holds now is what it has to hold from now on.
        FollowStore();
        m_isAnyPossible = false;
        m_done.clear();
        m_undone.clear();
    }
}
