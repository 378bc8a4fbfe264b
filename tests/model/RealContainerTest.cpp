#include "support/ImageFiles.h"
#include "support/RealDriversTest.h"
#include "support/Test.h"
#include "zelvar/data/DriverProvider.h"
#include "zelvar/model/ItemListing.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/model/PlaceResolver.h"

namespace zelvar {
namespace {

struct RealContainerTest : test::RealDriversTest {
    ~RealContainerTest() override { SetDriverProvider({}); }
};

TEST_F(RealContainerTest, AFileOfSeveralImagesIsAContainerAndItsNodesAreFoundAgain) {
    DString const three = m_folder / "three \xC3\xA9: of.tif";
    for (auto const &[name, pages] : std::map<DString, int>{{"one.tif", 1},
                                                            {"one", 1},
                                                            {"multi", 2},
                                                            {"multi.dat", 2},
                                                            {"text.txt", 2},
                                                            {"three \xC3\xA9: of.tif", 3}})
        test::WritePages(m_folder / name, pages);
    m_folder.Write("broken.tif", test::ReadFile(three).substr(0, 60));
    RefItemPtr<DataSourceItem> const folder = ItemFromPlace(m_folder.Path());
    std::vector<DString> kinds;
    for (ListedItem const &line : ListItems(folder, {.sort = ListingSort::Name}))
        kinds.push_back(line.name + " " + ToText(line.kind));
    EXPECT_THAT(kinds, testing::ElementsAre("broken.tif file", "multi container", "multi.dat container", "one file",
                                            "one.tif file", "text.txt file", "three \xC3\xA9: of.tif container"));
    EXPECT_TRUE(ItemFromPlace(m_folder / "text.txt")->IsFolder()) << "named";

    std::vector<ListedItem> const pages = ListItems(ItemFromPlace(three), {.nodeMask = BDINode_Raster});
    ASSERT_EQ(pages.size(), 3U);
    for (ListedItem const &page : pages) {
        RefItemPtr<DataSourceItem> const again = ItemFromPlace(page.path);
        ASSERT_NE(again, nullptr) << page.path;
        EXPECT_EQ(again->GetPath(), page.path);
        EXPECT_EQ(again->GetName(), page.name);
        EXPECT_TRUE(again->IsFile(BDINode_Raster));
    }
    EXPECT_EQ(ListItems(folder, {.recursive = true, .nodeMask = BDINode_Raster}).size(), 11U);
}

} // namespace
} // namespace zelvar
