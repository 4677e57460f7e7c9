#include "hubs/DeviceStart.h"
#include "core/HubTable.h"

#include "core/Options.h"
#include "hubs/HubRouter.h"
#include "tests/support/AnsweringEnd.h"
#include "tests/support/BusWorld.h"
#include "tests/support/Waiting.h"

namespace {

/// A counter on the bus, one behind a hub, a printer, a display.
class DeviceStartTest : public BusWorld {
protected:
    DeviceStartTest() {
        Open(m_end.Terminal.Path());
        Add(1, 1, model::Counter);
        Add(2, 2, model::Counter, 5);
        Add(3, 32, model::Printer);
        Add(4, 40, model::Display);
        Add(5, 64, model::Hub);
        BuildHubTable(*m_installation, m_log);
        m_installation->LastTicketNumber = 17;
        ::QObject::connect(&m_start, &DeviceStart::UpdateObjectDisplay,
                           [this](qint16 object, int type, qint32 number, const QByteArray& text) {
                               m_shown += QByteArray::number(object) + ' ' + QByteArray::number(type) + ' ' +
                                          QByteArray::number(number) + ' ' + text;
                           });
    }

    AnsweringEnd m_end;
    Options m_options;
    HubRouter m_router{m_bus, *m_installation};
    DeviceStart m_start{m_bus, m_router, *m_installation, m_options, m_clock};
    QByteArrayList m_shown;
};

} // namespace

TEST_F(DeviceStartTest, EachCommandGoesOutAsItsDeviceTakesItAndShowsOnTheMap) {
    const QByteArray clock = "\x36\x3D\x56\x4A\x3B\x42\x34";
    const QByteArray led = QByteArray(";<<<;<;").repeated(3);
    const QByteArray matrix = (QByteArray(6, '\x16') + '\x1B').repeated(3);
    const struct {
        std::function<QCoro::Task<bool>()> start;
        QByteArray command;
        QByteArray shown;
    } cases[] = {
        {[this] { return m_start.CounterTime(0); }, "1 S" + clock.first(3), "0 0 0 "},
        {[this] { return m_start.PrinterTime(2); }, "P S" + clock, ""},
        {[this] {
             m_options.MultiTicketSeries = true;
             return m_start.PrinterTime(2);
         },
         "P S" + clock, "2 1 17 "},
        {[this] { return m_start.DisplayQuery(3); }, "X S", "3 2 0 "},
        {[this] { return m_start.SetCounterNumber(0, 7); }, "1 H0007", "0 0 7 "},
        {[this] { return m_start.SetCounterNumber(0, 12345); }, "1 H2345", "0 0 2345 "},
        {[this] { return m_start.SetCounterNumber(0, 0); }, "1 H0>><", "0 0 0 "},
        {[this] {
             m_options.DisplayType = 1;
             return m_start.SetCounterNumber(0, 0);
         },
         "1 H----", "0 0 0 "},
        {[this] { return m_start.SetHubCounterNumber(1, "42"); }, "p H1042", "1 0 42 "},
        {[this] { return m_start.SetHubCounterNumber(1, ""); }, "p H10----", "1 0 0 "},
        {[this] { return m_start.SetInfoText(3, ""); }, "X H0000" + led, "3 2 0 " + led},
        {[this] {
             m_options.MainDisplayType = 1;
             return m_start.SetInfoText(3, "");
         },
         "X H0000" + matrix, "3 2 0 " + matrix},
        {[this] { return m_start.SetInfoText(3, "as given"); }, "X H0000as given", "3 2 0 as given"},
    };
    for (const auto& [start, command, shown] : cases) {
        m_end.Commands.clear();
        m_shown.clear();
        EXPECT_TRUE(Await(start())) << command.constData();
        EXPECT_EQ(m_end.Commands, QByteArrayList{command});
        EXPECT_EQ(m_shown.join('|'), shown);
    }
}

TEST_F(DeviceStartTest, ACounterThatItsHubDoesNotListIsShownButNotReached) {
    m_installation->HubTable[4].Count = 0;
    EXPECT_FALSE(Await(m_start.SetHubCounterNumber(1, "42")));
    EXPECT_TRUE(m_end.Commands.isEmpty());
    EXPECT_EQ(m_shown.join('|'), "1 0 42 ");
}
