#pragma once

#include "setup/frmQueue.h"
#include "tests/support/WindowDriver.h"

/// An installer's hands on the setup window.
class SetupHands : public WindowDriver {
public:
    explicit SetupHands(frmQueue& window)
        : WindowDriver(window)
        , m_setup(window) {}

    struct Service {
        QString name;
        QString description;
        int button;
    };

    struct Object {
        QString name;
        int number;
        int address;
        QString type; ///< first letter of its name in the list
    };

    /// Goes to a tab by its key. @param number 1 to 4.
    void GoToTab(int number) const {
        m_setup.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&m_setup));
        QTest::keyClick(&m_setup, static_cast<Qt::Key>(Qt::Key_0 + number), Qt::AltModifier);
        QApplication::processEvents();
    }

    /// Types services with the numbers from 1 on into the empty grid, and makes them active.
    void EnterServices(std::initializer_list<Service> services) const {
        DataGrid& grid = Grid("TDBGridQueue");
        int row = 0;
        for (const Service& service : services) {
            Enter(grid, 1, {service.name, QString::number(row + 1), service.description});
            Type(grid, row, 5, QString::number(service.button));
            Choose(grid, row, 6, QStringLiteral("Y"));
            ++row;
        }
    }

    /// Types objects into the empty grid, and makes them active.
    void EnterObjects(std::initializer_list<Object> objects) const {
        DataGrid& grid = Grid("TDBGridDisplay");
        int row = 0;
        for (const Object& object : objects) {
            Enter(grid, 0, {object.name, QString::number(object.number), QString::number(object.address)});
            Choose(grid, row, 3, object.type);
            Choose(grid, row, 4, QStringLiteral("Y"));
            ++row;
        }
    }

    /// Drags objects onto the list of counters of a service; all by their rows.
    void Assign(int service, std::initializer_list<int> objects) const {
        Click(Grid("TDBGridQueue"), service, 1);
        for (const int object : objects)
            Drag(Grid("TDBGridDisplay"), object, 0, Grid("TDBGridQD"));
    }

private:
    frmQueue& m_setup;
};
