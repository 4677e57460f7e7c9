// What the station claims that the devices hold, and what they hold.

#include "link/Encodings.h"
#include "platform/WholeFile.h"
#include "simulator/FaultyDisk.h"
#include "tests/simulation/World.h"
#include "tickets/RichText.h"

namespace {

QByteArray Members(const DeviceHub& hub) {
    QByteArray list(1, encoding::SmallNumber(hub.Members() ? static_cast<int>(hub.Members()->size()) : -1));
    for (const DeviceHub::Member& member : hub.Members().value_or(std::vector<DeviceHub::Member>()))
        list += QByteArray{} + encoding::SmallNumber(member.Type) + encoding::SmallNumber(member.Address);
    return list;
}

QByteArray Tables(const TicketPrinter& printer) {
    const std::vector<quint8> buttons = printer.Buttons().value_or(std::vector<quint8>());
    QByteArray content = encoding::Hexadecimal(static_cast<quint32>(buttons.size()), 2);
    for (const quint8 button : buttons)
        content += encoding::Hexadecimal(button, 2);
    for (const auto& [index, row] : printer.ServiceRows())
        content += encoding::Hexadecimal(static_cast<quint32>(index), 2) + encoding::SmallNumber(row.SeriesIndex) +
                   row.Name.leftJustified(64, '\0') + row.Description.leftJustified(64, '\0');
    return content;
}

} // namespace

QByteArray World::HeldBy(quint8 address, LoadKind kind) const {
    const auto* const hub = m_line->FindAs<DeviceHub>(address);
    const auto* const printer = m_line->FindAs<TicketPrinter>(address);
    switch (kind) {
    case LoadKind::Members:
        return hub ? Members(*hub) : QByteArray();
    case LoadKind::Block:
        return hub ? hub->Configuration() : QByteArray();
    case LoadKind::Tables:
        return printer ? Tables(*printer) : QByteArray();
    case LoadKind::Form:
        return printer ? printer->Form() : QByteArray();
    case LoadKind::Logos:
        return printer ? printer->Logos() : QByteArray();
    case LoadKind::Letters:
        return printer ? printer->Letters() : QByteArray();
    case LoadKind::Clock:
        break;
    }
    return m_line->Find(address)->ClockText();
}

bool World::MayHaveChangedUnseen(const DeviceState& device, LoadKind kind) const {
    // A device that answers and keeps nothing is seen by the flags of a printer alone.
    const bool isHubs = kind == LoadKind::Members || kind == LoadKind::Block;
    if (Happens(QStringLiteral("forget")) && (isHubs || kind == LoadKind::Clock))
        return true;
    // What a device answered late under another's address may fit the command to that other to the letter.
    for (const char* late : {"late", "delay", "echo", "twin", "block"}) {
        if (Happens(QStringLiteral("foreign")) && Happens(QLatin1String(late)))
            return true;
    }
    // What could never be written is not known after the next start.
    if (m_isRecordLost)
        return true;
    // A device that was off in the middle of a load has answered it all the same.
    if (m_cycled.contains(device.address) && kind != LoadKind::Members && kind != LoadKind::Block)
        return true;
    return false;
}

void World::CheckHoldings() {
    if (!m_station || !m_station->database.IsOpen() || FaultyDisk::Instance().IsDead())
        return;
    const Result<std::vector<DeviceState>> hall = m_station->Hall();
    if (!hall)
        return;
    for (const DeviceState& device : *hall) {
        for (const HeldItem& item : device.items) {
            if (item.state != StepState::InStep || MayHaveChangedUnseen(device, item.kind))
                continue;
            const qint16 object = m_station->Model().FindObjectById(device.key);
            if (object < 0)
                continue;
            const LoadRecord::Standing* const standing =
                m_station->Record().Of(IdentityOf(m_station->Model(), m_station->Model().Object(object)), item.kind);
            const std::optional<QByteArray> claimed =
                standing ? m_station->Record().Content(standing->last.hash) : std::nullopt;
            const QByteArray held = HeldBy(device.address, item.kind);
            const bool isClock = item.kind == LoadKind::Clock; // which goes on
            // What the record has not kept could not be written.
            if (isClock ? held.isEmpty() : claimed && *claimed != held)
                Break(QStringLiteral("the %1 of device %2 is called in step, and the device holds something else")
                          .arg(NameOf(item.kind))
                          .arg(device.address));
        }
    }
}

bool World::IsAllInStep(bool whenUnknown) {
    // Nobody knows it of a store that another program holds.
    const Result<std::vector<DeviceState>> hall = m_station->Hall();
    return !hall ? whenUnknown : std::all_of(hall->begin(), hall->end(), [](const DeviceState& device) {
        return device.state == StepState::InStep || device.state == StepState::Nothing;
    });
}

void World::CheckCommissioned(const Running& running, bool wasEdited) {
    const bool isWhole = running.outcome.IsDone() && running.name != u"CommissionSelected";
    if (isWhole && !wasEdited && !IsAllInStep(true))
        Break(QStringLiteral("\"%1\" says done, and not everything is in step").arg(running.name));
    const bool isHindered =
        Happens(QStringLiteral("full")) || Happens(QStringLiteral("flush")) || Happens(QStringLiteral("busy"));
    if (running.name == u"CommissionHall" && running.runsAlone && !m_isDirty && !isHindered &&
        running.outcome.end == Outcome::End::Failed && !wasEdited &&
        !running.outcome.text.contains(QStringLiteral("Font file not found")))
        Break(QStringLiteral("\"%1\" fails on a line without faults: %2").arg(running.name, running.outcome.text));
    const bool asksOnly = running.name == u"VerifyHall" || (running.wasInStep && !wasEdited);
    for (const auto& [command, answered] : running.tried) {
        // The bench may ask for tickets beside it.
        if (asksOnly && running.runsAlone && running.outcome.IsDone() && !command.endsWith(" P") &&
            !command.endsWith(" Q"))
            Break(QStringLiteral("\"%1\" sent %2 where everything was in step")
                      .arg(running.name, QString::fromLatin1(command)));
    }
}

void World::WriteForm(Dice& dice) {
    const QByteArray form = richtext::Write(Form(dice));
    const Result<> written = WriteWhole(m_folder.filePath(QStringLiteral("Data/Form.rtf")), form);
    Trace(QStringLiteral("form file %1").arg(written ? QStringLiteral("written") : QStringLiteral("not written")));
    ++m_edits;
}
