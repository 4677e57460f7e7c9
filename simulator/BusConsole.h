#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

class QSocketNotifier;
class SimulatedBus;

/// The commands that are typed at the running bus: one a line.
class BusConsole final : public QObject {
    Q_OBJECT

public:
    /// Reads standard input until it ends; the bus runs on without it.
    explicit BusConsole(SimulatedBus& bus, QObject* parent = nullptr);

    /// Carries one line out. @return what to print, without a line end; empty for nothing.
    QString Execute(const QString& line);

    static QString Help();

Q_SIGNALS:
    void QuitAsked();

private:
    void ReadInput();

    SimulatedBus& m_bus;
    QSocketNotifier* m_input = nullptr;
    QByteArray m_unfinished;
};
