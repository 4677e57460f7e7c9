#pragma once

#include <QObject>
#include <QStringList>

#include <qcoro/qcorotask.h>

#include <functional>
#include <vector>

class Clock;
class Dialogs;
class EventLog;
class HubRouter;

namespace model {
struct Installation;
struct QObject;
} // namespace model

/// What all transfers to ticket printers share: the way to one printer, and the walk over all of them.
class PrinterTransfer : public ::QObject {
    Q_OBJECT

public:
    /// What a transfer works with; all must outlive it.
    struct Parts {
        const model::Installation& installation;
        HubRouter& router;
        Clock& clock;
        Dialogs& dialogs;
        EventLog& log;
    };

    explicit PrinterTransfer(const Parts& parts);

    /// Forgets that it was cancelled: a transfer to one printer begins.
    void Begin() { m_isCancelled = m_isUnanswered = false; }
    /// Lets the running transfer end as if its next frame had failed. What the printer must still be told is sent.
    void Cancel() { m_isCancelled = true; }
    /// A walk over all printers was ended by `Cancel`.
    bool WasCancelled() const { return m_wasCancelled; }
    /// Those of the printers that failed in the last walk over all, or the one that failed alone, that did not answer:
    /// a cancelled one, or one for which a file was missing, is none of them.
    const QStringList& Silent() const { return m_silent; }

Q_SIGNALS:
    /// How far the transfer to one printer is: `done` of `total` frames of a phase ("form", "letters") have gone out;
    /// both 0 while it waits.
    void Progress(const QString& printerName, const QString& phase, int done, int total);

protected:
    /// What a walk over all printers does behind a hub: it tells the hub that a long transfer begins and ends, or not.
    enum class HubBracket { With, Without };

    /// Sends to one printer. @param object index in `QObjects`.
    using Send = std::function<QCoro::Task<bool>(qint16 object)>;

    /// Sends to every printer, in object order.
    /// @param question asked after a failure, with the printer's name for "%1", whether to go on; if it is empty nobody
    /// is asked, and a cancelled printer is the last one.
    /// @return the names of the printers that failed.
    QCoro::Task<QStringList> SendToAll(Send send, HubBracket bracket, QString question);

    /// Sends one command, with 0.8 s for the answer. @return whether it was answered.
    QCoro::Task<bool> SendFrame(qint16 object, char letter, QByteArray data, int tries);

    /// The same until the printer itself has answered, up to `again` times more.
    QCoro::Task<bool> SendUntilTaken(qint16 object, char letter, QByteArray data, int tries, int again);

    /// Sends each chunk as one command; stops at the first that is not answered. @param pause milliseconds behind each.
    QCoro::Task<bool> SendChunks(qint16 object, char letter, std::vector<QByteArray> chunks, QString phase, int tries,
                                 qint16 pause = 0);

    const model::QObject& Printer(qint16 object) const;

    const model::Installation& m_installation;
    HubRouter& m_router;
    Clock& m_clock;
    Dialogs& m_dialogs;
    EventLog& m_log;
    bool m_isCancelled = false;
    bool m_isOwn = false;        ///< the printer itself has answered the last frame
    bool m_isUnanswered = false; ///< some frame of the transfer to one printer
    QStringList m_silent;

private:
    bool m_wasCancelled = false;
};
