#include "console/TraceModel.h"

#include "link/Frames.h"
#include "tests/support/BusWorld.h"

#include <QBuffer>

namespace {

/// A trace that the test fills by the bus's own signals.
class TraceModelTest : public BusWorld {
protected:
    TraceModelTest() {
        Add(1, 5, model::Counter);
        Add(2, 64, model::Hub);
        Add(3, 33, model::Printer, 2);
    }

    void Send(quint8 address, const QByteArray& command, int attempt = 1) {
        const QByteArray length = QByteArray::number(command.size(), 16).rightJustified(2, '0').toUpper();
        const char sequence = address == frames::Broadcast ? '*' : '0';
        Q_EMIT m_bus.FrameSent(
            address, frames::BuildFrame(QByteArray(1, static_cast<char>(address + '0')) + sequence + length + command),
            attempt);
    }

    void Receive(const QByteArray& body, bool isGood = true, bool isAwaited = true) {
        const QByteArray frame = frames::BuildFrame(body);
        Q_EMIT m_bus.FrameReceived(frame, isGood, isAwaited);
        if (isGood && isAwaited)
            Q_EMIT m_bus.ReplyTaken(static_cast<quint8>(body[0] - '0'), frame);
    }

    std::string Row(int row, std::initializer_list<int> columns) const {
        QStringList texts;
        for (const int column : columns)
            texts += m_model.index(row, column).data().toString();
        return texts.join(u'|').toStdString();
    }

    std::string Column(int column) const {
        QStringList texts;
        for (int row = 0; row < m_model.rowCount(); ++row)
            texts += m_model.index(row, column).data().toString();
        return texts.join(u'|').toStdString();
    }

    BusTrace m_trace{m_bus, m_clock};
    TraceModel m_model{m_trace, *m_installation};
};

using enum TraceText::Column;

} // namespace

TEST_F(TraceModelTest, FramesAreToldInWords) {
    Send(5, "H0012");
    Receive("5001H1");
    Send(64, QByteArray("NQK02\xC0\x22") + '1');
    Receive("p002NK1");
    Send(77, "G77", 2);
    Q_EMIT m_bus.ReplyMissed(77, "\x02}", true);
    Send(frames::Broadcast, "R1234567");
    Receive("p", false);
    Receive("5001Hx", true, false);
    Send(5, "P");
    Receive("P007P110001");
    Send(64, "NQP");
    Receive("p002NK");
    Send(5, "H0013");
    Receive("5005H0013");
    m_model.Follow();

    const struct {
        const char* text;
        bool isMarked;
    } rows[] = {
        {"out|5|object 1|0|H|show number|0012|answered", false},
        {"in|5|object 1|0|H|show number|1|good", false},
        {"out|64|object 2 > object 3|0|N K|button table|02<C0>\"1|answered", false},
        {"in|64|object 2 > object 3|0|N K|button table|K1|good", false},
        {"out|77||0|G|power on|77|no answer, cut off after 2, try 2", true},
        {"out|*|all devices|*|R|reset with clock|1234567|sent", false},
        {"in|*|all devices|7|R|reset with clock|<02>p72<03>|bad check sum", true},
        {"in|5|object 1|0|H|show number|x|nobody asked", true},
        {"out|5|object 1|0|P|status||answered by another", true},
        {"in|32||0|P|status|110001|another device", true},
        {"out|64|object 2 > object 3|0|N P|status||answered by another", true},
        {"in|64|object 2 > object 3|0|N P|status|K|another command", true},
        {"out|5|object 1|0|H|show number|0013|answered", false},
        {"in|5|object 1|0|H|show number|0013|as it was sent", false},
    };
    ASSERT_EQ(m_model.rowCount(), std::ssize(rows));
    for (int row = 0; row < m_model.rowCount(); ++row) {
        EXPECT_EQ(Row(row, {Direction, Address, Object, Sequence, Command, Meaning, Data, TraceText::Result}),
                  rows[row].text);
        EXPECT_EQ(m_model.index(row, 0).data(TraceModel::IsMarkedRole).toBool(), rows[row].isMarked) << row;
    }
}

TEST_F(TraceModelTest, GarbageBeforeTheFirstCommandIsShownAsItCame) {
    Q_EMIT m_bus.FrameReceived("\x02\x03", false, false);
    Q_EMIT m_bus.FrameReceived("\x02\x03", false, true);
    m_model.Follow();
    EXPECT_EQ(Column(Data), "<02><03>|<02><03>");
    EXPECT_EQ(Column(Object), "|");
}

TEST_F(TraceModelTest, ARowThatWaitedIsShownAnewHoweverMuchCameMeanwhile) {
    Send(5, "P");
    m_model.Follow();
    Receive("5", false);
    m_model.Follow();
    Q_EMIT m_bus.ReplyMissed(5, {}, true);
    int changed = -1;
    ::QObject::connect(&m_model, &TraceModel::dataChanged, [&](const QModelIndex& first) { changed = first.row(); });
    m_model.Follow();
    EXPECT_EQ(changed, 0);
    EXPECT_EQ(Row(0, {TraceText::Result}), "no answer");
}

TEST_F(TraceModelTest, AFilterTakesDevicesBehindHubsByTheirOwnAddressAndLetter) {
    Send(5, "P");
    Send(64, "NQP");
    Send(64, "P");
    m_model.Follow();
    m_model.SetFilter(33, {});
    EXPECT_EQ(Column(Command), "N P");
    m_model.SetFilter({}, 'P');
    EXPECT_EQ(Column(Command), "P|N P|P");
    m_model.SetFilter(64, 'P');
    EXPECT_EQ(Column(Command), "P");
    Send(64, "P");
    Send(5, "P");
    m_model.Follow();
    EXPECT_EQ(Column(Address), "64|64");
    m_model.SetFilter({}, {});
    EXPECT_EQ(Column(Address), "5|64|64|64|5");
}

TEST_F(TraceModelTest, ItFollowsTheLineStandsStillInAPauseAndForgetsWhatGaveWay) {
    Send(5, "P");
    m_model.Follow();
    EXPECT_EQ(Column(TraceText::Result), "waiting");
    Receive("5001P");
    m_model.SetPaused(true);
    EXPECT_EQ(Column(Direction), "out|in") << "a pause begins with what has come";
    int changes = 0;
    ::QObject::connect(&m_model, &TraceModel::dataChanged, [&] { ++changes; });
    Send(5, "P");
    m_model.Follow();
    EXPECT_EQ(m_model.rowCount(), 2);
    m_model.SetFilter({}, {});
    EXPECT_EQ(m_model.rowCount(), 2);
    m_model.SetPaused(false);
    EXPECT_EQ(m_model.rowCount(), 3);
    Receive("5001P");
    m_model.Follow();
    EXPECT_EQ(Row(2, {TraceText::Result}), "answered");
    EXPECT_EQ(changes, 1) << "the row that waited is shown anew";

    m_model.SetPaused(true);
    for (quint64 i = 0; i < BusTrace::Capacity; ++i)
        Send(64, "P");
    EXPECT_FALSE(m_model.index(0, TraceText::Result).data().isValid()) << "it has given way";
    QBuffer file;
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    m_model.WriteCsv(file);
    EXPECT_EQ(file.data().count('\n'), 1) << "only the titles";
    m_model.SetPaused(false);
    EXPECT_EQ(m_model.rowCount(), static_cast<int>(BusTrace::Capacity));
    EXPECT_EQ(Row(0, {Address}), "64");
    m_model.Clear();
    EXPECT_EQ(m_model.rowCount(), 0);
    Send(5, "P");
    m_model.Follow();
    EXPECT_EQ(Column(Address), "5");
}

TEST_F(TraceModelTest, RowsAreCopiedAndSavedForOtherPrograms) {
    m_installation->QObjects[0].Name = QStringLiteral("Q\"1\", a");
    Send(5, "H0012");
    Receive("5001H");
    m_model.Follow();
    const QString time = m_model.index(0, Time).data().toString();
    const QStringList copied = m_model.AsText({m_model.index(0, 0)}).split(u'\n');
    ASSERT_EQ(copied.size(), 3);
    EXPECT_EQ(copied[0], QStringLiteral("Time\tWay\tAdr\tObject\tSeq\tCmd\tMeaning\tData\tResult\tRound trip (ms)"));
    EXPECT_EQ(copied[1], time + QStringLiteral("\tout\t5\tQ\"1\", a\t0\tH\tshow number\t0012\tanswered\t"));

    QBuffer csv;
    ASSERT_TRUE(csv.open(QIODevice::WriteOnly));
    m_model.WriteCsv(csv);
    EXPECT_EQ(csv.data().split('\n')[1], time.toUtf8() + ",out,5,\"Q\"\"1\"\", a\",0,H,show number,0012,answered,\r");
    QBuffer text;
    ASSERT_TRUE(text.open(QIODevice::WriteOnly));
    m_model.WriteText(text);
    const QByteArrayList lines = text.data().split('\n');
    ASSERT_EQ(lines.size(), 4);
    EXPECT_EQ(lines[0].indexOf("Data"), lines[1].indexOf("0012"));
}
