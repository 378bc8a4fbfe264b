#include "Folders.h"
#include "Harness.h"
#include "zelvar/data/DriverProvider.h"
#include "zelvar/data/gdal/GdalDrivers.h"
#include "zelvar/model/ItemListing.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/model/listing/ListingContent.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <malloc.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace zelvar::bench {
namespace {

using Items = std::vector<RefItemPtr<DataSourceItem>>;

Items ListItemsOf(std::string const &path) {
    RefItemPtr<DataSourceItem> const folder(NtwDataSourceItem::CreateItem(path.c_str(), nullptr, nullptr));
    Items items;
    ForEachChild(*folder, nullptr, nullptr, nullptr, 0, DT_DATA, [&](RefItemPtr<DataSourceItem> item) {
        items.push_back(std::move(item));
        return true;
    });
    return items;
}

Items ListSorted(std::string const &path, ListingSort sort) {
    Items items = ListItemsOf(path);
    ListingOrder order;
    order.Reset(sort, true);
    for (auto const &item : items)
        order.Add(FactsOf(*item, sort));
    Items sorted;
    sorted.reserve(items.size());
    for (std::uint32_t const number : order.AscendingOrder())
        sorted.push_back(std::move(items[number]));
    return sorted;
}

struct ItemTraits {
    static ListingFacts Facts(RefItemPtr<DataSourceItem> const &item, ListingSort sort) { return FactsOf(*item, sort); }
    static DString Path(RefItemPtr<DataSourceItem> const &item) { return item->GetPath(); }
};

/// What the folder list does from a click to its rows, painting aside.
Items FillRows(std::string const &path) {
    ListingContent<RefItemPtr<DataSourceItem>, ItemTraits> content;
    content.BeginCold(ListingSort::Name, true);
    RefItemPtr<DataSourceItem> const folder(NtwDataSourceItem::CreateItem(path.c_str(), nullptr, nullptr));
    ForEachChild(*folder, nullptr, nullptr, nullptr, 0, DT_DATA, [&](RefItemPtr<DataSourceItem> const &item) {
        if (item->IsFile(0))
            content.Add(item);
        return true;
    });
    content.Publish();
    std::vector<PendingRow<RefItemPtr<DataSourceItem>>> batch = content.TakePending();
    std::vector<std::int32_t> at;
    at.reserve(batch.size());
    for (auto const &record : batch)
        at.push_back(record.row);
    Items rows;
    RowPlan(rows.size(), at).Apply(rows, std::move(batch));
    return rows;
}

Items ListBelow(std::string const &path) {
    ItemListingOptions options;
    options.recursive = true;
    Items items;
    for (ListedItem &line :
         ListItems(RefItemPtr<DataSourceItem>(NtwDataSourceItem::CreateItem(path.c_str(), nullptr, nullptr)), options))
        items.push_back(std::move(line.item));
    return items;
}

/// The two in turn; what the listing made is let go outside the clock.
void FigureAgainst(char const *name, char const *limit, std::function<Items()> const &ours,
                   std::function<Items()> const &other) {
    std::vector<double> ratios;
    std::vector<double> times;
    std::vector<double> others;
    for (int run = 0; run < 11; ++run) {
        Items items;
        times.push_back(BestMs(1, [&] { items = ours(); }));
        items.clear();
        others.push_back(BestMs(1, [&] { items = other(); }));
        items.clear();
        ratios.push_back(times.back() / others.back());
    }
    auto const median = [](std::vector<double> values) {
        std::sort(values.begin(), values.end());
        return values[values.size() / 2];
    };
    Figure(name, median(ratios), "x", limit);
    Figure(std::string(name) + ", time", median(times), "ms", "other: " + std::to_string(median(others)) + " ms");
}

void OneFolder() {
    constexpr unsigned kFiles = 100'000;
    Folder const folder;
    Fill(folder.Path(), kFiles);
    std::string const &path = folder.Path();
    std::size_t volatile keep = 0;
    auto const bare = [&] { return keep = keep + ListBare(path), Items(); };
    FigureAgainst(
        "listing.iterator / bare", "limit: 1.3", [&] { return ListItemsOf(path); }, bare);
    FigureAgainst(
        "listing.by_size / bare", "limit: 1.3", [&] { return ListSorted(path, ListingSort::Size); }, bare);
    FigureAgainst(
        "listing.by_date / bare", "limit: 1.3", [&] { return ListSorted(path, ListingSort::Date); }, bare);
    FigureAgainst(
        "listing.by_name / bare", "limit: 2.0", [&] { return ListSorted(path, ListingSort::Name); }, bare);
    FigureAgainst(
        "listing.rows_by_name / bare", "limit: 3.0", [&] { return FillRows(path); }, bare);

    malloc_trim(0);
    std::size_t const before = mallinfo2().uordblks;
    Items const items = ListItemsOf(path);
    Figure("listing.bytes_a_row",
           static_cast<double>(mallinfo2().uordblks - before) / static_cast<double>(items.size()), "bytes",
           "limit: 400");

    Folder const twice;
    Fill(twice.Path(), 2 * kFiles);
    FigureAgainst(
        "listing.rows_200000 / rows_100000", "limit: 2.2", [&] { return FillRows(twice.Path()); },
        [&] { return FillRows(path); });
}

void ManyFolders() {
    constexpr unsigned kFolders = 200;
    constexpr unsigned kFilesEach = 500;
    Folder const top;
    std::vector<std::string> folders;
    for (unsigned i = 0; i < kFolders; ++i) {
        folders.push_back(top.Path() + "/folder " + std::to_string(i));
        std::filesystem::create_directory(folders.back());
        Fill(folders.back(), kFilesEach);
    }
    std::size_t volatile keep = 0;
    FigureAgainst(
        "listing.recursive / bare", "for comparison", [&] { return ListBelow(top.Path()); },
        [&] {
            for (std::string const &folder : folders)
                keep = keep + ListBare(folder);
            return Items();
        });
}

/// A real image of one byte, as small as they come.
std::string TinyTiff() {
    std::string bytes("II*\0\x08\0\0\0", 8);
    auto const put = [&bytes](unsigned value, int count) {
        for (; count > 0; --count, value >>= 8U)
            bytes += static_cast<char>(value & 0xFFU);
    };
    constexpr std::array<std::array<unsigned, 2>, 8> kTags{
        {{256, 1}, {257, 1}, {258, 8}, {259, 1}, {262, 1}, {273, 8 + 2 + 8 * 12 + 4}, {278, 1}, {279, 1}}};
    constexpr unsigned kLong = 4;
    put(kTags.size(), 2);
    for (auto const &[tag, value] : kTags) {
        put(tag, 2);
        put(kLong, 2);
        put(1, 4);
        put(value, 4);
    }
    put(0, 4);
    return bytes + '\x7F';
}

void Images() {
    constexpr unsigned kFiles = 10'000;
    Folder const folder;
    std::string const image = TinyTiff();
    for (unsigned i = 0; i < kFiles; ++i)
        MakeFile(folder.Path(), i, ".tif", image);
    std::size_t volatile keep = 0;
    double const first = BestMs(1, [&] { keep = keep + ListItemsOf(folder.Path()).size(); });
    Figure("listing.images.first", first, "ms", "10,000 TIFF files, each looked into for further images");
    FigureAgainst(
        "listing.images / bare", "for comparison", [&] { return ListItemsOf(folder.Path()); },
        [&] { return keep = keep + ListBare(folder.Path()), Items(); });
}

/// The machine's drivers take part: which of them may claim a name is a part of every listing.
void WithDrivers(void (*bench)()) {
    SetDriverProvider([] { RegisterGdalDrivers(); });
    EnsureDrivers();
    bench();
}

Register const oneFolder("listing", [] { WithDrivers(&OneFolder); });
Register const manyFolders("listing.recursive", [] { WithDrivers(&ManyFolders); });
Register const images("listing.images", [] { WithDrivers(&Images); });

} // namespace
} // namespace zelvar::bench
