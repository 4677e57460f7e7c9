#include "station/Commissioning.h"

#include "core/Installation.h"
#include "hubs/DeviceClocks.h"
#include "hubs/HubConfig.h"
#include "hubs/HubRouter.h"
#include "platform/Clock.h"
#include "printers/PrinterConfig.h"
#include "printers/TicketForms.h"
#include "station/Inquiry.h"
#include "station/LoadWatch.h"
#include "tickets/VniText.h"

#include <algorithm>

namespace {

constexpr int AskTimes = 3;
constexpr int LoadTimes = 4;  ///< once, and anew up to three times
constexpr int TableTimes = 2; ///< whose rows are sent again one by one
/// The frames of letters go out once each, so that on a bad line hardly any load of them is whole.
constexpr int LetterTimes = 10;

} // namespace

Commissioning::Commissioning(Parts parts)
    : m_parts(std::move(parts)) {}

QString Commissioning::NameOfDevice(qint16 object) const {
    return vni::ToUnicode(m_parts.installation.Object(object).Name);
}

DeviceIdentity Commissioning::Identity(qint16 object) const {
    return IdentityOf(m_parts.installation, m_parts.installation.Object(object));
}

Commissioning::Visit& Commissioning::VisitOf(qint16 object) {
    return m_visits[m_parts.installation.Object(object).Id];
}

Payloads Commissioning::MakePayloads() const {
    return Payloads({m_parts.installation, m_parts.forms, m_parts.record, m_parts.clock, m_parts.counterListOfService,
                     m_parts.log});
}

QString Commissioning::WordsOf(qint32 key) const {
    const auto found = m_visits.find(key);
    if (found == m_visits.end())
        return {};
    const Visit& visit = found->second;
    if (visit.loading)
        return tr("loading: %1").arg(::NameOf(*visit.loading));
    if (visit.isAsked)
        return tr("being asked");
    switch (visit.answer) {
    case Visit::Answer::NotAsked:
    case Visit::Answer::Answered:
        return {};
    case Visit::Answer::Silent:
        return tr("silent");
    case Visit::Answer::OtherAnswers:
        return tr("another device answers");
    case Visit::Answer::NotListed:
        return tr("not in its hub's list");
    case Visit::Answer::BehindSilent:
        break;
    }
    const qint16 object = m_parts.installation.FindObjectById(key);
    const qint16 hub =
        object < 0 ? qint16(-1) : m_parts.installation.FindObjectById(m_parts.installation.Object(object).HubId);
    return hub < 0 ? tr("behind a silent hub") : tr("behind hub %1, which is silent").arg(NameOfDevice(hub));
}

std::chrono::milliseconds Commissioning::Remaining() const {
    return std::max(std::chrono::milliseconds(0),
                    std::chrono::ceil<std::chrono::milliseconds>(m_due - m_parts.clock.Monotonic()));
}

QCoro::Task<bool> Commissioning::Ask(qint16 object) {
    const model::QObject& device = m_parts.installation.Object(object);
    Visit& visit = VisitOf(object);
    if (device.HubId != 0) {
        const std::optional<model::HubPlace> place = m_parts.installation.PlaceBehindHub(object);
        if (!place || !VisitOf(place->hub).IsReachable()) {
            visit.answer = place ? Visit::Answer::BehindSilent : Visit::Answer::NotListed;
            Q_EMIT Advanced();
            co_return true;
        }
    }
    visit.isAsked = true;
    const Visit::Answer before = std::exchange(visit.answer, Visit::Answer::Silent);
    Q_EMIT Advanced();
    bool goesOn = true;
    for (int i = 0; i < AskTimes && visit.answer != Visit::Answer::Answered; ++i) {
        goesOn = OnStep(tr("Asking %1").arg(NameOfDevice(object)));
        if (!goesOn) {
            visit.answer = i == 0 ? before : visit.answer;
            break;
        }
        const Reply reply = co_await m_parts.router.SendToObject(object, 'P', {}, Bus::DirectTimeout, 1);
        if (reply.isOwn)
            visit.answer = Visit::Answer::Answered;
        else if (reply.ok)
            visit.answer = Visit::Answer::OtherAnswers;
    }
    visit.isAsked = false;
    Q_EMIT Advanced();
    co_return goesOn;
}

QCoro::Task<bool> Commissioning::AskAll(model::ObjectType type) {
    for (const qint16 object : m_parts.installation.ObjectsOf(type)) {
        const bool goesOn = co_await Ask(object);
        if (!goesOn)
            co_return false;
    }
    co_return true;
}

void Commissioning::Plan(What what, const std::set<Choice>& chosen) {
    m_jobs.clear();
    if (what == What::Verify)
        return;
    Payloads payloads = MakePayloads();
    for (qint16 object = 0; object < m_parts.installation.NumObjects; ++object) {
        for (Payload& payload : payloads.Of(object)) {
            const StepState state = HallState::StateOf(payload, Identity(object), m_parts.record).state;
            const bool isChosen = what == What::Selected
                                      ? chosen.contains({m_parts.installation.Object(object).Id, payload.kind})
                                      : state != StepState::InStep;
            if (isChosen)
                m_jobs.push_back({object, std::move(payload), state});
        }
    }
    std::stable_sort(m_jobs.begin(), m_jobs.end(),
                     [](const Job& one, const Job& other) { return one.payload.kind < other.payload.kind; });
    std::chrono::milliseconds time{0};
    for (const Job& job : m_jobs) {
        const bool isLoaded = job.payload.fault.isEmpty() && VisitOf(job.object).IsReachable() &&
                              (what == What::Selected || job.state != StepState::NotAsked);
        if (!isLoaded)
            continue;
        const bool isRelayed = m_parts.installation.Object(job.object).HubId != 0;
        time += Payloads::LoadTime(job.payload, m_parts.baud(), isRelayed);
    }
    m_due = m_parts.clock.Monotonic() + time;
}

bool Commissioning::IsTaken(const Job& job) const {
    const LoadRecord::Standing* const standing = m_parts.record.Of(Identity(job.object), job.payload.kind);
    return standing && standing->last.event == LoadEntry::Event::Ended && standing->last.end == LoadEntry::End::Done &&
           standing->last.hash == LoadRecord::HashOf(job.payload.content);
}

QCoro::Task<bool> Commissioning::Send(Job job) {
    const qint16 object = job.object;
    switch (job.payload.kind) {
    case LoadKind::Members:
        co_return co_await m_parts.hubs.SendHubMembers(object);
    case LoadKind::Block: {
        const QByteArray block = BuildHubConfig(m_parts.installation);
        co_return co_await m_parts.hubs.SendHubConfig(m_parts.installation.Object(object).Address, block);
    }
    case LoadKind::Tables:
        m_parts.printers.Begin();
        co_return co_await m_parts.printers.SendPrinterConfig(object, PrinterConfig::Load::Sure);
    case LoadKind::Form:
    case LoadKind::Logos: {
        const Result<CompiledForm> form = m_parts.forms.CompileSource(*job.payload.form);
        if (!form)
            co_return false;
        m_parts.forms.SetSending(*job.payload.form);
        const auto part = job.payload.kind == LoadKind::Form ? FormTransfer::Part::Form : FormTransfer::Part::Logos;
        co_return co_await m_parts.forms.transfer.LoadPart(object, *form, part);
    }
    case LoadKind::Letters:
        m_parts.forms.fonts.Begin();
        co_return co_await m_parts.forms.fonts.SendVNIToPrinter(object, job.payload.letters);
    case LoadKind::Clock:
        break;
    }
    co_return co_await m_parts.clocks.SetTime(object);
}

QCoro::Task<bool> Commissioning::Load(Job job) {
    if (!job.payload.fault.isEmpty() || !VisitOf(job.object).IsReachable())
        co_return true;
    VisitOf(job.object).loading = job.payload.kind;
    Q_EMIT Advanced();
    bool goesOn = true;
    bool isTaken = false;
    const int times = job.payload.kind == LoadKind::Letters  ? LetterTimes
                      : job.payload.kind == LoadKind::Tables ? TableTimes
                                                             : LoadTimes;
    for (int i = 0; i < times && !isTaken; ++i) {
        // One that has gone away meanwhile must not hold up the rest by all that it does not answer.
        if (i > 0) {
            goesOn = co_await Ask(job.object);
            VisitOf(job.object).loading = job.payload.kind;
            if (!goesOn || !VisitOf(job.object).IsReachable())
                break;
        }
        goesOn = OnStep(tr("%1: %2").arg(NameOfDevice(job.object), ::NameOf(job.payload.kind)));
        if (goesOn)
            goesOn = co_await OnLoad();
        if (!goesOn)
            break;
        co_await Send(job);
        m_parts.watch.EndAll();
        isTaken = IsTaken(job);
        if (m_parts.installation.Object(job.object).Type == model::Printer)
            m_loaded.insert(job.object);
    }
    VisitOf(job.object).loading.reset();
    Q_EMIT Advanced();
    co_return goesOn;
}

QCoro::Task<bool> Commissioning::LoadAll(LoadKind from, LoadKind to) {
    while (!m_jobs.empty() && m_jobs.front().payload.kind >= from && m_jobs.front().payload.kind <= to) {
        const Job job = m_jobs.front();
        m_jobs.erase(m_jobs.begin());
        ++m_begun;
        const bool goesOn = co_await Load(job);
        if (!goesOn)
            co_return false;
    }
    co_return true;
}

QCoro::Task<Outcome> Commissioning::Run(What what, std::set<Choice> chosen) {
    m_visits.clear();
    m_loaded.clear();
    m_begun = 0;
    for (const model::QObject& object : m_parts.installation.LoadedObjects())
        m_visits[object.Id] = {};
    const EchoFinding echo = co_await m_parts.inquiry.LookForEcho();
    if (echo.has || echo.lacks) {
        co_return Outcome::Failed(
            echo.has
                ? tr("The adapter echoes what is sent, so that nobody can tell whether a device is there. Nothing "
                     "was loaded. Management > Line Test settles it.")
                : tr("The station passes over an echo that does not come, and with it answers. Nothing was loaded. "
                     "Management > Line Test settles it."));
    }
    Plan(what, chosen);
    // What hangs behind a hub may answer only once the hub knows of it.
    bool goesOn = co_await AskAll(model::Hub);
    if (goesOn)
        goesOn = co_await LoadAll(LoadKind::Members, LoadKind::Block);
    for (const model::ObjectType type : {model::Counter, model::Printer}) {
        if (goesOn)
            goesOn = co_await AskAll(type);
    }
    if (goesOn) {
        // What only had to be verified is verified now.
        Plan(what, chosen);
        std::erase_if(m_jobs, [](const Job& job) { return job.payload.kind <= LoadKind::Block; });
        goesOn = co_await LoadAll(LoadKind::Tables, LoadKind::Clock);
    }
    for (const qint16 printer : std::set(m_loaded)) {
        if (goesOn)
            goesOn = co_await Ask(printer);
    }
    m_jobs.clear();
    m_due = m_parts.clock.Monotonic();
    if (!goesOn)
        co_return Outcome::Cancelled();
    co_return Sum(what, chosen);
}

Outcome Commissioning::Sum(What what, const std::set<Choice>& chosen) const {
    Payloads payloads = MakePayloads();
    QStringList silent;
    QStringList lines;
    int devices = 0;
    int holding = 0;
    for (qint16 object = 0; object < m_parts.installation.NumObjects; ++object) {
        const model::QObject& device = m_parts.installation.Object(object);
        QStringList faults;
        if (const QString words = WordsOf(device.Id); !words.isEmpty())
            faults += words;
        if (const auto visit = m_visits.find(device.Id);
            visit != m_visits.end() && visit->second.answer == Visit::Answer::Silent)
            silent += NameOfDevice(object);
        const std::vector<Payload> things = payloads.Of(object);
        holding += things.empty() ? 0 : 1;
        for (const Payload& payload : things) {
            if (what == What::Selected && !chosen.contains({device.Id, payload.kind}))
                continue;
            const HeldItem item = HallState::StateOf(payload, Identity(object), m_parts.record);
            if (item.state != StepState::InStep)
                faults += tr("%1 %2").arg(::NameOf(item.kind), ::NameOf(item.state)) +
                          (item.what.isEmpty() ? QString() : tr(" (%1)").arg(item.what));
        }
        ++devices;
        if (!faults.isEmpty())
            lines += NameOfDevice(object) + QStringLiteral(": ") + faults.join(QStringLiteral("; "));
    }
    if (lines.isEmpty())
        return Outcome::Done(BoxKind::Information,
                             what == What::Selected ? tr("What was chosen is loaded and in step.")
                                                    : tr("All %1 devices that are loaded are in step.").arg(holding));
    constexpr qsizetype MostLines = 12;
    QString text = tr("%1 of %2 devices are not in step:").arg(lines.size()).arg(devices) + u'\n' +
                   lines.first(std::min(lines.size(), MostLines)).join(u'\n');
    if (lines.size() > MostLines)
        text += u'\n' + tr("and %1 more").arg(lines.size() - MostLines);
    return Outcome::Silent(silent, text);
}
