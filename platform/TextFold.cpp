#include "platform/TextFold.h"

QString Folded(const QString& text) {
    QString folded;
    folded.reserve(text.size());
    const QString taken = text.normalized(QString::NormalizationForm_KD);
    for (const QChar character : taken) {
        if (character.isMark())
            continue;
        // The stroke is no mark of its own.
        const bool isStruck = character == QChar(0x0110) || character == QChar(0x0111);
        folded += isStruck ? QChar(u'd') : character;
    }
    return folded.toCaseFolded();
}
