// Plays all devices of an installation behind a pseudo-terminal.

#include "platform/WholeFile.h"
#include "simulator/BusConsole.h"
#include "simulator/SimulatedBus.h"
#include "simulator/TicketPictures.h"

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <memory>

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

/// The end of the pipe into which the handler writes; a signal handler can reach nothing but a global.
volatile int signalEnd = -1;

void NoteSignal(int number) {
    const char byte = static_cast<char>(number);
    [[maybe_unused]] const ssize_t written = ::write(signalEnd, &byte, 1);
}

void Print(const QString& text) {
    std::fputs(qUtf8Printable(text), stdout);
    std::fflush(stdout);
}

int Fail(const QString& text) {
    std::fprintf(stderr, "OrvexBus: %s\n", qUtf8Printable(text));
    return 1;
}

struct Probability {
    const char* name;
    const char* meaning;
    double FaultSettings::*field;
};

constexpr Probability Probabilities[] = {
    {"drop-request", "Part of the commands that are lost, 0 to 1.", &FaultSettings::DropRequest},
    {"drop-reply", "Part of the replies that are lost, 0 to 1.", &FaultSettings::DropReply},
    {"corrupt", "Part of the replies with one changed byte, 0 to 1.", &FaultSettings::Corrupt},
    {"delay", "Part of the replies that come late, 0 to 1.", &FaultSettings::Delay},
    {"noise", "Part of the replies with noise before them, 0 to 1.", &FaultSettings::Noise},
    {"foreign", "Part of the replies that bear another device's address, 0 to 1.", &FaultSettings::Foreign},
    {"slice", "Part of the replies that come byte by byte, 0 to 1.", &FaultSettings::Slice},
};

/// A whole number option; `value` stays as it is where the option is absent.
bool ReadNumber(const QCommandLineParser& parser, const QString& name, int& value, QString& problem) {
    if (!parser.isSet(name))
        return true;
    bool reads = false;
    value = parser.value(name).toInt(&reads);
    if (!reads || value < 0)
        problem = QStringLiteral("--%1: \"%2\" is no number from 0").arg(name, parser.value(name));
    return problem.isEmpty();
}

/// The addresses of devices that an option names. @return what is wrong, or nothing.
QString ReadAddresses(const QCommandLineParser& parser, const QString& name, const BusInstallation& installation,
                      std::set<quint8>& addresses) {
    for (const QString& text : parser.values(name)) {
        bool reads = false;
        const int address = text.toInt(&reads);
        const auto& devices = installation.Devices();
        if (!reads || std::none_of(devices.begin(), devices.end(),
                                   [address](const BusDevice& device) { return device.Address == address; }))
            return QStringLiteral("--%1: no device at address \"%2\"").arg(name, text);
        addresses.insert(static_cast<quint8>(address));
    }
    return {};
}

/// "P" or "M:0".
std::optional<Deafness> ReadDeafness(const QString& text) {
    constexpr int LastRow = 255;
    const QString row = text.section(u':', 1);
    bool reads = false;
    const int number = row.toInt(&reads);
    const bool isLetter = text.section(u':', 0, 0).size() == 1 && text.front() >= u'A' && text.front() <= u'Z';
    if (!isLetter || (text.contains(u':') && (!reads || number < 0 || number > LastRow)))
        return std::nullopt;
    return Deafness{text.front().toLatin1(), reads ? std::optional(number) : std::nullopt};
}

QString ReadFaults(const QCommandLineParser& parser, const BusInstallation& installation, FaultSettings& faults) {
    QString problem;
    for (const Probability& probability : Probabilities) {
        const QString name = QLatin1String(probability.name);
        if (!parser.isSet(name))
            continue;
        bool reads = false;
        const double value = parser.value(name).toDouble(&reads);
        if (!reads || !(value >= 0 && value <= 1))
            return QStringLiteral("--%1: \"%2\" is not from 0 to 1").arg(name, parser.value(name));
        faults.*probability.field = value;
    }
    int seed = 1;
    if (!ReadNumber(parser, QStringLiteral("late"), faults.LateMilliseconds, problem))
        return problem;
    faults.Echo = parser.isSet(QStringLiteral("echo"));
    faults.Forget = parser.isSet(QStringLiteral("forget"));
    for (const QString& text : parser.values(QStringLiteral("deaf"))) {
        const std::optional<Deafness> deaf = ReadDeafness(text);
        if (!deaf)
            return QStringLiteral("--deaf: \"%1\" is no letter, nor a letter, \":\" and a row from 0 to 255").arg(text);
        faults.Deaf.push_back(*deaf);
    }
    if (!ReadNumber(parser, QStringLiteral("delay-ms"), faults.DelayMilliseconds, problem) ||
        !ReadNumber(parser, QStringLiteral("hang-up-after"), faults.HangUpAfter, problem) ||
        !ReadNumber(parser, QStringLiteral("seed"), seed, problem))
        return problem;
    faults.Seed = static_cast<quint32>(seed);
    problem = ReadAddresses(parser, QStringLiteral("silent"), installation, faults.Silent);
    return problem.isEmpty() ? ReadAddresses(parser, QStringLiteral("twin"), installation, faults.Twins) : problem;
}

/// Only pictures need a graphical application, without a screen.
std::unique_ptr<QCoreApplication> MakeApplication(int& argc, char** argv) {
    const bool draws =
        std::any_of(argv, argv + argc, [](const char* word) { return QByteArrayView(word).startsWith("--tickets"); });
    if (!draws)
        return std::make_unique<QCoreApplication>(argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    return std::make_unique<QGuiApplication>(argc, argv);
}

void AddOptions(QCommandLineParser& parser) {
    parser.setApplicationDescription(QStringLiteral("Plays all devices of an installation behind a pseudo-terminal.\n"
                                                    "Commands on standard input:\n") +
                                     BusConsole::Help());
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("installation"), QStringLiteral("A station database or a text file."));
    const QString path = QStringLiteral("path");
    const QString number = QStringLiteral("number");
    parser.addOptions({
        {QStringLiteral("link"), QStringLiteral("Symbolic link to make to the pseudo-terminal."), path},
        {QStringLiteral("baud"), QStringLiteral("Keep to this baud rate in both directions."), number},
        {QStringLiteral("transcript"), QStringLiteral("Append what goes over the line to this file."), path},
        {QStringLiteral("tickets"), QStringLiteral("Folder in which to save each printed ticket as a picture."), path},
        {QStringLiteral("state"), QStringLiteral("Keep what the devices hold in this file, as JSON."), path},
        {QStringLiteral("control"), QStringLiteral("Local socket that takes the commands as well."), path},
        {QStringLiteral("print-path"), QStringLiteral("Print the bare device name at start.")},
        {QStringLiteral("delay-ms"), QStringLiteral("How late late replies are, 100 ms by default."), number},
        {QStringLiteral("late"), QStringLiteral("Every reply comes so many milliseconds late."), number},
        {QStringLiteral("silent"), QStringLiteral("Address that never answers; may be repeated."), number},
        {QStringLiteral("twin"), QStringLiteral("Address at which two devices answer; may be repeated."), number},
        {QStringLiteral("deaf"),
         QStringLiteral("Command that no device takes, such as P, or M:0 for the first row; may be repeated."),
         QStringLiteral("letter[:row]")},
        {QStringLiteral("echo"), QStringLiteral("The adapter lets the station hear what it sends.")},
        {QStringLiteral("forget"), QStringLiteral("Devices answer everything and keep nothing.")},
        {QStringLiteral("hang-up-after"), QStringLiteral("Pull the adapter after this many frames."), number},
        {QStringLiteral("seed"), QStringLiteral("Seed of the faults, 1 by default."), number},
    });
    for (const Probability& probability : Probabilities)
        parser.addOption({QLatin1String(probability.name), QLatin1String(probability.meaning), QStringLiteral("p")});
}

/// Sets the bus up as the options say, and opens it.
/// @return what is wrong, empty if nothing is.
QString Open(SimulatedBus& bus, const QCommandLineParser& parser, const BusInstallation& installation) {
    FaultSettings faults;
    QString problem = ReadFaults(parser, installation, faults);
    int baudRate = 0;
    if (!problem.isEmpty() || !ReadNumber(parser, QStringLiteral("baud"), baudRate, problem))
        return problem;
    bus.SetLinkPath(parser.value(QStringLiteral("link")));
    bus.SetBaudRate(baudRate);
    bus.SetFaults(faults);
    if (parser.isSet(QStringLiteral("transcript")))
        problem = bus.Log().OpenFile(parser.value(QStringLiteral("transcript")));
    return problem.isEmpty() ? bus.Open() : problem;
}

/// Prints what happens on the bus, and saves the tickets if there is a folder for them.
void Report(SimulatedBus& bus, TicketPictures* pictures) {
    QObject::connect(&bus, &SimulatedBus::PrinterLoaded, &bus, [&bus](int address) {
        const SimulatedDevice* const printer = bus.Find(address);
        Print(printer->Title() + QStringLiteral(" finished loading\n") + printer->Summary());
    });
    QObject::connect(&bus, &SimulatedBus::HungUp, &bus, [] { Print(QStringLiteral("hung up\n")); });
    if (pictures == nullptr)
        return;
    QObject::connect(&bus, &SimulatedBus::TicketPrinted, &bus, [&bus, pictures](int address) {
        const QString saved = pictures->Save(*bus.FindAs<TicketPrinter>(address));
        Print(saved.isEmpty() ? QStringLiteral("the picture of a ticket could not be saved\n") : saved + u'\n');
    });
}

/// Keeps the state of the devices in a file, at most once a second.
void KeepState(SimulatedBus& bus, const QString& path) {
    const auto write = [&bus, path] {
        const Result<> written = WriteWhole(path, QJsonDocument(bus.State()).toJson());
        if (!written)
            Print(written.Error() + u'\n');
    };
    write();
    auto* const timer = new QTimer(&bus);
    QObject::connect(timer, &QTimer::timeout, &bus, [&bus, write, last = bus.Counts().Commands]() mutable {
        if (std::exchange(last, bus.Counts().Commands) != last)
            write();
    });
    timer->start(1000);
    QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, &bus, write);
}

/// Signals print what the bus holds; all but SIGUSR1 then end the program.
/// @return false if the machine has no pipe for them.
bool ListenToSignals(SimulatedBus& bus) {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()) != 0)
        return false;
    signalEnd = ends[0];
    auto* const signalled = new QSocketNotifier(ends[1], QSocketNotifier::Read, &bus);
    QObject::connect(signalled, &QSocketNotifier::activated, &bus, [&bus, end = ends[1]] {
        char signalNumber = 0;
        if (::read(end, &signalNumber, 1) != 1)
            return;
        Print(bus.Summary());
        if (signalNumber != SIGUSR1)
            QCoreApplication::quit();
    });
    for (const int signalNumber : {SIGINT, SIGTERM, SIGUSR1})
        std::signal(signalNumber, NoteSignal);
    std::signal(SIGPIPE, SIG_IGN);
    return true;
}

} // namespace

int main(int argc, char** argv) {
    const std::unique_ptr<QCoreApplication> application = MakeApplication(argc, argv);
    QCommandLineParser parser;
    AddOptions(parser);
    parser.process(*application);
    if (parser.positionalArguments().size() != 1)
        parser.showHelp(2);

    QString problem;
    const std::optional<BusInstallation> installation =
        BusInstallation::Read(parser.positionalArguments().front(), problem);
    if (!installation)
        return Fail(problem);
    for (const QString& note : installation->Notes())
        Print(QStringLiteral("left out: %1\n").arg(note));
    SimulatedBus bus(*installation);
    problem = Open(bus, parser, *installation);
    if (!problem.isEmpty())
        return Fail(problem);
    Print(parser.isSet(QStringLiteral("print-path"))
              ? bus.SlavePath() + u'\n'
              : QStringLiteral("%1 devices at %2\n").arg(bus.Devices().size()).arg(bus.SlavePath()));

    TicketPictures pictures(parser.value(QStringLiteral("tickets")));
    Report(bus, parser.isSet(QStringLiteral("tickets")) ? &pictures : nullptr);
    if (!ListenToSignals(bus))
        return Fail(QStringLiteral("no pipe for signals"));
    BusConsole console(bus);
    if (parser.isSet(QStringLiteral("control"))) {
        problem = console.Listen(parser.value(QStringLiteral("control")));
        if (!problem.isEmpty())
            return Fail(problem);
    }
    if (parser.isSet(QStringLiteral("state")))
        KeepState(bus, parser.value(QStringLiteral("state")));
    QObject::connect(&console, &BusConsole::QuitAsked, application.get(), &QCoreApplication::quit,
                     Qt::QueuedConnection);
    return QCoreApplication::exec();
}
