#include "simulator/BusConsole.h"

#include "simulator/SimulatedBus.h"

#include <QJsonDocument>
#include <QLocalServer>
#include <QLocalSocket>
#include <QSocketNotifier>

#include <array>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

BusConsole::BusConsole(SimulatedBus& bus, QObject* parent)
    : QObject(parent)
    , m_bus(bus) {
    if (::fcntl(STDIN_FILENO, F_GETFD) < 0)
        return;
    m_input = new QSocketNotifier(STDIN_FILENO, QSocketNotifier::Read, this);
    connect(m_input, &QSocketNotifier::activated, this, &BusConsole::ReadInput);
}

QString BusConsole::Help() {
    return QStringLiteral(
        "press ADDRESS BUTTON     a customer presses that key; the next poll answers with the ticket\n"
        "summary                  what each device holds\n"
        "state                    the same as JSON, in one line\n"
        "silent ADDRESS on|off    a silent device answers nothing\n"
        "power ADDRESS            the device is switched off and on\n"
        "hangup                   pull the adapter; \"open\" puts it back\n"
        "open                     put it back\n"
        "quit");
}

QString BusConsole::Execute(const QString& line) {
    const QStringList words = line.split(u' ', Qt::SkipEmptyParts);
    if (words.isEmpty())
        return {};
    const QString& verb = words.front();
    bool addressReads = false;
    const int address = words.value(1).toInt(&addressReads);
    if (verb == QStringLiteral("press")) {
        bool buttonReads = false;
        const int button = words.value(2).toInt(&buttonReads);
        auto* const printer = addressReads ? m_bus.FindAs<TicketPrinter>(address) : nullptr;
        if (printer == nullptr)
            return QStringLiteral("no printer at address \"%1\"").arg(words.value(1));
        if (!buttonReads || button < 0 || button > 255 || !printer->PressButton(static_cast<quint8>(button)))
            return QStringLiteral("the button table of %1 has no key \"%2\"").arg(printer->Title(), words.value(2));
        return QStringLiteral("pressed");
    }
    if (verb == QStringLiteral("silent")) {
        const QString& state = words.value(2);
        if (state != QStringLiteral("on") && state != QStringLiteral("off"))
            return QStringLiteral("silent ADDRESS on|off");
        if (!addressReads || !m_bus.SetSilent(address, state == QStringLiteral("on")))
            return QStringLiteral("no device at address \"%1\"").arg(words.value(1));
        return m_bus.Find(address)->Title() +
               (state == QStringLiteral("on") ? QStringLiteral(" is silent") : QStringLiteral(" answers"));
    }
    if (verb == QStringLiteral("power")) {
        if (!addressReads || !m_bus.PowerCycle(address))
            return QStringLiteral("no device at address \"%1\"").arg(words.value(1));
        return m_bus.Find(address)->Title() + QStringLiteral(" was off and on");
    }
    if (verb == QStringLiteral("state"))
        return QString::fromUtf8(QJsonDocument(m_bus.State()).toJson(QJsonDocument::Compact));
    if (verb == QStringLiteral("summary"))
        return m_bus.Summary().trimmed();
    if (verb == QStringLiteral("hangup")) {
        m_bus.HangUp();
        return QStringLiteral("hung up");
    }
    if (verb == QStringLiteral("open")) {
        const QString problem = m_bus.Open();
        return problem.isEmpty() ? m_bus.SlavePath() : problem;
    }
    if (verb == QStringLiteral("quit")) {
        Q_EMIT QuitAsked();
        return {};
    }
    return Help();
}

QString BusConsole::Listen(const QString& path) {
    m_server = new QLocalServer(this);
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    QLocalServer::removeServer(path);
    if (!m_server->listen(path))
        return QStringLiteral("%1: %2").arg(path, m_server->errorString());
    connect(m_server, &QLocalServer::newConnection, this, [this] {
        QLocalSocket* const client = m_server->nextPendingConnection();
        connect(client, &QLocalSocket::readyRead, this, [this, client] { Serve(*client); });
        connect(client, &QLocalSocket::disconnected, client, &QObject::deleteLater);
    });
    return {};
}

void BusConsole::Serve(QLocalSocket& client) {
    while (client.canReadLine())
        client.write(Execute(QString::fromUtf8(client.readLine()).trimmed()).toUtf8() + '\n');
}

void BusConsole::ReadInput() {
    std::array<char, 1024> buffer{};
    const ssize_t count = ::read(STDIN_FILENO, buffer.data(), buffer.size());
    if (count <= 0) {
        m_input->setEnabled(false);
        return;
    }
    m_unfinished.append(buffer.data(), count);
    for (qsizetype end = m_unfinished.indexOf('\n'); end >= 0; end = m_unfinished.indexOf('\n')) {
        const QString answer = Execute(QString::fromUtf8(m_unfinished.first(end)));
        m_unfinished.remove(0, end + 1);
        if (!answer.isEmpty()) {
            std::printf("%s\n", qUtf8Printable(answer));
            std::fflush(stdout);
        }
    }
}
