#include "console/TraceText.h"

#include "core/Installation.h"
#include "link/CommandNames.h"
#include "link/Encodings.h"
#include "link/Frames.h"
#include "tickets/VniText.h"

#include <QCoreApplication>
#include <QDateTime>

namespace {

QString Translated(const char* text) {
    return QCoreApplication::translate("TraceText", text);
}

const model::QObject* FindByAddress(const model::Installation& installation, quint8 address) {
    for (const model::QObject& object : installation.LoadedObjects()) {
        if (object.Address == address)
            return &object;
    }
    return nullptr;
}

/// What a good frame is worth as an answer.
QString FitText(ReplyFit fit) {
    switch (fit) {
    case ReplyFit::Own:
        return Translated(QT_TRANSLATE_NOOP("TraceText", "good"));
    case ReplyFit::AsSent:
        return Translated(QT_TRANSLATE_NOOP("TraceText", "as it was sent"));
    case ReplyFit::OtherAddress:
        return Translated(QT_TRANSLATE_NOOP("TraceText", "another device"));
    case ReplyFit::OtherSequence:
        return Translated(QT_TRANSLATE_NOOP("TraceText", "an older try"));
    case ReplyFit::OtherLetter:
    case ReplyFit::OtherDevice:
        return Translated(QT_TRANSLATE_NOOP("TraceText", "another command"));
    }
    return {};
}

} // namespace

QString Readable(QByteArrayView bytes) {
    QString text;
    for (const char byte : bytes) {
        const auto code = static_cast<unsigned char>(byte);
        if (code >= 0x20 && code < 0x7F)
            text += QLatin1Char(byte);
        else
            text += QStringLiteral("<%1>").arg(code, 2, 16, QLatin1Char('0')).toUpper();
    }
    return text;
}

TraceText::TraceText(const BusTrace& trace, const model::Installation& installation)
    : m_trace(trace)
    , m_installation(installation) {}

QString TraceText::Title(int column) {
    static constexpr const char* titles[Columns] = {
        QT_TRANSLATE_NOOP("TraceText", "Time"),    QT_TRANSLATE_NOOP("TraceText", "Way"),
        QT_TRANSLATE_NOOP("TraceText", "Adr"),     QT_TRANSLATE_NOOP("TraceText", "Object"),
        QT_TRANSLATE_NOOP("TraceText", "Seq"),     QT_TRANSLATE_NOOP("TraceText", "Cmd"),
        QT_TRANSLATE_NOOP("TraceText", "Meaning"), QT_TRANSLATE_NOOP("TraceText", "Data"),
        QT_TRANSLATE_NOOP("TraceText", "Result"),  QT_TRANSLATE_NOOP("TraceText", "Round trip (ms)")};
    return column >= 0 && column < Columns ? Translated(titles[column]) : QString();
}

TraceText::Reading TraceText::ReadFrame(const QByteArray& frame) {
    Reading reading;
    if (const std::optional<frames::Parts> parts = frames::Split(frame)) {
        reading.address = reading.device = parts->address;
        reading.letter = reading.deviceLetter = parts->letter;
        reading.data = parts->data.toByteArray();
    } else {
        reading.data = frame;
    }
    return reading;
}

TraceText::Reading TraceText::ReadRequest(const QByteArray& frame) const {
    Reading reading = ReadFrame(frame);
    const model::QObject* object = FindByAddress(m_installation, reading.address);
    if (reading.letter != 'N' || !object || object->Type != model::Hub)
        return reading;
    if (const auto relayed = commands::ReadRelay(reading.data)) {
        reading.isRelay = true;
        reading.device = relayed->address;
        reading.deviceLetter = relayed->letter;
        reading.data = relayed->data;
    }
    return reading;
}

TraceText::Reading TraceText::Read(quint64 serial) const {
    const TraceRow& row = m_trace.Row(serial);
    if (row.IsOut())
        return ReadRequest(row.frame);
    // A reply says little about itself: it belongs to the command that waited for it, unless another device sent it.
    Reading reading = ReadFrame(row.frame);
    if (row.HasRequest() && row.fit != ReplyFit::OtherAddress && row.request >= m_trace.First() &&
        row.request < serial && m_trace.Row(row.request).IsOut()) {
        const QByteArray content = std::exchange(reading.data, {});
        reading = ReadRequest(m_trace.Row(row.request).frame);
        reading.data = content;
    }
    return reading;
}

QString TraceText::ObjectName(const Reading& reading) const {
    if (reading.address == frames::Broadcast)
        return Translated(QT_TRANSLATE_NOOP("TraceText", "all devices"));
    const model::QObject* object = FindByAddress(m_installation, reading.address);
    const QString name = object ? vni::ToUnicode(object->Name) : QString();
    if (!reading.isRelay)
        return name;
    const model::QObject* device = FindByAddress(m_installation, reading.device);
    return name + QStringLiteral(" > ") + (device ? vni::ToUnicode(device->Name) : QString::number(reading.device));
}

QString TraceText::MeaningOf(const Reading& reading) const {
    if (reading.address == frames::Broadcast)
        return commands::BroadcastMeaning(reading.letter);
    const model::QObject* object = FindByAddress(m_installation, reading.device);
    std::optional<model::ObjectType> type;
    if (object)
        type = static_cast<model::ObjectType>(object->Type);
    return commands::Meaning(type, reading.deviceLetter);
}

QString TraceText::ResultOf(const TraceRow& row) {
    QString text;
    switch (row.outcome) {
    case TraceRow::Waiting:
        text = Translated(QT_TRANSLATE_NOOP("TraceText", "waiting"));
        break;
    case TraceRow::Answered:
        text = IsForeign(row.fit) ? Translated(QT_TRANSLATE_NOOP("TraceText", "answered by another"))
                                  : Translated(QT_TRANSLATE_NOOP("TraceText", "answered"));
        break;
    case TraceRow::NoAnswer:
        text = Translated(QT_TRANSLATE_NOOP("TraceText", "no answer"));
        break;
    case TraceRow::LineClosed:
        text = Translated(QT_TRANSLATE_NOOP("TraceText", "line closed"));
        break;
    case TraceRow::ToAll:
        text = Translated(QT_TRANSLATE_NOOP("TraceText", "sent"));
        break;
    case TraceRow::Good:
        text = FitText(row.fit);
        break;
    case TraceRow::BadSum:
        text = Translated(QT_TRANSLATE_NOOP("TraceText", "bad check sum"));
        break;
    case TraceRow::Unasked:
        text = Translated(QT_TRANSLATE_NOOP("TraceText", "nobody asked"));
        break;
    }
    if (row.collected > 0)
        text += Translated(QT_TRANSLATE_NOOP("TraceText", ", cut off after %1")).arg(row.collected);
    if (row.attempt > 1)
        text += Translated(QT_TRANSLATE_NOOP("TraceText", ", try %1")).arg(row.attempt);
    return text;
}

QString TraceText::Text(quint64 serial, int column) const {
    const TraceRow& row = m_trace.Row(serial);
    switch (column) {
    case Time:
        return QDateTime::fromMSecsSinceEpoch(row.time).toString(QStringLiteral("HH:mm:ss.zzz"));
    case Direction:
        return row.IsOut() ? Translated(QT_TRANSLATE_NOOP("TraceText", "out"))
                           : Translated(QT_TRANSLATE_NOOP("TraceText", "in"));
    case Address: {
        const quint8 address = Read(serial).address;
        return address == frames::Broadcast ? QStringLiteral("*") : QString::number(address);
    }
    case Object:
        return ObjectName(Read(serial));
    case Sequence:
        return row.frame.size() > 2 ? Readable(QByteArrayView(row.frame).sliced(2, 1)) : QString();
    case Command: {
        const Reading reading = Read(serial);
        const QString letter = Readable(QByteArrayView(&reading.letter, 1));
        return reading.isRelay ? letter + u' ' + Readable(QByteArrayView(&reading.deviceLetter, 1)) : letter;
    }
    case Meaning:
        return MeaningOf(Read(serial));
    case Data:
        return Readable(Read(serial).data);
    case Result:
        return ResultOf(row);
    case RoundTrip:
        return row.roundTrip < 0 ? QString() : QString::number(row.roundTrip / 1000.0, 'f', 1);
    default:
        return {};
    }
}

bool TraceText::IsMarked(quint64 serial) const {
    const TraceRow& row = m_trace.Row(serial);
    switch (row.outcome) {
    case TraceRow::NoAnswer:
    case TraceRow::LineClosed:
    case TraceRow::BadSum:
    case TraceRow::Unasked:
        return true;
    default:
        return row.attempt > 1 || IsForeign(row.fit);
    }
}

quint8 TraceText::DeviceAddress(quint64 serial) const {
    return Read(serial).device;
}

char TraceText::Letter(quint64 serial) const {
    return Read(serial).deviceLetter;
}
