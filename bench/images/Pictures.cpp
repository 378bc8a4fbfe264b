#include "images/Pictures.h"

#include <cmath>
#include <cstdlib>
#include <random>

namespace zelvar::bench {

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

void WritePyramid(std::string const &path) {
    GDALDatasetH dataset = GDALOpen(path.c_str(), GA_Update);
    int const levels[] = {2, 4, 8, 16};
    if (GDALBuildOverviews(dataset, "AVERAGE", 4, const_cast<int *>(levels), 0, nullptr, nullptr, nullptr) != CE_None)
        std::abort();
    GDALClose(dataset);
}

} // namespace zelvar::bench
