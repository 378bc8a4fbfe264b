#include "support/FileRequests.h"
#include "zelvar/library/ZelvarInit.h"
#include "zelvar/lists/CZelListCtrl.h"
#include "zelvar/lists/SaveTarget.h"

namespace zelvar {
namespace {

TEST(SaveContents, AListIsSavedThroughTheFileDialogService) {
    ZelvarInit();
    test::TempFolder const folder;
    CZelListCtrl list;
    list.AddCol("Name", ADICol_String, false, 80, 0);
    list.AddCol("Count", ADICol_Int, false, 80, 0);
    list.AddRow("one|1", nullptr);
    list.AddRow("two|---", nullptr);
    auto const save = [&list] {
        list.SaveToFile();
        return true;
    };
    test::Shown const shown = test::Answer(save, (folder / "list").c_str());
    EXPECT_EQ(shown.caption, "Save contents");
    EXPECT_EQ(shown.types.front(), "Comma separated list files (*.csv)");
    EXPECT_NE(test::ReadFile(folder / "list.csv").find("two"), std::string::npos);
    std::ignore = test::Answer(save, "");
    ZelvarShutdown();
    EXPECT_FALSE(AskSaveTarget(nullptr, "Save contents")) << "nobody is there to ask";
}

} // namespace
} // namespace zelvar
