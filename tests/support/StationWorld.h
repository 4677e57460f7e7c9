#pragma once

#include "simulator/BusInstallation.h"
#include "simulator/SimulatedBus.h"
#include "tests/support/OpenStation.h"
#include "tests/support/StoreFile.h"
#include "tests/support/Waiting.h"

#include <gtest/gtest.h>

/// A station on a store, with the devices of the same store simulated on a pseudo-terminal.
class StationWorld : public StationFolder {
protected:
    explicit StationWorld(const QStringList& statements) {
        MakeStore(m_store, statements);
        Simulate(m_store);
        m_station.database.OpenDatabase(m_store);
    }

    /// The line first: the number of a pseudo-terminal must not be another process's while it is locked here.
    ~StationWorld() override { m_station.control.Close(); }

    /// Puts devices on the line as a store or a text describes them now.
    void Simulate(const QString& path) {
        QString problem;
        const auto installation = BusInstallation::Read(path, problem);
        ASSERT_TRUE(installation.has_value()) << qPrintable(problem);
        m_devices = std::make_unique<SimulatedBus>(*installation);
        ASSERT_EQ(m_devices->Open(), QString());
    }

    void OpenLine() {
        m_station.line.Settings = {.CommDevice = m_devices->SlavePath(),
                                   .CommName = m_devices->SlavePath(),
                                   .CommBaud = QStringLiteral("115200")};
        EXPECT_TRUE(Await(m_station.line.OpenPort()));
    }

    /// Lets the devices be silent at these addresses and answer at all others.
    void Silence(const std::set<quint8>& addresses) const {
        FaultSettings faults;
        faults.Silent = addresses;
        m_devices->SetFaults(faults);
    }

    std::unique_ptr<SimulatedBus> m_devices;
};
