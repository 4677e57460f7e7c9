#include "platform/SerialControl.h"

#include "tests/support/PseudoTerminal.h"
#include "tests/support/Waiting.h"

#include <gtest/gtest.h>

namespace {
const QString& Settings() {
    static const QString settings = QStringLiteral("9600,n,8,1");
    return settings;
}
} // namespace

TEST(SerialControl, MapsPortNamesToDevices) {
    const std::pair<QString, QString> cases[] = {
        {u"COM1"_qs, u"/dev/ttyS0"_qs},
        {u"com12"_qs, u"/dev/ttyS11"_qs},
        {u"ttyUSB0"_qs, u"/dev/ttyUSB0"_qs},
        {u"/dev/pts/3"_qs, u"/dev/pts/3"_qs},
        {u"COM0"_qs, QString()},
        {u"COM"_qs, QString()},
        {u"LPT1"_qs, QString()},
        {u""_qs, QString()},
    };
    for (const auto& [name, device] : cases)
        EXPECT_EQ(SerialControl::DeviceOf(name), device) << qPrintable(name);
}

TEST(SerialControl, RefusesSettingsThatMakeNoSense) {
    SerialControl control;
    for (const QString& settings : {u",n,8,1"_qs, u"fast,n,8,1"_qs, u"-9600,n,8,1"_qs, u"9600,e,7,2"_qs})
        EXPECT_FALSE(control.SetPort(QStringLiteral("COM1"), settings)) << qPrintable(settings);
    EXPECT_FALSE(control.SetPort(QStringLiteral("LPT1"), Settings()));
}

TEST(SerialControl, HasTheLineForItselfAlone) {
    const PseudoTerminal terminal;
    SerialControl first;
    SerialControl second;
    ASSERT_TRUE(first.SetPort(terminal.Path(), Settings()));
    ASSERT_TRUE(second.SetPort(terminal.Path(), Settings()));
    ASSERT_TRUE(first.Open());
    EXPECT_FALSE(second.Open());
    EXPECT_FALSE(second.IsOpen());
    first.Close();
    EXPECT_TRUE(second.Open());
}

TEST(SerialControl, CarriesEveryByteBothWays) {
    PseudoTerminal terminal;
    SerialControl control;
    ASSERT_TRUE(control.SetPort(terminal.Path(), Settings()));
    ASSERT_TRUE(control.Open());
    QByteArray all;
    for (int code = 0; code < 256; ++code)
        all += static_cast<char>(code);

    QByteArray sent;
    for (const char byte : all)
        EXPECT_TRUE(control.Write(QByteArrayView(&byte, 1)));
    EXPECT_TRUE(WaitUntil([&] { return (sent += terminal.Read()).size() >= all.size(); }));
    EXPECT_EQ(sent, all);
    EXPECT_TRUE(WaitUntil([&] { return control.IsOutputSent(); }));

    QByteArray received;
    QObject::connect(&control, &SerialControl::CharactersArrived, [&] { received += control.TakeAll(); });
    terminal.Write(all);
    EXPECT_TRUE(WaitUntil([&] { return received.size() >= all.size(); }));
    EXPECT_EQ(received, all);
}

TEST(SerialControl, TellsThatTheLineIsGoneAndOpensAnotherTime) {
    auto terminal = std::make_unique<PseudoTerminal>();
    SerialControl control;
    int lost = 0;
    QObject::connect(&control, &SerialControl::LineLost, [&] { ++lost; });
    ASSERT_TRUE(control.SetPort(terminal->Path(), Settings()));
    ASSERT_TRUE(control.Open());
    terminal->HangUp();
    EXPECT_TRUE(WaitUntil([&] { return lost > 0; }));
    EXPECT_FALSE(control.IsOpen());
    EXPECT_FALSE(control.Write("x"));

    terminal = std::make_unique<PseudoTerminal>();
    ASSERT_TRUE(control.SetPort(terminal->Path(), Settings()));
    EXPECT_TRUE(control.Open());
    EXPECT_EQ(lost, 1);
}
