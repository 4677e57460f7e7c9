#include "tickets/VniText.h"

#include <QHash>
#include <QStringList>

#include <algorithm>

namespace vni {
namespace {

constexpr Letter AllLetters[] = {
    {0x00E1, 0x61, 0xF9}, {0x00E0, 0x61, 0xF8}, {0x1EA3, 0x61, 0xFB}, {0x00E3, 0x61, 0xF5}, {0x1EA1, 0x61, 0xEF},
    {0x0103, 0x61, 0xEA}, {0x1EAF, 0x61, 0xE9}, {0x1EB1, 0x61, 0xE8}, {0x1EB3, 0x61, 0xFA}, {0x1EB5, 0x61, 0xFC},
    {0x1EB7, 0x61, 0xEB}, {0x00E2, 0x61, 0xE2}, {0x1EA5, 0x61, 0xE1}, {0x1EA7, 0x61, 0xE0}, {0x1EA9, 0x61, 0xE5},
    {0x1EAB, 0x61, 0xE3}, {0x1EAD, 0x61, 0xE4}, {0x00E9, 0x65, 0xF9}, {0x00E8, 0x65, 0xF8}, {0x1EBB, 0x65, 0xFB},
    {0x1EBD, 0x65, 0xF5}, {0x1EB9, 0x65, 0xEF}, {0x00EA, 0x65, 0xE2}, {0x1EBF, 0x65, 0xE1}, {0x1EC1, 0x65, 0xE0},
    {0x1EC3, 0x65, 0xE5}, {0x1EC5, 0x65, 0xE3}, {0x1EC7, 0x65, 0xE4}, {0x00ED, 0xED, 0x00}, {0x00EC, 0xEC, 0x00},
    {0x1EC9, 0xE6, 0x00}, {0x0129, 0xF3, 0x00}, {0x1ECB, 0xF2, 0x00}, {0x00F3, 0x6F, 0xF9}, {0x00F2, 0x6F, 0xF8},
    {0x1ECF, 0x6F, 0xFB}, {0x00F5, 0x6F, 0xF5}, {0x1ECD, 0x6F, 0xEF}, {0x00F4, 0x6F, 0xE2}, {0x1ED1, 0x6F, 0xE1},
    {0x1ED3, 0x6F, 0xE0}, {0x1ED5, 0x6F, 0xE5}, {0x1ED7, 0x6F, 0xE3}, {0x1ED9, 0x6F, 0xE4}, {0x01A1, 0xF4, 0x00},
    {0x1EDB, 0xF4, 0xF9}, {0x1EDD, 0xF4, 0xF8}, {0x1EDF, 0xF4, 0xFB}, {0x1EE1, 0xF4, 0xF5}, {0x1EE3, 0xF4, 0xEF},
    {0x00FA, 0x75, 0xF9}, {0x00F9, 0x75, 0xF8}, {0x1EE7, 0x75, 0xFB}, {0x0169, 0x75, 0xF5}, {0x1EE5, 0x75, 0xEF},
    {0x01B0, 0xF6, 0x00}, {0x1EE9, 0xF6, 0xF9}, {0x1EEB, 0xF6, 0xF8}, {0x1EED, 0xF6, 0xFB}, {0x1EEF, 0xF6, 0xF5},
    {0x1EF1, 0xF6, 0xEF}, {0x00FD, 0x79, 0xF9}, {0x1EF3, 0x79, 0xF8}, {0x1EF7, 0x79, 0xFB}, {0x1EF9, 0x79, 0xF5},
    {0x1EF5, 0xEE, 0x00}, {0x0111, 0xF1, 0x00}, {0x00C1, 0x41, 0xD9}, {0x00C0, 0x41, 0xD8}, {0x1EA2, 0x41, 0xDB},
    {0x00C3, 0x41, 0xD5}, {0x1EA0, 0x41, 0xCF}, {0x0102, 0x41, 0xCA}, {0x1EAE, 0x41, 0xC9}, {0x1EB0, 0x41, 0xC8},
    {0x1EB2, 0x41, 0xDA}, {0x1EB4, 0x41, 0xDC}, {0x1EB6, 0x41, 0xCB}, {0x00C2, 0x41, 0xC2}, {0x1EA4, 0x41, 0xC1},
    {0x1EA6, 0x41, 0xC0}, {0x1EA8, 0x41, 0xC5}, {0x1EAA, 0x41, 0xC3}, {0x1EAC, 0x41, 0xC4}, {0x00C9, 0x45, 0xD9},
    {0x00C8, 0x45, 0xD8}, {0x1EBA, 0x45, 0xDB}, {0x1EBC, 0x45, 0xD5}, {0x1EB8, 0x45, 0xCF}, {0x00CA, 0x45, 0xC2},
    {0x1EBE, 0x45, 0xC1}, {0x1EC0, 0x45, 0xC0}, {0x1EC2, 0x45, 0xC5}, {0x1EC4, 0x45, 0xC3}, {0x1EC6, 0x45, 0xC4},
    {0x00CD, 0xCD, 0x00}, {0x00CC, 0xCC, 0x00}, {0x1EC8, 0xC6, 0x00}, {0x0128, 0xD3, 0x00}, {0x1ECA, 0xD2, 0x00},
    {0x00D3, 0x4F, 0xD9}, {0x00D2, 0x4F, 0xD8}, {0x1ECE, 0x4F, 0xDB}, {0x00D5, 0x4F, 0xD5}, {0x1ECC, 0x4F, 0xCF},
    {0x00D4, 0x4F, 0xC2}, {0x1ED0, 0x4F, 0xC1}, {0x1ED2, 0x4F, 0xC0}, {0x1ED4, 0x4F, 0xC5}, {0x1ED6, 0x4F, 0xC3},
    {0x1ED8, 0x4F, 0xC4}, {0x01A0, 0xD4, 0x00}, {0x1EDA, 0xD4, 0xD9}, {0x1EDC, 0xD4, 0xD8}, {0x1EDE, 0xD4, 0xDB},
    {0x1EE0, 0xD4, 0xD5}, {0x1EE2, 0xD4, 0xCF}, {0x00DA, 0x55, 0xD9}, {0x00D9, 0x55, 0xD8}, {0x1EE6, 0x55, 0xDB},
    {0x0168, 0x55, 0xD5}, {0x1EE4, 0x55, 0xCF}, {0x01AF, 0xD6, 0x00}, {0x1EE8, 0xD6, 0xD9}, {0x1EEA, 0xD6, 0xD8},
    {0x1EEC, 0xD6, 0xDB}, {0x1EEE, 0xD6, 0xD5}, {0x1EF0, 0xD6, 0xCF}, {0x00DD, 0x59, 0xD9}, {0x1EF2, 0x59, 0xD8},
    {0x1EF6, 0x59, 0xDB}, {0x1EF8, 0x59, 0xD5}, {0x1EF4, 0xCE, 0x00}, {0x0110, 0xD1, 0x00},
};

/// Grave, acute, tilde, hook, dot below, circumflex, breve, horn, and two old twins of grave and acute.
constexpr QStringView CombiningMarks = u"\u0300\u0301\u0303\u0309\u0323\u0302\u0306\u031B\u0340\u0341";

enum class Reading { Unknown, Unicode, Vni };

using Index = QHash<quint32, const Letter*>;

quint32 PairKey(QChar first, QChar second) {
    return static_cast<quint32>(first.unicode()) << 16 | second.unicode();
}

const Letter* FindUnicode(QChar letter) {
    static const Index index = [] {
        Index made;
        for (const Letter& each : AllLetters)
            made.insert(each.unicode, &each);
        return made;
    }();
    return index.value(letter.unicode());
}

const Letter* FindVni(QChar first, QChar second) {
    static const Index index = [] {
        Index made;
        for (const Letter& each : AllLetters)
            made.insert(PairKey(QChar(each.first), QChar(each.second)), &each);
        return made;
    }();
    return index.value(PairKey(first, second));
}

QString Bytes(const Letter& letter) {
    const QString first = QChar(letter.first);
    return letter.second ? first + QChar(letter.second) : first;
}

QChar At(QStringView text, qsizetype i) {
    return i >= 0 && i < text.size() ? text[i] : QChar();
}

bool IsPair(QStringView text, qsizetype i) {
    return i >= 0 && i + 1 < text.size() && FindVni(text[i], text[i + 1]);
}

/// "oá", "oà" and "oã" are rhymes of Unicode Vietnamese as well.
bool IsEitherPair(QStringView text, qsizetype i) {
    const QChar base = text[i].toLower();
    const QChar mark = text[i + 1].toLower();
    return base == u'o' && (mark == u'á' || mark == u'à' || mark == u'ã');
}

/// Whether a word may begin with `onset` before the rhyme "oa" of Unicode Vietnamese.
bool TakesOa(QStringView onset, bool isOpen) {
    static const QStringList onsets = QStringLiteral(",ch,d,g,h,kh,l,ng,nh,r,s,t,th,x,đ").split(u',');
    const QString small = onset.toString().toLower();
    return onsets.contains(small) && !(isOpen && small == u"s");
}

/// Only letters that Unicode Vietnamese has, alone or with marks, are composed.
QString Compose(const QString& text) {
    QString composed;
    composed.reserve(text.size());
    for (qsizetype i = 0; i < text.size();) {
        qsizetype end = i + 1;
        while (end < text.size() && CombiningMarks.contains(text[end]))
            ++end;
        if (end == i + 1) {
            composed += text[i++];
            continue;
        }
        const QString cluster = text.mid(i, end - i);
        const QString letter = cluster.normalized(QString::NormalizationForm_C);
        composed += letter.size() == 1 && FindUnicode(letter[0]) ? letter : cluster;
        i = end;
    }
    return composed;
}

Reading ReadWord(QStringView word) {
    Reading reading = Reading::Unknown;
    for (qsizetype i = 0; i < word.size(); ++i) {
        if (word[i].unicode() > 0xFF && FindUnicode(word[i]))
            return Reading::Unicode;
        const bool aloneIsVni = !FindUnicode(word[i]) && FindVni(word[i], QChar());
        const bool pairIsVni =
            IsPair(word, i) && (!IsEitherPair(word, i) || !TakesOa(word.left(i), i + 2 == word.size()));
        if (aloneIsVni || pairIsVni)
            reading = Reading::Vni;
    }
    return reading;
}

QString ConvertWord(QStringView word) {
    QString converted;
    for (qsizetype i = 0; i < word.size(); ++i) {
        if (IsPair(word, i) && !IsEitherPair(word, i)) {
            converted += word.mid(i, 2);
            ++i;
        } else if (const Letter* letter = FindUnicode(word[i])) {
            converted += Bytes(*letter);
        } else {
            converted += word[i];
        }
    }
    return converted;
}

/// Every letter of Unicode Vietnamese above `last` in VNI.
QString ConvertLetters(const QString& text, char16_t last) {
    QString converted;
    for (const QChar character : text) {
        const Letter* letter = character.unicode() > last ? FindUnicode(character) : nullptr;
        if (letter)
            converted += Bytes(*letter);
        else
            converted += character;
    }
    return converted;
}

/// The pieces of `text`, words and what lies between them in turn, a word first.
QList<QStringView> Pieces(QStringView text) {
    QList<QStringView> pieces;
    bool inWord = true;
    qsizetype start = 0;
    for (qsizetype i = 0; i <= text.size(); ++i) {
        if (i < text.size() && text[i].isLetter() == inWord)
            continue;
        pieces += text.mid(start, i - start);
        start = i;
        inWord = !inWord;
    }
    return pieces;
}

} // namespace

std::span<const Letter> Letters() {
    return AllLetters;
}

QString FromUnicode(const QString& text, Origin origin) {
    if (origin == Origin::Unicode)
        return ConvertLetters(Compose(text), 0);
    if (origin == Origin::Vni)
        return ConvertLetters(text, 0xFF);
    const QString composed = Compose(text);
    const QList<QStringView> pieces = Pieces(composed);
    QList<Reading> readings;
    for (qsizetype i = 0; i < pieces.size(); ++i)
        readings += i % 2 == 0 ? ReadWord(pieces[i]) : Reading::Unknown;
    const bool restIsVni = readings.contains(Reading::Vni) && !readings.contains(Reading::Unicode);

    QString converted;
    for (qsizetype i = 0; i < pieces.size(); ++i) {
        const bool stays = i % 2 == 1 || readings[i] == Reading::Vni || (readings[i] == Reading::Unknown && restIsVni);
        converted += stays ? pieces[i].toString() : ConvertWord(pieces[i]);
    }
    return converted;
}

QString ToUnicode(QStringView text) {
    QString converted;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (const Letter* pair = i + 1 < text.size() ? FindVni(text[i], text[i + 1]) : nullptr) {
            converted += QChar(pair->unicode);
            ++i;
        } else {
            const Letter* single = FindVni(text[i], QChar());
            converted += single ? QChar(single->unicode) : text[i];
        }
    }
    return converted;
}

Insertion Typed(QStringView before, const QString& typed) {
    if (typed.size() == 1 && IsPair(QString(At(before, before.size() - 1)) + typed, 0) &&
        !IsEitherPair(QString(At(before, before.size() - 1)) + typed, 0))
        return {0, typed};

    const auto marks = std::find_if_not(typed.begin(), typed.end(), [](QChar c) { return CombiningMarks.contains(c); });
    const qsizetype markCount = marks - typed.begin();
    if (markCount == 0 || before.isEmpty())
        return {0, FromUnicode(typed)};
    const QStringView base = before.right(IsPair(before, before.size() - 2) ? 2 : 1);
    const QString joined = (ToUnicode(base) + typed.left(markCount)).normalized(QString::NormalizationForm_C);
    const Letter* letter = joined.size() == 1 ? FindUnicode(joined[0]) : nullptr;
    if (!letter)
        return {0, FromUnicode(typed)};
    return {base.size(), Bytes(*letter) + FromUnicode(typed.mid(markCount))};
}

} // namespace vni
