#pragma once

#include <QByteArray>
#include <QObject>

#include <qcoro/qcorotask.h>

#include <vector>

class Clock;
class Dialogs;
class HubRouter;
class VniTable;

namespace model {
struct Installation;
}

/// Loads Vietnamese letters into ticket printers: a ZONE RICH printer takes the font file VNI-ZR.bin, any other the 134
/// records of the letter table.
///
/// `G`, then `J` with a stuffed chunk each, then `T`; each goes out once, with 0.8 s for the answer.
class FontTransfer : public ::QObject {
    Q_OBJECT

public:
    /// The references must outlive this object; `programFolder` is where VNI-ZR.bin lies.
    FontTransfer(QString programFolder, const model::Installation& installation, HubRouter& router, Clock& clock,
                 Dialogs& dialogs, const VniTable& letters, ::QObject* parent = nullptr);

    /// Loads every printer, in object order. After a failure the user is asked whether to go on.
    /// @return true if all succeeded, also if there is none.
    QCoro::Task<bool> LoadVNIToAllPrinters(bool zoneRich);

    /// Loads one printer. @param object index in `QObjects`, 0 to 63. @param zoneRich with the font file.
    QCoro::Task<bool> SendVNIToPrinter(qint16 object, bool zoneRich);

    /// Loads the font file into one printer. A file that is missing, or of 32,768 bytes and more, is told in a box.
    QCoro::Task<bool> SendFontFile(qint16 object);

    /// `content` in stuffed chunks of at most `chunkLength` bytes before and `longest` characters after stuffing.
    static std::vector<QByteArray> StuffedChunks(QByteArrayView content, qsizetype chunkLength, qsizetype longest);

Q_SIGNALS:
    /// How far the load of one printer is: `done` of `total` chunks have gone out.
    void Progress(const QString& printerName, int done, int total);

private:
    QCoro::Task<bool> Send(qint16 object, char letter, QByteArray data);
    QCoro::Task<bool> SendChunks(qint16 object, std::vector<QByteArray> chunks, qint16 pause);

    QString m_programFolder;
    const model::Installation& m_installation;
    HubRouter& m_router;
    Clock& m_clock;
    Dialogs& m_dialogs;
    const VniTable& m_letters;
};
