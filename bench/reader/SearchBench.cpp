// Searches as users start them, drivers in readers, beside the bare walk (directory entries and statx) and find.
#include "Folders.h"
#include "Processes.h"
#include "reader/Drivers.h"
#include "reader/Tiff.h"
#include "zelvar/model/PlaceResolver.h"
#include "zelvar/search/Search.h"

#include <filesystem>
#include <thread>

namespace zelvar::bench {
namespace {

SearchProgress Find(
    std::string const &place, SearchQuery const &query, FactsStore *store, StopSignal &stop,
    Search::OnHit const &onHit = [](SearchHit &&) {}) {
    return Search(query, store).Run(ItemFromPlace(place), stop, onHit);
}

std::vector<std::string> MakeFolders(std::string const &top, unsigned count) {
    std::vector<std::string> folders;
    for (unsigned i = 0; i < count; ++i) {
        folders.push_back(top + "/group " + std::to_string(i / 50) + "/folder " + std::to_string(i));
        std::filesystem::create_directories(folders.back());
    }
    return folders;
}

void ByName() {
    constexpr unsigned kFolders = 2000;
    constexpr unsigned kFilesEach = 50;
    Use(Way::Reader);
    Folder const top;
    std::vector<std::string> const folders = MakeFolders(top.Path(), kFolders);
    for (std::string const &folder : folders)
        Fill(folder, kFilesEach);
    std::size_t volatile keep = 0;
    StopSignal stop{false};
    std::vector<double> ratios;
    std::vector<double> times;
    std::vector<double> bares;
    std::vector<double> all;
    std::vector<double> first;
    std::vector<double> stops;
    auto const round = [&] {
        bares.push_back(Ms([&] {
            for (std::string const &folder : folders)
                keep = keep + ListBare(folder);
        }));
        times.push_back(Ms([&] { std::ignore = Find(top.Path(), {.name = "*.csv"}, nullptr, stop); }));
        ratios.push_back(times.back() / bares.back());
        all.push_back(Ms([&] { std::ignore = Find(top.Path(), {}, nullptr, stop); }));
        double until = 0;
        double stopping = 0;
        auto const begin = std::chrono::steady_clock::now();
        auto const sofar = [&] {
            return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
        };
        std::ignore = Find(top.Path(), {.name = "scene*.tif"}, nullptr, stop, [&](SearchHit &&) {
            until = sofar();
            stop = true;
            stopping = sofar();
        });
        stops.push_back(sofar() - stopping);
        first.push_back(until);
        stop = false;
    };
    std::vector<Alternative> const others =
        TimesBeside(7, round, {{"find -iname, whole process", {"find", top.Path(), "-iname", "*.csv"}}});
    Figure("search.name / bare", Median(ratios), "x", {.limit = 1.3, .note = "100,000 files in 2,000 folders"});
    std::vector<Alternative> beside = others;
    beside.push_back({"the bare walk", Median(bares)});
    Figure("search.name, time", Median(times), "ms", {.alternatives = beside});
    Figure("search.name.all", Median(all), "ms", "every file and folder is a hit");
    Figure("search.first_hit", Median(first), "ms", {.limit = 50});
    Figure("search.stop", Median(stops), "ms", {.limit = 100});
}

void ByFacts() {
    constexpr unsigned kImages = 10'000;
    Use(Way::Reader);
    Folder const top;
    std::vector<std::string> const folders = MakeFolders(top.Path(), 200);
    for (unsigned i = 0; i < kImages; ++i)
        Tiff(folders[i % folders.size()] + "/image " + std::to_string(i) + ".tif").AddPage(16 + i % 64, 8, 3);
    Folder const cache;
    FactsStore store(cache.Path() + "/facts.db");
    StopSignal stop{false};
    SearchQuery const query{.width = {.least = 40, .most = 50}};
    std::int64_t hits = 0;
    double const once = Ms([&] { hits = Find(top.Path(), query, &store, stop).hits; });
    double const again = BestMs(3, [&] { std::ignore = Find(top.Path(), query, &store, stop); });
    if (hits == 0)
        Fail("no image was found");
    Figure("search.facts", kImages / once * 1e3, "images/s",
           {.limit = 1500, .note = "10,000 small ones in 200 folders"});
    Figure("search.facts.again", kImages / again * 1e3, "images/s",
           {.limit = 50'000, .note = "the same from the store"});
}

Register const byName("search.name", [] { ByName(); });
Register const byFacts("search.facts", [] { ByFacts(); });

} // namespace
} // namespace zelvar::bench
