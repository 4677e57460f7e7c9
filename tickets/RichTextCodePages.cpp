#include "tickets/RichTextCodePages.h"

#include "platform/AnsiText.h"

#include <algorithm>
#include <utility>

namespace richtext {
namespace {

/// Character sets of fonts and their code pages, 0 being that of the file; all others are of Windows-1252.
constexpr std::pair<int, int> CharsetPages[] = {
    {1, 0},      {77, 10000}, {128, 932},  {129, 949},  {130, 1361}, {134, 936}, {136, 950},  {161, 1253}, {162, 1254},
    {163, 1258}, {177, 1255}, {178, 1256}, {186, 1257}, {204, 1251}, {222, 874}, {238, 1250}, {254, 437},  {255, 850},
};

/// The characters of the bytes 0x80 to 0xFF; what a code page leaves open stands for the character of that number.
struct CodePage {
    int number;
    QStringView upper;
};

constexpr CodePage CodePages[] = {
    {1250,
     u"€\u0081‚\u0083„…†‡\u0088‰Š‹ŚŤŽŹ\u0090‘’“”•–—\u0098™š›śťžź"
     u"\u00A0ˇ˘Ł¤Ą¦§¨©Ş«¬\u00AD®Ż°±˛ł´µ¶·¸ąş»Ľ˝ľżŔÁÂĂÄĹĆÇČÉĘËĚÍÎĎĐŃŇÓÔŐÖ×ŘŮÚŰÜÝŢßŕáâăäĺćçčéęëěíîďđńňóôőö÷řůúűüýţ˙"},
    {1251,
     u"ЂЃ‚ѓ„…†‡€‰Љ‹ЊЌЋЏђ‘’“”•–—\u0098™љ›њќћџ"
     u"\u00A0ЎўЈ¤Ґ¦§Ё©Є«¬\u00AD®Ї°±Ііґµ¶·ё№є»јЅѕїАБВГДЕЖЗИЙКЛМНОПРСТУФХЦЧШЩЪЫЬЭЮЯабвгдежзийклмнопрстуфхцчшщъыьэюя"},
    {1253,
     u"€\u0081‚ƒ„…†‡\u0088‰\u008A‹\u008C\u008D\u008E\u008F\u0090‘’“”•–—\u0098™\u009A›\u009C\u009D\u009E\u009F"
     u"\u00A0΅Ά£¤¥¦§¨©ª«¬\u00AD®―°±²³΄µ¶·ΈΉΊ»Ό½ΎΏΐΑΒΓΔΕΖΗΘΙΚΛΜΝΞΟΠΡÒΣΤΥΦΧΨΩΪΫάέήίΰαβγδεζηθικλμνξοπρςστυφχψωϊϋόύώÿ"},
    {1254,
     u"€\u0081‚ƒ„…†‡ˆ‰Š‹Œ\u008D\u008E\u008F\u0090‘’“”•–—˜™š›œ\u009D\u009EŸ"
     u"\u00A0¡¢£¤¥¦§¨©ª«¬\u00AD®¯°±²³´µ¶·¸¹º»¼½¾¿ÀÁÂÃÄÅÆÇÈÉÊËÌÍÎÏĞÑÒÓÔÕÖ×ØÙÚÛÜİŞßàáâãäåæçèéêëìíîïğñòóôõö÷øùúûüışÿ"},
    {1257,
     u"€\u0081‚\u0083„…†‡\u0088‰\u008A‹\u008C¨ˇ¸\u0090‘’“”•–—\u0098™\u009A›\u009C¯˛\u009F"
     u"\u00A0¡¢£¤¥¦§Ø©Ŗ«¬\u00AD®Æ°±²³´µ¶·ø¹ŗ»¼½¾æĄĮĀĆÄÅĘĒČÉŹĖĢĶĪĻŠŃŅÓŌÕÖ×ŲŁŚŪÜŻŽßąįāćäåęēčéźėģķīļšńņóōõö÷ųłśūüżž˙"},
    {1258,
     u"€\u0081‚ƒ„…†‡ˆ‰\u008A‹Œ\u008D\u008E\u008F\u0090‘’“”•–—˜™\u009A›œ\u009D\u009EŸ"
     u"\u00A0¡¢£¤¥¦§¨©ª«¬\u00AD®¯°±²³´µ¶·¸¹º»¼½¾¿ÀÁÂĂÄÅÆÇÈÉÊË\u0300ÍÎÏĐÑ\u0309ÓÔƠÖ×ØÙÚÛÜƯ\u0303ßàáâăäåæçèéêë\u0301íîïđñ"
     u"\u0323óôơö÷øùúûüư₫ÿ"},
};

static_assert(std::all_of(std::begin(CodePages), std::end(CodePages),
                          [](const CodePage& page) { return page.upper.size() == 128; }));

QString AnsiUpperHalf() {
    QByteArray bytes;
    for (int byte = 0x80; byte <= 0xFF; ++byte)
        bytes.append(static_cast<char>(byte));
    return ansi::Decode(bytes);
}

} // namespace

int PageOfCharset(int charset) {
    for (const auto& [each, page] : CharsetPages)
        if (each == charset)
            return page;
    return AnsiPage;
}

QStringView UpperHalf(int page) {
    static const QString ansiHalf = AnsiUpperHalf();
    if (page == AnsiPage)
        return ansiHalf;
    const auto known = std::find_if(std::begin(CodePages), std::end(CodePages),
                                    [page](const CodePage& each) { return each.number == page; });
    return known == std::end(CodePages) ? QStringView() : known->upper;
}

bool IsDoubleByte(int page) {
    return page == 932 || page == 936 || page == 949 || page == 950 || page == 1361;
}

bool IsLeadByte(int page, quint8 byte) {
    if (page == 932) // half-width letters of one byte stand between
        return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
    return byte >= 0x81 && byte <= 0xFE;
}

} // namespace richtext
