#include "zelvar/model/ItemListing.h"

#include "support/ScriptedDriver.h"
#include "support/Test.h"
#include "zelvar/model/NtwDataSourceItem.h"

#include <filesystem>

namespace zelvar {
namespace {

using testing::Pair;
using testing::UnorderedElementsAre;

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

    static std::vector<DString> NamesOf(std::vector<ListedItem> const &lines) {
        std::vector<DString> names;
        for (ListedItem const &line : lines)
            names.push_back(line.name);
        return names;
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
    EXPECT_EQ(ListItems(Place(), {.most = 2}).size(), 2U);
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

TEST_F(ItemListingTest, FoldsWhatBelongsTogetherWithoutALookIntoIt) {
    auto &driver = m_drivers.AddTree("tiff", "*.tif;*.ovr");
    for (int i = 1; i <= 12; ++i)
        m_folder.Write(Format("sub/s%02d.tif", i), "123");
    for (char const *name : {"sub/a.tif", "sub/a.tif.ovr", "sub/s04.tfw", "sub/lone.tfw", "sub/cube/.zarray"})
        m_folder.Write(name, "12345");
    DataSetFolding const all{.sidecars = true, .series = true, .folders = true};
    for (bool const recursive : {false, true}) { // a walk reads folders ahead
        RefItemPtr<DataSourceItem> const place(NtwDataSourceItem::CreateItem(
            recursive ? m_folder.Path().c_str() : (m_folder / "sub").c_str(), nullptr, nullptr));
        driver.probes = 0;
        std::map<DString, std::int64_t> sizes;
        for (ListedItem const &line : ListItems(place, {.recursive = recursive, .folding = all}))
            sizes[ToText(line.kind) + DString(" ") + line.name] = line.size;
        EXPECT_THAT(sizes, ElementsAre(Pair("dataset cube", -1), Pair("file a.tif", 10), Pair("file lone.tfw", 5),
                                       Pair("series s[01-12].tif", 41)));
        EXPECT_EQ(driver.probes, 1) << "a.tif";
        sizes.clear();
        for (ListedItem const &line : ListItems(place, {.recursive = recursive, .filter = "a*", .folding = all}))
            sizes[line.name] = line.size;
        EXPECT_THAT(sizes, ElementsAre(Pair("a.tif", 10), Pair("cube", -1))) << "the mask leaves the side-car alone";
    }
    RefItemPtr<DataSourceItem> const sub(NtwDataSourceItem::CreateItem((m_folder / "sub").c_str(), nullptr, nullptr));
    EXPECT_THAT(NamesOf(ListItems(sub, {.filter = "*.ovr", .folding = all})),
                UnorderedElementsAre("cube", "a.tif.ovr"));
    EXPECT_EQ(ListItems(sub, {}).size(), 17U);
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

TEST_F(ItemListingTest, WhatCannotBeReadIsToldAndTheRestIsListed) {
    m_drivers.AddAnyUrl("pages", "*.tif", [](auto &pages) {
        for (char const *page : {"p1", "p2"})
            pages.Add("root", page, BDINode_Raster, page);
        pages.Break("p1");
    });
    m_folder.Write("a.tif");
    m_folder.Write("z/b.txt");
    DString const deep = m_folder / m_folder.TooDeepFolders();
    std::map<DString, std::error_code> told;
    EXPECT_THAT(Lines({.recursive = true,
                       .sort = ListingSort::Name,
                       .onUnread = [&told](DataSourceItem &item,
                                           std::error_code error) { told[item.GetPath().substr(0, 300)] = error; }}),
                ElementsAre("file z/b.txt", "node p2"));
    EXPECT_THAT(told, ElementsAre(Pair(m_folder / "a.tif", std::errc::io_error),
                                  Pair(testing::StartsWith(deep), std::errc::filename_too_long)));
}

TEST_F(ItemListingTest, NothingIsListedWhereNothingIs) {
    EXPECT_TRUE(ListItems(nullptr, {}).empty());
    RefItemPtr<DataSourceItem> const file(
        NtwDataSourceItem::CreateItem(m_folder.Write("file").c_str(), nullptr, nullptr));
    std::error_code error;
    ItemListingOptions const options{.recursive = true,
                                     .onUnread = [&error](DataSourceItem &, std::error_code why) { error = why; }};
    EXPECT_TRUE(ListItems(file, options).empty());
    EXPECT_FALSE(error) << "nothing is missing from what holds nothing";
    EXPECT_TRUE(ListItems(NtwDataSourceItem::CreateUnreachable((m_folder / "gone").c_str()), options).empty());
    EXPECT_EQ(error, std::errc::no_such_file_or_directory);
}

} // namespace
} // namespace zelvar
