#include "simulator/DeviceBus.h"

#include "link/CommandNames.h"
#include "link/Frames.h"
#include "simulator/CounterKeypad.h"
#include "simulator/InformationDisplay.h"
#include "simulator/PowerUnit.h"

#include <QJsonArray>

namespace {

constexpr int TwinMilliseconds = 3; ///< by which the second of two devices at one address is slower

std::unique_ptr<SimulatedDevice> MakeDevice(const BusDevice& identity) {
    switch (identity.Class) {
    case DeviceClass::Counter:
        return std::make_unique<CounterKeypad>(identity);
    case DeviceClass::Printer:
        return std::make_unique<TicketPrinter>(identity);
    case DeviceClass::Display:
        return std::make_unique<InformationDisplay>(identity);
    case DeviceClass::Hub:
        return std::make_unique<DeviceHub>(identity);
    case DeviceClass::PowerUnit:
        break;
    }
    return std::make_unique<PowerUnit>(identity);
}

} // namespace

DeviceBus::DeviceBus(const BusInstallation& installation) {
    for (const BusDevice& identity : installation.Devices()) {
        m_devices.push_back(MakeDevice(identity));
        m_byAddress[identity.Address] = m_devices.back().get();
        auto* const printer = dynamic_cast<TicketPrinter*>(m_devices.back().get());
        if (!printer)
            continue;
        printer->OnLoaded = [this, address = static_cast<int>(identity.Address)] { NoteLoaded(address); };
        printer->OnPrinted = [this, address = static_cast<int>(identity.Address)](const TicketPrinter::Ticket&) {
            NotePrinted(address);
        };
    }
    for (const std::unique_ptr<SimulatedDevice>& device : m_devices) {
        if (!device->Identity().Hub)
            continue;
        if (auto* const hub = FindAs<DeviceHub>(*device->Identity().Hub))
            hub->Attach(*device);
    }
    m_decoder.OnAck = [this] { ++m_counters.Acks; };
    m_decoder.OnCommand = [this](const FrameDecoder::Command& command) { HandleCommand(command); };
}

void DeviceBus::SetFaults(const FaultSettings& settings) {
    m_faults = Faults(settings);
    for (const std::unique_ptr<SimulatedDevice>& device : m_devices) {
        device->SetSilent(settings.Silent.contains(device->Identity().Address));
        device->SetDeaf(settings.Deaf);
        device->SetForgetful(settings.Forget);
    }
}

bool DeviceBus::SetSilent(int address, bool silent) {
    SimulatedDevice* const device = Find(address);
    if (device != nullptr)
        device->SetSilent(silent);
    return device != nullptr;
}

bool DeviceBus::PowerCycle(int address) {
    SimulatedDevice* const device = Find(address);
    if (device != nullptr)
        device->PowerUp();
    return device != nullptr;
}

SimulatedDevice* DeviceBus::Find(int address) const {
    return address >= 0 && address < static_cast<int>(m_byAddress.size()) ? m_byAddress[static_cast<size_t>(address)]
                                                                          : nullptr;
}

QString DeviceBus::Summary() const {
    QString text;
    for (const std::unique_ptr<SimulatedDevice>& device : m_devices)
        text += device->Summary();
    return text;
}

QJsonObject DeviceBus::State() const {
    QJsonArray devices;
    for (const std::unique_ptr<SimulatedDevice>& device : m_devices)
        devices += device->State();
    return {{QStringLiteral("devices"), devices}};
}

void DeviceBus::Hear(QByteArrayView bytes) {
    if (m_faults.Settings().Echo)
        Send({bytes.toByteArray(), 0, false, true});
    m_decoder.Feed(bytes);
}

SimulatedDevice::Answer DeviceBus::Ask(const FrameDecoder::Command& command, bool& retry) {
    SimulatedDevice* const device = Find(command.Address);
    if (device == nullptr)
        return {std::nullopt, QStringLiteral("no device has this address")};
    if (device->Identity().Hub || device->Identity().Detached)
        return {std::nullopt, QStringLiteral("it stands behind a hub")};
    LastCommand& last = m_last[command.Address];
    const QByteArray content = command.Raw.sliced(3, command.Raw.size() - 6);
    if (!device->IsSilent() && last.content == content && last.ackCount == m_counters.Acks) {
        retry = true;
        return {last.reply, {}};
    }
    SimulatedDevice::Answer answer = device->Carry(command.Letter, command.Data);
    if (answer.Content)
        last = {content, *answer.Content, m_counters.Acks};
    else
        last = {};
    return answer;
}

void DeviceBus::Broadcast(const FrameDecoder::Command& command) {
    for (const std::unique_ptr<SimulatedDevice>& device : m_devices) {
        if (!device->IsSilent() && !device->Identity().Detached)
            device->Hear(command.Letter, command.Data);
    }
}

void DeviceBus::HandleCommand(const FrameDecoder::Command& command) {
    if (!IsJoined())
        return;
    ++m_counters.Commands;
    const bool hangsUp = m_counters.Commands == quint64(m_faults.Settings().HangUpAfter);
    const Faults::Plan plan = m_faults.Next();
    const bool broadcast = command.Address == frames::Broadcast;

    SimulatedDevice::Answer answer;
    bool retry = false;
    if (!command.Fault.isEmpty()) {
        ++m_counters.Bad;
        answer.Silence = command.Fault;
    } else if (plan.DropRequest) {
        answer.Silence = QStringLiteral("fault, the request was lost");
    } else if (broadcast) {
        Broadcast(command);
    } else {
        answer = Ask(command, retry);
    }
    m_counters.Retries += retry ? 1 : 0;

    QString who;
    QString what;
    if (m_transcript.IsOn()) {
        const SimulatedDevice* const device = Find(command.Address);
        who = broadcast           ? QStringLiteral("all")
              : device != nullptr ? device->Title()
                                  : QStringLiteral("address %1").arg(command.Address);
        QString meaning = broadcast           ? commands::BroadcastMeaning(command.Letter)
                          : device != nullptr ? device->Meaning(command.Letter)
                                              : QString();
        if (const auto* const hub = dynamic_cast<const DeviceHub*>(device); hub != nullptr && command.Letter == 'N')
            meaning += u' ' + hub->RelayedMeaning(command.Data);
        what = Transcript::Readable(QByteArray(1, command.Letter)) + u' ' + meaning;
        const QString remark = retry ? QStringLiteral("retry, not applied") : command.Fault;
        m_transcript.Frame(true, who, command.Sequence, what.trimmed(), command.Data, command.Raw, remark);
    }
    if (hangsUp) {
        Pull();
        return;
    }
    if (!answer.Content) {
        if (!answer.Silence.isEmpty())
            m_transcript.Remark(QStringLiteral("silent: ") + answer.Silence);
        return;
    }
    if (plan.DropReply) {
        m_transcript.Remark(QStringLiteral("silent: fault, the reply was lost"));
        return;
    }
    SendReply(command, *answer.Content, plan, who, what);
}

quint8 DeviceBus::HeadOf(const FrameDecoder::Command& command, const Faults::Plan& plan) const {
    std::vector<quint8> others;
    for (const std::unique_ptr<SimulatedDevice>& device : m_devices) {
        if (device->Identity().Address != command.Address)
            others.push_back(device->Identity().Address);
    }
    return plan.Foreign && !others.empty() ? others[plan.ForeignPlace % others.size()] : command.Address;
}

void DeviceBus::SendReply(const FrameDecoder::Command& command, const QByteArray& content, const Faults::Plan& plan,
                          const QString& who, const QString& what) {
    QByteArray bytes = frames::BuildFrame(
        frames::Body(HeadOf(command, plan), command.Sequence, command.Letter, frames::EscapeData(content)));
    Faults::Corrupt(bytes, plan);
    ++m_counters.Replies;
    if (m_transcript.IsOn()) {
        const FrameDecoder::Command reply = FrameDecoder::Decode(bytes);
        QStringList remarks;
        if (!reply.Fault.isEmpty())
            remarks += reply.Fault;
        if (reply.Address != command.Address || reply.Sequence != command.Sequence || reply.Letter != command.Letter)
            remarks += QStringLiteral("the head does not fit the request");
        if (plan.Delay)
            remarks += QStringLiteral("late");
        if (!plan.Noise.isEmpty())
            remarks += QStringLiteral("behind noise ") + QString::fromLatin1(plan.Noise.toHex(' '));
        m_transcript.Frame(false, who, reply.Sequence, what.trimmed(), reply.Data, bytes,
                           remarks.join(QStringLiteral(", ")));
    }
    bytes.prepend(plan.Noise);
    const int late = m_faults.Settings().LateMilliseconds + (plan.Delay ? m_faults.Settings().DelayMilliseconds : 0);
    Send({bytes, late, plan.Slice, false});
    if (m_faults.Settings().Twins.contains(command.Address))
        Send({bytes, late + TwinMilliseconds, plan.Slice, false});
}
