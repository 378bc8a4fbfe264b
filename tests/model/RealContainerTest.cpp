#include "support/RealDrivers.h"
#include "support/TestFiles.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/DriverProvider.h"
#include "zelvar/data/RDIDriverMngr.h"
#include "zelvar/model/ItemListing.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/model/PlaceResolver.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

namespace zelvar {
namespace {

void Put(DString &bytes, std::size_t value, int count) {
    for (; count > 0; --count, value >>= 8U)
        bytes += static_cast<char>(value & 0xFFU);
}

/// A TIFF file of that many images of one pixel each.
DString TiffOf(int pages) {
    DString bytes("II*\0\x08\0\0\0", 8);
    for (int page = 0; page < pages; ++page) {
        constexpr std::size_t kTags = 8;
        std::size_t const end = bytes.size() + 2 + kTags * 12 + 4;
        std::array<std::array<std::size_t, 2>, kTags> const tags{
            {{256, 1}, {257, 1}, {258, 8}, {259, 1}, {262, 1}, {273, end}, {278, 1}, {279, 1}}};
        Put(bytes, kTags, 2);
        for (auto const &[tag, value] : tags) {
            Put(bytes, tag, 2);
            Put(bytes, 4, 2);
            Put(bytes, 1, 4);
            Put(bytes, value, 4);
        }
        Put(bytes, page + 1 < pages ? end + 2 : 0, 4);
        Put(bytes, 7, 2);
    }
    return bytes;
}

/// The machine's own drivers for one test.
class RealContainerTest : public testing::Test {
protected:
    RealContainerTest() {
        Forget();
        test::UseRealDrivers();
    }
    ~RealContainerTest() override {
        Forget();
        SetDriverProvider({});
    }
    static void Forget() {
        BDIDrvrMngr::Instance()->Reset();
        RDIDriverMngr::Instance()->Reset();
    }
    test::TempFolder m_folder;
};

TEST_F(RealContainerTest, AFileOfSeveralImagesIsAContainerAndItsNodesAreFoundAgain) {
    m_folder.Write("one.tif", TiffOf(1));
    DString const three = m_folder.Write("three \xC3\xA9: of.tif", TiffOf(3));
    m_folder.Write("broken.tif", TiffOf(3).substr(0, 60));
    RefItemPtr<DataSourceItem> const folder = ItemFromPlace(m_folder.Path());
    std::vector<DString> kinds;
    for (ListedItem const &line : ListItems(folder, {.sort = ListingSort::Name}))
        kinds.push_back(line.name + " " + ToText(line.kind));
    EXPECT_THAT(kinds, testing::ElementsAre("broken.tif file", "one.tif file", "three \xC3\xA9: of.tif container"));

    std::vector<ListedItem> const pages = ListItems(ItemFromPlace(three), {.nodeMask = BDINode_Raster});
    ASSERT_EQ(pages.size(), 3U);
    for (ListedItem const &page : pages) {
        RefItemPtr<DataSourceItem> const again = ItemFromPlace(page.path);
        ASSERT_NE(again, nullptr) << page.path;
        EXPECT_EQ(again->GetPath(), page.path);
        EXPECT_EQ(again->GetName(), page.name);
        EXPECT_TRUE(again->IsFile(BDINode_Raster));
    }
    EXPECT_EQ(ListItems(folder, {.recursive = true, .nodeMask = BDINode_Raster}).size(), 5U);
}

} // namespace
} // namespace zelvar
