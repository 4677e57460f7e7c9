#include "tests/database/World.h"
#include "tests/support/RandomEditor.h"

#include <QCoreApplication>
#include <QProcess>

#include <csignal>

namespace {

constexpr const char* StoreVariable = "ORVEX_EDITED_STORE";
constexpr const char* KillsVariable = "ORVEX_KILLS";

} // namespace

/// The program that is killed: edits, undoes and redoes until then.
TEST(EditKill, DISABLED_EditsUntilItIsKilled) {
    World world(false);
    world.database.OpenDatabase(qEnvironmentVariable(StoreVariable));
    ASSERT_TRUE(world.database.IsOpen());
    RandomEditor editor(world.database, QRandomGenerator::global()->generate());
    for (;;) {
        const int what = editor.Roll(6);
        if (what == 0)
            (void)world.database.History().Undo();
        else if (what == 1)
            (void)world.database.History().Redo();
        else
            editor.Act();
    }
}

TEST(EditKill, WhateverIsKilledTheStoreIsWhatItsHistoryTells) {
    World world;
    world.database.CloseDatabase();
    const int kills = qEnvironmentVariableIsSet(KillsVariable) ? qEnvironmentVariableIntValue(KillsVariable) : 8;
    int acts = 0;
    for (int kill = 0; kill < kills; ++kill) {
        QProcess program;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QLatin1String(StoreVariable), world.store);
        program.setProcessEnvironment(environment);
        program.setStandardOutputFile(QProcess::nullDevice());
        program.start(QCoreApplication::applicationFilePath(),
                      {QStringLiteral("--gtest_also_run_disabled_tests"),
                       QStringLiteral("--gtest_filter=EditKill.DISABLED_EditsUntilItIsKilled")});
        ASSERT_TRUE(program.waitForStarted());
        EXPECT_FALSE(program.waitForFinished(100 + QRandomGenerator::global()->bounded(200)));
        ASSERT_EQ(::kill(static_cast<pid_t>(program.processId()), SIGKILL), 0);
        ASSERT_TRUE(program.waitForFinished());

        world.database.OpenDatabase(world.store);
        ASSERT_TRUE(world.database.IsOpen()) << qPrintable(world.database.OpenError());
        EditHistory& history = world.database.History();
        const std::vector<EditAct> all = history.Read(1'000'000).ValueOr({});
        const QString now = DescriptionOf(world.database);
        if (!now.isEmpty()) {
            ASSERT_FALSE(all.empty()) << "kill " << kill;
            const auto back = history.GoBack(all.back().id, QStringLiteral("back"));
            ASSERT_TRUE(back) << "kill " << kill << ": " << qPrintable(back.Error());
            EXPECT_EQ(DescriptionOf(world.database), QString()) << "kill " << kill;
            ASSERT_TRUE(history.Undo());
            EXPECT_EQ(DescriptionOf(world.database), now) << "kill " << kill;
        }
        acts = static_cast<int>(all.size());
        world.database.CloseDatabase();
    }
    RecordProperty("acts", acts);
}
