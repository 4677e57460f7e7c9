// JetImport SOURCE TARGET: takes over an Access/Jet file into a new store of the station.
//
// Lines on standard output, UTF-8:
//   progress TABLE DONE TOTAL   rows of a table so far; TABLE "Check" with 0 0 while the new store is checked
//   note TEXT                   something the user may want to know; not a failure
//   done ROWS                   all is taken over; exit code 0
//   error TEXT                  nothing is taken over, TARGET does not exist; exit code 1
// Exit code 2: wrong arguments (usage on standard error).
//
// The reading of a foreign file happens in a child process that is closed in (`Confinement`): whatever the file does
// to it, the parent removes what was written and says so.

#include "jetimport/Confinement.h"
#include "jetimport/Import.h"
#include "platform/WholeFile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

namespace {

void Say(const QString& line) {
    QString single = line;
    single.replace(u'\n', u' ').replace(u'\r', u' ');
    const QByteArray bytes = single.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stdout);
    std::fflush(stdout);
}

/// The folder that the reader may write to: empty, beside the target, and of nobody else.
QString WorkFolder(const QString& target) {
    return target + QStringLiteral(".work");
}

QString WorkFile(const QString& target) {
    return WorkFolder(target) + QStringLiteral("/store");
}

int Work(int argc, char** argv, pid_t parent) {
    // Without the parent nobody would remove what is left half done.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent)
        return 1;
    const QCoreApplication application(argc, argv);
    const QString source = QFile::decodeName(argv[1]);
    const QString target = QFile::decodeName(argv[2]);
    const Result<> closed = jet::Confinement::Enter(source, WorkFolder(target));
    if (!closed) {
        Say(QStringLiteral("error ") + closed.Error());
        return 1;
    }
    const jet::Listener listener = {
        .Progress = [](const QString& table, qint64 done,
                       qint64 total) { Say(QStringLiteral("progress %1 %2 %3").arg(table).arg(done).arg(total)); },
        .Note = [](const QString& text) { Say(QStringLiteral("note ") + text); },
    };
    const Result<qint64> rows = jet::Import(source, WorkFile(target), listener);
    if (!rows) {
        Say(QStringLiteral("error ") + rows.Error());
        return 1;
    }
    Say(QStringLiteral("done %1").arg(*rows));
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: JetImport SOURCE TARGET\n"
                             "Takes over the Access/Jet file SOURCE into the new store TARGET.\n");
        return 2;
    }
    // Nobody's file is removed below.
    const QString target = QFile::decodeName(argv[2]);
    if (QFileInfo::exists(target) || QFileInfo(target).isSymLink()) {
        Say(QStringLiteral("error The file %1 exists already.").arg(target));
        return 1;
    }
    if (const QFileInfo source(QFile::decodeName(argv[1])); source.exists() && !source.isFile()) {
        Say(QStringLiteral("error %1 is no regular file.").arg(source.filePath()));
        return 1;
    }
    QDir work(WorkFolder(target));
    if (!QDir().mkdir(work.path())) {
        Say(QStringLiteral("error The new store cannot be made: %1: %2").arg(target, qt_error_string()));
        return 1;
    }
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child == 0)
        return Work(argc, argv, parent);
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child) {
        Say(QStringLiteral("error A process cannot be started: ") + qt_error_string());
        return 1;
    }
    const bool isGood = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    const bool isMoved = isGood && QFile::rename(WorkFile(target), target) && FlushFolderOf(target);
    work.removeRecursively();
    if (isMoved)
        return 0;
    if (isGood)
        Say(QStringLiteral("error The new store cannot be made: %1: %2").arg(target, qt_error_string()));
    if (WIFEXITED(status) && WEXITSTATUS(status) <= 1)
        return 1;
    const int signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    if (signal == SIGXCPU || signal == SIGKILL)
        Say(QStringLiteral("error The file is damaged: reading it does not come to an end."));
    else if (signal == SIGXFSZ)
        Say(QStringLiteral("error The file is damaged: it never stops giving rows."));
    else
        Say(QStringLiteral("error The file is damaged: the reader broke down over it (%1).")
                .arg(signal ? QStringLiteral("signal %1").arg(signal)
                            : QStringLiteral("exit code %1").arg(WEXITSTATUS(status))));
    return 1;
}
