#include "database/JetTakeover.h"
#include "core/EventLog.h"
#include "database/StoreKind.h"
#include "tests/jetimport/JetFixture.h"
#include "tests/support/Files.h"
#include "tests/support/TestClock.h"
#include "tests/support/TestDialogs.h"
#include "tests/support/Waiting.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <signal.h>
#include <unistd.h>

using jetfixture::Bytes;

namespace {

constexpr std::chrono::milliseconds Short{300};

class Takeover : public ::testing::Test {
protected:
    QTemporaryDir m_folder;
    QTemporaryDir m_programs;
    TestClock m_clock;
    TestDialogs m_dialogs;
    EventLog m_log{m_programs.path(), m_clock};
    QString m_file = QDir(m_folder.path()).canonicalPath() + QStringLiteral("/Harbinet.mdb");

    QStringList Files() const { return QDir(m_folder.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name); }

    void ExpectQuestion(bool answer) { m_dialogs.ExpectQuestion(BoxKind::Information, QString(), answer); }

    void ExpectFailure(const QString& reason) {
        m_dialogs.ExpectMessage(BoxKind::Critical,
                                u"%1 was not taken over.\n\n%2\n\nThe file is as it was."_qs.arg(m_file, reason));
    }

    bool Prepare(JetTakeover& takeover) {
        const Outcome prepared = Await(takeover.Prepare(m_file));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        if (!prepared.text.isEmpty())
            Await(m_dialogs.ShowMessage(prepared.kind, prepared.text));
        return prepared.IsDone();
    }

    bool Prepare(const QString& importer = QStringLiteral(JETIMPORT_PROGRAM),
                 std::chrono::milliseconds patience = JetTakeover::Patience) {
        JetTakeover takeover(m_dialogs, m_clock, m_log, importer, patience);
        return Prepare(takeover);
    }

    QString Program(const QByteArray& script) {
        const QString path = m_programs.filePath(QStringLiteral("importer"));
        WriteFile(path, "#!/bin/sh\n" + script + "\n");
        QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::ExeOwner | QFileDevice::WriteOwner);
        return path;
    }
};

} // namespace

TEST_F(Takeover, GivesTheNameToTheStoreAndKeepsTheOldFile) {
    WriteFile(m_file, Bytes());
    QFile::setPermissions(m_file, QFileDevice::ReadOwner | QFileDevice::ReadGroup);
    m_dialogs.ExpectQuestion(BoxKind::Information,
                             m_file +
                                 u"\nis an Access database. This program keeps its data in a store of another kind."
                                 "\n\nTake all data over into a new store now?\n\nThe new store gets the name of "
                                 "this file. The old file is kept unchanged as Harbinet.jet.mdb."_qs,
                             true);
    EXPECT_TRUE(Prepare());
    EXPECT_EQ(Files(), (QStringList{u"Harbinet.jet.mdb"_qs, u"Harbinet.mdb"_qs}));
    EXPECT_EQ(ReadFile(m_folder.filePath(u"Harbinet.jet.mdb"_qs)), Bytes());
    EXPECT_EQ(jetfixture::Rows(m_file, u"SELECT count(*) FROM qData"_qs), QStringList{u"70"_qs});
    EXPECT_TRUE(QFile::permissions(m_file) & QFileDevice::WriteOwner);
    EXPECT_TRUE(m_dialogs.ProgressTexts.contains(u"Taking over table qData: row 70 of 70"_qs));
    // A store now: nothing to ask any more.
    EXPECT_TRUE(Prepare());
}

TEST_F(Takeover, NeverOverwritesAKeptFileAndClearsUpAfterAKilledRun) {
    WriteFile(m_file, Bytes());
    WriteFile(m_folder.filePath(u"Harbinet.jet.mdb"_qs), "another");
    // The killed run had got as far as the second name, just before the store would have taken the first.
    ASSERT_EQ(::link(qPrintable(m_file), qPrintable(m_folder.filePath(u"Harbinet.jet-2.mdb"_qs))), 0);
    WriteFile(m_file + u".takeover"_qs, "half");
    WriteFile(m_file + u".takeover-lock"_qs, ""); // killed before it had written its number
    ExpectQuestion(true);
    EXPECT_TRUE(Prepare());
    EXPECT_EQ(Files(), (QStringList{u"Harbinet.jet-2.mdb"_qs, u"Harbinet.jet.mdb"_qs, u"Harbinet.mdb"_qs}));
    EXPECT_EQ(ReadFile(m_folder.filePath(u"Harbinet.jet.mdb"_qs)), "another");
    EXPECT_EQ(ReadFile(m_folder.filePath(u"Harbinet.jet-2.mdb"_qs)), Bytes());
}

TEST_F(Takeover, ChangesNothingIfTheImporterFails) {
    const struct {
        QByteArray script;
        QString reason;
    } cases[] = {
        {"echo half > \"$2\"; kill -SEGV $$", u"The import program broke down while it read the file."_qs},
        {"echo half > \"$2\"; echo error It is broken.; exit 1", u"It is broken."_qs},
        {"echo half > \"$2\"; exit 3", u"The import program ended early (exit code 3)."_qs},
        {"echo done 0", u"It cannot be opened: unable to open database file."_qs},
        {"echo progress rData 1 9; exec sleep 1000",
         u"The import program made no progress for 1 seconds and was stopped."_qs},
        {"head -c 200000 /dev/zero; exec sleep 1000", u"The import program broke down."_qs},
    };
    WriteFile(m_file, Bytes());
    for (const auto& c : cases) {
        ExpectQuestion(true);
        ExpectFailure(c.reason);
        EXPECT_FALSE(Prepare(Program(c.script), Short)) << c.script.constData();
        EXPECT_EQ(Files(), QStringList{u"Harbinet.mdb"_qs}) << c.script.constData();
        EXPECT_EQ(ReadFile(m_file), Bytes());
    }
}

TEST_F(Takeover, NamesAProgramThatIsNotThere) {
    WriteFile(m_file, Bytes());
    ExpectQuestion(true);
    m_dialogs.ExpectMessage(BoxKind::Critical, QString());
    EXPECT_FALSE(Prepare(m_programs.filePath(u"none"_qs)));
    EXPECT_EQ(Files(), QStringList{u"Harbinet.mdb"_qs});
}

TEST_F(Takeover, LeavesAFileThatAnotherProgramWritesMeanwhile) {
    WriteFile(m_file, Bytes());
    ExpectQuestion(true);
    ExpectFailure(u"Another program changed it meanwhile."_qs);
    EXPECT_FALSE(Prepare(Program(JETIMPORT_PROGRAM " \"$1\" \"$2\" && echo more >> \"$1\"")));
    EXPECT_EQ(ReadFile(m_file), Bytes() + "more\n");
}

TEST_F(Takeover, NoAndCancelChangeNothing) {
    WriteFile(m_file, Bytes());
    ExpectQuestion(false);
    EXPECT_FALSE(Prepare());
    m_dialogs.CancelProgress = true;
    ExpectQuestion(true);
    EXPECT_FALSE(Prepare(Program("echo half > \"$2\"; exec sleep 1000")));
    EXPECT_EQ(Files(), QStringList{u"Harbinet.mdb"_qs});
    EXPECT_EQ(ReadFile(m_file), Bytes());
}

TEST_F(Takeover, EndsAtOnceWhenTheProgramCloses) {
    WriteFile(m_file, Bytes());
    ExpectQuestion(true);
    JetTakeover takeover(m_dialogs, m_clock, m_log,
                         Program("echo half > \"$2\"; echo progress rData $$ 9; exec sleep 1000"));
    const QCoro::Task<Outcome> running = takeover.Prepare(m_file);
    ASSERT_TRUE(WaitUntil([&] { return m_dialogs.ProgressTexts.size() == 2; }));
    EXPECT_FALSE(running.isReady());
    takeover.Close();
    EXPECT_TRUE(running.isReady());
    EXPECT_EQ(Files(), QStringList{u"Harbinet.mdb"_qs});
    const pid_t importer = m_dialogs.ProgressTexts.last().section(u' ', -3, -3).toInt();
    ASSERT_GT(importer, 0);
    EXPECT_TRUE(WaitUntil([&] { return ::kill(importer, 0) != 0; }));
    EXPECT_FALSE(Prepare(takeover));
}

TEST_F(Takeover, SaysWhatIsNoStore) {
    const QString store = m_folder.filePath(u"store.db"_qs);
    WriteFile(m_file, Bytes());
    ExpectQuestion(true);
    ASSERT_TRUE(Prepare());
    QByteArray damaged = ReadFile(m_file);
    for (qsizetype page = 4096; page < damaged.size(); page += 4096)
        damaged.replace(page, 64, QByteArray(64, '\x7F'));
    jetfixture::Rows(store, u"CREATE TABLE other (a)"_qs);
    const struct {
        QByteArray content;
        QString text;
    } cases[] = {
        {"", u"The file %1 is empty; it holds no database."_qs},
        {"text", u"The file %1 is neither a database of this program nor an Access database."_qs},
        {ReadFile(store), u"The database %1 cannot be used.\n\nIt is no database of this program; it lacks the "
                          "table(s) Queue, Display, Queue-Display, ScanPlan, Info-Direction, Hub, Message, rData, "
                          "qData."_qs},
        {damaged, QString()},
        {damaged.first(5000), QString()},
    };
    for (const auto& c : cases) {
        WriteFile(m_file, c.content);
        m_dialogs.ExpectMessage(BoxKind::Critical, c.text.isNull() ? QString() : c.text.arg(m_file));
        EXPECT_FALSE(Prepare());
        EXPECT_EQ(ReadFile(m_file), c.content);
    }
    QFile::remove(m_file);
    m_dialogs.ExpectMessage(BoxKind::Critical, u"The file %1 does not exist."_qs.arg(m_file));
    EXPECT_FALSE(Prepare());
}
