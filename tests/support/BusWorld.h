#pragma once

#include "core/EventLog.h"
#include "core/Installation.h"
#include "link/Bus.h"
#include "platform/SerialControl.h"
#include "tests/support/TestClock.h"

#include <gtest/gtest.h>

#include <QStringList>
#include <QTemporaryDir>

/// A bus on an open line, a log whose messages are kept, and an empty installation.
class BusWorld : public ::testing::Test {
protected:
    BusWorld() {
        ::QObject::connect(&m_log, &EventLog::Written, [this](const QString& message) { m_messages += message; });
    }

    void Open(const QString& device, const QString& baud = QStringLiteral("115200")) {
        ASSERT_TRUE(m_control.SetPort(device, baud + QStringLiteral(",n,8,1")));
        ASSERT_TRUE(m_control.Open());
    }

    void Add(qint32 id, quint8 address, model::ObjectType type, qint32 hubId = 0) {
        model::QObject& object = m_installation->QObjects[static_cast<std::size_t>(m_installation->NumObjects++)];
        object.Id = id;
        object.Name = QStringLiteral("object %1").arg(id);
        object.Address = address;
        object.Type = type;
        object.HubId = hubId;
    }

    QTemporaryDir m_folder;
    TestClock m_clock;
    EventLog m_log{m_folder.path(), m_clock};
    SerialControl m_control;
    Bus m_bus{m_control, m_clock, m_log};
    std::unique_ptr<model::Installation> m_installation = std::make_unique<model::Installation>();
    QStringList m_messages;
};
