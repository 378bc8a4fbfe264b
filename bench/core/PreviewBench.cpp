#include "Harness.h"
#include "zelvar/data/DriverProvider.h"
#include "zelvar/data/ImageReader.h"
#include "zelvar/data/RDIDriverMngr.h"
#include "zelvar/data/gdal/GdalDrivers.h"

#include <cpl_string.h>
#include <cpl_vsi.h>
#include <gdal.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include <sys/resource.h>
#include <unistd.h>

namespace zelvar::bench {
namespace {

constexpr int kSide = 20'000;
constexpr int kBands = 3;

/// A folder for the files of this bench, removed at its end.
class Files {
public:
    Files() {
        if (mkdtemp(m_folder.data()) == nullptr)
            std::abort();
    }
    ~Files() { VSIRmdirRecursive(m_folder.c_str()); }
    Files(Files const &) = delete;
    Files &operator=(Files const &) = delete;
    [[nodiscard]] std::string operator/(char const *name) const { return m_folder + "/" + name; }

private:
    std::string m_folder = "/tmp/zelvar-bench-XXXXXX";
};

void FillBand(GDALRasterBandH band) {
    int const width = GDALGetRasterBandXSize(band);
    std::vector<std::uint16_t> row(static_cast<std::size_t>(width));
    for (int y = 0; y < GDALGetRasterBandYSize(band); ++y) {
        for (int x = 0; x < width; ++x)
            row[static_cast<std::size_t>(x)] = static_cast<std::uint16_t>((x * 31 + y * 17) ^ (x * y >> 6));
        if (GDALRasterIO(band, GF_Write, 0, y, width, 1, row.data(), width, 1, GDT_UInt16, 0, 0) != CE_None)
            std::abort();
    }
}

/// 20,000 * 20,000 pixels of three 16-bit samples, tiled. The full size is left empty, as most readers of a preview
/// never touch it; the levels of the pyramid from 1/4 on hold data.
void WriteLargeImage(std::string const &path, bool pyramid) {
    char const *const options[] = {"TILED=YES", "SPARSE_OK=TRUE", "BIGTIFF=YES", nullptr};
    GDALDatasetH dataset = GDALCreate(GDALGetDriverByName("GTiff"), path.c_str(), kSide, kSide, kBands, GDT_UInt16,
                                      const_cast<char **>(options));
    if (pyramid) {
        std::array<int, 5> levels{2, 4, 8, 16, 32};
        if (GDALBuildOverviews(dataset, "NONE", levels.size(), levels.data(), 0, nullptr, nullptr, nullptr) != CE_None)
            std::abort();
        for (int band = 1; band <= kBands; ++band)
            for (int level = 1; level < 5; ++level)
                FillBand(GDALGetOverview(GDALGetRasterBand(dataset, band), level));
    }
    GDALClose(dataset);
}

void ReadWithGdal(std::string const &path) {
    GDALDatasetH dataset = GDALOpen(path.c_str(), GA_ReadOnly);
    std::vector<std::uint16_t> samples(std::size_t{1024} * 1024 * kBands);
    GDALRasterIOExtraArg extra;
    INIT_RASTERIO_EXTRA_ARG(extra);
    extra.eResampleAlg = GRIORA_Cubic;
    if (GDALDatasetRasterIOEx(dataset, GF_Read, 0, 0, kSide, kSide, samples.data(), 1024, 1024, GDT_UInt16, kBands,
                              nullptr, 0, 0, 0, &extra) != CE_None)
        std::abort();
    GDALClose(dataset);
}

void Preview(std::string const &path) {
    DCanvas picture;
    if (!ReadPreview({path, nullptr}, "", nullptr, picture))
        std::abort();
}

std::size_t PeakBytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<std::size_t>(usage.ru_maxrss) * 1024;
}

/// Milliseconds from the stop of a long read to its end.
double MeasureStop(std::string const &path) {
    using Clock = std::chrono::steady_clock;
    StopSignal stop{false};
    std::atomic<bool> reading{false};
    Clock::time_point ended;
    std::thread reader([&] {
        RDIDriver *driver = nullptr;
        void *handle = nullptr;
        if (!RDIDriverMngr::Instance()->OpenFile({path, nullptr}, &driver, &handle, "", nullptr, "", &stop))
            std::abort();
        std::vector<std::uint16_t> samples(std::size_t{1024} * 1024);
        reading = true;
        if (driver->ReadBlockRsmpl(handle, 0, 0, 0, kSide, kSide, samples.data(), 1024, 1024, RDIDriver::Cubic, true,
                                   true))
            std::abort(); // it was not stopped
        ended = Clock::now();
        driver->CloseFile(handle, true);
    });
    while (!reading)
        std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    Clock::time_point const stopped = Clock::now();
    stop = true;
    reader.join();
    return std::chrono::duration<double, std::milli>(ended - stopped).count();
}

Register const kPreview("preview", [] {
    Files const files;
    SetDriverProvider(&RegisterGdalDrivers);
    RDIDriverMngr::Instance()->Drivers();
    // The memory first: later figures would hide it.
    std::string const plain = files / "plain.tif";
    WriteLargeImage(plain, false);
    RDIDriver *driver = nullptr;
    void *handle = nullptr;
    if (!RDIDriverMngr::Instance()->OpenFile({plain, nullptr}, &driver, &handle, "", nullptr, ""))
        std::abort();
    std::vector<std::uint16_t> samples(std::size_t{1024} * 1024);
    std::size_t const before = PeakBytes();
    double const ms = BestMs(1, [&] {
        if (!driver->ReadBlockRsmpl(handle, 0, 0, 0, kSide, kSide, samples.data(), 1024, 1024, RDIDriver::Cubic, true,
                                    true))
            std::abort();
    });
    std::size_t const after = PeakBytes();
    driver->CloseFile(handle, true);
    Figure("preview.no_pyramid.memory", static_cast<double>(after - before) / 1e6, "MB",
           {.limit = 250, .note = "more at the highest, whatever the size"});
    double slowest = 0;
    for (int run = 0; run < 5; ++run)
        slowest = std::max(slowest, MeasureStop(plain));
    Figure("preview.stop", slowest, "ms", {.limit = 100, .note = "from the stop to the end of a read, slowest of 5"});
    Figure("preview.no_pyramid.read", ms, "ms", "one channel, without the guard of the preview");

    std::string const large = files / "large.tif";
    WriteLargeImage(large, true);
    Pair const pair = Compare(
        9, [&] { Preview(large); }, [&] { ReadWithGdal(large); });
    Figure("preview.large_tiff", pair.firstMs, "ms",
           {.alternatives = {{"GDAL's own cubic reading to the same size", pair.secondMs}},
            .note = "opened, read, reduced to bytes, drawn"});
    Figure("preview.large_tiff.ratio", pair.ratio, "x", {.limit = 1.25, .note = "of GDAL's own reading"});
});

} // namespace
} // namespace zelvar::bench
