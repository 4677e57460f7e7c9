#include "ctl/Control.h"

#include "ctl/LineDialogs.h"
#include "platform/Ended.h"
#include "station/Station.h"

#include <QCommandLineParser>
#include <QFileInfo>

#include <array>
#include <cstdio>

namespace {

using Operation = QCoro::Task<Outcome> (*)(Station&);

struct Verb {
    const char* name;
    const char* meaning;
    Operation operation; ///< none for a verb that needs no line
};

QCoro::Task<Outcome> CommissionHall(Station& station) {
    return station.CommissionHall(Commissioning::What::NotInStep);
}

QCoro::Task<Outcome> VerifyHall(Station& station) {
    return station.CommissionHall(Commissioning::What::Verify);
}

constexpr std::array<Verb, 6> Verbs{{
    {"check", "lists what of the database cannot be loaded or sent", nullptr},
    {"load", "loads every printer with its button and service tables",
     [](Station& station) { return station.SetServiceConfig(); }},
    {"hubs", "sends every hub its configuration", [](Station& station) { return station.SetHubs(); }},
    {"init", "brings every device into a known state", [](Station& station) { return station.InitAllObjects(); }},
    {"commission", "loads what devices do not hold yet, and lets them confirm it", CommissionHall},
    {"verify", "asks every device, and says what is not in step", VerifyHall},
}};

const Verb* FindVerb(const QString& name) {
    const auto found = std::find_if(Verbs.begin(), Verbs.end(),
                                    [&name](const Verb& verb) { return name == QLatin1String(verb.name); });
    return found == Verbs.end() ? nullptr : found;
}

QString Description() {
    QString text = QStringLiteral("Configures the devices of an installation, without windows.\n\nVerbs:\n");
    for (const Verb& verb : Verbs)
        text += QStringLiteral("  %1  %2\n").arg(QLatin1String(verb.name), -10).arg(QLatin1String(verb.meaning));
    return text + QStringLiteral("\nExit status: 0 good, 1 findings or a failure, 2 usage, 4 a device did not answer, "
                                 "5 no line.");
}

Status PrintFindings(Station& station) {
    const std::vector<Finding> findings = station.FindFaults();
    for (const Finding& finding : findings)
        std::puts(qUtf8Printable(LineDialogs::Line(finding.text)));
    return findings.empty() ? Status::Good : Status::Failed;
}

Status StatusOf(const Outcome& outcome, const Station& station) {
    if (!outcome.silent.isEmpty())
        LineDialogs::Print(Station::tr("No answer from %1.").arg(outcome.silent.join(QStringLiteral(", "))));
    if (!station.LineIsOpen())
        return Status::NoLine;
    if (!outcome.silent.isEmpty())
        return Status::NoAnswer;
    return outcome.IsDone() ? Status::Good : Status::Failed;
}

QCoro::Task<Status> CarryStarted(Station& station, Request request) {
    const Verb& verb = *FindVerb(request.verb);
    co_await station.ReadSettings();
    const Outcome prepared = co_await station.PrepareStore(request.store);
    if (!prepared.IsDone()) {
        if (!prepared.text.isEmpty())
            LineDialogs::Print(prepared.text);
        co_return Status::Failed;
    }
    if (request.port || request.baud) {
        const CommSettings& set = station.Line().Settings;
        station.UsePort(request.port.value_or(set.CommName), request.baud.value_or(set.CommBaud));
    }
    Outcome started = Outcome::Done();
    if (verb.operation)
        started = co_await station.Start(request.store);
    else
        started = station.OpenStore(request.store);
    if (!started.IsDone()) {
        LineDialogs::Print(started.text);
        co_return Status::Failed;
    }
    if (!verb.operation)
        co_return PrintFindings(station);
    if (!station.LineIsOpen())
        co_return Status::NoLine;
    const Outcome outcome = co_await verb.operation(station);
    if (!outcome.text.isEmpty())
        LineDialogs::Print(outcome.text);
    const Status status = StatusOf(outcome, station);
    if (status != Status::Good)
        co_return status;
    // What the store holds and the devices did not get is no success.
    const std::vector<Finding> findings = station.FindFaults();
    for (const Finding& finding : findings)
        LineDialogs::Print(finding.text);
    co_return findings.empty() ? Status::Good : Status::Failed;
}

} // namespace

Reading ReadCommandLine(const QStringList& words) {
    QCommandLineParser parser;
    parser.setApplicationDescription(Description());
    const QCommandLineOption help = parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("verb"), QStringLiteral("What to do."), QStringLiteral("VERB"));
    parser.addPositionalArgument(QStringLiteral("store"), QStringLiteral("The database of the installation."),
                                 QStringLiteral("STORE"));
    const QString port = QStringLiteral("port");
    const QString baud = QStringLiteral("baud");
    const QString folder = QStringLiteral("folder");
    const QString yes = QStringLiteral("yes");
    parser.addOptions({
        {port, QStringLiteral("Serial port, such as COM1, ttyUSB0 or /dev/ttyS0; that of the settings otherwise."),
         port},
        {baud, QStringLiteral("Speed in bit/s; that of the settings otherwise."), baud},
        {folder, QStringLiteral("Folder of settings, log and backups; that of the program otherwise."), folder},
        {yes, QStringLiteral("Answers Yes to every question.")},
    });
    const auto wrong = [](const QString& text) {
        LineDialogs::Print(text);
        return Reading{std::nullopt, Status::Usage};
    };
    if (!parser.parse(words))
        return wrong(parser.errorText());
    if (parser.isSet(help)) {
        std::fputs(qUtf8Printable(parser.helpText()), stdout);
        return {};
    }
    const QStringList arguments = parser.positionalArguments();
    if (arguments.size() != 2)
        return wrong(QStringLiteral("A verb and a database are needed; see --help."));
    if (!FindVerb(arguments[0]))
        return wrong(QStringLiteral("There is no verb \"%1\"; see --help.").arg(arguments[0]));
    Request request{.verb = arguments[0],
                    .store = QFileInfo(arguments[1]).absoluteFilePath(),
                    .port = {},
                    .baud = {},
                    .folder = parser.value(folder),
                    .saysYes = parser.isSet(yes)};
    if (parser.isSet(port))
        request.port = parser.value(port);
    if (parser.isSet(baud))
        request.baud = parser.value(baud);
    if (request.baud && request.baud->toInt() <= 0)
        return wrong(QStringLiteral("\"%1\" is no speed in bit/s.").arg(*request.baud));
    return {request, Status::Good};
}

QCoro::Task<Status> Carry(Station& station, Request request) {
    Status status = Status::Failed;
    try {
        status = co_await CarryStarted(station, request);
    } catch (const Ended&) {
    }
    co_await station.End();
    // The next run would load all of it once more.
    if (const QString& fault = station.Record().Fault(); !fault.isEmpty()) {
        LineDialogs::Print(QStringLiteral("Loads were not recorded: ") + fault);
        if (status == Status::Good)
            status = Status::Failed;
    }
    co_return status;
}
