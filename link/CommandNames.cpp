#include "link/CommandNames.h"

#include "link/Encodings.h"

#include <QCoreApplication>

#include <span>

namespace {

struct Name {
    char letter;
    const char* meaning;
};

constexpr Name CounterNames[] = {{'S', QT_TRANSLATE_NOOP("commands", "time")},
                                 {'H', QT_TRANSLATE_NOOP("commands", "show number")},
                                 {'P', QT_TRANSLATE_NOOP("commands", "status")},
                                 {'Q', QT_TRANSLATE_NOOP("commands", "get key")}};

constexpr Name PrinterNames[] = {{'S', QT_TRANSLATE_NOOP("commands", "reset with clock")},
                                 {'U', QT_TRANSLATE_NOOP("commands", "clock")},
                                 {'P', QT_TRANSLATE_NOOP("commands", "status")},
                                 {'K', QT_TRANSLATE_NOOP("commands", "button table")},
                                 {'M', QT_TRANSLATE_NOOP("commands", "service row")},
                                 {'N', QT_TRANSLATE_NOOP("commands", "service table ends")},
                                 {'L', QT_TRANSLATE_NOOP("commands", "ticket form begins")},
                                 {'O', QT_TRANSLATE_NOOP("commands", "ticket form")},
                                 {'V', QT_TRANSLATE_NOOP("commands", "ticket form ends")},
                                 {'X', QT_TRANSLATE_NOOP("commands", "logo begins")},
                                 {'Y', QT_TRANSLATE_NOOP("commands", "logo")},
                                 {'Z', QT_TRANSLATE_NOOP("commands", "logo ends")},
                                 {'G', QT_TRANSLATE_NOOP("commands", "letters begin")},
                                 {'J', QT_TRANSLATE_NOOP("commands", "letters")},
                                 {'T', QT_TRANSLATE_NOOP("commands", "letters end")},
                                 {'W', QT_TRANSLATE_NOOP("commands", "print test")},
                                 {'Q', QT_TRANSLATE_NOOP("commands", "query ticket")}};

constexpr Name DisplayNames[] = {{'S', QT_TRANSLATE_NOOP("commands", "query")},
                                 {'H', QT_TRANSLATE_NOOP("commands", "show text")},
                                 {'P', QT_TRANSLATE_NOOP("commands", "status")}};

constexpr Name HubNames[] = {
    {'W', QT_TRANSLATE_NOOP("commands", "member list")},   {'L', QT_TRANSLATE_NOOP("commands", "configuration block")},
    {'U', QT_TRANSLATE_NOOP("commands", "clock")},         {'K', QT_TRANSLATE_NOOP("commands", "counter option")},
    {'J', QT_TRANSLATE_NOOP("commands", "long transfer")}, {'N', QT_TRANSLATE_NOOP("commands", "relay")},
    {'H', QT_TRANSLATE_NOOP("commands", "show number")},   {'P', QT_TRANSLATE_NOOP("commands", "status")},
    {'Q', QT_TRANSLATE_NOOP("commands", "query")},         {'Y', QT_TRANSLATE_NOOP("commands", "test member")},
    {'Z', QT_TRANSLATE_NOOP("commands", "dump")}};

constexpr Name OtherNames[] = {{'G', QT_TRANSLATE_NOOP("commands", "power on")},
                               {'T', QT_TRANSLATE_NOOP("commands", "power off")},
                               {'X', QT_TRANSLATE_NOOP("commands", "query member")},
                               {'P', QT_TRANSLATE_NOOP("commands", "status")}};

constexpr Name BroadcastNames[] = {{'R', QT_TRANSLATE_NOOP("commands", "reset with clock")},
                                   {'U', QT_TRANSLATE_NOOP("commands", "clock")}};

QString Find(std::span<const Name> names, char letter) {
    for (const Name& name : names) {
        if (name.letter == letter)
            return QCoreApplication::translate("commands", name.meaning);
    }
    return {};
}

} // namespace

QString commands::Meaning(std::optional<model::ObjectType> type, char letter) {
    if (!type)
        return Find(OtherNames, letter);
    switch (*type) {
    case model::Counter:
        return Find(CounterNames, letter);
    case model::Printer:
        return Find(PrinterNames, letter);
    case model::Display:
        return Find(DisplayNames, letter);
    case model::Hub:
        return Find(HubNames, letter);
    }
    return {};
}

QString commands::BroadcastMeaning(char letter) {
    return Find(BroadcastNames, letter);
}

std::optional<commands::Relayed> commands::ReadRelay(const QByteArray& data) {
    if (data.size() < 2)
        return std::nullopt;
    return Relayed{static_cast<quint8>(encoding::FromSmallNumber(data[0])), data[1], data.sliced(2)};
}
