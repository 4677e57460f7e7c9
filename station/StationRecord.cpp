// What the station remembers of its loads, and how the hall stands to it.

#include "station/Station.h"

#include <QDir>

#include <pwd.h>
#include <unistd.h>

QString UserOfMachine() {
    const passwd* const user = ::getpwuid(::getuid());
    return user ? QString::fromLocal8Bit(user->pw_name) : QString::number(::getuid());
}

void Station::JoinRecord() {
    watch.OnOrigin = [this] {
        return LoadWatch::Origin{m_user, line.Settings.CommDevice, QStringLiteral(ORVEX_VERSION)};
    };
    watch.OnSource = [this](const LoadEntry& entry) { return SourceOf(entry); };
    commissioning.OnStep = [this](const QString& text) {
        if (!m_isCancelled)
            Q_EMIT ProgressChanged(text, 0, 0);
        return !m_isCancelled && LineIsOpen();
    };
    commissioning.OnLoad = [this] { return CanRecord(); };
    connect(&watch, &LoadWatch::Entered, this, &Station::HallChanged);
    connect(this, &Station::ModelChanged, this, &Station::HallChanged);
}

QString Station::SourceOf(const LoadEntry& entry) const {
    if (entry.kind == LoadKind::Letters)
        return LetterSource(forms.fonts.Sending());
    const bool isLogos = entry.kind == LoadKind::Logos;
    const auto isIt = [&](const CompiledForm& form) {
        return LoadRecord::HashOf(isLogos ? form.LogoData : form.PrnForm) == entry.hash;
    };
    const qint16 object = installation->FindObjectById(entry.key);
    const QString number = object < 0 ? QString() : QString::number(installation->Object(object).Number);
    std::optional<FormSource> source = forms.FindSource(isIt, number);
    // Of what did not come through it is told what was meant.
    if (!source && entry.end != LoadEntry::End::Done)
        source = forms.Sending();
    return source ? source->Text(ProgramFolder) : QString();
}

Result<std::vector<DeviceState>> Station::Hall() {
    return hall.Look(line.Settings.CommBaud.toInt());
}

void Station::NoteStoreChanged() {
    reload.NoteStoreChanged();
    Q_EMIT HallChanged();
}

QCoro::Task<bool> Station::CanRecord() {
    constexpr int Times = 20;
    constexpr qint16 Pause = 500;
    for (int i = 0; !m_goesUnrecorded && !record.Try(); ++i) {
        if (i == Times || m_isCancelled)
            co_return false;
        Q_EMIT ProgressChanged(tr("Waiting for the database: %1").arg(record.Fault()), 0, 0);
        co_await clock.DelayMilliseconds(Pause);
    }
    co_return true;
}

QCoro::Task<Outcome> Station::CommissionHall(Commissioning::What what, std::set<Commissioning::Choice> chosen) {
    return Alone([this, what, chosen]() -> QCoro::Task<Outcome> {
        const Outcome reloaded = co_await Reloaded();
        if (!reloaded.IsDone())
            co_return reloaded;
        if (!LineIsOpen())
            co_return Outcome::Failed(tr("The line is closed. Choose a port first."));
        m_goesUnrecorded = false;
        if (what != Commissioning::What::Verify && !record.Try()) {
            m_goesUnrecorded = co_await dialogs.AskYesNo(
                BoxKind::Exclamation,
                tr("What is loaded now cannot be written down, and is forgotten when the program ends: %1\n\n"
                   "Load all the same?")
                    .arg(record.Fault()));
            if (!m_goesUnrecorded)
                co_return Outcome::Cancelled();
        }
        Outcome outcome = co_await commissioning.Run(what, chosen);
        watch.EndAll();
        record.Flush();
        if (!LineIsOpen() && !m_isCancelled)
            co_return Outcome::Failed(tr("The line was closed before everything was done."));
        const bool isLost = !m_goesUnrecorded && !record.Fault().isEmpty();
        if (isLost && !outcome.IsDone() && !m_isCancelled)
            co_return Outcome::Failed(tr("The database no longer takes down what is loaded, so nothing more was "
                                         "loaded: %1")
                                          .arg(record.Fault()));
        if (outcome.IsDone() && !record.Fault().isEmpty()) {
            outcome.kind = BoxKind::Exclamation;
            outcome.text += tr("\n\nNothing of it could be written down, and it is forgotten when the program ends: %1")
                                .arg(record.Fault());
        }
        co_return outcome;
    });
}
