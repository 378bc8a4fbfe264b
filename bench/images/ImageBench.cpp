// Images as users meet them: through readers, with the defaults. Other programs stand beside, as whole processes, where
// they are installed. GDAL writes the files and reads none of them.
#include "Folders.h"
#include "Harness.h"
#include "Processes.h"
#include "images/Pictures.h"
#include "zelvar/data/ImageReader.h"
#include "zelvar/data/RDIDriverMngr.h"
#include "zelvar/data/reader/DriverModule.h"

#include <QtGui/QImageReader>

#include <gdal.h>

#include <cstdlib>
#include <tuple>

#include <fcntl.h>
#include <unistd.h>

namespace zelvar::bench {
namespace {

constexpr int kRounds = 7;

void WriteCopy(std::string const &from, char const *format, std::string const &to) {
    GDALDatasetH source = GDALOpen(from.c_str(), GA_ReadOnly);
    GDALClose(GDALCreateCopy(GDALGetDriverByName(format), to.c_str(), source, FALSE, nullptr, nullptr, nullptr));
    GDALClose(source);
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

/// Of what Qt reads.
void ReadWithQt(std::string const &path) {
    QImageReader reader(QString::fromStdString(path));
    reader.setAllocationLimit(0);
    reader.setScaledSize({1024, 1024});
    std::ignore = reader.read();
}

/// Pictures of 1024 pixels: ours within a running application, the others' with their start.
void BenchPreview(char const *name, std::string const &path, std::string const &out, std::optional<double> limit,
                  bool readsQt = false) {
    std::string const figure = std::string("images.preview.") + name;
    Preview(path); // whatever the first one has to load
    std::vector<double> ours;
    std::vector<double> ratios;
    std::vector<double> qt;
    std::vector<Alternative> others =
        TimesBeside(kRounds,
                    [&] {
                        ours.push_back(Ms([&] { Preview(path); }));
                        ratios.push_back(ours.back() / Ms([&] { ReadBytes(path); }));
                        if (readsQt)
                            qt.push_back(Ms([&] { ReadWithQt(path); }));
                    },
                    {{"vipsthumbnail", {"vipsthumbnail", path, "-s", "1024", "-o", out + ".ppm"}},
                     {"gdal_translate -r cubic",
                      {"gdal_translate", "-q", "-outsize", "1024", "0", "-r", "cubic", path, out + ".tif"}}});
    if (readsQt)
        others.push_back({"QImageReader, in the process", Median(qt)});
    Figure(figure, Median(ours), "ms",
           {.alternatives = others, .note = "through a reader; the others are whole processes"});
    Figure(figure + ".ratio", Median(ratios), "x", {.limit = limit, .note = "times a bare read of the file's bytes"});
}

Register const kImages("images", [] {
    GDALAllRegister();
    Folder const folder;
    UseReaderDrivers();
    RDIDriverMngr::Instance()->Drivers();
    WriteTiff(folder / "deflate.tif", 5700, GDT_UInt16, {"TILED=YES", "COMPRESS=DEFLATE"});
    BenchPreview("deflate_u16", folder / "deflate.tif", folder / "out", {});
    WriteCopy(folder / "deflate.tif", "PNG", folder / "deep.png");
    BenchPreview("png_u16", folder / "deep.png", folder / "out", {}, true);
    WriteTiff(folder / "plain.tif", 5790, GDT_Byte, {});
    BenchPreview("plain_u8", folder / "plain.tif", folder / "out", 4);
    WriteTiff(folder / "tiled.tif", 5790, GDT_Byte, {"TILED=YES"});
    BenchPreview("tiled_u8", folder / "tiled.tif", folder / "out", 4);
    EndReaders();
});

} // namespace
} // namespace zelvar::bench
