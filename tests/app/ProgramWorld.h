#pragma once

#include "app/Program.h"

#include "tests/support/Files.h"
#include "tests/support/KeptShell.h"
#include "tests/support/TestClock.h"
#include "tests/support/TestDialogs.h"
#include "tests/support/Waiting.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QTemporaryDir>

/// The whole program in a folder of its own.
class ProgramWorld : public ::testing::Test {
protected:
    ProgramWorld() { CopyLetterFiles(m_folder.path()); }

    QString Path(const QString& name) const { return m_folder.filePath(name); }

    /// Starts the program on `store`, or on one that the user chooses. @param hasTray on a desktop with a notification
    /// area.
    void Start(bool hasTray = false, const QString& store = {}) {
        std::unique_ptr<KeptShell> shell;
        if (hasTray)
            shell = std::make_unique<KeptShell>(m_told, true);
        m_shell = shell.get();
        m_clock.Reopen();
        m_program = std::make_unique<Program>(ProgramFolders{m_folder.path(), m_folder.path()}, m_clock, *m_dialogs,
                                              std::move(shell));
        QObject::connect(m_program.get(), &Program::Ended, [this] { ++m_ended; });
        m_running.emplace(m_program->Main(store));
        EXPECT_TRUE(WaitUntil([this] { return m_running->isReady(); }, 30'000));
    }

    template <typename Form>
    Form* FindWindow() const {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* window = qobject_cast<Form*>(widget))
                return window;
        }
        return nullptr;
    }

    void ExpectNoPort() {
        m_dialogs->ExpectMessage(BoxKind::Critical, QStringLiteral("COM port used by another program!"));
    }

    void WritePort(const QString& device) {
        WriteFile(Path(QStringLiteral("Tallora.ini")), "[Comm]\nDevice=" + device.toUtf8() + "\nBaud=115200\n");
    }

    QTemporaryDir m_folder;
    QString m_store = Path(QStringLiteral("Harbinet.mdb"));
    TestClock m_clock;
    std::optional<TestDialogs> m_dialogs{std::in_place};
    QStringList m_told; ///< by the tray to the shell
    KeptShell* m_shell = nullptr;
    std::unique_ptr<Program> m_program;
    std::optional<QCoro::Task<>> m_running;
    int m_ended = 0;
};
