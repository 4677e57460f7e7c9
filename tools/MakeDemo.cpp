// Makes the store of the demonstration installation, and beside it a stand-in for the font of its ZONE RICH printers.
// usage: MakeDemo DATABASE STATEMENTS
//   DATABASE    file to make; must not exist
//   STATEMENTS  text file, one SQL statement a line; lines that are empty or begin with "--" are passed over.
//               Vietnamese letters go into the store in VNI.

#include "database/Schema.h"
#include "database/Sqlite.h"
#include "tickets/VniText.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <cstdio>

namespace {

int Fail(const QString& text) {
    std::fprintf(stderr, "MakeDemo: %s\n", qPrintable(text));
    return 1;
}

/// A file as long as a font, with every byte in it.
bool MakeFont(const QString& path) {
    constexpr int Length = 7'000;
    QByteArray content;
    for (int i = 0; i < Length; ++i)
        content += static_cast<char>(i * 7 + i / 256);
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == Length;
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 3)
        return Fail(QStringLiteral("usage: MakeDemo DATABASE STATEMENTS"));
    if (QFile::exists(arguments[1]))
        return Fail(QStringLiteral("%1 exists already").arg(arguments[1]));
    QFile statements(arguments[2]);
    if (!statements.open(QIODevice::ReadOnly))
        return Fail(QStringLiteral("%1: %2").arg(arguments[2], statements.errorString()));

    Sqlite store;
    if (const Result<> opened = store.Open(arguments[1], Sqlite::Mode::Create); !opened)
        return Fail(opened.Error());
    Transaction filling(store, Transaction::Kind::Write);
    for (const QString& statement : schema::CreateStatements()) {
        if (const Result<> done = store.Run({statement}); !done)
            return Fail(statement + QStringLiteral(": ") + done.Error());
    }
    for (int number = 1; !statements.atEnd(); ++number) {
        const QString line = QString::fromUtf8(statements.readLine()).trimmed();
        if (line.isEmpty() || line.startsWith(QStringLiteral("--")))
            continue;
        if (const Result<> done = store.Run({vni::FromUnicode(line)}); !done)
            return Fail(QStringLiteral("%1, line %2: %3").arg(arguments[2]).arg(number).arg(done.Error()));
    }
    if (const Result<> done = filling.Commit(); !done)
        return Fail(done.Error());
    const QString font = QFileInfo(arguments[1]).absolutePath() + QStringLiteral("/VNI-ZR.bin");
    return MakeFont(font) ? 0 : Fail(QStringLiteral("%1 could not be written").arg(font));
}
