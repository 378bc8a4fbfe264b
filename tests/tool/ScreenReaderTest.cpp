#include "support/AccessibilityBus.h"
#include "support/ImageFiles.h"

#include <filesystem>

namespace zelvar {
namespace {

using Heard = std::vector<std::string>;

enum Key { kTab = 0xff09, kReturn = 0xff0d, kHome = 0xff50, kRight = 0xff53, kDown = 0xff54, kDelete = 0xffff };

class ScreenReader : public testing::Test {
protected:
    void SetUp() override {
        if (!bus.Missing().empty())
            GTEST_SKIP() << "no accessibility bus can be started here: it takes " << bus.Missing();
    }
    /// Starts the command and gives the focus to a part of its window.
    auto Run(std::vector<std::string> words, std::string const &window, std::string const &part) {
        words.insert(words.begin(), ZELVAR_COMMAND);
        bus.Start(words);
        auto node = bus.Find(part, bus.Find(window));
        bus.Focus(node);
        std::ignore = bus.HearUntil("focus " + part);
        return node;
    }
    void Hears(Heard const &expected) { EXPECT_EQ(bus.HearUntil(expected.back()), expected); }
    void Press(Key key, Heard const &expected) {
        bus.Press(key);
        Hears(expected);
    }

    test::AccessibilityBus bus;
};

TEST_F(ScreenReader, HearsTheThematicList) {
    Run({"gallery", "--page", "thematic"}, "frame Gallery", "list Rules and exports");
    Hears({"focus list item An item of its own"}); // last: what the toolkit says of the list goes before it
    Press(kHome, {"focus panel Rule"});
    Press(kDown, {"deselect list item An item of its own", "select list item Segment the nuclei",
                  "focus list item Segment the nuclei"});
    Press(kDelete, {"deselect list item Segment the nuclei", "gone panel Rule",
                    "focus list item Merge neighbours of like colour"});
    auto const exports = bus.Find("panel Export");
    EXPECT_TRUE(bus.IsExpanded(bus.Find("panel Rule")));
    EXPECT_FALSE(bus.IsExpanded(exports));
    bus.Act(bus.Find("link Add Export...", exports));
    Hears({"new panel Export"});
    EXPECT_TRUE(bus.IsExpanded(exports));
    EXPECT_EQ(bus.Words(bus.Children(exports).at(0)), "list item Export 1");
}

TEST_F(ScreenReader, HearsATable) {
    auto const table = Run({"gallery", "--page", "list"}, "frame Gallery", "table Samples");
    Press(kDown, {"deselect row Liver 03, Ki-67, 1204.00", "focus row Liver 01, H&E, 812.50",
                  "select row Liver 01, H&E, 812.50"});
    auto const headings = bus.Find("row Sample, Stain, Size [MB]", table);
    EXPECT_EQ(bus.Words(bus.Children(headings).at(2)), "column header Size [MB]");
    bus.DoubleClick(bus.Find("cell H&E", table));
    Hears({"deselect row Liver 01, H&E, 812.50", "focus text Stain"});
    EXPECT_EQ(bus.Words(bus.Find("text Stain", table)), "text Stain");
    Press(kReturn, {"focus table Samples"});
    Press(kDown, {"focus row Liver 01, H&E, 812.50", "select row Liver 01, H&E, 812.50"});
    Press(kTab, {"focus check box Groups"});
    bus.Focus(table);
    Hears({"focus table Samples", "focus row Liver 01, H&E, 812.50"});
    bus.ListenTo({"words"});
    bus.Act(bus.Children(headings).at(2));
    Hears({"words sorted ascending"});
}

TEST_F(ScreenReader, HearsAChart) {
    Run({"gallery", "--page", "plot"}, "frame Gallery", "chart Growth of a culture");
    bus.ListenTo({"value", "words"});
    std::string const all = "; Growth of a culture: 41 points, x 0 to 40, y 0 to 100";
    Press(kRight, {"value 5.0", "words day 0: x 0, y 5" + all});
    Press(kRight, {"value 8.6955255685066746", "words x 1, y 8.69553" + all});
}

TEST_F(ScreenReader, HearsTheOpenDialog) {
    test::TempFolder const folder;
    std::string const image = folder / "cells.tif";
    test::WriteImage(image);
    std::filesystem::last_write_time(
        image, std::chrono::file_clock::from_sys(std::chrono::sys_seconds(std::chrono::seconds(1621252800))));
    std::string const row = "row cells.tif, 3 KB, 2021-05-17 12:00";
    auto const table = Run({"open", folder.Path()}, "dialog Import Image Layer...", "table Items");
    EXPECT_EQ(bus.LabelOf(bus.Find("combo box All Files")), "File Type");
    bus.ListenTo({"focus", "select", "deselect", "enable"});
    std::ignore = bus.Find(row, table); // files come one after the other
    Press(kDown, {"focus " + row, "select " + row, "enable push button OK"});
    EXPECT_EQ(bus.Description(bus.Find("frame Selected")), image);
    Press(kTab, {"focus combo box Go to folder"});
    Press(kTab, {"focus text File Name Filter"});
    bus.Focus(table);
    Hears({"focus table Items", "focus " + row});
}

} // namespace
} // namespace zelvar
