#include "tests/support/PseudoTerminal.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

PseudoTerminal::PseudoTerminal()
    : m_master(::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK)) {
    EXPECT_GE(m_master, 0);
    EXPECT_EQ(::grantpt(m_master), 0);
    EXPECT_EQ(::unlockpt(m_master), 0);
    termios settings{};
    EXPECT_EQ(::tcgetattr(m_master, &settings), 0);
    ::cfmakeraw(&settings);
    EXPECT_EQ(::tcsetattr(m_master, TCSANOW, &settings), 0);
    m_path = QString::fromLocal8Bit(::ptsname(m_master));
}

PseudoTerminal::~PseudoTerminal() {
    HangUp();
}

QByteArray PseudoTerminal::Read() {
    QByteArray all;
    char buffer[512];
    for (;;) {
        const ssize_t count = ::read(m_master, buffer, sizeof buffer);
        if (count <= 0)
            return all;
        all.append(buffer, count);
    }
}

void PseudoTerminal::Write(const QByteArray& bytes) {
    EXPECT_EQ(::write(m_master, bytes.constData(), static_cast<size_t>(bytes.size())), bytes.size());
}

void PseudoTerminal::HangUp() {
    if (m_master >= 0)
        ::close(m_master);
    m_master = -1;
}
