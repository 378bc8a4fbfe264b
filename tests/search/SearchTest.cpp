#include "zelvar/search/Search.h"

#include "support/ImageFiles.h"
#include "support/RealDriversTest.h"
#include "zelvar/data/DriverProvider.h"
#include "zelvar/model/PlaceResolver.h"
#include "zelvar/search/SearchWords.h"

#include <filesystem>

namespace zelvar {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::UnorderedElementsAre;
using Kind = SearchQuery::Kind;

TEST(SearchQuery, APartIsAMaskAndAMaskIsOne) {
    for (auto const &[name, masks] : std::map<DString, DString>{{"scan", "*scan*"},
                                                                {"*.tif", "*.tif"},
                                                                {"scan; *.tif;;a?b", "*scan*;*.tif;a?b"},
                                                                {"a[1]", "*a[1]*"},
                                                                {" ; ", ""},
                                                                {"", ""}})
        EXPECT_EQ(MasksOf(name), masks) << name;
    EXPECT_TRUE(SearchQuery{.name = "SCAN"}.MatchesName("my scan.tif"));
    EXPECT_FALSE(SearchQuery{.name = "scan*"}.MatchesName("my scan.tif"));
}

TEST(SearchQuery, BoundsAreIncludedAndWhatIsNotKnownIsOutside) {
    SearchQuery const query{.bytes = {.least = 10, .most = 20}, .modified = {.least = 5}};
    for (auto const &[size, modified, is] : {std::tuple{10, 5, true},
                                             {20, 9, true},
                                             {9, 5, false},
                                             {21, 5, false},
                                             {-1, 5, false},
                                             {15, 4, false},
                                             {15, 0, false}})
        EXPECT_EQ(query.MatchesState({.size = size, .modified = modified}), is) << size << " " << modified;
    ItemFacts const facts{ItemFacts::Kind::Image, 2000, 100, 3, 1, 7, RDI_UInt16, "GeoTIFF"};
    for (auto const &[asked, is] :
         std::vector<std::pair<SearchQuery, bool>>{{{.kind = Kind::Image}, true},
                                                   {{.format = "tiff", .width = {1900, 2100}, .frames = {7, {}}}, true},
                                                   {{.width = {{}, 1999}}, false},
                                                   {{.height = {101, {}}}, false},
                                                   {{.channels = {3, 3}, .slices = {2, {}}}, false},
                                                   {{.dataTypes = RDI_UInt8 | RDI_UInt16}, true},
                                                   {{.dataTypes = RDI_Float32}, false},
                                                   {{.format = "png"}, false}})
        EXPECT_EQ(asked.NeedsFacts() && asked.MatchesFacts(facts), is);
    EXPECT_FALSE(SearchQuery{.kind = Kind::Image}.MatchesFacts({}));
}

TEST(SearchWords, SizesAndMomentsAreReadAsTheyAreWritten) {
    constexpr std::int64_t kNovember16 = 1'794'787'200; // s, UTC
    for (auto const &[text, bytes] : std::map<DString, std::optional<std::int64_t>>{{"0", 0},
                                                                                    {"4096", 4096},
                                                                                    {"10K", 10'240},
                                                                                    {"2m", 2'097'152},
                                                                                    {"8388607T", 8'388'607LL << 40U},
                                                                                    {"8388608T", {}},
                                                                                    {"1.5K", {}},
                                                                                    {"-1", {}},
                                                                                    {"K", {}},
                                                                                    {"", {}}})
        EXPECT_EQ(BytesFrom(text), bytes) << text;
    for (auto const &[text, seconds] : std::map<DString, std::optional<std::int64_t>>{{"2026-11-16", 0},
                                                                                      {"2026-11-16 10:30", 37'800},
                                                                                      {"2026-11-16T10:30:01", 37'801},
                                                                                      {"2026-11-16 ", {}},
                                                                                      {"16.11.2026", {}},
                                                                                      {"d", {}},
                                                                                      {"99999999d", {}},
                                                                                      {"", {}}})
        EXPECT_EQ(MomentFrom(text), seconds ? std::optional((kNovember16 + *seconds) * 1'000'000'000) : std::nullopt)
            << text;
    EXPECT_EQ(*MomentFrom("24h"), *MomentFrom("1d"));
}

struct FactsStoreTest : testing::Test {
    static FactsStore::Known Row(int i) {
        return {{"/data/\xFF" + std::to_string(i), i, std::int64_t{7} * i},
                {ItemFacts::Kind::Image, i, i + 1, i + 2, i + 3, i + 4, RDI_Int16, "Format " + std::to_string(i)}};
    }
    test::TempFolder m_folder;
    DString const m_file = m_folder / "below/facts.db";
};

TEST_F(FactsStoreTest, WhatWasKeptIsKnownByPathSizeAndTime) {
    std::vector const rows{Row(1), Row(2)};
    FactsStore(m_file).Keep(rows);
    FactsStore store(m_file);
    std::vector<FactsStore::Key> keys{rows[1].first, rows[0].first, rows[0].first, rows[0].first, {"/other", 1, 7}};
    keys[2].size = 99;
    keys[3].modified = 99;
    EXPECT_THAT(store.Find(keys),
                ElementsAre(rows[1].second, rows[0].second, std::nullopt, std::nullopt, std::nullopt));
    FactsStore::Known changed = rows[0];
    changed.second = {};
    store.Keep({&changed, 1});
    EXPECT_THAT(store.Find({keys.data() + 1, 1}), ElementsAre(ItemFacts{}));
    EXPECT_EQ(fs::status(m_file.c_str()).permissions() & fs::perms::others_all, fs::perms::none);
}

TEST_F(FactsStoreTest, WhatWasKeptFirstGoesWhenThereIsTooMuch) {
    constexpr int kRows = 20'000;
    constexpr std::int64_t kMost = 512 << 10U;
    FactsStore store(m_file, kMost);
    for (int i = 0; i < kRows; i += 100) {
        std::vector<FactsStore::Known> rows;
        for (int row = i; row < i + 100; ++row)
            rows.push_back(Row(row));
        store.Keep(rows);
    }
    EXPECT_LT(fs::file_size(m_file.c_str()), 2 * kMost);
    std::vector const keys{Row(0).first, Row(kRows - 1).first};
    EXPECT_THAT(store.Find(keys), ElementsAre(std::nullopt, Row(kRows - 1).second));
}

TEST_F(FactsStoreTest, ADamagedFileIsSetAsideAndOneThatCannotBeMadeIsNone) {
    std::vector const rows{Row(1)};
    std::vector const keys{rows[0].first};
    m_folder.Write("damaged.db", std::string(2000, 'x'));
    FactsStore store(m_folder / "damaged.db");
    store.Keep(rows);
    EXPECT_THAT(store.Find(keys), ElementsAre(rows[0].second));
    EXPECT_TRUE(fs::exists((m_folder / "damaged.db.damaged").c_str()));

    FactsStore(m_file).Keep(rows);
    fs::resize_file(m_file.c_str(), fs::file_size(m_file.c_str()) / 2);
    FactsStore cut(m_file);
    EXPECT_THAT(cut.Find(keys), ElementsAre(std::nullopt));
    cut.Keep(rows);
    EXPECT_THAT(cut.Find(keys), ElementsAre(rows[0].second));

    for (DString const &file : {DString(), DString("/proc/no/facts.db")}) {
        FactsStore none(file);
        none.Keep(rows);
        EXPECT_THAT(none.Find(keys), ElementsAre(std::nullopt));
    }
}

struct SearchTest : test::RealDriversTest {
    ~SearchTest() override { SetDriverProvider({}); }

    std::vector<DString> Names(SearchQuery const &query, bool onlyOne = false) {
        StopSignal stop{false};
        std::vector<DString> names;
        m_progress = Search(query, &m_store).Run(ItemFromPlace(m_folder / "place"), stop, [&](SearchHit &&hit) {
            names.push_back(hit.item->GetName());
            stop = onlyOne;
        });
        return names;
    }
    FactsStore m_store{m_folder / "facts.db"};
    SearchProgress m_progress;
};

TEST_F(SearchTest, NamesAreFoundNearestFirstAndLinksEnd) {
    for (char const *const name : {"place/deep/er/scan 1.txt", "place/scan.txt", "place/b/Scan 2.dat", "place/b/other"})
        m_folder.Write(name, "x");
    fs::create_directory_symlink((m_folder / "place").c_str(), (m_folder / "place/b/scans again").c_str());
    EXPECT_THAT(Names({.name = "scan", .kind = Kind::File}), ElementsAre("scan.txt", "Scan 2.dat", "scan 1.txt"));
    EXPECT_EQ(m_progress.hits, 3);
    EXPECT_EQ(m_progress.folders, 4) << "the link leads to one that was entered";
    EXPECT_THAT(Names({.name = "scan*", .kind = Kind::Folder}), ElementsAre("scans again"));
    EXPECT_THAT(Names({.name = "scan", .bytes = {2, {}}}), ElementsAre());
    EXPECT_THAT(Names({.name = "scan", .kind = Kind::File}, true), ElementsAre("scan.txt"));
}

TEST_F(SearchTest, OfSeveralPlacesWhatLiesNearestComesFirst) {
    for (char const *const name : {"one/deep/a.txt", "one/b.txt", "two/c.txt", "two/deep/d.txt"})
        m_folder.Write(name, "x");
    StopSignal const stop{false};
    std::vector<DString> names;
    std::ignore = Search({.kind = Kind::File}, nullptr)
                      .Run({ItemFromPlace(m_folder / "one"), nullptr, ItemFromPlace(m_folder / "two")}, stop,
                           [&](SearchHit &&hit) { names.push_back(hit.item->GetName()); });
    EXPECT_THAT(names, ElementsAre("b.txt", "c.txt", "a.txt", "d.txt"));
}

TEST_F(SearchTest, FactsComeFromReadersOnceAndFromTheStoreThen) {
    m_folder.Folder("place/deep");
    test::WriteImage(m_folder / "place/a.tif", {.width = 20, .channels = 3});
    test::WriteImage(m_folder / "place/deep/b.tif", {.width = 40});
    test::WriteImage(m_folder / "place/deep/c.png", {.width = 40, .format = "PNG"});
    m_folder.Write("place/no.tif", "no image");
    m_folder.Write("place/text.txt", "nobody opens it");
    SearchQuery const wide{.width = {30, {}}};
    EXPECT_THAT(Names(wide), UnorderedElementsAre("b.tif", "c.png"));
    EXPECT_GE(m_progress.asked, 4);
    EXPECT_THAT(Names({.format = "tiff", .width = {30, {}}}), ElementsAre("b.tif"));
    EXPECT_THAT(Names({.name = "*.tif", .channels = {3, 3}}), ElementsAre("a.tif"));
    EXPECT_THAT(Names({.kind = Kind::Image, .dataTypes = RDI_Float32}), ElementsAre());

    // Of another file behind the same name, size and time, what is known is what counts: it is not read.
    DString const path = m_folder / "place/deep/b.tif";
    auto const time = fs::last_write_time(path.c_str());
    m_folder.Write("place/deep/b.tif", std::string(fs::file_size(path.c_str()), 'x'));
    fs::last_write_time(path.c_str(), time);
    EXPECT_THAT(Names(wide), UnorderedElementsAre("b.tif", "c.png"));
    fs::last_write_time(path.c_str(), time + std::chrono::seconds(1));
    EXPECT_THAT(Names(wide), ElementsAre("c.png"));
}

TEST_F(SearchTest, ContainersAreLookedIntoWhereThatIsAskedFor) {
    m_folder.Folder("place");
    test::WritePages(m_folder / "place/three.tif", 3);
    test::WriteImage(m_folder / "place/one.tif");
    EXPECT_THAT(Names({.kind = Kind::Container}), ElementsAre("three.tif"));
    EXPECT_EQ(Names({.kind = Kind::Image, .inside = true}).size(), 5U) << "both files and three pages";
    EXPECT_EQ(Names({.kind = Kind::Image}).size(), 2U);

    // What lies in a container was changed when its file was.
    auto const days = [](int count) { return fs::file_time_type::clock::now() - std::chrono::hours(24 * count); };
    fs::last_write_time((m_folder / "place/three.tif").c_str(), days(10));
    auto const pages = [&](SearchQuery const &query) {
        StopSignal const stop{false};
        return Search(query, &m_store).Run(ItemFromPlace(m_folder / "place/three.tif"), stop, [](SearchHit &&) {}).hits;
    };
    auto const since = [](int count) {
        auto const time = std::chrono::system_clock::now() - std::chrono::hours(24 * count);
        return SearchQuery{.modified = {.least = std::chrono::nanoseconds(time.time_since_epoch()).count()}};
    };
    EXPECT_EQ(pages(since(11)), 3);
    EXPECT_EQ(pages(since(9)), 0);
    EXPECT_EQ(pages({.width = {64, 64}}), 3) << "their facts are read";
    EXPECT_EQ(pages({.width = {65, {}}}), 0);
}

TEST_F(SearchTest, AFolderThatIsDataIsFoundLikeAFileAndNotEntered) {
    m_folder.Write("place/cells.zarr/.zgroup", R"({"zarr_format": 2})");
    m_folder.Write("place/cells.zarr/0/cells.txt", "x");
    EXPECT_THAT(Names({.name = "cells"}), ElementsAre("cells.zarr"));
    EXPECT_THAT(Names({.kind = Kind::DataSet}), ElementsAre("cells.zarr"));
    m_folder.Write("place/a/far cells.txt", "x");
    EXPECT_THAT(Names({.name = "*.txt"}), ElementsAre("far cells.txt")) << "of other names the same holds";
    EXPECT_THAT(Names({.name = "cells"}), ElementsAre("cells.zarr", "far cells.txt")) << "nearest first";
    EXPECT_THAT(Names({.name = "cells", .kind = Kind::Folder}), ElementsAre());
    for (char const *const name : {".zgroup", ".zarray", "zarr.json"}) { // some of them far behind, in any order
        for (int i = 0; i < 300; ++i)
            m_folder.Write(Format("place/large%s.zarr/%d.txt", name, i), "x");
        m_folder.Write(Format("place/large%s.zarr/%s", name, name), "{}");
    }
    EXPECT_THAT(Names({.name = "*.txt"}), ElementsAre("far cells.txt")) << "what tells may stand behind many names";
}

} // namespace
} // namespace zelvar
