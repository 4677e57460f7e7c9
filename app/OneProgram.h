#pragma once

#include "platform/LockFile.h"

#include <QObject>

#include <memory>

class QLocalServer;

/// Lets one program run in a folder of settings: two would write over each other's. A second start tells the first one
/// and is to end.
///
/// The running program holds the file Orvex.running of the folder, so that a killed one stands in nobody's way, and
/// listens at a local socket named after the folder.
class OneProgram : public QObject {
    Q_OBJECT

public:
    /// @param folder of settings, log and data files.
    explicit OneProgram(const QString& folder);
    ~OneProgram() override;

    /// Whether this is the first program in the folder; otherwise the first one has been told. Also the first where the
    /// folder cannot be written to: there is nothing then that two could write over.
    bool Begin();

Q_SIGNALS:
    /// Somebody has tried to start the program once more.
    void Wanted();

private:
    void Listen();
    void TellFirst() const;
    QString SocketName() const;

    const QString m_folder;
    LockFile m_running;
    std::unique_ptr<QLocalServer> m_server;
};
