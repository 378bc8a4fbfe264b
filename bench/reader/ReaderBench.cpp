// Reading through readers beside the same reading in this process. The program is an application that links the core
// alone: GDAL comes into it only for the second half of each comparison, behind the figure of the memory.
#include "Folders.h"
#include "Harness.h"
#include "reader/Drivers.h"
#include "reader/Tiff.h"
#include "zelvar/data/ImageReader.h"

#include <cstdlib>
#include <vector>

namespace zelvar::bench {
namespace {

/// The work both ways in turn: medians of a call.
Pair CompareWays(int rounds, int calls, std::function<void()> const &work) {
    std::vector<double> reader;
    std::vector<double> own;
    std::vector<double> ratios;
    for (int round = 0; round < rounds; ++round) {
        for (Way const way : {Way::Reader, Way::OwnProcess}) {
            Use(way);
            work(); // whatever the first one has to load
            std::vector<double> times;
            times.reserve(static_cast<std::size_t>(calls));
            for (int call = 0; call < calls; ++call)
                times.push_back(Ms(work));
            (way == Way::Reader ? reader : own).push_back(Median(times));
        }
        ratios.push_back(reader.back() / own.back());
    }
    return {Median(ratios), Median(reader), Median(own)};
}

void ReadInfo(std::string const &path) {
    ImageInfo info;
    if (!ReadImageInfo({path, nullptr}, "", nullptr, info))
        std::abort();
}

void Preview(std::string const &path) {
    DCanvas canvas;
    if (!ReadPreview({path, nullptr}, "", nullptr, canvas))
        std::abort();
}

void ListMembers(std::string const &path) {
    BDIDrvr *driver = nullptr;
    BDINode *root = nullptr;
    void *const repository = BDIDrvrMngr::Instance()->OpenFile(path.c_str(), &driver, &root, nullptr, nullptr);
    if (repository == nullptr)
        std::abort();
    void *const find = driver->FindFirstChildNode(repository, root, BDINode_Raster);
    int count = 0;
    while (find != nullptr && driver->FindNextChildNode(find) != nullptr)
        ++count;
    if (count != 5000)
        std::abort();
    driver->FindClose(find);
    driver->CloseNode(root);
    driver->CloseRepository(repository);
}

Register const kStart("reader.start", [] {
    Choose(Way::Reader);
    std::vector<double> starts;
    for (int i = 0; i < 9; ++i) {
        EndReaders();
        BDIDrvrMngr::Instance()->Reset();
        RDIDriverMngr::Instance()->Reset();
        starts.push_back(Ms([] { BDIDrvrMngr::Instance()->Drivers(); }));
    }
    Figure("reader.start", Median(starts), "ms",
           {.limit = 60, .note = "from the first question to all drivers, median of 9"});
});

Register const kReader("reader", [] {
    Folder const folder;
    std::string const small = folder / "small.tif";
    Tiff(small).AddPage(100, 100, 3);
    std::string const large = folder / "large.tif";
    Tiff(large).AddPage(4000, 3000, 3);
    std::string const pages = folder / "pages.tif";
    {
        Tiff file(pages);
        for (int i = 0; i < 5000; ++i)
            file.AddPage(8, 8, 1);
    }

    Use(Way::Reader);
    ReadInfo(small);
    Preview(large);
    auto const without = static_cast<double>(ResidentBytes());
    Use(Way::OwnProcess);
    ReadInfo(small);
    Preview(large);
    Figure("reader.application_memory", without / 1e6, "MB", "resident after a preview, GDAL not loaded");
    Figure("reader.application_memory_with_gdal", static_cast<double>(ResidentBytes()) / 1e6, "MB",
           "the same application after it has read in its own process as well");

    Pair const info = CompareWays(7, 200, [&] { ReadInfo(small); });
    Figure("reader.properties", info.firstMs, "ms",
           {.alternatives = {{"own process", info.secondMs}}, .note = "small TIFF, opened, described, closed"});
    Figure("reader.properties.more", info.firstMs - info.secondMs, "ms", {.limit = 1, .note = "through a reader"});
    Pair const preview = CompareWays(7, 5, [&] { Preview(large); });
    Figure(
        "reader.preview", preview.firstMs, "ms",
        {.alternatives = {{"own process", preview.secondMs}}, .note = "1024 pixels of 4,000 x 3,000 x 3, no pyramid"});
    Figure("reader.preview.ratio", preview.ratio, "x", {.limit = 1.05, .note = "of the own process"});
    Pair const members = CompareWays(5, 3, [&] { ListMembers(pages); });
    Figure("reader.members", members.firstMs, "ms",
           {.alternatives = {{"own process", members.secondMs}}, .note = "TIFF of 5,000 pages, opened and listed"});
    Figure("reader.members.ratio", members.ratio, "x", {.limit = 1.2, .note = "of the own process"});
});

} // namespace
} // namespace zelvar::bench
