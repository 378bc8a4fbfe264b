// What the dialog decides before it touches the toolkit.
#include "support/Test.h"
#include "zelvar/opends/core/DialogState.h"
#include "zelvar/opends/core/LookChoice.h"
#include "zelvar/opends/core/PathButtons.h"

namespace zelvar {
namespace {

// Ten pixels a button, five more for each mark.
int Measure(std::size_t, bool cutBefore, bool cutBehind) { return 10 + (cutBefore ? 5 : 0) + (cutBehind ? 5 : 0); }

/// "0> <2 3": entries and where they are marked as cut.
std::string Shown(std::vector<PathButton> const &buttons) {
    std::string shown;
    for (PathButton const &button : buttons)
        shown += (shown.empty() ? "" : " ") + std::string(button.cutBefore ? "<" : "") + std::to_string(button.entry) +
                 (button.cutBehind ? ">" : "");
    return shown;
}

TEST(PathButtons, ARowThatJustFitsIsShownWholeAndOnePixelLessCutsBehindTheOutermost) {
    EXPECT_EQ(Shown(ArrangePathButtons(4, 44, Measure)), "0 1 2 3");
    EXPECT_EQ(ArrangePathButtons(4, 44, Measure)[3].left, 33);
    EXPECT_EQ(Shown(ArrangePathButtons(4, 43, Measure)), "0> <2 3");
    EXPECT_EQ(ArrangePathButtons(4, 43, Measure)[1].left, 16) << "43 - (15 + 15 + 10 + 3) - 2: no room to spread";
}

TEST(PathButtons, RoomLeftByACutSpreadsBehindTheOutermostUpToFivePixels) {
    auto const roomy = [](std::size_t entry, bool cutBefore, bool cutBehind) {
        return entry == 1 ? 100 : Measure(entry, cutBefore, cutBehind);
    };
    EXPECT_EQ(ArrangePathButtons(3, 60, roomy)[1].left, 15 + 1 + 5);
    EXPECT_EQ(ArrangePathButtons(3, 37, roomy)[1].left, 15 + 1 + 3);
}

TEST(PathButtons, TheOutermostAndTheInnermostStayHoweverNarrowTheRow) {
    EXPECT_EQ(Shown(ArrangePathButtons(20, 1, Measure)), "0> <19");
    EXPECT_EQ(Shown(ArrangePathButtons(2, 1, Measure)), "0 1");
    EXPECT_EQ(Shown(ArrangePathButtons(0, 100, Measure)), "");
}

TEST(PathButtons, LongNamesAreCutByCharactersNotBytes) {
    EXPECT_EQ(PathButtonText("1234567890123", false, false), "1234567890123");
    EXPECT_EQ(PathButtonText("12345678901234", false, false), "1234567890...");
    EXPECT_EQ(PathButtonText("äöüäöüäöüäöüä", true, true), "../äöüäöüäöüäöüä/..");
    EXPECT_EQ(PathButtonText("äöüäöüäöüäöüäö", false, false), "äöüäöüäöüä...");
}

TEST(DialogState, SortingSurvivesTheRoundTrip) {
    DialogSorting const sorting{.foldersAscending = false, .column = 2, .mainAscending = false};
    EXPECT_EQ(SortingToText(sorting), "DSC:ASC:2:DSC");
    EXPECT_EQ(SortingFromText("DSC:ASC:2:DSC"), sorting);
}

TEST(DialogState, OnlyTheWholeShapeIsReadAndOnlyDscDescends) {
    EXPECT_EQ(SortingFromText("abc:xyz:1:dsc"), (DialogSorting{.column = 1}));
    for (char const *bad : {"", "true", "false", "ASC:ASC:3:ASC", "ASC:ASC:0:AS", "ASC:ASC:0:ASCD", "AS1:ASC:0:ASC"})
        EXPECT_FALSE(SortingFromText(bad)) << bad;
}

TEST(DialogState, TypedPathsAreFixedUpToTheFirstColonOrQuestionMark) {
    test::Rows<char const *, PathStyle, char const *> const cases = {
        {"", PathStyle::Windows(), ""},
        {"  /home/a b/ \t", PathStyle::Native(), "/home/a b/"},
        {"//server/share/x", PathStyle::Windows(), R"(\\server\share\x)"},
        {"dir/a?b/c", PathStyle::Windows(), "dir\\a?b/c"},
        {"http://host/x", PathStyle::Windows(), "http://host/x"},
        {"http://host/x", PathStyle::Native(), "http://host/x"}};
    for (auto const &[typed, style, fixed] : cases)
        EXPECT_EQ(FixTypedPath(typed, style), fixed) << typed;
}

TEST(LookChoice, ComesBackAndWhatIsNoneIsAsUsual) {
    for (LookChoice const &look :
         {LookChoice(), LookChoice{true, 96, false}, LookChoice{true, 256, true}, LookChoice{false, 200, true}})
        EXPECT_EQ(LookFromText(LookToText(look)), look) << LookToText(look);
    for (auto const &[text, look] : {std::pair("", LookChoice()),
                                     {"thumbnails", {true, 128, false}},
                                     {"rows 5 x 1e9", {false, 96, false}},
                                     {"remote 99999 thumbnails", {true, 256, true}},
                                     {"128px 999999999999", LookChoice()}})
        EXPECT_EQ(LookFromText(text), look) << text;
    EXPECT_EQ((LookChoice{.side = 130}.Resized(1).side), 144);
    EXPECT_EQ((LookChoice{.side = 250}.Resized(5).side), 256);
    EXPECT_EQ((LookChoice{.side = 100}.Resized(-1).side), 96);
}

} // namespace
} // namespace zelvar
