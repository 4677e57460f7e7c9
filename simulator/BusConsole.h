#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

class QLocalServer;
class QLocalSocket;
class QSocketNotifier;
class SimulatedBus;

/// The commands that are typed at the running bus: one a line.
class BusConsole final : public QObject {
    Q_OBJECT

public:
    /// Reads standard input until it ends; the bus runs on without it.
    explicit BusConsole(SimulatedBus& bus, QObject* parent = nullptr);

    /// Takes commands from a local socket too, each answered with its text and a line end.
    /// @return what failed, or nothing.
    QString Listen(const QString& path);

    /// Carries one line out. @return what to print, without a line end; empty for nothing.
    QString Execute(const QString& line);

    static QString Help();

Q_SIGNALS:
    void QuitAsked();

private:
    void ReadInput();
    void Serve(QLocalSocket& client);

    SimulatedBus& m_bus;
    QSocketNotifier* m_input = nullptr;
    QLocalServer* m_server = nullptr;
    QByteArray m_unfinished;
};
