#pragma once

#include "setup/frmQueue.h"
#include "tests/support/OpenStation.h"
#include "tests/support/StoreFile.h"
#include "tests/support/WindowDriver.h"

#include <gtest/gtest.h>

#include <QSqlQuery>
#include <QSqlRecord>

/// The setup window on a store of its own, worked by hand.
class SetupWindow : public StationFolder {
protected:
    explicit SetupWindow(const QStringList& statements) {
        MakeStore(m_store, statements);
        m_station.database.OpenDatabase(m_store);
    }

    void Show() {
        m_window = std::make_unique<frmQueue>(m_station);
        m_window->show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(m_window.get()));
        m_hands.emplace(*m_window);
    }

    template <typename Control>
    Control& Find(const char* name) const {
        return m_hands->Find<Control>(name);
    }

    void Run(const QString& statement) {
        const Result<> done = m_station.database.Run({statement});
        ASSERT_TRUE(done) << qPrintable(done.Error());
    }

    /// The rows of a query, values joined by "," and rows by "|".
    QString Stored(const QString& query) {
        QStringList rows;
        auto result = m_station.database.Select({query});
        EXPECT_TRUE(result) << qPrintable(result.Error());
        while (result && result->next()) {
            QStringList values;
            for (int i = 0; i < result->record().count(); ++i)
                values += result->value(i).isNull() ? QStringLiteral("null") : result->value(i).toString();
            rows += values.join(u',');
        }
        return rows.join(u'|');
    }

    std::unique_ptr<frmQueue> m_window;
    std::optional<WindowDriver> m_hands;
};
