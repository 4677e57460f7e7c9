#pragma once

#include "tests/support/Waiting.h"
#include "widgets/DataGrid.h"

#include <gtest/gtest.h>

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QWindow>

/// Hands on a window: finds controls by name and works them by keys, clicks and drags.
class WindowDriver {
public:
    explicit WindowDriver(QWidget& window)
        : m_window(window) {}

    /// A control that the user can see and use.
    template <typename Control>
    Control& Find(const char* name) const {
        auto* control = m_window.findChild<Control*>(QString::fromLatin1(name));
        EXPECT_NE(control, nullptr) << name;
        EXPECT_TRUE(control->isVisible() && control->isEnabled()) << name;
        return *control;
    }

    DataGrid& Grid(const char* name) const { return Find<DataGrid>(name); }

    void ClickButton(const char* name) const { QTest::mouseClick(&Find<QPushButton>(name), Qt::LeftButton); }

    /// Where a cell stands in the grid's viewport, once it is scrolled into view.
    static QPoint Place(DataGrid& grid, int row, int column) {
        const QModelIndex cell = grid.model()->index(row, column);
        EXPECT_TRUE(cell.isValid()) << qPrintable(grid.objectName()) << ' ' << row << ' ' << column;
        grid.scrollTo(cell);
        return grid.visualRect(cell).center();
    }

    static void Click(DataGrid& grid, int row, int column) {
        QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, Place(grid, row, column));
    }

    /// Clicks a cell, types over what is in it, and ends with `end`.
    static void Type(DataGrid& grid, int row, int column, const QString& text, Qt::Key end = Qt::Key_Return) {
        Click(grid, row, column);
        Keys(text);
        Press(end);
    }

    /// Types a new record into the blank row, cell by cell from `column` on with Tab.
    static void Enter(DataGrid& grid, int column, const QStringList& texts) {
        Click(grid, grid.model()->rowCount() - 1, column);
        for (qsizetype i = 0; i < texts.size(); ++i) {
            Keys(texts[i]);
            Press(i + 1 == texts.size() ? Qt::Key_Return : Qt::Key_Tab);
        }
    }

    /// Opens the list of a cell and chooses by the first letter.
    static void Choose(DataGrid& grid, int row, int column, const QString& letter) {
        Click(grid, row, column);
        QApplication::processEvents();
        if (QWidget* opened = QApplication::activePopupWidget()) {
            QTest::keyClicks(opened->focusWidget(), letter);
            QTest::keyClick(opened->focusWidget(), Qt::Key_Return);
            QApplication::processEvents();
            return;
        }
        Press(Qt::Key_Return);
        auto* box = qobject_cast<QComboBox*>(QApplication::focusWidget());
        ASSERT_NE(box, nullptr) << row << ' ' << column;
        QTest::keyClicks(box, letter);
        Press(Qt::Key_Return);
        // The editor closes when the focus leaves it.
        grid.setFocus();
        QApplication::processEvents();
    }

    /// Drags a cell of one grid onto another grid with the mouse.
    static void Drag(DataGrid& from, int row, int column, DataGrid& to) {
        QWindow* window = from.window()->windowHandle();
        const auto in = [&](const DataGrid& grid, QPoint place) {
            return grid.viewport()->mapTo(grid.window(), place);
        };
        const QPoint start = in(from, Place(from, row, column));
        const QPoint end = in(to, to.viewport()->rect().center());
        QTest::mousePress(window, Qt::LeftButton, {}, start);
        for (const QPoint place : {start + QPoint(5, 0), start + QPoint(40, 5), end - QPoint(5, 5), end})
            QTest::mouseMove(window, place);
        QTest::mouseRelease(window, Qt::LeftButton, {}, end);
        QApplication::processEvents();
    }

    /// A key for whatever has the focus. An editor takes Enter and Tab through the event loop.
    static void Press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
        QApplication::processEvents();
    }

    /// Any characters, also those that no key of a plain keyboard gives.
    static void Keys(const QString& text) {
        for (const QChar character : text) {
            QWidget* receiver = QApplication::focusWidget();
            QKeyEvent press(QEvent::KeyPress, Qt::Key_unknown, Qt::NoModifier, QString(character));
            QApplication::sendEvent(receiver, &press);
        }
    }

    static QLineEdit* Editor() { return qobject_cast<QLineEdit*>(QApplication::focusWidget()); }

    static QString Shown(const DataGrid& grid, int row, int column) {
        return grid.model()->index(row, column).data().toString();
    }

    /// A column of a grid from top to bottom, joined by "|"; of the blank row nothing.
    static std::string Column(const DataGrid& grid, int column) {
        QStringList texts;
        for (int row = 0; row < grid.model()->rowCount(); ++row) {
            if (!static_cast<const GridModel*>(grid.model())->IsNewRow(row))
                texts += Shown(grid, row, column);
        }
        return texts.join(u'|').toStdString();
    }

private:
    QWidget& m_window;
};
