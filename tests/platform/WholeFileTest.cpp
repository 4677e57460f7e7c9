#include "platform/WholeFile.h"

#include "tests/support/Files.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

#include <csignal>
#include <random>
#include <sys/resource.h>
#include <sys/stat.h>

namespace {

/// No file of the process grows beyond a size while it lives: like a disk that is full.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &m_before); }

private:
    rlimit m_before{};
};

} // namespace

TEST(WholeFile, IsTheOldOrTheNewWholeAndSuccessIsSaidOfTheNewAlone) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("settings.ini"));
    QByteArray held = "old";
    WriteFile(path, held);
    std::mt19937 random(11);
    int refused = 0;
    for (int world = 0; world < 300; ++world) {
        const auto size = static_cast<qsizetype>(random() % 40'000);
        const auto room = static_cast<rlim_t>(random() % 40'000);
        const QByteArray content(size, static_cast<char>('a' + world % 26));
        bool written = false;
        {
            const FullDisk disk(room);
            const Result<> result = WriteWhole(path, content);
            written = static_cast<bool>(result);
            if (!written) {
                ++refused;
                EXPECT_TRUE(result.Error().startsWith(path)) << qPrintable(result.Error());
            }
        }
        EXPECT_EQ(written, static_cast<rlim_t>(size) <= room) << size << " bytes where " << room << " fit";
        if (written)
            held = content;
        ASSERT_EQ(ReadFile(path), held);
    }
    EXPECT_GT(refused, 50);
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList{QStringLiteral("settings.ini")});
}

TEST(WholeFile, OneSavesAtATimeAndWhatAKilledOneLeftGoes) {
    const QTemporaryDir folder;
    const auto files = [&] { return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden).join(u' '); };
    const QString path = folder.filePath(QStringLiteral("a.ini"));
    const QString link = folder.filePath(QStringLiteral("b.ini"));
    WriteFile(path, "old");
    WriteFile(path + QStringLiteral(".saving"), "longer than what is saved");
    WriteFile(folder.filePath(QStringLiteral("c.backup")), "");
    WriteFile(folder.filePath(QStringLiteral("d.saving")), "left");
    ASSERT_TRUE(QFile::link(QStringLiteral("a.ini"), link));
    QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    {
        WholeFile first(link);
        ASSERT_TRUE(first.Begin());
        EXPECT_TRUE(first.Write("new"));
        EXPECT_EQ(WriteWhole(path, "other").Error(),
                  QStringLiteral("%1 could not be written: It is being written already.").arg(path));
        RemoveUnfinished(folder.path());
        EXPECT_EQ(files(), QStringLiteral("a.ini a.ini.saving b.ini c.backup"));
        EXPECT_EQ(ReadFile(path), "old");
        EXPECT_TRUE(first.Finish());
    }
    EXPECT_EQ(files(), QStringLiteral("a.ini b.ini c.backup"));
    EXPECT_EQ(ReadFile(path), "new");
    EXPECT_EQ(QFile::permissions(path) & QFileDevice::ReadOther, QFileDevice::Permissions())
        << "others may read it now";
    EXPECT_TRUE(QFileInfo(link).isSymLink());
    {
        WholeFile given(path);
        EXPECT_TRUE(given.Begin() && given.Write("no"));
    }
    EXPECT_EQ(files(), QStringLiteral("a.ini b.ini c.backup"));
    EXPECT_EQ(ReadFile(path), "new");
}

TEST(WholeFile, WhatIsNoRegularFileOrTooLargeIsNotRead) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("file"));
    WriteFile(path, QByteArray(100, 'x'));
    EXPECT_EQ(ReadWhole(path, 100).ValueOr({}).size(), 100);
    const QString pipe = folder.filePath(QStringLiteral("pipe"));
    ASSERT_EQ(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    for (const QString& name :
         {folder.path(), pipe, QStringLiteral("/dev/zero"), folder.filePath(QStringLiteral("none"))}) {
        const Result<QByteArray> content = ReadWhole(name, 1000);
        EXPECT_FALSE(content);
        EXPECT_TRUE(content.Error().startsWith(name)) << qPrintable(content.Error());
    }
    EXPECT_TRUE(ReadWhole(path, 99).Error().contains(QStringLiteral("99 bytes")));
    EXPECT_FALSE(WriteWhole(folder.filePath(QStringLiteral("no/such/file")), "x"));
    EXPECT_FALSE(WriteWhole(folder.path(), "x"));
    WholeFile unbegun(folder.filePath(QStringLiteral("no/such/file")));
    EXPECT_FALSE(unbegun.Begin() || unbegun.Write("") || unbegun.Finish());
}
