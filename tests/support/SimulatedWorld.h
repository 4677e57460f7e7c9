#pragma once

#include "simulator/SimulatedLine.h"
#include "tests/support/OpenStation.h"
#include "tests/support/StoreFile.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

/// A station on a store, with the devices of the same store on a line, all in simulated time.
class SimulatedWorld : public ::testing::Test {
protected:
    explicit SimulatedWorld(const QStringList& statements, const QString& baud = QStringLiteral("9600")) {
        const QString store = m_folder.filePath(QStringLiteral("Harbinet.mdb"));
        MakeStore(store, statements);
        QString problem;
        m_line = std::make_unique<SimulatedLine>(*BusInstallation::Read(store, problem), m_timeline);
        m_line->OnWritten = m_line->OnDelivered = [](const QByteArray&) {};
        m_station = std::make_unique<OpenStation>(ProgramFolders{m_folder.path(), m_folder.path()},
                                                  Station::Machine{m_clock, *m_line, m_dialogs});
        m_station->database.OpenDatabase(store);
        (void)m_station->reload.ReloadAll();
        m_station->UsePort(QStringLiteral("COM1"), baud);
        EXPECT_TRUE(Await(m_station->line.OpenPort()));
    }

    /// Lets simulated time go on until the operation is done, and gives its result.
    template <typename T>
    T Await(QCoro::Task<T>&& task) {
        std::optional<T> result;
        const auto watch = [](QCoro::Task<T> watched, std::optional<T>& to) -> QCoro::Task<> { to = co_await watched; };
        const QCoro::Task<> watching = watch(std::move(task), result);
        const Timeline::Moment end = m_timeline.Now() + std::chrono::hours(10);
        while (!result && m_timeline.Step(end))
            QCoreApplication::sendPostedEvents();
        EXPECT_TRUE(result.has_value());
        return *result;
    }

    void PassTime(Timeline::Moment time) {
        const Timeline::Moment end = m_timeline.Now() + time;
        while (m_timeline.Step(end))
            QCoreApplication::sendPostedEvents();
    }

    QTemporaryDir m_folder;
    Timeline m_timeline;
    SimulatedClock m_clock{m_timeline, QDateTime(QDate(2026, 11, 18), QTime(6, 13, 38))};
    TestDialogs m_dialogs;
    std::unique_ptr<SimulatedLine> m_line;
    std::unique_ptr<OpenStation> m_station;
};
