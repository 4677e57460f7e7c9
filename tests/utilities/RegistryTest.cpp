#include "utilities/cRegistry.h"

#include "tests/support/Files.h"
#include "utilities/SystemInfo.h"

#include <QTemporaryDir>

namespace {

const QString& Section() {
    static const QString section = QStringLiteral("SOFTWARE\\Maker\\Program");
    return section;
}

class RegistryTest : public ::testing::Test {
protected:
    cRegistry At(const QString& section, const QString& value, qint32 type = 1) const {
        cRegistry registry(m_store);
        registry.ClassKey = RegistryStore::LocalMachine;
        registry.SectionKey = section;
        registry.ValueKey = value;
        registry.ValueType = type;
        return registry;
    }

    QTemporaryDir m_folder;
    QString m_file = m_folder.filePath(QStringLiteral("Registry.json"));
    RegistryStore m_store{m_file, m_folder.filePath(QStringLiteral("autostart"))};
};

} // namespace

TEST_F(RegistryTest, ValuesComeBackAsTheirTypesSay) {
    qputenv("ORVEX_TEST_VARIABLE", "here");
    const struct {
        qint32 type;
        QVariant written;
        qint32 stored; ///< 0: nothing is
        QVariant read;
    } cases[] = {
        {1, u"plain"_qs, 1, u"plain"_qs},
        {1, u"100% sure"_qs, 1, u"100% sure"_qs},
        {2, u"50%% off"_qs, 1, u"50%% off"_qs},
        {1, u"over %ORVEX_TEST_VARIABLE% and %NOT_SET_AT_ALL%"_qs, 2, u"over here and %NOT_SET_AT_ALL%"_qs},
        {1, u""_qs, 1, u""_qs},
        {1, 42, 1, u"42"_qs},
        {3, QByteArray("a\0b", 3), 3, QByteArray("a\0b", 3)},
        {4, -5, 4, -5},
        {5, 70'000, 4, 70'000},
        {4, u"no number"_qs, 0, u"default"_qs},
    };
    int number = 0;
    for (const auto& [type, written, stored, read] : cases) {
        const QString name = QStringLiteral("value %1").arg(++number);
        cRegistry registry = At(Section(), name, type);
        registry.Default = u"default"_qs;
        EXPECT_FALSE(registry.SetValue(written).has_value()) << number;
        registry.ValueType = 99;
        EXPECT_EQ(registry.Value(), read) << number;
        EXPECT_EQ(registry.ValueType, stored == 0 ? 99 : stored) << number;
    }
    // As other programs may have written them.
    ASSERT_TRUE(m_store.Write(RegistryStore::LocalMachine, Section(), u"big"_qs, {5, QByteArray("\0\0\1\2", 4)}));
    EXPECT_EQ(At(Section(), u"BIG"_qs).Value(), 258) << "names without regard to case";
    ASSERT_TRUE(m_store.Write(RegistryStore::LocalMachine, Section(), QString(), {7, QByteArray("a\0b\0", 4)}));
    EXPECT_EQ(At(Section().toLower(), QString()).Value().toString(), QString::fromUtf8("a\0b", 3))
        << "the default value";
}

TEST_F(RegistryTest, EachFailureHasItsNumberAndText) {
    const auto expect = [](const std::optional<cRegistry::Error>& error, quint32 number, const QString& text) {
        ASSERT_TRUE(error.has_value());
        EXPECT_EQ(error->number, number);
        EXPECT_EQ(error->source, QStringLiteral("test_utilities.cRegistry"));
        EXPECT_EQ(error->description.toStdString(), text.toStdString());
    };
    cRegistry registry = At(Section(), u"Run"_qs);
    expect(registry.DeleteValue(), 26001,
           u"Failed to open key '-2147483646',Section: 'SOFTWARE\\Maker\\Program' for delete access"_qs);
    ASSERT_FALSE(registry.SetValue(u"first"_qs).has_value());
    ASSERT_FALSE(registry.DeleteValue().has_value());
    expect(registry.DeleteValue(), 26001,
           u"Failed to delete registry Key: '-2147483646',Section: 'SOFTWARE\\Maker\\Program',Key: 'Run"_qs);
    const QString failed = u"Failed to set registry value Key: '-2147483646',Section: 'SOFTWARE\\Maker\\Program',Key: "
                           "'Run' to value: 'first'"_qs;
    registry.ValueType = 3;
    expect(registry.SetValue(u"no bytes"_qs), 26001, failed);
    registry.ValueType = 7;
    expect(registry.SetValue(u"list"_qs), 0x800469A9, failed);
    // A file that cannot be read is not written over.
    WriteFile(m_file, "garbage");
    registry.ValueType = 1;
    expect(registry.SetValue(u"second"_qs), 0x800469A9, failed);
    EXPECT_EQ(ReadFile(m_file), "garbage");
    EXPECT_FALSE(registry.Value().isValid());
}

TEST_F(RegistryTest, TheRunKeyStartsTheProgramWithTheSession) {
    const QString run = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run"_qs;
    cRegistry registry = At(run, u"Orvex"_qs);
    ASSERT_FALSE(registry.SetValue(u"/opt/my \"$ 100%/Orvex /minimize /delay=60"_qs).has_value());
    const QString entry = m_folder.filePath(QStringLiteral("autostart/orvex.desktop"));
    EXPECT_TRUE(ReadFile(entry).contains("Exec=\"/opt/my \\\\\"\\\\$ 100%%/Orvex\" /minimize /delay=60\n"))
        << ReadFile(entry).toStdString();
    ASSERT_FALSE(registry.DeleteValue().has_value());
    EXPECT_FALSE(QFile::exists(entry));
    // What the desktop has taken out is not started, and not said to be.
    ASSERT_FALSE(registry.SetValue(u"/opt/Orvex"_qs).has_value());
    EXPECT_EQ(registry.Value().toString(), u"/opt/Orvex"_qs);
    ASSERT_TRUE(QFile::remove(entry));
    EXPECT_EQ(registry.Value().toString(), QString());
    WriteFile(m_folder.filePath(QStringLiteral("blocked")), "");
    const RegistryStore blocked(m_file, m_folder.filePath(QStringLiteral("blocked")));
    EXPECT_FALSE(blocked.Write(RegistryStore::LocalMachine, run, u"Orvex"_qs, {1, "x"}));
    EXPECT_FALSE(m_store.Read(RegistryStore::LocalMachine, run, u"Orvex"_qs).has_value());
}

TEST_F(RegistryTest, TheInformationToolIsStartedIfTheRegistryNamesOne) {
    EXPECT_FALSE(systeminfo::Start(m_store));
    QString value = u"kept"_qs;
    EXPECT_FALSE(systeminfo::GetKeyValue(m_store, RegistryStore::LocalMachine, Section(), u"x"_qs, value));
    EXPECT_EQ(value, QString());
    ASSERT_TRUE(m_store.Write(RegistryStore::LocalMachine, Section(), u"x"_qs, {4, QByteArray("\1\2\0\0", 4)}));
    EXPECT_TRUE(systeminfo::GetKeyValue(m_store, RegistryStore::LocalMachine, Section(), u"x"_qs, value));
    EXPECT_EQ(value, u"513"_qs);
    const QString tool = u"SOFTWARE\\Microsoft\\Shared Tools\\MSINFO"_qs;
    for (const auto& [program, starts] : {std::pair(QByteArray("/bin/true"), true), {"/no/such/program", false}}) {
        ASSERT_TRUE(m_store.Write(RegistryStore::LocalMachine, tool, u"PATH"_qs, {1, program + '\0'}));
        EXPECT_EQ(systeminfo::Start(m_store), starts);
    }
}
