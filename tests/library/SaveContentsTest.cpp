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
    for (char const *neighbour : {"run", "run?n=2/Run 12", "run?n=2/a", "run?n=2/y"})
        folder.Write(neighbour, "kept");
    for (char const *name :
         {"list", "Run 12:30", "a}b", "my \"quoted\" list", "NETCDF:x:y", "a?b=c", " two \"x\" \"y\""}) {
        test::Shown const shown = test::Answer(save, folder / "run?n=2/" + name);
        EXPECT_EQ(shown.caption, "Save contents");
        EXPECT_EQ(shown.types.front(), "Comma separated list files (*.csv)");
        EXPECT_NE(test::ReadFile(folder / "run?n=2/" + name + ".csv").find("two"), std::string::npos) << name;
    }
    for (char const *neighbour : {"run", "run?n=2/Run 12", "run?n=2/a", "run?n=2/y"})
        EXPECT_EQ(test::ReadFile(folder / neighbour), "kept");
    std::ignore = test::Answer(save, "");
    ZelvarShutdown();
    EXPECT_FALSE(AskSaveTarget(nullptr, "Save contents")) << "nobody is there to ask";
}

} // namespace
} // namespace zelvar
