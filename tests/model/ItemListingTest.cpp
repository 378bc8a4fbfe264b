#include "zelvar/model/ItemListing.h"

#include "support/ScriptedDriver.h"
#include "support/Test.h"
#include "zelvar/model/NtwDataSourceItem.h"

#include <filesystem>

namespace zelvar {
namespace {

struct ItemListingTest : testing::Test {
    [[nodiscard]] RefItemPtr<DataSourceItem> Place() const {
        return NtwDataSourceItem::CreateItem(m_folder.Path().c_str(), nullptr, nullptr);
    }
    /// "kind path", the path relative to the folder.
    [[nodiscard]] std::vector<DString> Lines(ItemListingOptions const &options) const {
        std::vector<DString> lines;
        for (ListedItem const &line : ListItems(Place(), options)) {
            DString path = line.path;
            if (path.starts_with(m_folder.Path()))
                path.erase(0, m_folder.Path().size() + 1);
            lines.push_back(ToText(line.kind) + DString(" ") + path);
        }
        return lines;
    }

    test::ScriptedDrivers m_drivers;
    test::TempFolder m_folder;
};

TEST_F(ItemListingTest, TellsFoldersContainersAndFilesApart) {
    m_drivers.AddAnyUrl("pages", "*.tif", [](auto &pages) { pages.Add("root", "p1", BDINode_Raster, "Page"); });
    m_folder.Write("a.tif", "xx");
    m_folder.Write("b.txt", "123");
    m_folder.Folder("c");
    EXPECT_THAT(Lines({.sort = ListingSort::Name}), ElementsAre("container a.tif", "file b.txt", "folder c"));
    EXPECT_THAT(Lines({.foldersOnly = true, .sort = ListingSort::Name}), ElementsAre("container a.tif", "folder c"));
    EXPECT_THAT(Lines({.recursive = true, .nodeMask = BDINode_Raster, .sort = ListingSort::Name}),
                ElementsAre("file b.txt", "node p1"));
    EXPECT_THAT(Lines({.recursive = true, .sort = ListingSort::Name}), ElementsAre("file b.txt", "node p1"))
        << "without a mask all data";
    EXPECT_THAT(Lines({.foldersOnly = true, .recursive = true, .sort = ListingSort::Name}),
                ElementsAre("container a.tif", "folder c"));
    std::vector<ListedItem> const all = ListItems(Place(), {.sort = ListingSort::Name, .descending = true});
    EXPECT_EQ(all.at(0).name, "c");
    EXPECT_FALSE(all.at(0).time.has_value());
    EXPECT_EQ(all.at(1).size, 3);
    EXPECT_TRUE(all.at(1).time.has_value());
}

TEST_F(ItemListingTest, OrdersAsTheDialogDoes) {
    m_folder.Write("img10.txt", "1");
    m_folder.Write("img9.txt", "333");
    m_folder.Write("a", "22");
    m_folder.Folder("z");
    EXPECT_THAT(Lines({.sort = ListingSort::Name}),
                ElementsAre("file a", "file img9.txt", "file img10.txt", "folder z"));
    EXPECT_THAT(Lines({.sort = ListingSort::Size}),
                ElementsAre("folder z", "file img10.txt", "file a", "file img9.txt"));
    EXPECT_THAT(Lines({.sort = ListingSort::Size, .descending = true}),
                ElementsAre("file img9.txt", "file a", "file img10.txt", "folder z"));
}

TEST_F(ItemListingTest, ARecursiveListingGoesDepthFirstAndMasksFilesAlone) {
    for (char const *file : {"x.tif", "one/a.tif", "one/deep/b.tif", "one/c.txt"})
        m_folder.Write(file);
    EXPECT_THAT(Lines({.recursive = true, .filter = "*.tif"}),
                ElementsAre("file x.tif", "file one/a.tif", "file one/deep/b.tif"));
}

TEST_F(ItemListingTest, ALinkThatLeadsBackIsNotFollowedTwice) {
    m_folder.Write("one/a.txt");
    m_folder.Write("other/b.txt");
    std::filesystem::create_symlink("..", m_folder / "one/up");
    std::filesystem::create_symlink(".", m_folder / "one/here");
    std::filesystem::create_symlink("../one", m_folder / "other/one");
    std::vector<DString> const lines = Lines({.recursive = true});
    EXPECT_THAT(lines, testing::IsSupersetOf({DString("file one/a.txt"), DString("file other/b.txt")}));
    EXPECT_LE(lines.size(), 3U); // the link beside, met first, may show the one file by a second path
}

TEST_F(ItemListingTest, ALinkToAFolderElsewhereIsFollowed) {
    test::TempFolder const elsewhere;
    elsewhere.Write("far.txt");
    std::filesystem::create_symlink(elsewhere.Path(), m_folder / "link");
    EXPECT_THAT(Lines({.recursive = true}), ElementsAre("file link/far.txt"));
}

TEST_F(ItemListingTest, DeepTreesEndWhereTheSystemEndsThem) {
    DString deep = m_folder.Path();
    for (int level = 0; level < 300; ++level)
        deep += "/d";
    std::filesystem::create_directories(deep);
    m_folder.Write(deep.substr(m_folder.Path().size() + 1) + "/leaf.txt");
    EXPECT_EQ(Lines({.recursive = true}).size(), 1U);
}

TEST_F(ItemListingTest, NothingIsListedWhereNothingIs) {
    EXPECT_TRUE(ListItems(nullptr, {}).empty());
    RefItemPtr<DataSourceItem> const file(
        NtwDataSourceItem::CreateItem(m_folder.Write("file").c_str(), nullptr, nullptr));
    EXPECT_TRUE(ListItems(file, {.recursive = true}).empty());
}

} // namespace
} // namespace zelvar
