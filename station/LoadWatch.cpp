#include "station/LoadWatch.h"

#include "core/Installation.h"
#include "link/Bus.h"
#include "link/Encodings.h"
#include "link/Frames.h"
#include "platform/Clock.h"
#include "tickets/VniText.h"

#include <algorithm>

namespace {

constexpr char Relay = 'N';
constexpr char Status = 'P';
constexpr char FullLoad = '1';
constexpr qsizetype ClockLength = 7; ///< characters of a clock text
constexpr qsizetype MostFlags = 6;
constexpr qsizetype FewestFlags = 4;

/// What a letter does with a load.
struct Step {
    enum class At { Whole, Begin, Piece, End };

    LoadKind kind;
    At at;
};

std::optional<Step> StepOf(quint8 type, char letter, const QByteArray& data) {
    using At = Step::At;
    if (letter == 'U' && data.size() == ClockLength && (type == model::Hub || type == model::Printer))
        return Step{LoadKind::Clock, At::Whole};
    if (type == model::Hub) {
        switch (letter) {
        case 'W':
            return Step{LoadKind::Members, At::Whole};
        case 'L':
            return Step{LoadKind::Block, At::Whole};
        default:
            return std::nullopt;
        }
    }
    if (type != model::Printer)
        return std::nullopt;
    switch (letter) {
    case 'S':
        return Step{LoadKind::Clock, At::Whole};
    case 'K':
        return Step{LoadKind::Tables, At::Begin};
    case 'M':
        return Step{LoadKind::Tables, At::Piece};
    case 'N':
        return Step{LoadKind::Tables, At::End};
    case 'L':
        return Step{LoadKind::Form, At::Begin};
    case 'O':
        return Step{LoadKind::Form, At::Piece};
    case 'V':
        return Step{LoadKind::Form, At::End};
    case 'X':
        return Step{LoadKind::Logos, At::Begin};
    case 'Y':
        return Step{LoadKind::Logos, At::Piece};
    case 'Z':
        return Step{LoadKind::Logos, At::End};
    case 'G':
        return Step{LoadKind::Letters, At::Begin};
    case 'J':
        return Step{LoadKind::Letters, At::Piece};
    case 'T':
        return Step{LoadKind::Letters, At::End};
    default:
        return std::nullopt;
    }
}

bool IsStuffed(LoadKind kind) {
    return kind == LoadKind::Block || kind == LoadKind::Form || kind == LoadKind::Logos || kind == LoadKind::Letters;
}

int Announced(LoadKind kind, const QByteArray& data) {
    bool isNumber = false;
    int announced = -1;
    if (kind == LoadKind::Tables)
        announced = data.left(2).toInt(&isNumber, 16);
    else if (kind == LoadKind::Form)
        announced = data.toInt(&isNumber, 16);
    return isNumber ? announced : -1;
}

} // namespace

LoadWatch::LoadWatch(const Bus& bus, const model::Installation& installation, LoadRecord& record, const Clock& clock)
    : m_installation(installation)
    , m_record(record)
    , m_clock(clock) {
    connect(&bus, &Bus::FrameSent, this, &LoadWatch::OnSent);
    connect(&bus, &Bus::ReplyTaken, this, [this](quint8, const QByteArray& frame) { OnTaken(frame); });
}

QByteArray LoadWatch::ClockContent(const Clock& clock) {
    const int minutes = clock.Now().offsetFromUtc() / 60;
    return QStringLiteral("%1%2:%3")
        .arg(minutes < 0 ? u'-' : u'+')
        .arg(std::abs(minutes) / 60, 2, 10, QLatin1Char('0'))
        .arg(std::abs(minutes) % 60, 2, 10, QLatin1Char('0'))
        .toLatin1();
}

const model::QObject* LoadWatch::DeviceAt(quint8 address) const {
    const auto objects = m_installation.LoadedObjects();
    const auto found = std::find_if(objects.begin(), objects.end(),
                                    [address](const model::QObject& object) { return object.Address == address; });
    return found == objects.end() ? nullptr : &*found;
}

DeviceIdentity IdentityOf(const model::Installation& installation, const model::QObject& object) {
    DeviceIdentity identity{object.Type, object.Address, DeviceIdentity::Direct};
    if (object.HubId != 0) {
        if (const qint16 hub = installation.FindObjectById(object.HubId); hub >= 0)
            identity.hub = installation.Object(hub).Address;
    }
    return identity;
}

std::optional<LoadWatch::Command> LoadWatch::CommandOf(quint8 address, const QByteArray& frame) const {
    const std::optional<frames::Parts> parts = frames::Split(frame);
    const model::QObject* device = address == frames::Broadcast ? nullptr : DeviceAt(address);
    if (!parts || !device)
        return std::nullopt;
    Command command;
    command.frame = frame;
    command.letter = parts->letter;
    command.data = parts->data.toByteArray();
    if (device->Type == model::Hub && command.letter == Relay && command.data.size() >= 2) {
        const qint32 hub = device->Id;
        device = DeviceAt(static_cast<quint8>(encoding::FromSmallNumber(command.data[0])));
        if (!device || device->HubId != hub)
            return std::nullopt;
        command.isRelayed = true;
        command.letter = command.data[1];
        command.data.remove(0, 2);
    }
    const std::optional<Step> step = StepOf(device->Type, command.letter, command.data);
    if (!step && (command.letter != Status || device->Type != model::Printer))
        return std::nullopt;
    command.device = IdentityOf(m_installation, *device);
    command.key = device->Id;
    command.name = device->Name;
    if (step) {
        command.kind = step->kind;
        command.begins = step->at == Step::At::Begin || step->at == Step::At::Whole;
        command.isPiece = step->at == Step::At::Piece || step->at == Step::At::Whole;
        command.isEnd = step->at == Step::At::End || step->at == Step::At::Whole;
    }
    return command;
}

LoadWatch::Open* LoadWatch::FindOpen(const DeviceIdentity& device, LoadKind kind) {
    const auto found = std::find_if(m_open.begin(), m_open.end(), [&](const Open& open) {
        return open.entry.device == device && open.entry.kind == kind;
    });
    return found == m_open.end() ? nullptr : &*found;
}

LoadWatch::Open& LoadWatch::OpenFor(const Command& command) {
    Open* open = FindOpen(command.device, *command.kind);
    // A beginning that was not answered is sent once more.
    const bool isAgain = open && command.begins && open->pieces.empty() && open->head == command.data;
    if (open && command.begins && !isAgain) {
        End(*open, true);
        open = nullptr;
    }
    if (!open) {
        open = &m_open.emplace_back();
        const Origin origin = OnOrigin();
        open->entry.device = command.device;
        open->entry.key = command.key;
        open->entry.name = command.name;
        open->entry.kind = *command.kind;
        open->entry.begun = m_clock.Now().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
        open->entry.user = origin.user;
        open->entry.port = origin.port;
        open->entry.version = origin.version;
        // What comes without a beginning is no whole load.
        open->isWhole = command.begins;
        m_record.Append(open->entry);
        // Whatever happens from now on, the device no longer holds what it did.
        m_record.Flush();
        Q_EMIT Entered();
    }
    if (command.begins) {
        open->isWhole = true;
        open->head = command.data;
        open->announced = Announced(*command.kind, command.data);
        open->endsWithRows = *command.kind == LoadKind::Tables && !command.data.endsWith(FullLoad);
    }
    return *open;
}

void LoadWatch::OnSent(quint8 address, const QByteArray& frame, int attempt) {
    if (attempt > 1) {
        if (!m_command)
            return;
        m_command->frame = frame;
        if (Open* const open = m_command->kind ? FindOpen(m_command->device, *m_command->kind) : nullptr)
            ++open->entry.tries;
        return;
    }
    Settle(std::nullopt);
    m_command = CommandOf(address, frame);
    if (!m_command || !m_command->kind)
        return;
    Open& open = OpenFor(*m_command);
    ++open.entry.frames;
    ++open.entry.tries;
    if (!m_command->isPiece)
        return;
    const bool isRow = *m_command->kind == LoadKind::Tables;
    bool isNumber = true;
    const int row = isRow ? m_command->data.left(2).toInt(&isNumber, 16) : static_cast<int>(open.pieces.size());
    m_command->piece = isNumber ? row : -1;
    QByteArray& piece = open.pieces[m_command->piece];
    if (std::exchange(piece, m_command->data) != m_command->data)
        open.own[m_command->piece] = false;
}

void LoadWatch::OnTaken(const QByteArray& reply) {
    if (!m_command)
        return;
    const ReplyFit fit = FitOf(m_command->frame, reply);
    const std::optional<frames::Parts> parts = frames::Split(reply);
    if (m_command->letter == Status && parts && IsOwn(fit, m_command->frame))
        NoteFlags(parts->data.sliced(m_command->isRelayed ? 1 : 0).toByteArray());
    Settle(fit);
}

void LoadWatch::Settle(std::optional<ReplyFit> fit) {
    const std::optional<Command> command = std::exchange(m_command, std::nullopt);
    Open* const open = command && command->kind ? FindOpen(command->device, *command->kind) : nullptr;
    if (!open)
        return;
    const bool isOwn = fit && IsOwn(*fit, command->frame);
    open->entry.own += isOwn ? 1 : 0;
    open->entry.foreign += fit && !isOwn ? 1 : 0;
    if (command->isPiece)
        open->own[command->piece] |= isOwn;
    else
        open->isWhole &= isOwn;
    const bool wasLastRow = open->endsWithRows && open->pieces.size() >= static_cast<std::size_t>(open->announced);
    if (command->isEnd || wasLastRow)
        End(*open, false);
}

void LoadWatch::EndAll() {
    Settle(std::nullopt);
    while (!m_open.empty())
        End(m_open.front(), true);
}

QString LoadWatch::WhyNotDone(const Open& open) const {
    const LoadEntry& entry = open.entry;
    if (entry.foreign > 0)
        return tr("%1 of %2 commands were answered by something else").arg(entry.foreign).arg(entry.frames);
    if (entry.kind == LoadKind::Tables) {
        QStringList lost;
        for (int row = 0; row < open.announced; ++row) {
            const auto own = open.own.find(row);
            if (own != open.own.end() && own->second)
                continue;
            lost += row < m_installation.NumServices
                        ? tr("row %1 (%2)")
                              .arg(row)
                              .arg(vni::ToUnicode(m_installation.Service(static_cast<qint16>(row)).Name))
                        : tr("row %1").arg(row);
        }
        if (!lost.isEmpty())
            return tr("service %1 was not taken").arg(lost.join(QStringLiteral(", ")));
    }
    if (entry.own < entry.frames)
        return tr("%1 of %2 commands were not answered").arg(entry.frames - entry.own).arg(entry.frames);
    return tr("it was not sent whole");
}

void LoadWatch::End(Open& open, bool isCutOff) {
    LoadEntry& entry = open.entry;
    entry.event = LoadEntry::Event::Ended;
    entry.ended = m_clock.Now().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
    bool isWhole = open.isWhole;
    if (entry.kind == LoadKind::Tables) {
        entry.content = open.head.chopped(std::min<qsizetype>(open.head.size(), 1));
        isWhole = isWhole && static_cast<int>(open.pieces.size()) == open.announced;
    }
    for (const auto& [row, piece] : open.pieces) {
        isWhole = isWhole && open.own[row];
        entry.content += IsStuffed(entry.kind) ? frames::UnescapeData(piece) : piece;
    }
    if (entry.kind == LoadKind::Form)
        isWhole = isWhole && entry.content.size() == open.announced;
    if (entry.kind == LoadKind::Clock)
        entry.content = ClockContent(m_clock);
    entry.end = isCutOff ? LoadEntry::End::CutOff : isWhole ? LoadEntry::End::Done : LoadEntry::End::Failed;
    if (isCutOff)
        entry.reason = tr("left before its end");
    else if (!isWhole)
        entry.reason = WhyNotDone(open);
    entry.hash = LoadRecord::HashOf(entry.content);
    if (entry.kind == LoadKind::Form || entry.kind == LoadKind::Logos || entry.kind == LoadKind::Letters)
        entry.source = OnSource(entry);
    Enter(std::move(entry));
    m_open.remove_if([&open](const Open& one) { return &one == &open; });
}

void LoadWatch::NoteFlags(const QByteArray& content) {
    // In the middle of a load a printer tells of what is half there.
    const bool isAtWork = std::any_of(m_open.begin(), m_open.end(), [this](const Open& open) {
        return open.entry.device == m_command->device && open.entry.kind != LoadKind::Clock;
    });
    const QString flags = QString::fromLatin1(content.left(MostFlags));
    if (isAtWork || flags.size() < FewestFlags || !m_record.IsNews(m_command->device, flags))
        return;
    const Origin origin = OnOrigin();
    LoadEntry entry;
    entry.event = LoadEntry::Event::Asked;
    entry.device = m_command->device;
    entry.key = m_command->key;
    entry.name = m_command->name;
    entry.flags = flags;
    entry.begun = m_clock.Now().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
    entry.user = origin.user;
    entry.port = origin.port;
    entry.version = origin.version;
    Enter(std::move(entry));
}

void LoadWatch::Enter(LoadEntry entry) {
    m_record.Append(std::move(entry));
    // From the event loop: the bus must not wait for a store that another program holds.
    QMetaObject::invokeMethod(
        this, [this] { m_record.Flush(); }, Qt::QueuedConnection);
    Q_EMIT Entered();
}
