// What the station does with devices: tests, loads, clocks, runs, forms. Start, end and the model: Station.cpp.

#include "station/Station.h"

#include "tickets/VniText.h"

#include <limits>

namespace {

constexpr qint16 FirstTicketNumber = 1001; ///< after a reset of the system

Outcome Answered(bool answered) {
    return answered ? Outcome::Done(BoxKind::Plain, QStringLiteral("True"))
                    : Outcome::Failed(QStringLiteral("False"), BoxKind::Plain);
}

/// The outcome of what was asked of every device.
Outcome Asked(AskingEnd end) {
    switch (end) {
    case AskingEnd::Done:
        return Outcome::Done();
    case AskingEnd::Cancelled:
        return Outcome::Cancelled();
    case AskingEnd::LineClosed:
        break;
    }
    return Outcome::Failed(Station::tr("The line was closed before everything was asked."));
}

Outcome LineIsClosed() {
    return Outcome::Refused(Station::tr("The line is closed. Please choose the COM port first."));
}

/// The outcome of an operation that says that it is done, whoever answered.
Outcome Said(const QStringList& silent, BoxKind kind, const QString& text) {
    return silent.isEmpty() ? Outcome::Done(kind, text) : Outcome::Silent(silent, text, kind);
}

} // namespace

QCoro::Task<Outcome> Station::TestConnect(std::optional<qint32> number, std::optional<qint32> address) {
    if (address && (*address < 0 || *address > std::numeric_limits<quint8>::max()))
        address.reset();
    const qint16 object = installation->FindObjectByNumber(number.value_or(0));
    // Only what is relayed by a hub goes to the address that the model knows.
    const bool isRelayed = object >= 0 && installation->Object(object).HubId != 0;
    if (!address && (!number || (object >= 0 && !isRelayed)))
        co_return Outcome::Refused(QStringLiteral("This object has no address to ask."));
    const auto busAddress = static_cast<quint8>(address.value_or(0));
    if (!number) {
        const Reply reply = co_await bus.SendCommand(busAddress, 'P', {}, Bus::DirectTimeout, 1);
        const Outcome direct = Answered(reply.ok);
        co_await dialogs.ShowMessage(direct.kind, direct.text);
    }
    std::optional<bool> answered;
    if (object >= 0)
        answered = co_await router.TestConnection(object, busAddress);
    if (answered)
        co_return Answered(*answered);
    co_return Outcome::Failed(QStringLiteral("Database not refresh, please restart application"));
}

QCoro::Task<Outcome> Station::LoadPrinters() {
    const QStringList failed = co_await printers.ConfigAllPrinters();
    if (m_isCancelled)
        co_return Outcome::Cancelled();
    if (!failed.isEmpty())
        co_return Outcome::Silent(printers.Silent(), QStringLiteral("Error on setting config to all objects."));
    co_return Outcome::Done(BoxKind::Information, QStringLiteral("Set config to all objects OK."));
}

QCoro::Task<Outcome> Station::ConfigPrinters() {
    return Alone([this] { return LoadPrinters(); });
}

QCoro::Task<Outcome> Station::SetServiceConfig() {
    return Alone([this]() -> QCoro::Task<Outcome> {
        const Outcome reloaded = co_await Reloaded();
        if (!reloaded.IsDone())
            co_return reloaded;
        co_return co_await LoadPrinters();
    });
}

QCoro::Task<Outcome> Station::SetHubs() {
    return Alone([this]() -> QCoro::Task<Outcome> {
        const Outcome reloaded = co_await Reloaded();
        if (!reloaded.IsDone())
            co_return reloaded;
        if (const std::vector<BlockFault> faults = BlockFaults(*installation); !faults.empty())
            co_return Outcome::Refused(faults.front().text);
        const QStringList silent = co_await hubs.SetHubConfig();
        if (m_isCancelled)
            co_return Outcome::Cancelled();
        if (!silent.isEmpty())
            co_return Outcome::Silent(silent, QStringLiteral("Error on setting config to HUB(s)."));
        co_return Outcome::Done(BoxKind::Information, QStringLiteral("Set config to all HUBs OK."));
    });
}

QCoro::Task<Outcome> Station::InitHubs() {
    return Alone([this]() -> QCoro::Task<Outcome> {
        if (const std::vector<BlockFault> faults = MemberFaults(*installation); !faults.empty())
            co_return Outcome::Refused(faults.front().text);
        Outcome outcome = Outcome::Done(BoxKind::Information, QStringLiteral("Init done."));
        for (const qint16 hub : installation->ObjectsOf(model::Hub)) {
            const model::QObject& object = installation->Object(hub);
            const QString name = vni::ToUnicode(object.Name);
            if (!BeginDevice(name))
                co_return Outcome::Cancelled();
            const bool answered = co_await hubs.SendHubMembers(hub);
            if (answered)
                continue;
            outcome = Outcome::Silent(outcome.silent + QStringList{name}, outcome.text, outcome.kind);
            co_await operationBoxes.ShowMessage(
                BoxKind::Exclamation, QStringLiteral("Set config to Hub number: %1 fail.").arg(object.Number));
        }
        co_return outcome;
    });
}

QCoro::Task<Outcome> Station::SetHubClocks() {
    return Alone([this]() -> QCoro::Task<Outcome> {
        const QStringList silent = co_await clocks.SetHubTime();
        co_return Unless(Said(silent, BoxKind::Information, QStringLiteral("done.")));
    });
}

QCoro::Task<Outcome> Station::SetPrinterClocks() {
    return Alone([this]() -> QCoro::Task<Outcome> {
        const QStringList silent = co_await clocks.SetAllPrinterTimes();
        co_return Unless(Said(silent, BoxKind::Plain, QStringLiteral(".Done")));
    });
}

QCoro::Task<Outcome> Station::SetHubCounter(QString typed) {
    return Alone([this, typed] { return hubOption.Apply(typed); });
}

QCoro::Task<Outcome> Station::InitAllObjects() {
    return Alone(
        [this]() -> QCoro::Task<Outcome> {
            const QStringList silent = co_await init.InitQObjects();
            if (init.IsCancelled())
                co_return Outcome::Cancelled();
            run.SetRunning(true);
            co_return Said(silent, BoxKind::Plain, {});
        },
        Stop::Never);
}

QCoro::Task<Outcome> Station::ResetSystem() {
    return Alone(
        [this]() -> QCoro::Task<Outcome> {
            const std::function<bool()> isCancelled = [this] { return init.IsCancelled(); };
            co_await starts.BroadcastResetAndTime(isCancelled);
            if (const Result<> cleared = tickets.ClearTicketRecords(); !cleared) {
                const QString problem = tr("The tickets could not be deleted: %1").arg(cleared.Error());
                log.WriteLog(problem, EventLog::Error);
                co_await operationBoxes.ShowMessage(BoxKind::Exclamation, problem);
            }
            for (model::QService& service : installation->LoadedServices()) {
                service.WaitRing.ResetRing();
                service.FlaggedRing.ResetRing();
                service.NextNumber = model::NumberAfter(service.Series);
            }
            installation->LastTicketNumber = FirstTicketNumber;
            co_return Outcome::Done(BoxKind::Information, QStringLiteral("System reset done. Please restart Orvex."));
        },
        Stop::Never);
}

QCoro::Task<Outcome> Station::LoadVniFont(LetterSet letters) {
    return Alone([this, letters] { return forms.LoadVniFont(letters); });
}

QCoro::Task<Outcome> Station::SendForm(qint16 object, TicketDocument document, QString formPath, Logos logos) {
    return Alone([=, this] { return forms.SendToPrinter(object, document, formPath, logos); });
}

QCoro::Task<Outcome> Station::SendFormToAll(TicketDocument document, QString formPath, Logos logos) {
    return Alone([=, this] { return forms.SendToAllPrinters(document, formPath, logos); });
}

// What proves that the devices are there.

QCoro::Task<Outcome> Station::TestLine(int rounds) {
    return Alone([this, rounds]() -> QCoro::Task<Outcome> {
        if (!LineIsOpen())
            co_return LineIsClosed();
        const LineTest::Step step = [this](const QString& name, int done, int total) {
            Q_EMIT ProgressChanged(tr("Line test: %1").arg(vni::ToUnicode(name)), done, total);
            return !m_isCancelled;
        };
        const AskingEnd end = co_await lineTest.Run(rounds, step);
        co_return Asked(end);
    });
}

QCoro::Task<Outcome> Station::ScanAddresses(bool behindHubs) {
    return Alone([this, behindHubs]() -> QCoro::Task<Outcome> {
        if (!LineIsOpen())
            co_return LineIsClosed();
        const AddressScan::Step step = [this](quint8 address, int done, int total) {
            Q_EMIT ProgressChanged(tr("Looking for devices: address %1").arg(address), done, total);
            return !m_isCancelled;
        };
        const AskingEnd end = co_await scan.Run(behindHubs, step);
        co_return Asked(end);
    });
}

Outcome Station::AddScanned(const FoundDevice& device) {
    const Result<QString> added = AddFoundDevice(database, device);
    if (!added)
        return Outcome::Failed(added.Error());
    scan.NoteAdded(device.address, device.hubId, *added);
    NoteStoreChanged();
    return Outcome::Done();
}
