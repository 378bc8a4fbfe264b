// Folders listed as users list them, drivers in readers, beside the bare walk: directory entries and statx.
#include "Folders.h"
#include "Harness.h"
#include "reader/Drivers.h"
#include "reader/Tiff.h"
#include "zelvar/model/ItemListing.h"
#include "zelvar/model/NtwDataSourceItem.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <malloc.h>
#include <unistd.h>

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

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// The two in turn; what the listing made is let go outside the clock.
void FigureAgainst(std::string const &name, char const *limit, std::function<Items()> const &ours,
                   std::function<void()> const &other, int rounds = 11) {
    std::vector<double> ratios;
    std::vector<double> times;
    std::vector<double> others;
    ours();
    for (int round = 0; round < rounds; ++round) {
        Items items;
        times.push_back(BestMs(1, [&] { items = ours(); }));
        items.clear();
        others.push_back(BestMs(1, other));
        ratios.push_back(times.back() / others.back());
    }
    Figure(name, Median(ratios), "x", limit);
    Figure(name + ", time", Median(times), "ms", "other: " + std::to_string(Median(others)) + " ms");
}

/// `zelvar ls` as a whole process, and find, which prints the same of each file.
void Processes(std::string const &path) {
    std::string const program = std::filesystem::read_symlink("/proc/self/exe").parent_path() / "../bin/zelvar";
    auto const run = [](std::string const &line) { return [line] { std::ignore = std::system(line.c_str()); }; };
    std::string const quiet = " > /dev/null";
    Pair const ls = Compare(9, run(program + " ls " + path + quiet),
                            run("find " + path + " -printf '%y %s %TY-%Tm-%TdT%TT %f %p\\n'" + quiet));
    Figure("listing.process / find", ls.ratio, "x", "the whole of 'zelvar ls', 100,000 files");
    Figure("listing.process, time", ls.firstMs, "ms", "find: " + std::to_string(ls.secondMs) + " ms");
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
            name + ".iterator / bare", "100,000 files; find 1.7", [&] { return ListItemsOf(path); }, bare);
    }
    for (auto const &[name, sort] :
         {std::pair{"by_size", ListingSort::Size}, {"by_date", ListingSort::Date}, {"by_name", ListingSort::Name}})
        FigureAgainst(
            std::string("listing.") + name + " / bare", "with the lines that 'zelvar ls' prints",
            [&] { return ListLines(path, {.sort = sort}); }, bare);
    Processes(path);

    malloc_trim(0);
    std::size_t const before = mallinfo2().uordblks;
    Items const items = ListItemsOf(path);
    Figure("listing.bytes_a_row",
           static_cast<double>(mallinfo2().uordblks - before) / static_cast<double>(items.size()), "bytes",
           "limit: 400");
}

void Growth() {
    Use(Way::Reader);
    for (unsigned const files : {10'000U, 100'000U, 1'000'000U}) {
        Folder const folder;
        Fill(folder.Path(), files);
        std::ignore = ListBare(folder.Path());
        double const ms = BestMs(3, [&] { std::ignore = ListLines(folder.Path(), {.sort = ListingSort::Name}); });
        Figure("listing.growth_" + std::to_string(files), ms * 1e3 / files, "us", "a file, by name: linear or better");
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
        "listing.recursive / bare", "200 folders of 500; find 1.1",
        [&] { return ListLines(top.Path(), {.recursive = true}); },
        [&] {
            for (std::string const &folder : folders)
                keep = keep + ListBare(folder);
        });
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
    Figure("listing.images / own process", Median(ratios), "x", "10,000 small TIFF files, each looked into");
    Figure("listing.images, time", Median(readers), "ms", "own process: " + std::to_string(Median(own)) + " ms");
}

Register const oneFolder("listing", [] { OneFolder(); });
Register const manyFolders("listing.recursive", [] { ManyFolders(); });
Register const images("listing.images", [] { Images(); });
Register const growth("listing.growth", [] { Growth(); });

} // namespace
} // namespace zelvar::bench
