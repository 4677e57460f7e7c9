#pragma once

#include "database/Database.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>

#include <gtest/gtest.h>

/// A new store of the full schema at `path`, with what `statements` put into it.
inline void MakeStore(const QString& path, const QStringList& statements) {
    const Result<> done = Database::CreateEmpty(path);
    ASSERT_TRUE(done) << qPrintable(done.Error());
    {
        QSqlDatabase store = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("MakeStore"));
        store.setDatabaseName(path);
        ASSERT_TRUE(store.open());
        QSqlQuery query(store);
        for (const QString& statement : statements)
            ASSERT_TRUE(query.exec(statement)) << qPrintable(statement) << ": " << qPrintable(query.lastError().text());
    }
    QSqlDatabase::removeDatabase(QStringLiteral("MakeStore"));
}
