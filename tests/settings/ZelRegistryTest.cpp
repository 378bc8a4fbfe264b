#include "zelvar/settings/ZelRegistry.h"

#include "support/Test.h"
#include "zelvar/xml/XMLNode.h"

namespace zelvar {
namespace {

using Bytes = SettingsStore::Bytes;
using Typed = SettingsStore::Typed;

struct ZelRegistryTest : testing::Test {
    bool Write(char const *name, unsigned long type, Bytes const &data) {
        return m_registry.WriteAny(name, type, data.data(), data.size()) != 0;
    }
    RegistryValue Read(char const *name) {
        unsigned char *data = nullptr;
        unsigned long size = 0;
        EXPECT_NE(m_registry.ReadAny(name, &data, &size), 0) << name;
        RegistryValue value{m_registry.GetLastResult().type, Bytes(data, data + size)};
        delete[] data;
        return value;
    }
    /// The element of a value of the key "k".
    static XMLNode const *Element(XMLNode const &key, DString const &name) {
        for (XMLNode const *child = key.GetFirstChild(); child != nullptr; child = child->GetNext())
            if (child->GetAttrStr("path") == name)
                return child;
        return nullptr;
    }

    test::TempFolder m_folder;
    SettingsStore m_store{m_folder / "a.db"};
    SettingsStore m_other{m_folder / "b.db"};
    ZelRegistry m_registry{m_store, 0, 0};
};

TEST_F(ZelRegistryTest, EveryTypeSurvivesTheRoundTripByteForByte) {
    // `text`: in the snapshot
    test::Rows<unsigned long, Bytes, char const *> const cases = {
        {0, {1, 0xAB}, "01AB"},
        {0, {}, ""},
        {1, {'a', 'b', 'c', 'd', 0}, "abcd"},
        {1, {'a', 'b', 'c', 'd'}, "abcd"},
        {1, {'a', 0, 0, 0}, "a"},
        {1, {'<', '&', ' ', 0}, "<& "},
        {1, {0}, ""},
        {1, {}, ""},
        {1, {'a', 0, 'b', 0}, "610062"}, // no XML holds a zero
        {1, {0xFF, 7, 0}, "FF07"},
        {2, {'%', 'P', '%', 0}, "%P%"},
        {3, {0, 1, 2}, "000102"},
        {4, {0xFF, 0xFF, 0xFF, 0xFF}, "-1"},
        {4, {0, 0, 0, 0x80}, "-2147483648"},
        {4, {1, 2}, "0x0102"},
        {4, {1, 2, 3, 4, 5}, "0x0102030405"},
        {7, {'a', 0, 'b', 0, 0}, "6100620000"},
        {7, {0}, "00"},
        {7, {'a'}, "61"},
        {11, {0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, "-2"},
        {11, {}, ""},
        {0xFFFFFFFF, {9}, "09"},
        {kRegDouble, {1, 0, 0, 0, 0, 0, 0xF8, 0x7F}, "010000000000F87F"}, // not a number, and which
        {kRegTextList, {1, 0, 0}, "010000"}};
    ASSERT_TRUE(m_registry.CreateKey("k"));
    int number = 0;
    for (auto const &[type, data, text] : cases) {
        DString const name = Format("v%03d", number++);
        ASSERT_TRUE(Write(name.c_str(), type, data)) << name;
        EXPECT_EQ(Read(name.c_str()), (RegistryValue{static_cast<std::uint32_t>(type), data})) << name;
    }
    std::unique_ptr<XMLNode> const tree(m_registry.ToXMLNode());
    XMLNode loaded;
    ASSERT_TRUE(loaded.LoadText(tree->SaveText()));
    EXPECT_TRUE(ZelRegistry::IsSnapshot(loaded, nullptr));
    ASSERT_TRUE(ZelRegistry(m_other, 0, 0).FromXMLNode(&loaded));
    number = 0;
    for (auto const &[type, data, text] : cases) {
        DString const name = Format("v%03d", number++);
        EXPECT_EQ(m_other.Read("k", name), m_store.Read("k", name)) << name;
        XMLNode const *const element = Element(loaded, name);
        ASSERT_NE(element, nullptr);
        EXPECT_EQ(element->GetText(), text) << name;
        EXPECT_EQ(element->GetAttrInt("size", -1), static_cast<long long>(data.size()));
    }
}

TEST_F(ZelRegistryTest, WhatTheStoreHoldsItselfComesBackAsItWas) {
    SettingsStore::Value const values[] = {std::numeric_limits<std::int64_t>::min(),
                                           0.1,
                                           -std::numeric_limits<double>::infinity(),
                                           DString(),
                                           DString("a\0b\xFF", 4),
                                           std::vector<DString>{},
                                           std::vector<DString>{""},
                                           std::vector<DString>{"", "a", ""},
                                           std::vector<DString>{DString("a\0b", 3), ""},
                                           Bytes{},
                                           Bytes{0, 255},
                                           Typed{4, {1, 0, 0, 0}}};
    int number = 0;
    for (SettingsStore::Value const &value : values)
        ASSERT_TRUE(m_store.Write("Deep\\\xFF\x01\\c", Format("n\x02\xC3%d", number++), value));
    ASSERT_TRUE(m_store.Write("", "root value", DString("r")) && m_store.CreateKey("Empty"));
    ASSERT_TRUE(m_registry.Open(""));
    std::unique_ptr<XMLNode> const tree(m_registry.ToXMLNode());
    XMLNode loaded;
    ASSERT_TRUE(loaded.LoadText(tree->SaveText()));
    ASSERT_TRUE(ZelRegistry(m_other, 0, 0).FromXMLNode(&loaded));
    for (std::size_t i = 0; i < std::size(values); ++i)
        EXPECT_EQ(m_other.Read("Deep\\\xFF\x01\\c", Format("n\x02\xC3%d", static_cast<int>(i))), values[i]) << i;
    EXPECT_TRUE(m_other.ReadString("", "root value") == "r" && m_other.HasKey("Empty"));
    ASSERT_TRUE(m_store.Write("", "not a number", std::nan("")));
    EXPECT_EQ(Read("not a number").type, kRegDouble);
}

TEST_F(ZelRegistryTest, ARootEndsInOneSeparatorAndCountsAsASetOfCharacters) {
    for (auto const &[given, kept] : {std::pair("a\\\\", "a\\"), {"a", "a\\"}, {"", "\\"}, {"\\\\", "\\"}}) {
        m_registry.SetRoot(given);
        EXPECT_EQ(m_registry.GetRoot(), kept);
    }
    ASSERT_TRUE(m_store.Write("Software\\Settings\\Bars", "v", DString("x")));
    m_registry.SetRoot("Software\\");
    ASSERT_TRUE(m_registry.Open("Software\\Settings\\Bars"));
    std::unique_ptr<XMLNode> const tree(m_registry.ToXMLNode());
    EXPECT_EQ(tree->GetAttrStr("path"), "ings\\Bars");
    ZelRegistry other(m_other, 0, 0);
    other.SetRoot("Software\\");
    ASSERT_TRUE(other.FromXMLNode(tree.get()));
    EXPECT_EQ(m_other.ReadString("Software\\ings\\Bars", "v"), "x");
    ASSERT_TRUE(m_registry.Open("Software")); // nothing but characters of the root
    EXPECT_EQ(std::unique_ptr<XMLNode>(m_registry.ToXMLNode())->GetAttrStr("path"), "");
}

TEST_F(ZelRegistryTest, KeysFollowValuesAndEachNamesItsWholePath) {
    for (char const *key : {"b\\d", "b\\c", "a"})
        ASSERT_TRUE(m_store.Write(key, "v", std::int64_t{-1}));
    ASSERT_TRUE(m_store.Write("b", "w", std::int64_t{-1}));
    ASSERT_TRUE(m_registry.Open("b\\"));
    std::unique_ptr<XMLNode> const tree(m_registry.ToXMLNode());
    EXPECT_EQ(tree->SaveText(), R"(<?xml version="1.0" encoding="UTF-8"?>
<RegKey path="b\">
  <RegValue path="w" type="11" size="8">-1</RegValue>
  <RegKey path="b\c">
    <RegValue path="v" type="11" size="8">-1</RegValue>
  </RegKey>
  <RegKey path="b\d">
    <RegValue path="v" type="11" size="8">-1</RegValue>
  </RegKey>
</RegKey>
)");
}

TEST_F(ZelRegistryTest, ATreeEndsWhereNoStackWouldHoldIt) {
    DString key = "a";
    for (int level = 1; level < 1'300; ++level)
        key += "\\a";
    ASSERT_TRUE(m_store.Write(key, "v", DString("x")) && m_registry.Open("a"));
    std::unique_ptr<XMLNode> const tree(m_registry.ToXMLNode());
    int levels = 0;
    for (XMLNode const *at = tree.get(); at != nullptr; at = at->GetFirstChild())
        ++levels;
    EXPECT_TRUE(levels > 1'000 && levels < 1'200) << levels;
}

TEST_F(ZelRegistryTest, TheLastResultTellsWhatHappened) {
    auto const status = [&] { return m_registry.GetLastResult().status; };
    unsigned char *data = nullptr;
    unsigned long size = 0;
    EXPECT_EQ(m_registry.ReadAny("v", &data, &size), 0);
    EXPECT_EQ(status(), 6U);
    EXPECT_TRUE(!m_registry.Open("k") && m_registry.ToXMLNode() == nullptr);
    ASSERT_TRUE(m_registry.CreateKey("k"));
    EXPECT_EQ(m_registry.ReadAny("v", &data, &size), 0);
    EXPECT_EQ(status(), 2U);
    ASSERT_TRUE(Write("v", 3, {1, 2, 3}));
    EXPECT_EQ(m_registry.GetLastResult().size, 3U);
    ZelRegistry reader(m_store, 0, 1);
    ASSERT_TRUE(reader.Open("k"));
    EXPECT_TRUE(reader.WriteAny("v", 3, nullptr, 0) == 0 && reader.GetLastResult().size == 0) << "left alone";
    EXPECT_FALSE(reader.CreateKey("new"));
    XMLNode key("RegKey");
    EXPECT_FALSE(reader.FromXMLNode(&key));
    EXPECT_FALSE(m_registry.FromXMLNode(nullptr));
    EXPECT_TRUE(m_registry.FromXMLNode(&key)); // of a key without children
    EXPECT_EQ(m_registry.GetPath(), "");       // its key is current now
    EXPECT_EQ(m_store.Read("k", "v"), SettingsStore::Value(Bytes{1, 2, 3}));
    XMLNode tree("RegKey");
    tree.AddChld("RegKey")->SetAttr("path", "all users");
    ASSERT_TRUE(ZelRegistry(1, 0).FromXMLNode(&tree));
    EXPECT_TRUE(SettingsStore::Machine().HasKey("all users") && !SettingsStore::Instance().HasKey("all users"));
}

TEST_F(ZelRegistryTest, WhatATreeMayNotSayIsSkippedOrRefused) {
    // `data`: of "v", if it is there
    test::Rows<char const *, bool, bool, Bytes> const cases = {
        {R"(<RegValue path="v" type="3" size="2">0a0B</RegValue>)", true, true, {10, 11}},
        {R"(<regVALUE path="v" type="3" size="1"> 0A </regVALUE>)", true, true, {10}},
        {R"(<RegValue path="v" type="3" size="1">0A0B</RegValue>)", false, true, {10}},
        {R"(<RegValue path="v" type="3" size="3">0A0B</RegValue>)", false, true, {10, 11, 0}},
        {R"(<RegValue path="v" type="3" size="2">0A0</RegValue>)", false, false, {}},
        {R"(<RegValue path="v" type="3" size="2">0A0X</RegValue>)", false, false, {}},
        {R"(<RegValue path="v" type="3" size="-1"/>)", false, false, {}},
        {R"(<RegValue path="v" type="1" size="99999999999"/>)", false, false, {}},
        {R"(<RegValue path="v" type="1" size="67108865"/>)", false, false, {}},
        {R"(<RegValue path="v" type="1" size="2">abc</RegValue>)", false, true, {'a', 'b'}},
        {R"(<RegValue path="v" type="1" size="2"/>)", true, true, {0, 0}},
        {R"(<RegValue path="v" type="1"/>)", false, true, {}},
        {R"(<RegValue path="v" size="1">00</RegValue>)", false, true, {0}},
        {R"(<RegValue path="v" type="-1" size="1">00</RegValue>)", false, true, {0}},
        {R"(<RegValue path="v" type="4" size="4">4294967295</RegValue>)", true, true, {255, 255, 255, 255}},
        {R"(<RegValue path="v" type="4" size="4">4294967296</RegValue>)", false, true, {0, 0, 0, 0}},
        {R"(<RegValue path="v" type="4" size="4">none</RegValue>)", false, true, {0, 0, 0, 0}},
        {R"(<RegValue path="v" type="4" size="1">7</RegValue>)", false, true, {7}},
        {R"(<RegValue path="v" type="11" size="8">9223372036854775808</RegValue>)", false, true, Bytes(8)},
        {R"(<Other/>)", false, true, {}},
        {"<!-- a word --> and a text", true, true, {}},
    };
    for (auto const &[element, isSnapshot, isTaken, data] : cases) {
        SCOPED_TRACE(element);
        XMLNode tree;
        // What comes behind is done nonetheless.
        ASSERT_TRUE(tree.LoadText(DString(R"(<RegKey path="k\\"><RegKey path="k\below"/>)") + element +
                                  R"(<RegValue path="last" type="1" size="1"/></RegKey>)"));
        EXPECT_EQ(ZelRegistry::IsSnapshot(tree, nullptr), isSnapshot);
        EXPECT_EQ(m_registry.FromXMLNode(&tree), isTaken);
        EXPECT_TRUE(m_store.HasKey("k\\below"));
        EXPECT_TRUE(m_store.Read("k", "last").has_value());
        std::optional<SettingsStore::Value> const stored = m_store.Read("k", "v");
        EXPECT_EQ(stored ? ToRegistry(*stored).data : Bytes{}, data);
        ASSERT_TRUE(m_store.RemoveTree("k"));
    }
    XMLNode many("RegKey");
    for (int i = 0; i < 5; ++i) {
        XMLNode *const value = many.AddChld("RegValue");
        value->SetAttr("path", std::to_string(i));
        value->SetAttrInt("type", 1);
        value->SetAttrInt("size", 60'000'000); // claims, with nothing behind
    }
    DString reason;
    EXPECT_FALSE(ZelRegistry::IsSnapshot(many, &reason));
    EXPECT_EQ(reason, "the values are larger than 256 MB together");
    EXPECT_FALSE(ZelRegistry::IsSnapshot(XMLNode("settings"), &reason));
}

} // namespace
} // namespace zelvar
