// What the user and fate do to a world.

#include "simulator/FaultyDisk.h"
#include "tests/simulation/World.h"

#include <sqlite3.h>

using namespace std::chrono_literals;

TicketDocument World::Form(Dice& dice) const {
    TicketDocument form;
    for (int line = dice.Roll(4); line >= 0; --line) {
        TicketDocument::Paragraph& paragraph = form.paragraphs.emplace_back();
        const QString text = dice.OnceIn(2) ? QStringLiteral("Soá thöù töï: $VAR(4)") : QStringLiteral("Ticket %1");
        paragraph.Append(text.repeated(1 + dice.Roll(5)), {dice.OnceIn(2), 10.0 + dice.Roll(20), 0});
    }
    return form;
}

void World::Do(int act) {
    // Each act has dice of its own, so that leaving one out changes no other.
    Dice dice(m_plan.seed * 1000003 + static_cast<quint64>(act));
    const int waits[] = {0, 0, 3, 300, 3000, 60'000, 600'000};
    const int longest = waits[dice.Roll(7)];
    PassTime(std::chrono::milliseconds(longest == 0 ? 0 : dice.Roll(longest)));
    if (dice.OnceIn(200))
        PassTime(std::chrono::hours(dice.Roll(48)));
    if (IsOver())
        return;
    const auto printers = m_station->Model().ObjectsOf(model::Printer);
    const auto printer = static_cast<qint16>(
        printers.empty() ? -1 : printers[static_cast<std::size_t>(dice.Roll(static_cast<int>(printers.size())))]);
    const int number = m_hall.addresses[static_cast<std::size_t>(dice.Roll(m_hall.objects))];
    const QString address = QString::number(number);
    FaultyDisk& disk = FaultyDisk::Instance();
    const auto alone = [this](const char* name, const Work& work) { Begin(QString::fromLatin1(name), true, work); };
    const auto beside = [this](const char* name, const Work& work) { Begin(QString::fromLatin1(name), false, work); };
    switch (dice.Roll(55)) {
    case 0:
    case 1:
    case 2:
        return alone("SetServiceConfig", [](Station& station) { return station.SetServiceConfig(); });
    case 3:
        return alone("ConfigPrinters", [](Station& station) { return station.ConfigPrinters(); });
    case 4:
    case 5:
        return alone("SetHubs", [](Station& station) { return station.SetHubs(); });
    case 6:
        return alone("InitHubs", [](Station& station) { return station.InitHubs(); });
    case 7:
        return alone("SetHubClocks", [](Station& station) { return station.SetHubClocks(); });
    case 8:
        return alone("SetPrinterClocks", [](Station& station) { return station.SetPrinterClocks(); });
    case 9: {
        const QString typed = QString::number(dice.Roll(12));
        m_possibleSettings[QStringLiteral("options/FromToval")].insert(typed);
        return alone("SetHubCounter", [typed](Station& station) { return station.SetHubCounter(typed); });
    }
    case 10:
    case 11:
    case 12:
        return alone("InitAllObjects", [](Station& station) { return station.InitAllObjects(); });
    case 13:
    case 14:
        m_possibleTickets.insert(0);
        return alone("ResetSystem", [](Station& station) { return station.ResetSystem(); });
    case 15: {
        const LetterSet letters = dice.OnceIn(2) ? LetterSet::Table : LetterSet::FontFile;
        return alone("LoadVniFont", [letters](Station& station) { return station.LoadVniFont(letters); });
    }
    case 16:
    case 17: {
        const TicketDocument form = Form(dice);
        const Logos logos = dice.OnceIn(2) ? Logos::With : Logos::Without;
        if (dice.OnceIn(2) || printer < 0)
            return alone("SendFormToAll",
                         [form, logos](Station& station) { return station.SendFormToAll(form, {}, logos); });
        return alone("SendForm",
                     [printer, form, logos](Station& station) { return station.SendForm(printer, form, {}, logos); });
    }
    case 18:
        Trace(QStringLiteral("cancel"));
        m_station->CancelOperation();
        m_station->CancelForm();
        return;
    case 19:
        Trace(QStringLiteral("cancel the initialization"));
        if (dice.OnceIn(4))
            m_station->CancelInit();
        return;
    case 20:
    case 21:
    case 22:
    case 23:
        return Edit(dice);
    case 24:
        return beside("RefreshModel", [](Station& station) { return station.RefreshModel(); });
    case 25:
        return beside("ReloadDirections", [](Station& station) { return station.ReloadDirections(); });
    case 26:
        return beside("RefreshIfChanged", [](Station& station) -> QCoro::Task<Outcome> {
            co_await station.RefreshIfChanged();
            co_return Outcome::Done();
        });
    case 27: {
        const bool hasNumber = dice.OnceIn(2);
        return beside("TestConnect", [hasNumber, number](Station& station) {
            return station.TestConnect(hasNumber ? std::optional<qint32>(number % 16) : std::nullopt, number);
        });
    }
    case 28:
        return beside("PoolTicket", [address](Station& station) { return station.Console().PoolTicket(address); });
    case 29:
        m_station->Console().CancelPoll();
        return;
    case 30:
        return beside("QueryTicket", [address](Station& station) { return station.Console().QueryTicket(address); });
    case 31:
        return beside("PrinterStatus",
                      [address](Station& station) { return station.Console().PrinterStatus(address); });
    case 32:
        return ChangeOptions(dice);
    case 33: {
        const QString baud = dice.OnceIn(2) ? QStringLiteral("9600") : QStringLiteral("115200");
        m_possibleSettings[QStringLiteral("Comm/Baud")].insert(baud);
        m_isDirty = true;
        return beside("ChoosePort", [baud](Station& station) -> QCoro::Task<Outcome> {
            co_await station.ChoosePort(QStringLiteral("COM1"), baud);
            co_return Outcome::Done();
        });
    }
    case 34: {
        const bool years = dice.OnceIn(2);
        m_possibleTickets.insert(0);
        return beside("DeleteTickets", [years](Station& station) {
            return years ? station.Maintenance().DeleteFromYear(QStringLiteral("2026"))
                         : station.Maintenance().DeleteFromDays(QStringLiteral("01/01/2026"), {});
        });
    }
    case 35:
        if (Happens(QStringLiteral("pull"))) {
            Trace(QStringLiteral("pull"));
            m_line->Pull();
            PassTime(std::chrono::seconds(dice.Roll(60)));
            m_line->Plug();
            beside("ChoosePort", [](Station& station) -> QCoro::Task<Outcome> {
                co_await station.ChoosePort(QStringLiteral("COM1"), QStringLiteral("9600"));
                co_return Outcome::Done();
            });
            m_possibleSettings[QStringLiteral("Comm/Baud")].insert(QStringLiteral("9600"));
        }
        return;
    case 36:
        if (Happens(QStringLiteral("block"))) {
            m_line->SetBlocked(!m_line->IsBlocked());
            Trace(m_line->IsBlocked() ? QStringLiteral("the line is blocked") : QStringLiteral("the line is free"));
        }
        return;
    case 37:
        if (Happens(QStringLiteral("power"))) {
            m_line->PowerCycle(number);
            m_cycled.insert(number);
        }
        return;
    case 38:
        if (Happens(QStringLiteral("full")))
            disk.SetFull(dice.OnceIn(2));
        return;
    case 39:
        if (Happens(QStringLiteral("flush")))
            disk.FailNextFlush();
        return;
    case 40:
        if (Happens(QStringLiteral("busy"))) {
            // Another program holds the store for a while.
            if (m_other)
                return;
            sqlite3_open(m_store.toUtf8().constData(), &m_other);
            sqlite3_exec(m_other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr);
            m_timeline.Plan(std::chrono::seconds(1 + dice.Roll(40)),
                            [this] { sqlite3_close(std::exchange(m_other, nullptr)); });
        }
        return;
    case 41:
    case 42:
        if (Happens(QStringLiteral("kill")) || Happens(QStringLiteral("cut"))) {
            if (dice.OnceIn(3))
                return Crash(Happens(QStringLiteral("cut")));
            disk.DieAt(1 + dice.Roll(30));
        }
        return;
    case 43:
        m_station->SetRunning(dice.OnceIn(2));
        return;
    case 44:
    case 45:
    case 46:
    case 47:
        return Commission(dice);
    case 48:
        return WriteForm(dice);
    case 49: {
        const int rounds = 1 + dice.Roll(3);
        return alone("TestLine", [rounds](Station& station) { return station.TestLine(rounds); });
    }
    case 50: {
        const bool behindHubs = dice.OnceIn(2);
        return alone(behindHubs ? "ScanBehindHubs" : "ScanAddresses",
                     [behindHubs](Station& station) { return station.ScanAddresses(behindHubs); });
    }
    case 51:
    case 52:
    case 53:
        return StepBack(dice);
    default:
        if (Happens(QStringLiteral("end"))) {
            EndStation();
            if (!IsOver() && !m_station)
                Live();
        }
        return;
    }
}

void World::Commission(Dice& dice) {
    if (dice.OnceIn(3))
        return Begin(QStringLiteral("VerifyHall"), true,
                     [](Station& station) { return station.CommissionHall(Commissioning::What::Verify); });
    if (!dice.OnceIn(4))
        return Begin(QStringLiteral("CommissionHall"), true,
                     [](Station& station) { return station.CommissionHall(Commissioning::What::NotInStep); });
    std::set<Commissioning::Choice> chosen;
    for (const model::QObject& object : m_station->Model().LoadedObjects()) {
        if (dice.OnceIn(3))
            chosen.insert({object.Id, LoadKinds[dice.Roll(static_cast<int>(std::size(LoadKinds)))]});
    }
    Begin(QStringLiteral("CommissionSelected"), true,
          [chosen](Station& station) { return station.CommissionHall(Commissioning::What::Selected, chosen); });
}

void World::ChangeOptions(Dice& dice) {
    // Two settings that are changed together.
    const QString value = QString::number(10 + dice.Roll(20));
    auto& wakeup = m_possibleSettings[QStringLiteral("options/WakeupTime")];
    auto& delay = m_possibleSettings[QStringLiteral("options/KeyDelayTime")];
    wakeup.insert(value);
    delay.insert(value);
    Options options = m_station->Settings();
    options.WakeupTime = options.KeyDelayTime = value.toShort();
    const Outcome saved = m_station->SaveOptions(options, options.ResetAt);
    Trace(QStringLiteral("options %1 %2").arg(value).arg(saved.IsDone()));
    if (saved.IsDone() && !FaultyDisk::Instance().IsDead())
        wakeup = delay = {value};
}
