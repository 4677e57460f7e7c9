#pragma once

#include "platform/SerialControl.h"
#include "station/Station.h"
#include "tests/support/TestClock.h"
#include "tests/support/TestDialogs.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

/// A station whose parts a test can reach and set.
class OpenStation : public Station {
public:
    using Station::Close;
    using Station::CloseVoice;
    using Station::Station;

    using Station::bus;
    using Station::control;
    using Station::database;
    using Station::forms;
    using Station::ini;
    using Station::init;
    using Station::installation;
    using Station::line;
    using Station::loaders;
    using Station::log;
    using Station::options;
    using Station::printers;
    using Station::reload;
    using Station::router;
    using Station::run;
    using Station::starts;
    using Station::tickets;
    using Station::trace;
};

/// A station in a folder of its own, on a clock that stands still, with boxes that a test expects.
class StationFolder : public ::testing::Test {
protected:
    QString Path(const QString& name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
    QString m_store = Path(QStringLiteral("Harbinet.mdb"));
    TestClock m_clock;
    TestDialogs m_dialogs;
    SerialControl m_port;
    OpenStation m_station{{m_folder.path(), m_folder.path()}, {m_clock, m_port, m_dialogs}};
};
