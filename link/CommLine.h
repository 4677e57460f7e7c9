#pragma once

#include <QDateTime>
#include <QObject>
#include <QString>

#include <qcoro/qcorotask.h>

class Clock;
class Dialogs;
class IniUtility;
class Line;

/// The serial settings, as they stand in section Comm of the settings file.
struct CommSettings {
    QString CommDevice;         ///< as shown in the status bar
    QString CommName;           ///< port name; empty: no port is configured
    QString CommBaud;           ///< speed in bit/s
    qint32 CommState = 1;       ///< 0 open, 1 not open
    bool StrictReplies = false; ///< what answers something else does not end the wait for an answer
    bool LocalEcho = false;     ///< the adapter lets the station hear what it sends
};

/// Opens and closes the one serial line and holds its settings. 8 data bits, no parity, 1 stop bit, no handshaking.
class CommLine : public QObject {
    Q_OBJECT

public:
    /// The references must outlive the line.
    CommLine(Line& control, IniUtility& ini, Dialogs& dialogs, const Clock& clock, QObject* parent = nullptr);

    CommSettings Settings;

    /// Reads keys Device and Baud, and StrictReplies and LocalEcho ("yes" or "no"). @return true only if both are
    /// there; without Device the three texts are empty.
    bool LoadCommSettings();
    /// Writes Device and Baud, and what is on of the rest or was before, all or none. @return whether they were
    /// written.
    bool SaveCommSettings();

    /// Closes the line if it is open and opens it with `Settings`. If it is not open then, shows "COM port used by
    /// another program!"; if the settings make no sense, shows why and leaves `CommState` and `PortIsOpen` as they
    /// were.
    QCoro::Task<bool> OpenPort();

    /// Takes another port and speed: saves them, opens the line and tells its state. A line that does not open keeps
    /// the new choice all the same. Without one of them a box asks for both and nothing changes.
    QCoro::Task<bool> ChoosePort(QString name, QString baud);

    void ClosePort();
    /// `ClosePort`, and the status goes out as closed.
    void CloseComm();

    /// The result of the last `OpenPort` that got as far as opening; false once the line was lost or closed.
    bool PortIsOpen() const { return m_portIsOpen; }
    /// Date and time of the last successful opening; not valid if there was none.
    QDateTime TimeConnected() const { return m_timeConnected; }

    /// Tells everybody who shows the line: `StatusChanged`. An opened line sets `TimeConnected`.
    void SetCommStatus(const QString& device, const QString& baud, bool opened);

Q_SIGNALS:
    /// Empty texts leave what is shown.
    void StatusChanged(const QString& device, const QString& baud, bool opened);

private:
    Line& m_control;
    IniUtility& m_ini;
    Dialogs& m_dialogs;
    const Clock& m_clock;
    bool m_portIsOpen = false;
    QDateTime m_timeConnected;
};
