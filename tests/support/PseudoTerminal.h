#pragma once

#include <QByteArray>
#include <QString>

/// Both ends of a pseudo-terminal that a test plays itself: the program opens `Path`, the test reads and writes here.
class PseudoTerminal {
public:
    PseudoTerminal();
    ~PseudoTerminal();
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    QString Path() const { return m_path; }
    /// The file descriptor of this end.
    int Descriptor() const { return m_master; }

    /// All that the program has written since the last call; does not wait.
    QByteArray Read();
    void Write(const QByteArray& bytes);
    /// The other end goes away, as a pulled adapter does.
    void HangUp();

private:
    int m_master = -1;
    QString m_path;
};
