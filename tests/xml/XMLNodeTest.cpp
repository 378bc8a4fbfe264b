#include "zelvar/xml/XMLNode.h"

#include "support/TestFiles.h"
#include "zelvar/base/DFile.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <memory>

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zelvar {
namespace {

using namespace std::string_view_literals;

constexpr char const *kHead = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

DString Repeated(std::string_view piece, int count) {
    DString text;
    for (int i = 0; i < count; ++i)
        text += piece;
    return text;
}

DString Nested(int levels) { return Repeated("<a>", levels) + Repeated("</a>", levels); }

/// ASCII in so many bytes a character, the lowest first.
DString Utf16(std::string_view ascii, std::size_t width = 2) {
    DString text;
    for (char const c : ascii)
        text += DString(1, c) + DString(width - 1, '\0');
    return text;
}

TEST(XMLNode, RefusesWhatIsNotAWholeDocumentAndStaysAsItWas) {
    test::Rows<char const *, DString, char const *> const cases = {
        {"nothing", "", "no root element"},
        {"cut off", "<a>\n<b/>\n", "line 2: "},
        {"crossed", "<a><b></a></b>", "line 1: "},
        {"two roots", "<a/><b/>", "outside"},
        {"text behind", "<a/>rest", "outside"},
        {"hidden end", DString("<a/>\0<b>", 8), "NUL"},
        {"hidden end by its number", "<a>&&#x000;y</a>", "NUL"},
        {"hidden end by a number of 33 bits", "<a>x&#4294967296;y</a>", "NUL"},
        {"the same in hexadecimal", "<a>x&#xA00000000;y</a>", "NUL"},
        {"entities", "<!DOCTYPE a [<!ENTITY x 'xx'><!ENTITY y '&x;&x;'>]><a>&y;</a>", "entity"},
        {"open document type", "<!DOCTYPE a [<a/>", "a broken document type"},
        {"no name", "<1/>", "no tag begins like this"},
        {"another declaration", "<!ELEMENT a><a/>", "no tag begins like this"},
        {"no value", "<a b/>", "a broken attribute"},
        {"no quote", "<a b=1/>", "a broken attribute"},
        {"an open quote", "<a b='1/>", "a broken attribute"},
        {"no blank before an attribute", "<a b='1'c='2'/>", "a broken attribute"},
        {"a blank in the end", "<a/ >", "a broken start tag"},
        {"an attribute in the end", "<a></a b>", "a broken end tag"},
        {"no name of an instruction", "<?1?><a/>", "a broken instruction"},
        {"no blank in an instruction", "<?a,b?><a/>", "a broken instruction"},
        {"an open instruction", "<?a b><a/>", "an instruction without an end"},
        {"an open comment", "<!--><a/>", "a comment without an end"},
        {"an open section", "<a><![CDATA[x]]</a>", "a section of text without an end"},
        {"hidden end in UTF-16", Utf16("<a>x\0y</a>"sv), "NUL"},
        {"hidden end in UTF-32, by its number", Utf16("<a>x&#0;y</a>"sv, 4), "NUL"},
        {"half a pair in UTF-16", Utf16("<a>x</a>"sv) + "\xD8", "not what its encoding allows"},
        {"no byte of windows-1252", "<?xml version='1.0' encoding='windows-1252'?><a>\x81</a>", "WINDOWS-1252"},
        {"1,025 levels", Nested(1025), "1024"},
        {"100,000 levels", Nested(100'000), "1024"},
        {"20 million elements", "<a>" + Repeated("<b/>", 20'000'000) + "</a>", "256 MB"},
        {"binary", DString("\x89PNG\r\n\x1A\n", 8), ""},
    };
    for (auto const &[name, text, reason] : cases) {
        SCOPED_TRACE(name);
        XMLNode root("kept");
        XMLNode *const child = root.AddChld("child");
        DString error;
        EXPECT_FALSE(root.LoadText(text, &error));
        EXPECT_NE(error.find(reason), DString::npos) << error;
        EXPECT_FALSE(error.empty());
        EXPECT_EQ(root.GetName(), "kept");
        EXPECT_EQ(root.GetFirstChild(), child);
    }
}

TEST(XMLNode, LoadAndSaveKeepWhatIsNotShown) {
    DString const text = DString(kHead) +
                         "<!DOCTYPE a>\n<!--before-->\n<a x=\"1 &lt; 2&#10;&quot;\">\n  <!--in-->\n  <?do it?>\n"
                         "  <b>text <i>mixed</i><![CDATA[<&>]]></b>\n  <c> </c>\n</a>\n<!--behind-->\n";
    XMLNode root;
    ASSERT_TRUE(root.LoadText(text));
    EXPECT_EQ(root.SaveText(), text);
    EXPECT_EQ(root.GetAttrStr("x"), "1 < 2\n\"");
    EXPECT_EQ(root.GetChldCount(), 2);
    EXPECT_EQ(root.GetFirstChild()->GetText(), "text <&>");
    EXPECT_EQ(root.GetFirstChild()->GetNext()->GetText(), " ");
    EXPECT_EQ(root.GetFirstChild()->GetNext()->GetNext(), nullptr);
}

TEST(XMLNode, WhatIsSavedLoadsAgainAsTheSame) {
    for (char const *text : {
             "<a><!--x--y---></a>",
             "<a><!----><!-->--></a>",
             "<?one?><?two  ? >?><a/><?three x?>",
             "<!DOCTYPE a [<!ELEMENT a ANY><!-- ]> -->]><a/>",
             "<!DOCTYPE a [<!ATTLIST a b CDATA '>'><?x ]>?><![INCLUDE[<![IGNORE[>]]>]]>]><a b = '1' c=\"'\"></a >",
             "<a><![CDATA[]]]]><![CDATA[>]]><![CDATA[]]></a>",
             "<a b='&#9;&#10;&#13;&apos;\"&gt;' c=' '/>",
             "<a>one<b/> <c/>two&#13;\n</a>",
             "<a><b/><c/>two</a>",
             "<a>\n\n<b>\n</b>\t</a>",
             "<a>&#10; \t<b/></a>",
             "<\xC3\xA4:b-c.d _e=''/>",
             "<!DOCTYPE a SYSTEM 'file:///etc/passwd'><a>&unknown; &#; &#xZ; &amp;amp;</a>",
         }) {
        SCOPED_TRACE(text);
        XMLNode first;
        DString error;
        ASSERT_TRUE(first.LoadText(text, &error)) << error;
        DString const saved = first.SaveText();
        ASSERT_NE(saved, "");
        XMLNode second;
        ASSERT_TRUE(second.LoadText(saved, &error)) << error;
        EXPECT_EQ(second.SaveText(), saved);
        EXPECT_EQ(second.GetText(), first.GetText());
        EXPECT_EQ(second.GetAttrStr("b"), first.GetAttrStr("b"));
        EXPECT_EQ(first.Copy()->SaveText(), saved);
        EXPECT_TRUE(second.DelChld(second.AddChld("new"))); // the children are no longer those of the text
        EXPECT_EQ(second.SaveText(), saved);
    }
}

TEST(XMLNode, ReferencesAndEndsOfLinesAreRead) {
    XMLNode node;
    ASSERT_TRUE(
        node.LoadText("<a b='x\r\ny\tz&#10;&#xe9;&#xE9;'>&#65;&#x7f;&#128;&#x7FF;&#x800;&#xFFFD;&#x10000;&#x10FFFF;"
                      "&lt;&gt;&quot;&apos;&amp;lt; &Amp;&#;&#x;&#xg;&#1\r\nx\ry</a>"));
    EXPECT_EQ(node.GetText(), "A\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBD\xF0\x90\x80\x80\xF4\x8F\xBF\xBF<>\"'"
                              "&lt; &Amp;&#;&#x;&#xg;&#1\nx\ny");
    EXPECT_EQ(node.GetAttrStr("b"), "x y z\n\xC3\xA9\xC3\xA9");
}

TEST(XMLNode, ACopyAndWhatIsTakenOutGoTheirOwnWay) {
    auto root = std::make_unique<XMLNode>();
    ASSERT_TRUE(root->LoadText("<a x='1'>text<b y='&lt;'><c/>in</b><d/></a>"));
    DString const before = root->SaveText();
    XMLNode *const b = root->GetFirstChild();
    XMLNode *const c = b->GetFirstChild();
    std::unique_ptr<XMLNode> const copy = b->Copy();
    EXPECT_EQ(copy->SaveText(), b->SaveText());
    copy->SetAttr("new", "1");
    copy->GetFirstChild()->SetName("d");
    EXPECT_EQ(root->SaveText(), before);
    std::unique_ptr<XMLNode> const taken = root->TakeChld(b);
    EXPECT_EQ(root->SaveText(), DString(kHead) + "<a x=\"1\">text<d/></a>\n");
    root.reset();
    c->SetAttr("z", "2");
    EXPECT_EQ(c->GetParent(), taken.get());
    EXPECT_EQ(taken->SaveText(), DString(kHead) + "<b y=\"&lt;\"><c z=\"2\"/>in</b>\n");
}

TEST(XMLNode, TextReplacesAllPiecesAndLeavesTheChildren) {
    XMLNode root;
    ASSERT_TRUE(root.LoadText("<a>one<b/>two<![CDATA[three]]><!--note--></a>"));
    root.SetText("new");
    EXPECT_EQ(root.GetText(), "new");
    EXPECT_EQ(root.GetChldCount(), 1);
    EXPECT_NE(root.SaveText().find("new<b/><!--note-->"), DString::npos) << root.SaveText();
    root.SetText("");
    EXPECT_EQ(root.GetText(), "");
}

TEST(XMLNode, WhatNoXmlHoldsIsNotSaved) {
    for (char const *text : {"\x01", "\x1F", "\xFF\xC3(", "\xED\xA0\x80", "\xEF\xBF\xBE", "\xEF\xBF\xBF"}) {
        XMLNode root("r");
        DString reason;
        root.SetText(text);
        EXPECT_EQ(root.SaveText(&reason), "") << text;
        EXPECT_NE(reason, "");
        root.SetText("");
        root.SetAttr("a", text);
        EXPECT_EQ(root.SaveText(), "") << text;
    }
    for (char const *name : {"", "0", "9a", "-a", ".a", "a b", "a>"})
        EXPECT_EQ(XMLNode(name).SaveText(), "") << name;
    XMLNode parted;
    ASSERT_TRUE(parted.LoadText("<a><!--x--y---></a>"));
    EXPECT_NE(parted.SaveText().find("<!--x- -y- -->"), DString::npos) << parted.SaveText();
    for (char const *more : {"", " b='' c='' d='' e='' f='' g='' h=''"}) {
        XMLNode twice;
        ASSERT_TRUE(twice.LoadText(DString("<a x='1' y='2'") + more + " x='3'/>"));
        EXPECT_EQ(twice.SaveText(), "");
        EXPECT_EQ(twice.Copy()->SaveText(), "");
    }
}

TEST(XMLNode, OtherEncodingsBecomeUtf8) {
    for (DString const &text : {DString("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a>\xE4</a>"),
                                DString("<?xml version='1.0' encoding = 'windows-1252' ?><a>\xE4</a>"),
                                DString("\xFF\xFE") + Utf16("<a>\xE4</a>"), Utf16("<a>\xE4</a>", 4)}) {
        XMLNode root;
        DString reason;
        ASSERT_TRUE(root.LoadText(text, &reason)) << reason;
        EXPECT_EQ(root.SaveText(), DString(kHead) + "<a>\xC3\xA4</a>\n");
    }
}

TEST(XMLNode, ChildrenKeepTheirPlaceWhileOthersComeAndGo) {
    XMLNode root;
    ASSERT_TRUE(root.LoadText("<root>" + Repeated("<n/>", 1000) + "</root>"));
    std::vector<XMLNode *> children;
    for (XMLNode::ChldItr child(root); child.IsValid(); child.Next())
        children.push_back(child.Get());
    int position = 0;
    for (XMLNode::ChldItr child(root); child.IsValid(); ++position) {
        if (position % 2 == 0)
            child.Rmv();
        else
            child.Next();
    }
    EXPECT_EQ(root.GetChldCount(), 500);
    EXPECT_EQ(root.GetFirstChild(), children[1]);
    EXPECT_EQ(children[1]->GetNext(), children[3]);
    EXPECT_TRUE(root.DelChld(children[999]));
    EXPECT_EQ(children[997]->GetNext(), nullptr);
    EXPECT_FALSE(root.DelChld(&root));
    EXPECT_EQ(root.GetChldNode("n"), children[1]);
}

/// By how much the memory of this process is larger while `body` runs, KiB; huge if that is not told.
template <class Body>
long MemoryFor(Body const &body) {
    auto const highest = [] {
        DString const status = test::ReadFile("/proc/self/status");
        std::size_t const at = status.find("VmHWM:");
        return at == DString::npos ? 0 : std::atol(status.c_str() + at + 6);
    };
    malloc_trim(0);
    if (!(std::ofstream("/proc/self/clear_refs") << "5" << std::flush)) // the highest is the present one again
        return LONG_MAX;
    long const before = highest();
    body();
    return highest() - before;
}

void LookAtAll(XMLNode const &node) {
    ASSERT_NE(node.GetName() + node.GetAttrStr("path"), "");
    for (XMLNode const *child = node.GetFirstChild(); child != nullptr; child = child->GetNext())
        LookAtAll(*child);
}

TEST(XMLNode, AFileTakesLessThanFiveTimesItsSize) {
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "what the sanitizer remembers of each byte counts as memory, too";
#endif
    constexpr int million = 1'000'000;
    test::TempFolder const folder;
    for (DString const &text :
         {"<a>" + Repeated("<b/>", million) + "</a>", Repeated("<?a?>", million) + "<a/>",
          "<a>" + Repeated("<?a?>x", million) + "</a>", "<a>" + Repeated("x<b/>", million) + "</a>",
          "<a" + Repeated(" a=''", million) + "/>", "<a>" + Repeated(Nested(1000), 1000) + "</a>",
          "<a>" + Repeated("<i><x>1</x></i>", million / 2) + "</a>", "<a>" + Repeated("<b/>", million),
          "<RegKey>" + Repeated("<RegValue path='v' type='4' size='4'>1</RegValue>", million / 8) + "</RegKey>",
          "<?xml version='1.0' encoding='windows-1252'?><a>" + Repeated("\x80", 5 * million) + "</a>",
          Utf16("<a>" + Repeated("<b/>", million / 2) + "</a>")}) {
        DFile const file(folder.Write("x.xml", text));
        pid_t const child = fork(); // whose memory nobody else has used
        if (child == 0) {
            long const most = MemoryFor([&] { std::make_unique<DString>(5 * text.size(), 'x')->back() = 'y'; });
            XMLNode root("kept");
            _exit(MemoryFor([&] { root.Load(file), LookAtAll(root); }) < most ? 0 : 1);
        }
        int status = -1;
        EXPECT_TRUE(waitpid(child, &status, 0) == child && status == 0) << text.substr(0, 50);
    }
}

TEST(XMLNode, ATreeCannotHangBelowItselfOrTwice) {
    XMLNode root("root");
    XMLNode *const child = root.AddChld("child");
    EXPECT_EQ(child->AddChld(&root), nullptr);
    EXPECT_EQ(root.AddChld(&root), nullptr);
    EXPECT_EQ(root.AddChld(child), nullptr);
    EXPECT_FALSE(child->LoadText("<x/>"));
    auto branch = std::make_unique<XMLNode>("branch");
    EXPECT_EQ(child->AddChld(branch.get()), branch.get());
    EXPECT_EQ(branch.release()->GetParent(), child);
    EXPECT_EQ(root.Copy()->SaveText(), root.SaveText());
}

TEST(XMLNode, ATreeDeeperThanItLoadsIsCopiedAndDeletedButNotSaved) {
    XMLNode root("a");
    XMLNode *at = &root;
    for (int i = 0; i < 1023; ++i)
        at = at->AddChld("a");
    EXPECT_TRUE(XMLNode().LoadText(root.SaveText()));
    for (int i = 0; i < 200'000; ++i)
        at = at->AddChld("a");
    EXPECT_EQ(root.Copy()->SaveText(), "");
}

TEST(XMLNode, ReadsAttributesByType) {
    XMLNode node;
    ASSERT_TRUE(node.LoadText("<a t=\"Yes\" f=\"OFF\" x=\"maybe\" i=\" +12 \" d=\"-1.5e3\"/>"));
    EXPECT_TRUE(node.GetAttrBool("t", false));
    EXPECT_FALSE(node.GetAttrBool("f", true));
    EXPECT_TRUE(node.GetAttrBool("x", true));
    EXPECT_TRUE(node.GetAttrBool("absent", true));
    EXPECT_TRUE(node.GetAttrInt("i") == 12 && node.GetAttrUnt("i", 7) == 12 && node.GetAttrUnt("d", 7) == 7);
    for (bool const value : {false, true}) {
        node.SetAttrBool("x", value);
        EXPECT_EQ(node.GetAttrBool("x", !value), value);
    }
    EXPECT_EQ(node.GetAttrDouble("d"), -1500.0);
    EXPECT_FALSE(node.HasAttr(nullptr));
    node.SetAttrInt("i", INT64_MIN);
    EXPECT_EQ(node.GetAttrInt("i", 7), INT64_MIN);
    for (char const *text : {"", " ", "+", "-", "+-5", "--5", "0x10", "1 2", "12,5", "nan", "inf", "-inf", "1e999",
                             "99999999999999999999x", "12b"}) {
        node.SetAttr("v", text);
        EXPECT_EQ(node.GetAttrInt("v", 7), 7) << text;
        EXPECT_EQ(node.GetAttrDouble("v", 7.5), 7.5) << text;
    }
    node.SetAttr("v", "9223372036854775808");
    EXPECT_EQ(node.GetAttrInt("v", 7), 7);
}

TEST(XMLNode, SavesAtomicallyAndKeepsABackupWhenAsked) {
    test::TempFolder const folder;
    DFile const file(folder / "x.xml");
    XMLNode root("a");
    EXPECT_TRUE(root.Save(&file, true));
    root.SetName("b");
    EXPECT_TRUE(root.Save(&file, true));
    EXPECT_EQ(test::ReadFile(folder / "x.xml.bak"), DString(kHead) + "<a/>\n");
    root.SetText(DString("x\0", 2));
    EXPECT_FALSE(root.Save(&file, false));
    root.SetText("");
    root.AddChld("no name");
    EXPECT_FALSE(root.Save(&file, false));
    EXPECT_FALSE(root.Save(nullptr, false));
    EXPECT_EQ(test::ReadFile(folder / "x.xml"), DString(kHead) + "<b/>\n");
    DString error;
    EXPECT_FALSE(root.Load(DFile(folder / "none"), &error));
    EXPECT_EQ(error, folder / "none: cannot be read");
    folder.Write("bad.xml", "<a>\n<a");
    EXPECT_FALSE(root.Load(DFile(folder / "bad.xml"), &error));
    EXPECT_TRUE(error.starts_with(folder / "bad.xml: line 2: ")) << error;
}

TEST(XMLNode, SafeTextsTakeAnyBytes) {
    DString all;
    for (int byte = 0; byte < 256; ++byte)
        all += static_cast<char>(byte);
    for (DString const &bytes : {all, DString(" \t\r\n<&>\"' \xC3\xA4 "), DString("\xEF\xBF\xBF"), DString("\xC3"),
                                 DString(), DString("\n"), DString("C:\\x41"), DString("41"), DString("]]>")}) {
        XMLNode node("n");
        XMLNode *const child = node.AddChld("c");
        child->SetSafeText(bytes);
        child->SetSafeAttr("a", bytes);
        XMLNode loaded;
        ASSERT_TRUE(loaded.LoadText(node.SaveText()));
        EXPECT_EQ(loaded.GetFirstChild()->GetSafeText(), bytes);
        EXPECT_EQ(loaded.GetFirstChild()->GetSafeAttr("a"), bytes);
    }
    XMLNode node("n");
    node.SetSafeText("\x01\xAB");
    EXPECT_EQ(node.GetText(), "01AB");
    node.SetSafeText("01AB"); // not to be taken for an encoded one
    EXPECT_EQ(node.GetSafeText(), "01AB");
    node.SetSafeText("\x02");
    node.SetText("0");
    EXPECT_EQ(node.GetSafeText(), "");                // half a byte
    for (char const c : std::string_view("/:@G`g")) { // beside the digits
        node.SetText(DString("0") + c);
        EXPECT_EQ(node.GetSafeText(), "") << c;
    }
    node.SetText("fF");
    EXPECT_EQ(node.GetSafeText(), "\xFF");
}

} // namespace
} // namespace zelvar
