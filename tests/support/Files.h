#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

#include <gtest/gtest.h>

/// The whole content of a file, empty if there is none.
inline QByteArray ReadFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline void WriteFile(const QString& path, const QByteArray& content) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << qPrintable(path);
    ASSERT_EQ(file.write(content), content.size()) << qPrintable(path);
}

/// Puts the letter files, which lie beside an installed program, into a program folder.
inline void CopyLetterFiles(const QString& folder) {
    for (const QString& name : {QStringLiteral("VNIl.dat"), QStringLiteral("VCODE.dat")})
        ASSERT_TRUE(QFile::copy(QStringLiteral(DATA_FOLDER "/") + name, folder + u'/' + name)) << qPrintable(name);
}
