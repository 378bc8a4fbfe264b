#include "zelvar/dialogs/core/MessageBoxTemplate.h"

#include "support/Test.h"

namespace zelvar {
namespace {

/// A template in pixels, one dialog unit each.
struct Built {
    CDialogTmpl dialog{{4, 8}};
    MessageBoxState state{};
    Size box{}; ///< that the text was measured in

    explicit Built(unsigned type, Size measured = {100, 15}, int font = 12) {
        MessageBoxMetrics const metrics{
            .screen = {800, 600}, .icon = {32 * font / 12, 32 * font / 12}, .baseUnits = {4, 8}, .font = font};
        state = BuildMessageBox(dialog, {.text = "t", .caption = "c", .checkText = "ask", .type = type}, metrics,
                                [&](DString const &, Size size) {
                                    box = size;
                                    return measured;
                                });
    }
    /// "128x77: 1001@16,16,112x20 1@29,44,70x23"
    [[nodiscard]] std::string Text() const {
        std::string text = Format("%dx%d:", dialog.Header().cx, dialog.Header().cy);
        for (std::size_t i = 0; i < dialog.Header().count; ++i) {
            DlgItem const &item = dialog.Item(i);
            text += Format(" %d@%d,%d,%dx%d", item.id, item.x, item.y, item.cx, item.cy);
        }
        return text;
    }
};

TEST(MessageBoxTemplate, PlacesEverythingInPixels) {
    test::Rows<unsigned, char const *> const cases = {
        {MB_OK, "128x77: 1001@16,16,112x20 1@29,44,70x23"},
        {MB_OKCANCEL, "178x77: 1001@16,16,112x20 1@16,44,70x23 2@92,44,70x23"},
        {MB_ABORTRETRYIGNORE, "254x77: 1001@16,16,112x20 3@16,44,70x23 4@92,44,70x23 5@168,44,70x23"},
        {MB_YESNO, "178x77: 1001@16,16,112x20 6@16,44,70x23 7@92,44,70x23"},
        {MB_RETRYCANCEL, "178x77: 1001@16,16,112x20 4@16,44,70x23 2@92,44,70x23"},
        {MB_FILEEXISTS | MB_HELP,
         "466x77: 1001@16,16,112x20 2@16,44,100x23 3@122,44,100x23 1@228,44,70x23 4@304,44,70x23 300@380,44,70x23"},
        {7, "128x77: 1001@16,16,112x20 1@67,44,70x23"}, // a row for no button
        {15 | MB_HELP, "128x77: 1001@16,16,112x20 1@29,44,70x23 300@105,44,70x23"},
        {MB_CONTINUEABORT, "178x77: 1001@16,16,112x20 10@16,44,70x23 3@92,44,70x23"},
        {MB_OK | MB_ICONASTERISK, "176x83: 1000@8,8,34x34 1001@56,16,112x20 1@53,50,70x23"},
        {MB_OK | 0x50, "128x77: 1001@16,16,112x20 1@29,44,70x23"}, // no icon has that number
        {MB_YESNO | MB_DONTASKAGAIN, "178x103: 1001@16,16,112x20 6@16,44,70x23 7@92,44,70x23 5555@17,79,120x16"}};
    for (auto const &[type, places] : cases)
        EXPECT_EQ(Built(type).Text(), places) << type;
    test::Rows<unsigned, Size, char const *> const measured = {
        {MB_OK, {0, 0}, "102x62: 1001@16,16,12x5 1@16,29,70x23"},
        {MB_YESNOCANCEL, {300, 15}, "328x77: 1001@16,16,312x20 6@53,44,70x23 7@129,44,70x23 2@205,44,70x23"},
        {MB_OK | MB_ICONHAND, {100, 45}, "176x107: 1000@8,8,34x34 1001@56,16,112x50 1@53,74,70x23"},
        {MB_OK | MB_DONTASKAGAIN, {0, 15}, "137x103: 1001@16,16,12x20 1@16,44,70x23 5555@17,79,120x16"}};
    for (auto const &[type, size, places] : measured)
        EXPECT_EQ(Built(type, size).Text(), places) << type;
}

TEST(MessageBoxTemplate, GrowsWithItsFont) {
    Built const built(MB_OK | MB_ICONQUESTION | MB_DONTASKAGAIN, {150, 24}, 18);
    EXPECT_EQ(built.Text(), "264x164: 1000@12,12,51x51 1001@84,24,168x32 1@79,75,105x35 5555@26,128,180x24");
    EXPECT_EQ(built.box, (Size{475, 475}));
    EXPECT_EQ(Built(MB_OK).box, (Size{450, 450}));
}

TEST(MessageBoxTemplate, TellsDefaultButtonAndCancel) {
    test::Rows<unsigned, int, bool> const cases = {{MB_YESNOCANCEL | MB_DEFBUTTON3, IDCANCEL, true},
                                                   {MB_YESNO | MB_DEFBUTTON2, IDNO, false},
                                                   {MB_YESNOCANCEL | MB_DEFBUTTON4, IDYES, true},
                                                   {MB_OK, IDOK, false},
                                                   {MB_RETRYCANCEL, IDRETRY, true},
                                                   {MB_OKCANCEL | MB_DEFBUTTON3 | MB_HELP, kMessageBoxHelp, true},
                                                   {7 | MB_DEFBUTTON2, IDOK, false},
                                                   {MB_FILEEXISTS | MB_DEFBUTTON4, 4, true},
                                                   {MB_YESNO | MB_DEFBUTTON4, IDYES, false},
                                                   {MB_ABORTRETRYIGNORE | MB_DEFBUTTON2, IDRETRY, false},
                                                   {MB_CONTINUEABORT | MB_DEFBUTTON2, IDABORT, false}};
    for (auto const &[type, defaultButton, cancel] : cases) {
        Built const built(type);
        EXPECT_EQ(built.state.defaultButton, defaultButton) << type;
        EXPECT_EQ(built.state.isCancelAllowed, cancel) << type;
        for (std::size_t i = 1; i < built.dialog.Header().count; ++i) {
            DlgItem const &item = built.dialog.Item(i);
            EXPECT_EQ(item.style, item.id == defaultButton ? 0x50010001U : 0x50010000U) << type;
        }
    }
}

TEST(MessageBoxTemplate, TheDialogsStyleSaysIfItIsOnTopOfAll) {
    EXPECT_EQ(Built(MB_OK | MB_SYSTEMMODAL).dialog.Header().style, 0x90C80882U);
    EXPECT_EQ(Built(MB_OK).dialog.Header().style, 0x90C80880U);
    EXPECT_STREQ(Built(MB_OK | MB_DONTASKAGAIN).dialog.Item(2).title, "ask");
    // Its message alone is no lower than 70 pixels.
    EXPECT_EQ(PlaceMessage({100, 48}, 12).dialog, (Rect{0, 0, 128, 70}));
    EXPECT_EQ(PlaceMessage({100, 50}, 12).dialog, (Rect{0, 0, 128, 71}));
}

TEST(FitMessageBox, TakesFromTheTextWhatTheScreenHasNotGot) {
    std::vector<PlacedControl> const placed{{kMessageBoxIcon, {8, 8, 42, 42}},
                                            {kMessageBoxText, {56, 16, 200, 1016}},
                                            {IDOK, {60, 1024, 130, 1047}},
                                            {kMessageBoxHelp, {136, 1024, 240, 1047}}};
    std::vector<PlacedControl> controls = placed;
    EXPECT_EQ(FitMessageBox(controls, {208, 1057}, {.most = {800, 600}, .scrollBar = 12}), (Size{248, 600}));
    EXPECT_EQ(controls[0].place, placed[0].place);
    EXPECT_EQ(controls[1].place, (Rect{56, 16, 212, 559}));
    EXPECT_EQ(controls[3].place, (Rect{136, 567, 240, 590}));
    controls = placed;
    EXPECT_EQ(FitMessageBox(controls, {208, 1057}, {.most = {248, 1057}}), (Size{248, 1057}));
    EXPECT_EQ(controls[1].place, placed[1].place);
    EXPECT_EQ(FitMessageBox(controls, {208, 1057}, {.most = {800, 50}}).cy, 97); // a few lines are always seen
}

TEST(FitMessageBox, WidensButtonsToTheirTextsAndTheRowToBothSides) {
    std::vector<PlacedControl> controls{{kMessageBoxText, {16, 16, 300, 36}},
                                        {2, {100, 44, 170, 67}, 90},
                                        {kMessageBoxHelp, {176, 44, 246, 67}, 50},
                                        {kMessageBoxCheck, {17, 79, 137, 95}}};
    EXPECT_EQ(FitMessageBox(controls, {308, 103}, {.most = {800, 600}}), (Size{308, 103}));
    EXPECT_EQ(controls[1].place, (Rect{90, 44, 180, 67}));
    EXPECT_EQ(controls[2].place, (Rect{186, 44, 256, 67}));
    controls[1].needed = 400; // no further to the left than the text
    EXPECT_EQ(FitMessageBox(controls, {308, 103}, {.most = {800, 600}}), (Size{500, 103}));
    EXPECT_EQ(controls[1].place, (Rect{16, 44, 416, 67}));
    EXPECT_EQ(controls[3].place, (Rect{17, 79, 137, 95}));
}

TEST(FitMessageBox, GivesTheButtonsMoreRowsOnANarrowScreen) {
    std::vector<PlacedControl> controls{{kMessageBoxText, {16, 16, 300, 36}},
                                        {2, {16, 44, 116, 67}},
                                        {3, {122, 44, 222, 67}},
                                        {1, {228, 44, 298, 67}},
                                        {kMessageBoxHelp, {304, 44, 374, 67}},
                                        {kMessageBoxCheck, {17, 79, 137, 95}}};
    EXPECT_EQ(FitMessageBox(controls, {390, 103}, {.most = {240, 600}}), (Size{240, 132}));
    EXPECT_EQ(controls[0].place, (Rect{16, 16, 232, 36}));
    EXPECT_EQ(controls[2].place, (Rect{122, 44, 222, 67}));
    EXPECT_EQ(controls[3].place, (Rect{16, 73, 86, 96}));
    EXPECT_EQ(controls[4].place, (Rect{92, 73, 162, 96}));
    EXPECT_EQ(controls[5].place, (Rect{17, 108, 137, 124}));
}

TEST(MessageBoxHelp, TheEndingOfTheModulesNameIsReplaced) {
    EXPECT_EQ(HelpFileOf("/opt/a/viewer.exe", ".html"), "/opt/a/viewer.html");
    EXPECT_EQ(HelpFileOf("libx.so.2", ".html"), "libx.so.html");
    EXPECT_EQ(HelpFileOf("viewer", ".html"), std::nullopt);
    EXPECT_EQ(HelpFileOf("/opt/a.b/viewer", ".html"), std::nullopt);
}

TEST(MessageBoxAsText, HoldsCaptionTextAndButtons) {
    EXPECT_EQ(MessageBoxAsText({.text = "Save \"R&D\"?", .caption = "Viewer", .type = MB_YESNO | MB_HELP}),
              "---------------------------\nViewer\n---------------------------\nSave \"R&D\"?\n"
              "---------------------------\nYes   No   Help   \n---------------------------\n");
}

} // namespace
} // namespace zelvar
