#include "jetimport/Confinement.h"
#include "jetimport/Import.h"
#include "tests/jetimport/JetFixture.h"
#include "tests/support/Files.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <functional>

using jet::Confinement;

namespace {

bool Opens(const QString& path, int flags) {
    const int file = open(QFile::encodeName(path).constData(), flags, 0600);
    if (file >= 0)
        close(file);
    return file >= 0;
}

bool Forks() {
    const pid_t child = fork();
    if (child == 0)
        _exit(0);
    return child > 0 && waitpid(child, nullptr, 0) == child;
}

bool Starts() {
    // Returns only if it is refused.
    execl("/bin/true", "true", nullptr);
    return errno != EPERM;
}

class ConfinementTest : public ::testing::TestWithParam<Confinement::Landlock> {
protected:
    QTemporaryDir m_inside;
    QTemporaryDir m_outside;
    QString m_source = m_outside.filePath(QStringLiteral("old.mdb"));
    QString m_stranger = m_outside.filePath(QStringLiteral("stranger"));

    void SetUp() override {
        WriteFile(m_source, jetfixture::Bytes());
        WriteFile(m_stranger, "secret");
    }

    /// What `work` returns in a process that is closed in; -1 if it does not come to its end.
    int Confined(const std::function<int()>& work) {
        const pid_t child = fork();
        if (child == 0) {
            const Result<> closed = Confinement::Enter(m_source, m_inside.path(), GetParam());
            if (!closed)
                std::fprintf(stderr, "%s\n", qPrintable(closed.Error()));
            _exit(closed ? work() : 255);
        }
        int status = 0;
        waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
};

} // namespace

TEST_P(ConfinementTest, LeavesTheSourceAndTheFolderAndNothingElse) {
    const auto limited = [](__rlimit_resource resource, rlim_t most) {
        rlimit limit{};
        return getrlimit(resource, &limit) == 0 && limit.rlim_max <= most;
    };
    const auto inside = [&](const char* name) { return m_inside.filePath(QString::fromLatin1(name)); };
    const bool hidden = GetParam() == Confinement::Landlock::Use && Confinement::KernelHasLandlock();
    const bool sanitized = Confinement::IsSanitized;
    const struct {
        const char* what;
        bool expected;
        std::function<bool()> attempt;
    } cases[] = {
        {"reads the source", true, [&] { return Opens(m_source, O_RDONLY); }},
        {"makes a file in the folder", true, [&] { return Opens(inside("new"), O_RDWR | O_CREAT); }},
        {"removes it", true, [&] { return Opens(inside("a"), O_WRONLY | O_CREAT) && QFile::remove(inside("a")); }},
        {"writes to the source", !hidden, [&] { return Opens(m_source, O_WRONLY); }},
        {"makes a file elsewhere", !hidden, [&] { return Opens(m_stranger + u'2', O_WRONLY | O_CREAT); }},
        {"overwrites another file", !hidden, [&] { return Opens(m_stranger, O_WRONLY); }},
        {"reads another file", !hidden, [&] { return Opens(m_stranger, O_RDONLY); }},
        {"removes another file", !hidden, [&] { return QFile::remove(m_stranger); }},
        {"changes another file's rights", false, [&] { return chmod(qPrintable(m_stranger), 0777) == 0; }},
        {"changes another file's times", false, [&] { return utimes(qPrintable(m_stranger), nullptr) == 0; }},
        {"opens a socket", false, [] { return socket(AF_INET, SOCK_STREAM, 0) >= 0; }},
        {"opens a local socket", false, [] { return socket(AF_UNIX, SOCK_STREAM, 0) >= 0; }},
        {"forks", sanitized, Forks},
        {"kills its parent", false, [] { return kill(getppid(), 0) == 0; }},
        {"starts a program", false, Starts},
        {"has bounded memory", !sanitized, [&] { return limited(RLIMIT_AS, Confinement::MemoryBytes); }},
        {"has bounded time", true, [&] { return limited(RLIMIT_CPU, Confinement::CpuSeconds); }},
        {"has bounded files", true, [&] { return limited(RLIMIT_FSIZE, Confinement::FileBytes); }},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Confined([&] { return c.attempt() ? 1 : 0; }), c.expected ? 1 : 0) << c.what;
}

TEST_P(ConfinementTest, ImportsAllTheSame) {
    const QString target = m_inside.filePath(QStringLiteral("new.db"));
    const jet::Listener listener = {.Progress = [](const QString&, qint64, qint64) {}, .Note = [](const QString&) {}};
    EXPECT_EQ(Confined([&] {
                  const Result<qint64> rows = jet::Import(m_source, target, listener);
                  return rows.ValueOr(0) == 114 ? 0 : 1;
              }),
              0);
    EXPECT_EQ(jetfixture::Rows(target, QStringLiteral("SELECT count(*) FROM qData")),
              QStringList{QStringLiteral("70")});
}

INSTANTIATE_TEST_SUITE_P(, ConfinementTest, ::testing::Values(Confinement::Landlock::Use, Confinement::Landlock::Skip),
                         [](const auto& tested) {
                             return tested.param == Confinement::Landlock::Use ? "Landlock" : "NoLandlock";
                         });
