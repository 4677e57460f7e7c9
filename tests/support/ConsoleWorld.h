#pragma once

#include "simulator/CounterKeypad.h"
#include "simulator/InformationDisplay.h"
#include "simulator/PowerUnit.h"
#include "station/TestConsole.h"
#include "tests/support/Files.h"
#include "tests/support/StationWorld.h"

/// A counter, a printer, a display, a power unit, and a hub with a second printer behind it, on the bench.
class ConsoleWorld : public StationWorld {
protected:
    ConsoleWorld()
        : StationWorld(
              {QStringLiteral("INSERT INTO Queue (q_Id, q_Number, q_Series, q_On, q_Name, q_Button, q_Route) VALUES "
                              "(1, 1, 1000, 1, 'A', 7, 0), (2, 2, 2000, 1, 'B', 8, 0), (3, 3, 3000, 1, 'C', 9, 1)"),
               QStringLiteral("INSERT INTO Display (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) VALUES "
                              "(1, 5, 1, 'Counter', 1, 0, 0), (2, 1, 32, 'Main', 1, 1, 0), (3, 2, 33, 'Second', 1, 1, "
                              "5), (4, 9, 40, 'Board', 1, 2, 0), (5, 1, 64, 'HUB', 1, 3, 0)"),
               QStringLiteral("INSERT INTO ScanPlan (d_Id, [Order]) VALUES (1, 1)")}) {
        const QString devices = m_folder.filePath(QStringLiteral("devices.txt"));
        WriteFile(devices, "counter 1 5 Counter\nprinter 32 1 Main\nhub 64 1 HUB\nprinter 33 2 hub=64 Second\n"
                           "display 40 9 Board\npower 100 1 Power\n");
        Simulate(devices);
        (void)m_station.reload.ReloadAll();
        ::QObject::connect(&m_console, &TestConsole::TicketListed, [this](const QString& text) { m_tickets += text; });
        ::QObject::connect(&m_station.bus, &Bus::FrameSent, [this](quint8 address, const QByteArray& frame, int) {
            m_sent += QByteArray::number(address) + ' ' + frame.sliced(5).chopped(3);
        });
    }

    TestConsole& m_console = m_station.Console();
    QStringList m_tickets;
    QByteArrayList m_sent; ///< "5 P": address, letter and data
};
