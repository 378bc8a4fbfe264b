// Folders listed as users list them, drivers in readers, beside the bare walk: directory entries and statx.
#include "Folders.h"
#include "Processes.h"
#include "reader/Drivers.h"
#include "reader/Tiff.h"
#include "zelvar/model/ItemListing.h"
#include "zelvar/model/NtwDataSourceItem.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <malloc.h>

namespace zelvar::bench {
namespace {

using Items = std::vector<RefItemPtr<DataSourceItem>>;

RefItemPtr<DataSourceItem> Place(std::string const &path) {
    return {NtwDataSourceItem::CreateItem(path.c_str(), nullptr, nullptr)};
}

Items ListItemsOf(std::string const &path) {
    Items items;
    ForEachChild(*Place(path), nullptr, nullptr, nullptr, 0, DT_DATA, [&](RefItemPtr<DataSourceItem> item) {
        items.push_back(std::move(item));
        return true;
    });
    return items;
}

Items ListLines(std::string const &path, ItemListingOptions const &options) {
    Items items;
    for (ListedItem &line : ListItems(Place(path), options))
        items.push_back(std::move(line.item));
    return items;
}

/// Ours beside the bare walk and beside find, which prints what a line of 'zelvar ls' has; the three in turn. What the
/// listing made is let go outside the clock.
void FigureAgainst(std::string const &name, std::optional<double> limit, std::string const &note,
                   std::function<Items()> const &ours, std::function<void()> const &bare, std::string const &path) {
    std::vector<double> ratios;
    std::vector<double> times;
    std::vector<double> bares;
    ours();
    std::vector<Alternative> others =
        TimesBeside(11,
                    [&] {
                        Items items;
                        times.push_back(Ms([&] { items = ours(); }));
                        items.clear();
                        bares.push_back(Ms(bare));
                        ratios.push_back(times.back() / bares.back());
                    },
                    {{"find -printf, whole process", {"find", path, "-printf", "%y %s %TY-%Tm-%TdT%TT %f %p\n"}}});
    std::vector<Alternative> findToBare = others;
    for (Alternative &find : findToBare)
        if (find.value)
            *find.value /= Median(bares);
    Figure(name, Median(ratios), "x", {.limit = limit, .alternatives = findToBare, .note = note});
    others.push_back({"the bare walk", Median(bares)});
    Figure(name + ", time", Median(times), "ms", {.alternatives = others});
}

void OneFolder() {
    constexpr unsigned kFiles = 100'000;
    Folder const folder;
    Fill(folder.Path(), kFiles);
    std::string const &path = folder.Path();
    std::size_t volatile keep = 0;
    auto const bare = [&] { keep = keep + ListBare(path); };
    for (Way const where : {Way::OwnProcess, Way::Reader}) {
        Use(where);
        std::string const name = where == Way::Reader ? "listing" : "listing.own_process";
        FigureAgainst(
            name + ".iterator / bare", 1.1, "100,000 files", [&] { return ListItemsOf(path); }, bare, path);
    }
    for (auto const &[name, sort] :
         {std::pair{"by_size", ListingSort::Size}, {"by_date", ListingSort::Date}, {"by_name", ListingSort::Name}})
        FigureAgainst(
            std::string("listing.") + name + " / bare", {}, "with the lines that 'zelvar ls' prints",
            [&] { return ListLines(path, {.sort = sort}); }, bare, path);

    malloc_trim(0);
    std::size_t const before = mallinfo2().uordblks;
    Items const items = ListItemsOf(path);
    Figure("listing.bytes_a_row",
           static_cast<double>(mallinfo2().uordblks - before) / static_cast<double>(items.size()), "bytes",
           {.limit = 400});
}

/// What a file costs where there are more of them, beside what it costs among 10,000.
void Growth() {
    Use(Way::Reader);
    std::optional<double> first;
    for (unsigned const files : {10'000U, 100'000U, 1'000'000U}) {
        Folder const folder;
        Fill(folder.Path(), files);
        std::ignore = ListBare(folder.Path());
        double const ms = BestMs(3, [&] { std::ignore = ListLines(folder.Path(), {.sort = ListingSort::Name}); });
        double const each = ms * 1e3 / files;
        std::string const name = "listing.growth_" + std::to_string(files);
        Figure(name, each, "us", "a file, by name");
        if (first)
            Figure(name + "_to_linear", each / *first, "x", {.limit = 1, .note = "a file, beside one of 10,000"});
        else
            first = each;
    }
}

void ManyFolders() {
    constexpr unsigned kFolders = 200;
    constexpr unsigned kFilesEach = 500;
    Use(Way::Reader);
    Folder const top;
    std::vector<std::string> folders;
    for (unsigned i = 0; i < kFolders; ++i) {
        folders.push_back(top.Path() + "/folder " + std::to_string(i));
        std::filesystem::create_directory(folders.back());
        Fill(folders.back(), kFilesEach);
    }
    std::size_t volatile keep = 0;
    FigureAgainst(
        "listing.recursive / bare", 1.2, "200 folders of 500",
        [&] { return ListLines(top.Path(), {.recursive = true}); },
        [&] {
            for (std::string const &folder : folders)
                keep = keep + ListBare(folder);
        },
        top.Path());
}

void Images() {
    constexpr unsigned kFiles = 10'000;
    Folder const folder;
    for (unsigned i = 0; i < kFiles; ++i)
        Tiff(folder.Path() + "/image " + std::to_string(i) + ".tif").AddPage(4, 4, 1);
    std::vector<double> ratios;
    std::vector<double> readers;
    std::vector<double> own;
    for (int round = 0; round < 7; ++round) {
        for (Way const where : {Way::Reader, Way::OwnProcess}) {
            Use(where);
            std::ignore = ListItemsOf(folder.Path()); // whatever the first one has to load
            double const ms = BestMs(3, [&] { std::ignore = ListItemsOf(folder.Path()); });
            (where == Way::Reader ? readers : own).push_back(ms);
        }
        ratios.push_back(readers.back() / own.back());
    }
    Figure("listing.images / own process", Median(ratios), "x",
           {.limit = 1.1, .note = "10,000 small TIFF files, each looked into"});
    Figure("listing.images, time", Median(readers), "ms", {.alternatives = {{"own process", Median(own)}}});
}

/// What belongs together as one row, beside each file for itself; and numbered slices, none of which is opened.
void Folding() {
    Use(Way::Reader);
    ItemListingOptions const plain{.sort = ListingSort::Name};
    ItemListingOptions folded = plain;
    folded.folding = {.sidecars = true, .series = true, .folders = true};
    Folder const mixed;
    Fill(mixed.Path(), 100'000);
    std::vector<double> ratios;
    std::vector<double> times;
    std::vector<double> others;
    for (int round = 0; round < 7; ++round) {
        Items items;
        others.push_back(Ms([&] { items = ListLines(mixed.Path(), plain); }));
        items.clear();
        times.push_back(Ms([&] { items = ListLines(mixed.Path(), folded); }));
        ratios.push_back(times.back() / others.back());
    }
    Figure("listing.folded / plain", Median(ratios), "x", {.limit = 1.3, .note = "100,000 files, by name"});
    Figure("listing.folded, time", Median(times), "ms", {.alternatives = {{"each file for itself", Median(others)}}});

    Folder const slices;
    for (unsigned i = 1; i <= 20'000; ++i)
        Tiff(slices.Path() + "/slice" + std::to_string(100'000 + i) + ".tif").AddPage(4, 4, 1);
    Use(Way::Reader); // nobody knows these files yet
    std::size_t rows = 0;
    double const ms = Ms([&] { rows = ListLines(slices.Path(), folded).size(); });
    if (rows != 1)
        Fail("20,000 slices are " + std::to_string(rows) + " rows");
    Figure("listing.slices_20000", ms, "ms",
           {.limit = 150, .note = "20,000 numbered files as one row, the first time"});
}

Register const oneFolder("listing", [] { OneFolder(); });
Register const manyFolders("listing.recursive", [] { ManyFolders(); });
Register const images("listing.images", [] { Images(); });
Register const folding("listing.folded", [] { Folding(); });
Register const growth("listing.growth", [] { Growth(); });

} // namespace
} // namespace zelvar::bench
