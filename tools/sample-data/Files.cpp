#include "Files.h"

#include <cpl_string.h>
#include <ogr_srs_api.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace sample {

namespace {

/// Options as GDAL takes them.
class OptionList {
public:
    explicit OptionList(std::vector<std::string> const &options) {
        for (std::string const &option : options)
            m_list = CSLAddString(m_list, option.c_str());
    }
    ~OptionList() { CSLDestroy(m_list); }
    OptionList(OptionList const &) = delete;
    OptionList &operator=(OptionList const &) = delete;
    [[nodiscard]] char **Get() const { return m_list; }

private:
    char **m_list = nullptr;
};

} // namespace

void Fail(std::string const &what) {
    std::fprintf(stderr, "sample-data: %s: %s\n", what.c_str(), CPLGetLastErrorMsg());
    std::exit(3);
}

Dataset Create(char const *format, std::string const &path, int width, int height, int channels, GDALDataType type,
               std::vector<std::string> const &options) {
    GDALDriverH driver = GDALGetDriverByName(format);
    OptionList const list(options);
    Dataset dataset(driver == nullptr ? nullptr
                                      : GDALCreate(driver, path.c_str(), width, height, channels, type, list.Get()));
    if (dataset == nullptr)
        Fail(path);
    return dataset;
}

void Fill(GDALDatasetH dataset, int width, int height, SampleAt const &sample) {
    std::vector<double> row(static_cast<std::size_t>(width));
    for (int channel = 0; channel < GDALGetRasterCount(dataset); ++channel)
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x)
                row[static_cast<std::size_t>(x)] = sample(channel, x, y);
            if (GDALRasterIO(GDALGetRasterBand(dataset, channel + 1), GF_Write, 0, y, width, 1, row.data(), width, 1,
                             GDT_Float64, 0, 0) != CE_None)
                Fail("writing samples");
        }
}

void Finish(Dataset dataset, int width, int height, SampleAt const &sample, std::vector<int> levels,
            char const *resampling) {
    Fill(dataset.get(), width, height, sample);
    if (!levels.empty() && GDALBuildOverviews(dataset.get(), resampling, static_cast<int>(levels.size()), levels.data(),
                                              0, nullptr, nullptr, nullptr) != CE_None)
        Fail("building overviews");
}

void WriteCopy(char const *format, std::string const &path, int width, int height, int channels, GDALDataType type,
               SampleAt const &sample, std::vector<std::string> const &options) {
    Dataset const memory = Create("MEM", "", width, height, channels, type, {});
    Fill(memory.get(), width, height, sample);
    OptionList const list(options);
    Dataset const copy(
        GDALCreateCopy(GDALGetDriverByName(format), path.c_str(), memory.get(), FALSE, list.Get(), nullptr, nullptr));
    if (copy == nullptr)
        Fail(path);
}

void Georeference(GDALDatasetH dataset, double west, double north, double step) {
    std::array<double, 6> transform{west, step, 0, north, 0, -step};
    GDALSetGeoTransform(dataset, transform.data());
    OGRSpatialReferenceH system = OSRNewSpatialReference(nullptr);
    OSRImportFromEPSG(system, 4326);
    char *text = nullptr;
    OSRExportToWkt(system, &text);
    GDALSetProjection(dataset, text);
    CPLFree(text);
    OSRDestroySpatialReference(system);
}

void WriteText(std::string const &path, std::string const &text) {
    std::ofstream file(path, std::ios::binary);
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
    if (!file.flush())
        Fail(path);
}

std::string ReadBytes(std::string const &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace sample
