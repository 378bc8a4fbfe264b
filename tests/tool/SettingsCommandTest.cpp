#include "support/RunCommand.h"
#include "support/Test.h"
#include "zelvar/store/SettingsStore.h"

#include <filesystem>

namespace zelvar {
namespace {

using test::Outcome;
using test::Zelvar;

struct SettingsCommand : testing::Test {
    static DString Using(DString const &file) { return "ZELVAR_SETTINGS=" + test::Quoted(file); }

    test::TempFolder m_folder;
    DString m_from = m_folder / "from.db";
    DString m_to = m_folder / "to.db";
    DString m_xml = m_folder / "settings.xml";
};

TEST_F(SettingsCommand, WhatIsExportedCanBeImported) {
    {
        SettingsStore store(m_from);
        ASSERT_TRUE(store.Write("Options\\View", "size", std::int64_t{7}));
        ASSERT_TRUE(store.Write("Options", "names", std::vector<DString>{"a", DString("\0\xFF", 2)}));
        ASSERT_TRUE(store.Write("Other", "v", DString("x")));
        SettingsStore target(m_to);
        ASSERT_TRUE(target.Write("Options", "kept", DString("k")));
    }
    // Whoever has no settings exports none, and does not fail.
    EXPECT_EQ(Zelvar({"settings", "export", m_xml}, Using(m_folder / "none.db")).exitCode, 0);
    EXPECT_EQ(Zelvar({"settings", "import", m_xml}, Using(m_to)).exitCode, 0);
    EXPECT_EQ(Zelvar({"settings", "export", m_xml, "--key", "Options"}, Using(m_from)).exitCode, 0);
    Outcome const imported = Zelvar({"settings", "import", m_xml}, Using(m_to));
    EXPECT_EQ(imported.exitCode, 0) << imported.err;
    SettingsStore const target(m_to);
    EXPECT_EQ(target.ReadInt("Options\\View", "size", 0), 7);
    EXPECT_EQ(target.Read("Options", "names"), SettingsStore(m_from).Read("Options", "names"));
    EXPECT_EQ(target.ReadString("Options", "kept"), "k");
    EXPECT_FALSE(target.HasKey("Other"));
}

TEST_F(SettingsCommand, AnImportThatIsNotWholeChangesNothing) {
    ASSERT_TRUE(SettingsStore(m_to).Write("k", "v", DString("old")));
    DString const value = R"(<RegValue path="v" type="1" size="4">new</RegValue>)";
    test::Rows<DString, char const *> const cases = {
        {R"(<RegKey path="k">)" + value, "settings.xml: line 1"}, // cut off
        {R"(<RegKey path="k">)" + value + R"(<RegValue path="w" type="3" size="2">00</RegValue></RegKey>)", "'w'"},
        {"<settings>" + value + "</settings>", "the root is no RegKey"},
        {"<!DOCTYPE a [<!ENTITY b 'c'>]><RegKey path='k'>&b;</RegKey>", "entity declarations are refused"},
        {"", "no root element"}};
    for (auto const &[text, error] : cases) {
        m_folder.Write("settings.xml", text);
        Outcome const outcome = Zelvar({"settings", "import", m_xml}, Using(m_to));
        EXPECT_EQ(outcome.exitCode, 3);
        EXPECT_THAT(outcome.err, HasSubstr(error));
        EXPECT_EQ(SettingsStore(m_to).ReadString("k", "v"), "old");
        EXPECT_EQ(SettingsStore(m_to).Names("k").size(), 1U);
    }
    EXPECT_EQ(Zelvar({"settings", "import", m_folder / "none.xml"}, Using(m_to)).exitCode, 3);
    EXPECT_EQ(Zelvar({"settings", "export", m_xml, "--key", "none"}, Using(m_to)).exitCode, 3);
    EXPECT_EQ(Zelvar({"settings", "export", m_folder / "none/x.xml"}, Using(m_to)).exitCode, 3);
    EXPECT_EQ(Zelvar({"settings", "change", m_xml}, Using(m_to)).exitCode, 2);
}

TEST_F(SettingsCommand, LargeValuesAndDeepKeysAreExportedAndWhatIsTooDeepIsTold) {
    DString deep = "k";
    for (int level = 1; level < 300; ++level)
        deep += "\\k";
    SettingsStore::Bytes const large(std::size_t{33} << 20U, 7);
    DString const tooDeep = deep + "\\" + deep + "\\" + deep + "\\" + deep;
    for (auto const &[key, value] : {std::pair<DString, SettingsStore::Value>(deep, DString("x")), {"large", large}}) {
        ASSERT_TRUE(SettingsStore(m_from).RemoveTree(""));
        ASSERT_TRUE(SettingsStore(m_from).Write(key, "v", value));
        ASSERT_EQ(Zelvar({"settings", "export", m_xml}, Using(m_from)).exitCode, 0);
        ASSERT_EQ(Zelvar({"settings", "import", m_xml}, Using(m_to)).exitCode, 0);
        EXPECT_TRUE(SettingsStore(m_to).Read(key, "v") == value);
    }
    ASSERT_TRUE(SettingsStore(m_from).RemoveTree(""));
    ASSERT_TRUE(SettingsStore(m_from).CreateKey(tooDeep));
    EXPECT_THAT(Zelvar({"settings", "export", m_xml}, Using(m_from)).err, HasSubstr("nested deeper than 1024"));
}

TEST_F(SettingsCommand, OfADamagedFileNoPartIsExported) {
    {
        SettingsStore store(m_from);
        for (int i = 0; i < 40; ++i)
            ASSERT_TRUE(store.Write("k" + std::to_string(i), "n", DString(1000, 'x')));
    }
    DString bytes = test::ReadFile(m_from);
    bytes.replace(bytes.size() / 8192 * 4096, 4096, 4096, '\xA5'); // a page in the middle
    m_folder.Write("from.db", bytes);
    EXPECT_EQ(Zelvar({"settings", "export", m_xml}, Using(m_from)).exitCode, 3);
    EXPECT_FALSE(std::filesystem::exists(m_xml));
    EXPECT_EQ(test::ReadFile(m_from + ".damaged-1"), bytes);
}

TEST_F(SettingsCommand, AnImportThatFailsHalfwayLeavesNothingOfIt) {
    DString text = R"(<RegKey path="k">)";
    for (int i = 0; i < 20'000; ++i)
        text += Format(R"(<RegValue path="%d" type="1" size="2">x</RegValue>)", i);
    m_folder.Write("settings.xml", text + "</RegKey>");
    ASSERT_TRUE(SettingsStore(m_to).Write("k", "first", DString("x")));
    Outcome const full = Zelvar({"settings", "import", m_xml}, "trap '' XFSZ; ulimit -f 300; " + Using(m_to));
    EXPECT_EQ(full.exitCode, 3);
    EXPECT_THAT(full.err, HasSubstr("they are as they were"));
    EXPECT_EQ(SettingsStore(m_to).Names("k").size(), 1U);
}

} // namespace
} // namespace zelvar
