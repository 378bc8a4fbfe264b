#include "support/TableFiles.h"

#include <gdal.h>
#include <gdal_utils.h>
#include <gtest/gtest.h>
#include <ogr_api.h>

#include <array>

namespace zelvar::test {

void ConvertTable(std::string const &csv, std::string const &path, std::string const &format) {
    GDALAllRegister();
    std::array<char const *, 2> openOptions{"AUTODETECT_TYPE=YES", nullptr};
    GDALDatasetH source =
        GDALOpenEx(csv.c_str(), GDAL_OF_VECTOR, nullptr, csv.ends_with(".csv") ? openOptions.data() : nullptr, nullptr);
    ASSERT_NE(source, nullptr);
    std::array<std::string, 4> words{"-f", format, "-nln", "t"};
    std::array<char *, 5> arguments{words[0].data(), words[1].data(), words[2].data(), words[3].data(), nullptr};
    GDALVectorTranslateOptions *options = GDALVectorTranslateOptionsNew(arguments.data(), nullptr);
    GDALDatasetH target = GDALVectorTranslate(path.c_str(), nullptr, 1, &source, options, nullptr);
    EXPECT_NE(target, nullptr) << path;
    GDALClose(target);
    GDALVectorTranslateOptionsFree(options);
    GDALClose(source);
}

std::vector<double> NumbersOf(std::string const &path, std::string const &column) {
    GDALAllRegister();
    std::vector<double> numbers;
    GDALDatasetH source = GDALOpenEx(path.c_str(), GDAL_OF_VECTOR, nullptr, nullptr, nullptr);
    if (source == nullptr)
        return numbers;
    OGRLayerH layer = GDALDatasetGetLayer(source, 0);
    int const field = OGR_L_FindFieldIndex(layer, column.c_str(), 1);
    while (OGRFeatureH feature = OGR_L_GetNextFeature(layer)) {
        numbers.push_back(OGR_F_GetFieldAsDouble(feature, field));
        OGR_F_Destroy(feature);
    }
    GDALClose(source);
    return numbers;
}

} // namespace zelvar::test
