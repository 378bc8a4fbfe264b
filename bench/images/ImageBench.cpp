// Images as users meet them: through readers, with the defaults, and by the command. Other programs stand beside, as
// whole processes, where they are installed. GDAL writes the files and reads none of them.
#include "Folders.h"
#include "Harness.h"
#include "images/Processes.h"
#include "zelvar/data/ImageReader.h"
#include "zelvar/data/RDIDriverMngr.h"
#include "zelvar/data/reader/DriverModule.h"

#include <gdal.h>

#include <cmath>
#include <cstdlib>
#include <random>

#include <fcntl.h>
#include <unistd.h>

namespace zelvar::bench {
namespace {

constexpr int kRuns = 7;

/// Waves with a little noise in three channels, pixel by pixel.
void WriteTiff(std::string const &path, int side, GDALDataType type, std::vector<char const *> options) {
    options.push_back("INTERLEAVE=PIXEL");
    options.push_back("PHOTOMETRIC=RGB");
    options.push_back(nullptr);
    GDALDatasetH dataset = GDALCreate(GDALGetDriverByName("GTiff"), path.c_str(), side, side, 3, type,
                                      const_cast<char **>(options.data()));
    std::mt19937 random(1);
    std::vector<float> row(static_cast<std::size_t>(side) * 3);
    double const top = type == GDT_Byte ? 255 : 4095;
    for (int y = 0; y < side; ++y) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            double const x = static_cast<double>(i / 3);
            double const wave = std::sin(x / (70.0 + static_cast<double>(i % 3) * 9)) * std::cos(y / 90.0);
            double const noise = static_cast<double>(random() % 1000) / 1000;
            row[i] = static_cast<float>(top * (0.5 + 0.3 * wave + 0.1 * std::sin((x + y) / 11.0) + 0.02 * noise));
        }
        if (GDALDatasetRasterIO(dataset, GF_Write, 0, y, side, 1, row.data(), side, 1, GDT_Float32, 3, nullptr, 12, 0,
                                4) != CE_None)
            std::abort();
    }
    GDALClose(dataset);
}

void WriteCopy(std::string const &from, char const *format, std::string const &to) {
    GDALDatasetH source = GDALOpen(from.c_str(), GA_ReadOnly);
    GDALClose(GDALCreateCopy(GDALGetDriverByName(format), to.c_str(), source, FALSE, nullptr, nullptr, nullptr));
    GDALClose(source);
}

void WritePyramid(std::string const &path) {
    GDALDatasetH dataset = GDALOpen(path.c_str(), GA_Update);
    int const levels[] = {2, 4, 8, 16};
    if (GDALBuildOverviews(dataset, "AVERAGE", 4, const_cast<int *>(levels), 0, nullptr, nullptr, nullptr) != CE_None)
        std::abort();
    GDALClose(dataset);
}

void Preview(std::string const &path) {
    DCanvas picture;
    if (!ReadPreview({path, nullptr}, "", nullptr, picture))
        std::abort();
}

void ReadBytes(std::string const &path) {
    std::vector<char> buffer(std::size_t{1} << 20U);
    int const file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    while (read(file, buffer.data(), buffer.size()) > 0)
        continue;
    close(file);
}

void Print(std::string const &name, std::string const &what, std::optional<ProcessTime> const &time) {
    if (!time)
        return;
    Figure(name, time->wallMs, "ms", what);
    Figure(name + ".user", time->userMs, "ms", "of one processor");
}

/// Pictures of 1024 pixels: ours within a running application, the others' with their start.
void BenchPreview(char const *name, std::string const &path, std::string const &out) {
    std::string const figure = std::string("images.preview.") + name;
    Pair const pair = Compare(
        kRuns, [&] { Preview(path); }, [&] { ReadBytes(path); });
    Figure(figure, pair.firstMs, "ms", "through a reader");
    Figure(figure + ".ratio", pair.ratio, "x", "times a bare read of the file's bytes; limit for plain ones: 4");
    auto const others =
        TimeInTurn(kRuns, {{"vipsthumbnail", path, "-s", "1024", "-o", out + ".ppm"},
                           {"gdal_translate", "-q", "-outsize", "1024", "0", "-r", "cubic", path, out + ".tif"}});
    Print(figure + ".libvips", "vipsthumbnail, whole process", others[0]);
    Print(figure + ".gdal_cubic", "gdal_translate -r cubic, whole process", others[1]);
}

void BenchCommands(std::string const &path, std::string const &out) {
    auto const previews = TimeInTurn(kRuns, {{ZELVAR_COMMAND, "info", path, "--preview", out + ".png"},
                                             {"vipsthumbnail", path, "-s", "1024", "-o", out + "-other.png"},
                                             {"vipsthumbnail", path, "-s", "1024", "-o", out + ".jpg"}});
    Print("images.info_preview", "the command, with a pyramid; limit: 100", previews[0]);
    Print("images.info_preview.libvips", "vipsthumbnail to PNG", previews[1]);
    Print("images.info_preview.libvips_jpeg", "vipsthumbnail to JPEG", previews[2]);
    auto const histograms = TimeInTurn(kRuns, {{ZELVAR_COMMAND, "histogram", "--print", path},
                                               {"gdalinfo", "-hist", "--config", "GDAL_PAM_ENABLED", "NO", path},
                                               {"vips", "hist_find", path, out + ".v"}});
    Print("images.histogram", "the command, one channel at full size; limit: 100", histograms[0]);
    Print("images.histogram.gdal", "gdalinfo -hist, of a level of the pyramid where there is one", histograms[1]);
    Print("images.histogram.libvips", "vips hist_find, all channels", histograms[2]);
}

Register const kImages("images", [] {
    GDALAllRegister();
    Folder const folder;
    UseReaderDrivers();
    RDIDriverMngr::Instance()->Drivers();
    WriteTiff(folder / "deflate.tif", 5700, GDT_UInt16, {"TILED=YES", "COMPRESS=DEFLATE"});
    BenchPreview("deflate_u16", folder / "deflate.tif", folder / "out");
    WriteCopy(folder / "deflate.tif", "PNG", folder / "deep.png");
    BenchPreview("png_u16", folder / "deep.png", folder / "out");
    WriteTiff(folder / "plain.tif", 5790, GDT_Byte, {});
    BenchPreview("plain_u8", folder / "plain.tif", folder / "out");
    WriteTiff(folder / "tiled.tif", 5790, GDT_Byte, {"TILED=YES"});
    BenchPreview("tiled_u8", folder / "tiled.tif", folder / "out");
    WritePyramid(folder / "tiled.tif");
    BenchCommands(folder / "tiled.tif", folder / "out");
    EndReaders();
});

} // namespace
} // namespace zelvar::bench
