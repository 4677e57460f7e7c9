#include "station/AddressScan.h"

#include "link/Encodings.h"
#include "tickets/VniText.h"

#include <QCoreApplication>

namespace {

QString Said(const char* text) {
    return QCoreApplication::translate("AddressScan", text);
}

constexpr int Addresses = encoding::LargestSmallNumber; ///< 0 to that, less the broadcast

} // namespace

AddressScan::Place AddressScan::PlaceOf(qint16 hub) const {
    if (hub < 0)
        return {};
    const model::QObject& object = m_installation.Object(hub);
    return {hub, object.Id, object.Name, object.Address, Bus::RelayTimeout};
}

QCoro::Task<AskingEnd> AddressScan::Run(bool behindHubs, Step step) {
    m_result = {};
    m_step = std::move(step);
    m_lastAnswered.reset();
    m_twice.clear();
    const std::vector<qint16> hubs = behindHubs ? m_installation.ObjectsOf(model::Hub) : std::vector<qint16>{};
    m_total = Addresses * (1 + static_cast<int>(hubs.size()));
    if (!m_step(0, 0, m_total))
        co_return AskingEnd::Cancelled;
    m_result.echo = co_await m_inquiry.LookForEcho();
    if (m_result.echo.has || m_result.echo.lacks)
        co_return AskingEnd::Done;
    const Place bus = PlaceOf(-1);
    AskingEnd end = co_await Search(bus);
    for (std::size_t i = 0; i < hubs.size() && end == AskingEnd::Done; ++i) {
        const Place behind = PlaceOf(hubs[i]);
        if (Answers(behind.hubAddress, 0)) {
            end = co_await Search(behind);
            continue;
        }
        m_result.asked += Addresses;
        for (const model::QObject& object : m_installation.LoadedObjects()) {
            if (object.HubId == behind.hubId)
                Add(behind, object.Address, Kind::BehindSilentHub, object.Name);
        }
    }
    Finish();
    co_return end;
}

QCoro::Task<AskingEnd> AddressScan::Search(Place place) {
    m_largest = {};
    m_heard.clear();
    std::set<quint8> known;
    for (qint16 i = 0; i < m_installation.NumObjects; ++i) {
        const model::QObject& object = m_installation.Object(i);
        if (object.HubId != place.hubId || !Inquiry::IsDeviceAddress(object.Address))
            continue;
        known.insert(object.Address);
        const AskingEnd end = co_await AskKnown(place, i);
        if (end != AskingEnd::Done)
            co_return end;
    }
    const auto measured = std::chrono::ceil<std::chrono::milliseconds>(TimesLargest * m_largest);
    const auto timeout = m_largest.count() == 0 ? place.full : std::clamp(measured, ShortestWait, place.full);
    for (int address = 0; address <= encoding::LargestSmallNumber; ++address) {
        const auto asked = static_cast<quint8>(address);
        if (!Inquiry::IsDeviceAddress(address) || known.contains(asked))
            continue;
        const AskingEnd end = co_await AskOther(place, asked, timeout);
        if (end != AskingEnd::Done)
            co_return end;
    }
    // Behind a hub every head has the hub's address.
    if (place.hubId != 0)
        co_return AskingEnd::Done;
    for (const quint8 address : std::set<quint8>(m_heard)) {
        if (!Inquiry::IsDeviceAddress(address) || known.contains(address) || Answers(address, 0))
            continue;
        const AskingEnd end = co_await AskOnceMore(place, address);
        if (end != AskingEnd::Done)
            co_return end;
    }
    co_return AskingEnd::Done;
}

QCoro::Task<Hearing> AddressScan::Ask(Place place, quint8 address, std::chrono::milliseconds timeout) {
    Hearing heard;
    if (place.hubId == 0)
        heard = co_await m_inquiry.Ask(address, timeout);
    else
        heard = co_await m_inquiry.AskBehind(place.hubAddress, address, timeout);
    if (heard.isBeforeTwice && m_lastAnswered)
        m_twice.insert(*m_lastAnswered);
    if (heard.isAnswered)
        m_lastAnswered = {address, place.hubId};
    m_heard.insert(heard.others.begin(), heard.others.end());
    co_return heard;
}

QCoro::Task<AskingEnd> AddressScan::AskKnown(Place place, qint16 object) {
    const quint8 address = m_installation.Object(object).Address;
    const QString name = m_installation.Object(object).Name;
    const bool isDisplay = m_installation.Object(object).Type == model::Display;
    Hearing all;
    for (int question = 0; question < 2 && !all.isAnswered; ++question) {
        if (!m_step(address, m_result.asked, m_total))
            co_return AskingEnd::Cancelled;
        const Hearing heard = co_await Ask(place, address, place.full);
        if (!heard.wasAsked)
            co_return AskingEnd::LineClosed;
        all.isAnswered = heard.isAnswered;
        all.foreign += heard.foreign;
        all.badSums += heard.badSums;
        all.noise += heard.noise;
        m_largest = std::max(m_largest, heard.trip);
    }
    ++m_result.asked;
    if (all.isAnswered)
        Add(place, address, Kind::Known, name);
    else if (all.IsDisturbed())
        Add(place, address, Kind::Twins, name);
    else if (all.foreign > 0)
        Add(place, address, Kind::Foreign, name);
    else
        Add(place, address, isDisplay ? Kind::SilentDisplay : Kind::Silent, name);
    co_return AskingEnd::Done;
}

QCoro::Task<AskingEnd> AddressScan::AskOther(Place place, quint8 address, std::chrono::milliseconds timeout) {
    if (!m_step(address, m_result.asked, m_total))
        co_return AskingEnd::Cancelled;
    const Hearing heard = co_await Ask(place, address, timeout);
    if (!heard.wasAsked)
        co_return AskingEnd::LineClosed;
    ++m_result.asked;
    // What a hub relays does not tell whose it is. After ten quick questions sequence digits come again, and what comes
    // late may fit; after a wait in full it does not.
    const bool isSure = place.hubId == 0 || timeout == place.full;
    if (heard.isAnswered && isSure)
        Add(place, address, Kind::Unknown);
    else if (!heard.IsNothing())
        co_return co_await AskOnceMore(place, address);
    co_return AskingEnd::Done;
}

QCoro::Task<AskingEnd> AddressScan::AskOnceMore(Place place, quint8 address) {
    if (!m_step(address, m_result.asked, m_total))
        co_return AskingEnd::Cancelled;
    const Hearing heard = co_await Ask(place, address, place.full);
    if (!heard.wasAsked)
        co_return AskingEnd::LineClosed;
    if (heard.isAnswered)
        Add(place, address, Kind::Unknown);
    else if (heard.IsDisturbed())
        Add(place, address, Kind::Twins);
    else if (heard.foreign > 0 || place.hubId != 0)
        Add(place, address, Kind::Foreign);
    co_return AskingEnd::Done;
}

bool AddressScan::Answers(quint8 address, qint32 hubId) const {
    return std::any_of(m_result.rows.begin(), m_result.rows.end(), [=](const Row& row) {
        return row.address == address && row.hubId == hubId && row.kind <= Kind::Elsewhere;
    });
}

void AddressScan::Add(const Place& place, quint8 address, Kind kind, const QString& name) {
    Row row{address, place.hubId, place.hubName, name, kind};
    if (kind == Kind::Unknown) {
        for (const model::QObject& object : m_installation.LoadedObjects()) {
            if (object.Address != address)
                continue;
            row.kind = Kind::Elsewhere;
            row.name = object.Name;
        }
    }
    m_result.rows.push_back(row);
}

void AddressScan::Finish() {
    std::vector<Row>& rows = m_result.rows;
    for (Row& row : rows) {
        if (m_twice.contains({row.address, row.hubId}))
            row.kind = Kind::Twins;
    }
    const auto isTwins = [](const Row& row) { return row.kind == Kind::Twins; };
    if (std::count_if(rows.begin(), rows.end(), isTwins) > MostTwins) {
        for (Row& row : rows)
            row.kind = isTwins(row) ? Kind::Disturbed : row.kind;
    }
    const auto place = [this](const Row& row) {
        return std::pair(row.hubId == 0 ? -1 : m_installation.FindObjectById(row.hubId), row.address);
    };
    std::stable_sort(rows.begin(), rows.end(), [&](const Row& a, const Row& b) { return place(a) < place(b); });
}

void AddressScan::NoteAdded(quint8 address, qint32 hubId, const QString& name) {
    for (Row& row : m_result.rows) {
        if (row.address != address || row.hubId != hubId)
            continue;
        row.kind = Kind::Known;
        row.name = name;
    }
}

QString AddressScan::TextOf(const Row& row) {
    switch (row.kind) {
    case Kind::Known:
        return Said(QT_TRANSLATE_NOOP("AddressScan", "answers"));
    case Kind::Unknown:
        return Said(QT_TRANSLATE_NOOP("AddressScan", "answers but is not in the database"));
    case Kind::Elsewhere:
        return Said(QT_TRANSLATE_NOOP("AddressScan", "answers here, but stands elsewhere in the database"));
    case Kind::Silent:
        return Said(QT_TRANSLATE_NOOP("AddressScan", "in the database but silent"));
    case Kind::SilentDisplay:
        return Said(QT_TRANSLATE_NOOP("AddressScan", "does not answer P, which displays may not"));
    case Kind::BehindSilentHub:
        return Said(QT_TRANSLATE_NOOP("AddressScan", "behind hub %1, which is silent"))
            .arg(vni::ToUnicode(row.hubName));
    case Kind::Foreign:
        return Said(QT_TRANSLATE_NOOP("AddressScan", "another device answers, or the answer comes too late"));
    case Kind::Twins:
        return Said(QT_TRANSLATE_NOOP("AddressScan", "noise, bad sums or two answers at this address only, probably "
                                                     "two devices with that address"));
    case Kind::Disturbed:
        return Said(QT_TRANSLATE_NOOP("AddressScan", "noise or bad sums, as at other addresses"));
    }
    return {};
}

QString AddressScan::SummaryOf(const Result& result) {
    if (result.echo.has) {
        return Said(QT_TRANSLATE_NOOP("AddressScan", "The adapter echoes what is sent, so that every address seems to "
                                                     "answer: nothing was searched."));
    }
    if (result.echo.lacks) {
        return Said(QT_TRANSLATE_NOOP("AddressScan", "The station passes over an echo that does not come, and answers "
                                                     "with it: nothing was searched."));
    }
    int known = 0;
    int unknown = 0;
    int missing = 0;
    for (const Row& row : result.rows) {
        known += row.kind == Kind::Known ? 1 : 0;
        unknown += row.kind == Kind::Unknown || row.kind == Kind::Elsewhere ? 1 : 0;
        missing += row.kind == Kind::Silent || row.kind == Kind::BehindSilentHub ? 1 : 0;
    }
    return Said(QT_TRANSLATE_NOOP("AddressScan", "Addresses asked: %1. In the database and answering: %2, silent: %3. "
                                                 "Answering and not in the database: %4."))
        .arg(result.asked)
        .arg(known)
        .arg(missing)
        .arg(unknown);
}
