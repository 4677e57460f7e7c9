#include "station/LineTest.h"

#include "tickets/VniText.h"

#include <QCoreApplication>

namespace {

constexpr int MostNames = 6; ///< in a sentence

QString Said(const char* text) {
    return QCoreApplication::translate("LineTest", text);
}

} // namespace

void LineTest::List() {
    m_result = {};
    m_lastAnswered = -1;
    for (qint16 i = 0; i < m_installation.NumObjects; ++i) {
        const model::QObject& object = m_installation.Object(i);
        Device& device = m_result.devices.emplace_back();
        device.name = object.Name;
        device.address = object.Address;
        device.type = object.Type;
        device.isBehindHub = object.HubId != 0;
        if (!device.isBehindHub)
            continue;
        const std::optional<model::HubPlace> place = m_installation.PlaceBehindHub(i);
        device.hub = place ? place->hub : m_installation.FindObjectById(object.HubId);
        device.hubName = device.hub < 0 ? QString() : m_installation.Object(device.hub).Name;
        if (!place)
            device.verdict = Verdict::NotListed;
        else if (!Inquiry::IsDeviceAddress(m_installation.Object(place->hub).Address))
            device.verdict = Verdict::NoAddress;
    }
    for (Device& device : m_result.devices) {
        if (!Inquiry::IsDeviceAddress(device.address))
            device.verdict = Verdict::NoAddress;
    }
}

QCoro::Task<AskingEnd> LineTest::Run(int rounds, Step step) {
    List();
    rounds = std::clamp(rounds, 1, MostRounds);
    const int devices = static_cast<int>(m_result.devices.size());
    const int total = rounds * devices;
    if (!step({}, 0, total))
        co_return AskingEnd::Cancelled;
    m_result.echo = co_await m_inquiry.LookForEcho();
    for (int done = 0; done < total; ++done) {
        const auto index = static_cast<qint16>(done % devices);
        Device& device = m_result.devices[static_cast<std::size_t>(index)];
        if (device.verdict == Verdict::NotListed || device.verdict == Verdict::NoAddress)
            continue;
        if (!step(device.name, done, total))
            co_return AskingEnd::Cancelled;
        const Hearing heard = co_await m_inquiry.AskObject(index);
        if (!heard.wasAsked)
            co_return AskingEnd::LineClosed;
        // What came twice belongs to whoever answered before.
        if (heard.isBeforeTwice && m_lastAnswered >= 0)
            m_result.devices[static_cast<std::size_t>(m_lastAnswered)].isTwice = true;
        if (heard.isAnswered)
            m_lastAnswered = index;
        Note(device, heard);
        Judge();
    }
    co_return AskingEnd::Done;
}

void LineTest::Note(Device& device, const Hearing& heard) {
    ++device.asked;
    device.foreign += heard.foreign;
    device.badSums += heard.badSums;
    device.noise += heard.noise;
    if (!heard.isAnswered) {
        ++device.silent;
        return;
    }
    ++device.answers;
    device.asSent += heard.isAsSent ? 1 : 0;
    device.trips.Add(heard.trip);
    device.slow += heard.beyondWire > (device.isBehindHub ? SlowBehindHub : SlowDirect) ? 1 : 0;
}

void LineTest::Judge() {
    for (Device& device : m_result.devices) {
        if (device.asked > 0)
            device.verdict = VerdictOf(device);
    }
}

LineTest::Verdict LineTest::VerdictOf(const Device& device) const {
    if (m_result.echo.has && (device.answers > 0 || device.foreign > 0))
        return Verdict::OnlyEcho;
    if (device.isTwice)
        return Verdict::TwoDevices;
    // An answer of another one that only came late stands beside the device's own.
    if (device.foreign > 0 && device.silent > 0)
        return Verdict::AnotherDevice;
    if (device.answers == 0) {
        if (device.badSums > 0 || device.noise > 0)
            return Verdict::Disturbed;
        if (device.hub >= 0) {
            const Device& hub = m_result.devices[static_cast<std::size_t>(device.hub)];
            if (hub.asked > 0 && hub.answers == 0)
                return Verdict::BehindSilentHub;
        }
        return device.type == model::Display ? Verdict::SilentDisplay : Verdict::Silent;
    }
    if (device.silent > 0 || device.badSums > 0 || device.noise > 0 || device.foreign > 0)
        return Verdict::Disturbed;
    return 2 * device.slow >= device.answers ? Verdict::Slow : Verdict::Healthy;
}

QString LineTest::TextOf(const Device& device) {
    switch (device.verdict) {
    case Verdict::NotAsked:
        return {};
    case Verdict::Healthy:
        return Said(QT_TRANSLATE_NOOP("LineTest", "healthy"));
    case Verdict::Slow:
        return Said(QT_TRANSLATE_NOOP("LineTest", "slow"));
    case Verdict::Disturbed:
        return Said(QT_TRANSLATE_NOOP("LineTest", "disturbed"));
    case Verdict::TwoDevices:
        return Said(QT_TRANSLATE_NOOP("LineTest", "two devices answer at this address"));
    case Verdict::AnotherDevice:
        return Said(QT_TRANSLATE_NOOP("LineTest", "another device answers"));
    case Verdict::OnlyEcho:
        return Said(QT_TRANSLATE_NOOP("LineTest", "only an echo"));
    case Verdict::Silent:
        return Said(QT_TRANSLATE_NOOP("LineTest", "silent"));
    case Verdict::BehindSilentHub:
        return Said(QT_TRANSLATE_NOOP("LineTest", "behind hub %1, which is silent"))
            .arg(vni::ToUnicode(device.hubName));
    case Verdict::SilentDisplay:
        return Said(QT_TRANSLATE_NOOP("LineTest", "does not answer P, which displays may not"));
    case Verdict::NotListed:
        return Said(QT_TRANSLATE_NOOP("LineTest", "not in its hub's list"));
    case Verdict::NoAddress:
        return Said(QT_TRANSLATE_NOOP("LineTest", "no device can have this address"));
    }
    return {};
}

QString LineTest::SummaryOf(const Result& result) {
    QStringList sentences;
    if (result.echo.has) {
        sentences += Said(QT_TRANSLATE_NOOP("LineTest", "The adapter echoes what is sent, and the station takes that "
                                                        "for answers: nothing here tells of a device."));
    }
    if (result.echo.lacks) {
        sentences += Said(QT_TRANSLATE_NOOP("LineTest", "The station passes over an echo that does not come, and "
                                                        "answers with it."));
    }
    if (result.echo.stranger) {
        sentences += Said(QT_TRANSLATE_NOOP("LineTest", "Something answers at address %1, which nobody has."))
                         .arg(*result.echo.stranger);
    }
    int asked = 0;
    int healthy = 0;
    int displays = 0;
    QStringList others;
    for (const Device& device : result.devices) {
        asked += device.verdict == Verdict::NotAsked ? 0 : 1;
        healthy += device.verdict == Verdict::Healthy ? 1 : 0;
        displays += device.verdict == Verdict::SilentDisplay ? 1 : 0;
        // A display that is silent is no reason to go and look.
        if (device.verdict > Verdict::Healthy && device.verdict != Verdict::SilentDisplay)
            others += vni::ToUnicode(device.name);
    }
    if (const qsizetype more = others.size() - MostNames; more > 0)
        others = others.first(MostNames) + QStringList{Said(QT_TRANSLATE_NOOP("LineTest", "%1 more")).arg(more)};
    sentences += Said(QT_TRANSLATE_NOOP("LineTest", "Healthy: %1 of %2 devices.")).arg(healthy).arg(asked);
    if (displays > 0)
        sentences += Said(QT_TRANSLATE_NOOP("LineTest", "Displays that do not answer, as they may: %1.")).arg(displays);
    if (!others.isEmpty() && !result.echo.has && !result.echo.lacks) {
        sentences += Said(QT_TRANSLATE_NOOP("LineTest", "To be looked at: %1.")).arg(others.join(QStringLiteral(", ")));
    }
    return sentences.join(u' ');
}
