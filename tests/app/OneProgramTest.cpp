#include "app/OneProgram.h"

#include "tests/support/Waiting.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <sys/wait.h>
#include <unistd.h>

TEST(OneProgram, ASecondStartTellsTheFirstAndAnotherFolderIsAnother) {
    const QTemporaryDir folder;
    const QTemporaryDir other;
    std::optional<OneProgram> first(std::in_place, folder.path());
    int wanted = 0;
    QObject::connect(&*first, &OneProgram::Wanted, [&wanted] { ++wanted; });
    EXPECT_TRUE(first->Begin());
    EXPECT_TRUE(OneProgram(other.path()).Begin());
    for (int start = 1; start <= 3; ++start) {
        EXPECT_FALSE(OneProgram(folder.path() + QStringLiteral("/.")).Begin());
        EXPECT_TRUE(WaitUntil([&] { return wanted == start; }));
    }
    first.reset();
    EXPECT_TRUE(OneProgram(folder.path()).Begin());
}

TEST(OneProgram, AKilledOneStandsInNobodysWay) {
    const QTemporaryDir folder;
    const pid_t child = ::fork();
    if (child == 0) {
        OneProgram killed(folder.path());
        if (killed.Begin())
            ::kill(::getpid(), SIGKILL);
        ::_exit(1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_TRUE(OneProgram(folder.path()).Begin());
}

TEST(OneProgram, AFolderThatCannotBeWrittenToHoldsNobodyUp) {
    EXPECT_TRUE(OneProgram(QStringLiteral("/proc/self")).Begin());
}
