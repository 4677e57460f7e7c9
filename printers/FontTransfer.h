#pragma once

#include "platform/Result.h"
#include "printers/PrinterTransfer.h"

#include <QByteArrayView>

class VniTable;

/// What the letters of a printer come from.
enum class LetterSet {
    Table,    ///< the 134 records of the letter table
    FontFile, ///< the font file VNI-ZR.bin, for ZONE RICH printers
};

/// The name of the file that a set comes from.
QString LetterSource(LetterSet letters);

/// Loads Vietnamese letters into ticket printers.
///
/// `G`, then `J` with a stuffed chunk each, then `T`; each goes out once, with 0.8 s for the answer.
class FontTransfer : public PrinterTransfer {
    Q_OBJECT

public:
    /// @param programFolder where VNI-ZR.bin lies. @param letters must outlive this.
    FontTransfer(const Parts& parts, QString programFolder, const VniTable& letters);

    /// Loads every printer, in object order. After a failure the user is asked whether to go on.
    /// @return the names of the printers that failed.
    QCoro::Task<QStringList> LoadVNIToAllPrinters(LetterSet letters);

    /// Loads one printer. A font file that is missing, or of 32,768 bytes and more, is shown to be so in a box.
    /// @param object index in `QObjects`, 0 to 63.
    QCoro::Task<bool> SendVNIToPrinter(qint16 object, LetterSet letters);

    /// The set that was sent last.
    LetterSet Sending() const { return m_sending; }

    /// What a printer gets of a set. @return a failure says what is wrong with its file.
    Result<QByteArray> Content(LetterSet letters) const;

    /// `content` in stuffed chunks of at most `chunkLength` bytes before and `longest` characters after stuffing.
    static std::vector<QByteArray> StuffedChunks(QByteArrayView content, qsizetype chunkLength, qsizetype longest);

private:
    QCoro::Task<bool> SendFontFile(qint16 object);
    QCoro::Task<bool> SendLetters(qint16 object, std::vector<QByteArray> chunks, qint16 pause);

    QString m_programFolder;
    const VniTable& m_letters;
    LetterSet m_sending = LetterSet::Table;
};
