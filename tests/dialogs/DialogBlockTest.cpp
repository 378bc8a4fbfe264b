#include "zelvar/dialogs/core/DialogBlock.h"

#include "support/Test.h"

namespace zelvar::test {
namespace {

std::string Hex(std::span<std::byte const> bytes) {
    std::string text;
    for (std::byte const byte : bytes)
        text += Format("%02x", std::to_integer<unsigned>(byte));
    return text;
}

CDialogTmpl::Bytes BlockOf(CDialogTmpl const &dialog) { return dialog.Block(*std::pmr::get_default_resource()); }

TEST(DialogTemplateBlock, IsTheTemplateByteForByte) {
    CDialogTmpl dialog({6, 13});
    dialog.SetStyle(0x90C80880);
    dialog.SetCaption("Öl€\xF0\x9F\x98\x80");
    dialog.SetSize({100, 50});
    dialog.AddItem(CDialogTmpl::kStatic, 1001, "a", Rect{16, 16, 47, 42});
    dialog.AddItem(CDialogTmpl::kCheckBox, 5555, "", std::nullopt);
    EXPECT_EQ(Hex(BlockOf(dialog)),
              "8008c8900000000002000000000042001e00"         // 100 * 4 / 6 by 50 * 8 / 13
              "00000000d6006c00ac203dd800de00000000"         // no menu, no class, the caption
              "00000050000000000a00090014001000e903ffff8200" // place, id, class
              "610000000000"                                 // title, no data
              "030001500000000000000000"
              "0a000a00b315ffff800000000000");
}

TEST(DialogTemplateBlock, HasItsSizeAndReadsBack) {
    Rows<std::string, std::vector<std::string>, std::size_t> const cases = {{"", {}, 24},
                                                                            {"a", {}, 28},
                                                                            {"ab", {}, 28},
                                                                            {"ab", {""}, 28 + 26},
                                                                            {"\xF0\x9F\x98\x80", {}, 28},
                                                                            {std::string(1500, 'c'), {}, 2072},
                                                                            {"ab", {"x", ""}, 28 + 28 + 26},
                                                                            {"ab", {"xy", "xyz"}, 28 + 32 + 32}};
    // The sign outside the first plane has two units; the last caption is cut at 1023.
    for (auto const &[caption, titles, size] : cases) {
        CDialogTmpl dialog({4, 8});
        dialog.SetCaption(caption);
        for (std::string const &title : titles)
            dialog.AddItem(CDialogTmpl::kButton, 7, title, Rect{1, 2, 4, 6});
        CDialogTmpl::Bytes const block = BlockOf(dialog);
        EXPECT_EQ(block.size(), size) << caption;
        std::optional<DialogBlock> const read = ReadDialogBlock(block);
        ASSERT_TRUE(read.has_value());
        ASSERT_EQ(read->controls.size(), titles.size());
        for (std::size_t i = 0; i < titles.size(); ++i) {
            EXPECT_EQ(read->controls[i].title, std::u16string(titles[i].begin(), titles[i].end()));
            EXPECT_EQ(read->controls[i].units, (Rect{1, 2, 4, 6}));
        }
        for (std::size_t length = 0; length + 2 < block.size(); ++length) // 2 may be padding
            EXPECT_FALSE(ReadDialogBlock(std::span(block).first(length)).has_value()) << length;
    }
}

TEST(DialogTemplateBlock, TextsAreCutBetweenCharacters) {
    DString const face = "\xF0\x9F\x98\x80";
    Rows<DString, std::size_t, DString> const cases = {
        {"abc", 3, "abc"},    {"abcd", 3, "abc"},    {"abä", 3, "ab"},
        {"a" + face, 4, "a"}, {face + "z", 4, face}, {"\x80\x80\x80\x80", 3, "\x80\x80\x80"}}; // no character at all
    for (auto const &[text, most, cut] : cases)
        EXPECT_EQ(CutText(text, most), cut);
    CDialogTmpl dialog({4, 8});
    dialog.AddItem(CDialogTmpl::kStatic, 1, std::string(1022, 'a') + "ä", std::nullopt);
    EXPECT_EQ(std::string(dialog.Item(0).title), std::string(1022, 'a'));
}

TEST(DialogTemplateBlock, HoldsTwentyItemsAndUnitsThatFit) {
    CDialogTmpl dialog({4, 8});
    dialog.SetSize({100, 2'000'000'000});
    EXPECT_EQ(dialog.Header().cy, 32767);
    for (int i = 0; i < 20; ++i)
        EXPECT_TRUE(dialog.AddItem(CDialogTmpl::kEdit, 1, "", std::nullopt));
    EXPECT_FALSE(dialog.AddItem(CDialogTmpl::kEdit, 1, "", std::nullopt));
    EXPECT_EQ(dialog.Header().count, 20);
    EXPECT_EQ(dialog.Item(19).cx, 10);
    EXPECT_EQ(dialog.Item(19).style, 0x50010004U);
}

} // namespace
} // namespace zelvar::test
