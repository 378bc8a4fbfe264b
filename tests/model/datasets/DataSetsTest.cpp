#include "zelvar/model/datasets/DataFolder.h"
#include "zelvar/model/datasets/DataSetPlan.h"
#include "zelvar/model/datasets/Sidecars.h"

#include <gtest/gtest.h>

#include <random>

namespace zelvar {
namespace {

using Names = std::vector<DString>;

/// Numbers in place of the "###", with as many digits at least.
Names Numbered(DString const &mask, int first, int last, int step = 1) {
    std::size_t const at = mask.find('#');
    std::size_t const digits = mask.find_last_of('#') + 1 - at;
    Names names;
    for (int i = first; i <= last; i += step) {
        DString const number = std::to_string(i);
        DString const zeros(digits - std::min(digits, number.size()), '0');
        names.push_back(mask.substr(0, at) + zeros + number + mask.substr(at + digits));
    }
    return names;
}

Names operator+(Names a, Names const &b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

Names Without(Names names, Names const &left) {
    std::erase_if(names, [&](DString const &name) { return std::find(left.begin(), left.end(), name) != left.end(); });
    return names;
}

/// "name: summary" of each series among the names, in whatever order these come.
Names SeriesIn(Names names) {
    std::shuffle(names.begin(), names.end(), std::mt19937(1)); // NOLINT(cert-msc32-c,cert-msc51-cpp)
    std::vector<std::string_view> const views(names.begin(), names.end());
    Names found;
    for (FoundSeries const &series : SeriesFinder(views).Find(std::vector<bool>(views.size(), true))) {
        found.push_back(series.name.Text() + ": " + SeriesSummary(series.name, series.slots));
        for (std::size_t i = 0; i < series.members.size(); ++i) {
            DString const &member = names[series.members[i]];
            EXPECT_EQ(series.name.MemberName(series.name.ValuesAt(series.slots[i])), member);
            auto const values = series.name.ValuesOf(member);
            EXPECT_TRUE(values && series.name.SlotOf(*values) == series.slots[i]) << member;
        }
        EXPECT_TRUE(std::is_sorted(series.slots.begin(), series.slots.end()));
        EXPECT_EQ(SeriesName::Parse(series.name.Text()), series.name);
    }
    std::sort(found.begin(), found.end());
    return found;
}

TEST(Series, AreTenOrMoreThatAgreeInAllButTheirNumbers) {
    Names grid;
    for (int t = 1; t <= 2; ++t)
        grid = grid + Numbered("t00" + std::to_string(t) + "_c2_z##.tif", 1, 5);
    std::pair<Names, Names> const cases[] = {
        {Numbered("s###.tif", 1, 120), {"s[001-120].tif: 120"}},
        {Numbered("s#.tif", 1, 120), {"s[1-120].tif: 120"}},
        {Numbered("s##.tif", 95, 120), {"s[95-120].tif: 26"}},
        {Without(Numbered("s###.tif", 1, 120), {"s017.tif", "s064.tif"}),
         {"s[001-120].tif: 118 of 120, missing 17, 64"}},
        {Without(Numbered("s#", 0, 20), {"s0", "s3", "s4", "s5", "s7", "s8"}),
         {"s[1-20]: 15 of 20, missing 3-5, 7, 8"}},
        {Numbered("s#.tif", 1, 39, 2) + Names{"s2.tif"}, {"s[1-39].tif: 21 of 39, missing 4, 6, 8, 10, 12, 14, ..."}},
        {Numbered("s###.tif", 0, 900, 100), {"s[000-900:100].tif: 10"}},
        {Numbered("s###.tif", 1, 9), {}},
        {Numbered("#", 7, 16), {"[7-16]: 10"}},
        {grid, {"t[001-002]_c2_z[01-05].tif: 10"}},
        {Without(grid + Numbered("t003_c2_z##.tif", 1, 5), {"t002_c2_z04.tif"}),
         {"t[001-003]_c2_z[01-05].tif: 14 of 15, missing 2/4"}},
        // Other words for the number, another ending, another case are others.
        {Numbered("s###.tif", 1, 10) + Numbered("s#.tif", 1, 5) + Numbered("s###.png", 1, 12), {"s[001-012].png: 12"}},
        {Numbered("a#.tif", 1, 5) + Numbered("A#.tif", 6, 10), {}},
        // Two runs far from each other; numbers that say when, and numbers all over the place.
        {Numbered("i####.jpg", 1, 30) + Numbered("i####.jpg", 5001, 5020),
         {"i[0001-0030].jpg: 30", "i[5001-5020].jpg: 20"}},
        {Numbered("d20260101_#.png", 10, 29) + Numbered("d20270601_#.png", 1, 3), {"d20260101_[10-29].png: 20"}},
        {Numbered("n#.tif", 1, 400'000, 7919) + Names{"n5.tif", "n77777.tif"}, {}},
        // Brackets would make the name of another series, and so much of a number is none.
        {Numbered("a[1-2]_#.tif", 1, 20), {}},
        {Numbered("a12345678901234567890_#.tif", 1, 20), {"a12345678901234567890_[1-20].tif: 20"}},
        {Numbered("a1234567890123456789#", 10, 30), {}},
    };
    for (auto const &[names, expected] : cases) {
        Names const found = SeriesIn(names);
        EXPECT_EQ(found, expected);
    }
}

TEST(Series, NamesAreReadAsTheyAreWritten) {
    for (char const *text : {"s[001-120].tif", "[0-9]", "t[1-3]_z[01-17].tif", "s[000-090:10].tif", "a%[1-2]b"}) {
        auto const name = SeriesName::Parse(text);
        ASSERT_TRUE(name) << text;
        EXPECT_EQ(name->Text(), text);
    }
    for (char const *text :
         {"", "s001.tif", "s[].tif", "s[1-].tif", "s[2-1].tif", "s[1-3", "s1-3]", "s[1-4:2].tif", "s[1-3:0]",
          "s[1-3][4-5]", "s1[1-3]", "s[1-3]0", "s[a-c].tif", "s[1-3]]", "s[1-1234567890123456789]"})
        EXPECT_FALSE(SeriesName::Parse(text)) << text;
    SeriesName const name = *SeriesName::Parse("s[008-110:2].tif");
    for (char const *member : {"s008.tif", "s110.tif"})
        EXPECT_TRUE(name.ValuesOf(member)) << member;
    for (char const *other :
         {"s8.tif", "s0010.tif", "s006.tif", "s009.tif", "s112.tif", "s010.tiff", "S010.tif", "s.tif"})
        EXPECT_FALSE(name.ValuesOf(other)) << other;
    EXPECT_EQ(SeriesName::Parse("a[0-999999999999999999]b[0-999999999999999999]")->Slots(), ~std::uint64_t{0});
}

TEST(Sidecars, BelongToTheirMasters) {
    test::Rows<char const *, Names> const cases = {
        {"a.tif",
         {"a.tif.ovr", "a.tif.aux.xml", "a.tif.msk", "a.tif.msk.ovr", "a.tfw", "a.tifw", "a.wld", "a.prj", "a.tif.xml",
          "a_RPC.TXT"}},
        {"a.TIF.OVR", {}}, // the case of a whole name counts
        {"B.TIF", {"B.TFW", "B.TIF.ovr", "B.PRJ"}},
        {"c.shp", {"c.shx", "c.dbf", "c.prj", "c.cpg", "c.sbn", "c.sbx", "c.qpj", "c.shp.xml", "c.dbf.xml"}},
        {"d.img", {"d.hdr", "d.rrd", "d.ige"}},
        {"e", {"e.hdr", "e.aux.xml"}},
        {"f.dat", {"f.hdr"}},
        {"g.tab", {"g.dat", "g.map", "g.id"}},
        {"h.jpg", {"h.jgw", "h.jpgw"}},
        {"i.gml", {"i.gfs", "i.xsd"}},
        {"j.gpkg", {"j.gpkg-wal", "j.gpkg-shm"}},
        {"k.ers", {"k"}},
        {"l.x", {}},
        {"m.dbf", {"m.cpg"}}, // a table
        {"n.tfw", {}},        // beside nothing
        {"o.aux.xml", {}},
        {"p.tar.gz", {"p.tar.gz.aux.xml"}},
        {"Q.tif", {}},
        {"q.tfw", {}}, // another stem
    };
    Names files;
    std::vector<DString> masters;
    for (auto const &[master, sidecars] : cases) {
        files.emplace_back(master);
        masters.emplace_back(master);
        for (DString const &sidecar : sidecars) {
            files.push_back(sidecar);
            masters.emplace_back(master);
        }
    }
    std::vector<std::string_view> const views(files.begin(), files.end());
    std::vector<std::uint32_t> const found = FindMasters(views);
    for (std::size_t i = 0; i < files.size(); ++i) {
        EXPECT_EQ(files[found[i]], masters[i]) << files[i];
        EXPECT_TRUE(files[i] == masters[i] || MayBeSidecar(files[i])) << files[i];
    }
    EXPECT_FALSE(MayBeSidecar("a.tif"));
    // Shared by two: the file of features needs it.
    std::vector<std::string_view> const shared{"a.tif", "a.prj", "a.shp"};
    EXPECT_EQ(FindMasters(shared), (std::vector<std::uint32_t>{0, 2, 2}));
    // Each would belong to the other.
    std::vector<std::string_view> const round{"a.dat", "a.tab", "a.hdr", "a.map"};
    EXPECT_EQ(FindMasters(round), (std::vector<std::uint32_t>{1, 1, 1, 1}));
}

TEST(DataSetPlan, FoldsSeriesOfMastersAlone) {
    Names const names = Numbered("s##.tif", 1, 10) + Numbered("s##.tfw", 1, 10) + Names{"x.txt"};
    std::vector<std::string_view> const views(names.begin(), names.end());
    std::vector<bool> wanted(views.size(), true);
    DataSetPlan const plan = PlanDataSets(views, wanted, {.sidecars = true, .series = true});
    ASSERT_EQ(plan.series.size(), 1U);
    EXPECT_EQ(plan.series.front().name.Text(), "s[01-10].tif");
    EXPECT_EQ(plan.masters[13], 3U);
    EXPECT_EQ(std::count(plan.isMember.begin(), plan.isMember.end(), true), 10);
    EXPECT_EQ(PlanDataSets(views, wanted, {.series = true}).series.size(), 2U);
    EXPECT_TRUE(PlanDataSets(views, wanted, {.sidecars = true}).series.empty());
    wanted[3] = false; // its side-car stands alone then, and nine are no series
    DataSetPlan const fewer = PlanDataSets(views, wanted, {.sidecars = true, .series = true});
    EXPECT_EQ(fewer.masters[13], 13U);
    EXPECT_TRUE(fewer.series.empty());
}

TEST(DataFolder, IsToldByItsNameAndWhatLiesInIt) {
    struct Case {
        char const *name;
        FolderContent content;
        std::optional<DataFolder> kind;
        char const *entry = "";
    };
    Case const cases[] = {
        {"a.zarr", {{".zgroup", ".zattrs"}}, DataFolder::Zarr},
        {"anything", {{".zarray", "0.0"}}, DataFolder::Zarr},
        {"a.zarr", {{"0.0"}}, std::nullopt},
        {"a.gdb", {{"a00000001.gdbtable", "gdb"}}, DataFolder::Geodatabase},
        {"a.GDB", {{"notes.txt"}}, std::nullopt},
        {"g", {{"hdr.adf", "w001001x.adf", "sta.adf"}}, DataFolder::EsriGrid},
        {"c", {{"arc.adf", "tic.adf"}}, DataFolder::Coverage},
        {"c", {{"arc.adf"}}, std::nullopt},
        {"S1A.SAFE", {{"manifest.safe"}, true}, DataFolder::Sentinel1},
        {"S2A.SAFE", {{"manifest.safe", "MTD_MSIL1C.xml"}, true}, DataFolder::Sentinel2, "MTD_MSIL1C.xml"},
        {"LC08", {{"LC08_MTL.txt", "LC08_B1.TIF"}}, DataFolder::Landsat, "LC08_MTL.txt"},
        {"IMG_PHR", {{"DIM_PHR1A.XML", "R1C1.TIF"}}, DataFolder::Dimap},
        {"m", {{"a.tab", "a.dat", "A.MAP", "a.id"}}, DataFolder::MapInfo},
        {"m", {{"a.tab", "readme.txt"}}, std::nullopt},
        {"m", {{"a.tab"}, true}, std::nullopt},
        {"m", {{"a.tab"}, false, false}, std::nullopt},
        {"m", {}, std::nullopt},
    };
    for (auto const &[name, content, kind, entry] : cases) {
        auto const told = TellDataFolder(name, content);
        ASSERT_EQ(told, kind) << name;
        EXPECT_EQ(told ? EntryOf(*told, content) : DString(), entry) << name;
    }
}

} // namespace
} // namespace zelvar
