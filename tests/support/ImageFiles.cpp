#include "support/ImageFiles.h"

#include "support/Test.h"

#include <cpl_string.h>
#include <cpl_vsi.h>
#include <ogr_srs_api.h>

#include <filesystem>
#include <mutex>
#include <numeric>

namespace zelvar::test {

namespace {

struct CloseDataset {
    void operator()(void *dataset) const { GDALClose(dataset); }
};
using Dataset = std::unique_ptr<void, CloseDataset>;

GDALDriverH Driver(char const *name) {
    static std::once_flag once;
    std::call_once(once, [] { GDALAllRegister(); });
    return GDALGetDriverByName(name);
}

Dataset Create(char const *format, DString const &path, int width, int height, int channels, GDALDataType type,
               std::vector<char const *> options = {}) {
    options.push_back(nullptr);
    GDALDriverH driver = Driver(format);
    Dataset dataset(driver == nullptr ? nullptr
                                      : GDALCreate(driver, path.c_str(), width, height, channels, type,
                                                   const_cast<char **>(options.data())));
    EXPECT_NE(dataset, nullptr) << format << ": " << path;
    return dataset;
}

void Fill(GDALDatasetH dataset, ImageSpec const &spec) {
    GDALRasterBandH const first = GDALGetRasterBand(dataset, 1);
    if (spec.nodata) {
        EXPECT_EQ(GDALSetRasterNoDataValue(first, *spec.nodata), CE_None);
    }
    if (!spec.palette.empty()) {
        GDALColorTableH const table = GDALCreateColorTable(GPI_RGB);
        for (std::size_t i = 0; i < spec.palette.size(); ++i)
            GDALSetColorEntry(table, static_cast<int>(i), &spec.palette[i]);
        EXPECT_EQ(GDALSetRasterColorTable(first, table), CE_None);
        GDALDestroyColorTable(table);
    }
    std::vector<double> row(static_cast<std::size_t>(spec.width));
    for (int channel = 0; channel < spec.channels; ++channel)
        for (int y = 0; y < spec.height; ++y) {
            for (int x = 0; x < spec.width; ++x)
                row[static_cast<std::size_t>(x)] = spec.sample(channel, x, y);
            EXPECT_EQ(GDALRasterIO(GDALGetRasterBand(dataset, channel + 1), GF_Write, 0, y, spec.width, 1, row.data(),
                                   spec.width, 1, GDT_Float64, 0, 0),
                      CE_None);
        }
}

void Georeference(GDALDatasetH dataset) {
    std::array<double, 6> transform{0, 1, 0, 50, 0, -1};
    GDALSetGeoTransform(dataset, transform.data());
    OGRSpatialReferenceH system = OSRNewSpatialReference(nullptr);
    OSRImportFromEPSG(system, 4326);
    char *text = nullptr;
    OSRExportToWkt(system, &text);
    GDALSetProjection(dataset, text);
    CPLFree(text);
    OSRDestroySpatialReference(system);
}

void AddLayer(GDALDatasetH dataset, DString const &name, OGRwkbGeometryType geometry) {
    OGRLayerH layer = GDALDatasetCreateLayer(dataset, name.c_str(), nullptr, geometry, nullptr);
    ASSERT_NE(layer, nullptr);
    OGRFieldDefnH field = OGR_Fld_Create("value", OFTInteger);
    OGR_L_CreateField(layer, field, TRUE);
    OGR_Fld_Destroy(field);
    OGRFeatureH feature = OGR_F_Create(OGR_L_GetLayerDefn(layer));
    OGR_F_SetFieldInteger(feature, 0, 7);
    EXPECT_EQ(OGR_L_CreateFeature(layer, feature), OGRERR_NONE);
    OGR_F_Destroy(feature);
}

/// The values 0, 1, 2... of a variable over all of its dimensions.
void FillInOrder(GDALMDArrayH array, std::vector<std::size_t> const &counts) {
    std::size_t total = 1;
    for (std::size_t const count : counts)
        total *= count;
    std::vector<std::int32_t> samples(total);
    std::iota(samples.begin(), samples.end(), 0);
    std::vector<GUInt64> const start(counts.size(), 0);
    GDALExtendedDataTypeH type = GDALExtendedDataTypeCreate(GDT_Int32);
    EXPECT_TRUE(
        GDALMDArrayWrite(array, start.data(), counts.data(), nullptr, nullptr, type, samples.data(), nullptr, 0));
    GDALExtendedDataTypeRelease(type);
}

void AddText(GDALMDArrayH array, char const *name, char const *text) {
    GDALExtendedDataTypeH type = GDALExtendedDataTypeCreateString(0);
    GDALAttributeH attribute = GDALMDArrayCreateAttribute(array, name, 0, nullptr, type, nullptr);
    GDALExtendedDataTypeRelease(type);
    EXPECT_TRUE(GDALAttributeWriteString(attribute, text));
    GDALAttributeRelease(attribute);
}

GDALDimensionH AddDimension(GDALGroupH root, NetCdfDimension const &told, GDALExtendedDataTypeH type) {
    auto const length = static_cast<std::size_t>(told.length);
    GDALDimensionH dimension = GDALGroupCreateDimension(root, told.name, nullptr, nullptr, length, nullptr);
    if (!told.hasValues)
        return dimension;
    GDALMDArrayH values = GDALGroupCreateMDArray(root, told.name, 1, &dimension, type, nullptr);
    FillInOrder(values, {length});
    for (auto const &[name, text] : {std::pair("units", told.unit), std::pair("axis", told.axis)})
        if (*text != '\0')
            AddText(values, name, text);
    GDALMDArrayRelease(values);
    return dimension;
}

} // namespace

void WriteImage(DString const &path, ImageSpec const &spec, std::vector<int> const &overviews) {
    bool const copied = DString(spec.format) == "PNG" || DString(spec.format) == "JPEG";
    Dataset dataset = copied
                          ? Create("MEM", "", spec.width, spec.height, spec.channels, spec.type)
                          : Create(spec.format, path, spec.width, spec.height, spec.channels, spec.type, spec.options);
    ASSERT_NE(dataset, nullptr);
    Fill(dataset.get(), spec);
    if (copied)
        dataset.reset(
            GDALCreateCopy(Driver(spec.format), path.c_str(), dataset.get(), FALSE, nullptr, nullptr, nullptr));
    ASSERT_NE(dataset, nullptr);
    if (!overviews.empty()) {
        GDALFlushCache(dataset.get());
        EXPECT_EQ(GDALBuildOverviews(dataset.get(), "AVERAGE", static_cast<int>(overviews.size()), overviews.data(), 0,
                                     nullptr, nullptr, nullptr),
                  CE_None);
    }
}

void WritePages(DString const &path, int pages) {
    for (int page = 0; page < pages; ++page)
        WriteImage(path, {.options = {page == 0 ? "APPEND_SUBDATASET=NO" : "APPEND_SUBDATASET=YES"},
                          .sample = [page](int, int, int) { return 10 * (page + 1); }});
}

void WriteGeoPackage(DString const &path, int layers, int tables, int pictures) {
    for (int i = 1; i <= pictures; ++i) {
        DString const table = "RASTER_TABLE=picture " + std::to_string(i);
        char const *append = i == 1 ? "APPEND_SUBDATASET=NO" : "APPEND_SUBDATASET=YES";
        Dataset const dataset = Create("GPKG", path, 64, 64, 3, GDT_Byte, {table.c_str(), append});
        ASSERT_NE(dataset, nullptr);
        Georeference(dataset.get());
        Fill(dataset.get(), {.width = 64, .height = 64, .channels = 3});
    }
    if (layers + tables == 0)
        return;
    Dataset const dataset =
        pictures > 0 ? Dataset(GDALOpenEx(path.c_str(), GDAL_OF_VECTOR | GDAL_OF_UPDATE, nullptr, nullptr, nullptr))
                     : Create("GPKG", path, 0, 0, 0, GDT_Unknown);
    ASSERT_NE(dataset, nullptr);
    for (int i = 1; i <= layers; ++i)
        AddLayer(dataset.get(), "layer " + std::to_string(i), wkbPoint);
    for (int i = 1; i <= tables; ++i)
        AddLayer(dataset.get(), "table " + std::to_string(i), wkbNone);
}

void WriteLayers(DString const &path, char const *format, std::vector<DString> const &layers) {
    Dataset const dataset = Create(format, path, 0, 0, 0, GDT_Unknown);
    for (DString const &layer : layers)
        AddLayer(dataset.get(), layer, wkbPoint);
}

void WriteNetCdf(DString const &path, int variables) {
    // GDAL's multidimensional interface keeps the names of the variables.
    Driver("netCDF");
    GDALDatasetH dataset = GDALCreateMultiDimensional(Driver("netCDF"), path.c_str(), nullptr, nullptr);
    ASSERT_NE(dataset, nullptr);
    GDALGroupH root = GDALDatasetGetRootGroup(dataset);
    std::array<GDALDimensionH, 2> dimensions{GDALGroupCreateDimension(root, "y", nullptr, nullptr, 20, nullptr),
                                             GDALGroupCreateDimension(root, "x", nullptr, nullptr, 10, nullptr)};
    GDALExtendedDataTypeH type = GDALExtendedDataTypeCreate(GDT_Float32);
    for (int i = 1; i <= variables; ++i) {
        GDALMDArrayH array =
            GDALGroupCreateMDArray(root, ("var" + std::to_string(i)).c_str(), 2, dimensions.data(), type, nullptr);
        std::vector<float> samples(200, static_cast<float>(i));
        std::array<GUInt64, 2> const start{0, 0};
        std::array<std::size_t, 2> const count{20, 10};
        EXPECT_TRUE(
            GDALMDArrayWrite(array, start.data(), count.data(), nullptr, nullptr, type, samples.data(), nullptr, 0));
        GDALMDArrayRelease(array);
    }
    GDALExtendedDataTypeRelease(type);
    for (GDALDimensionH dimension : dimensions)
        GDALDimensionRelease(dimension);
    GDALGroupRelease(root);
    GDALClose(dataset);
}

void WriteGroups(DString const &path) {
    // GDAL knows the format by the ending when it writes, and by the bytes when it reads.
    DString const made = path + ".nc";
    GDALDatasetH dataset = GDALCreateMultiDimensional(Driver("netCDF"), made.c_str(), nullptr, nullptr);
    ASSERT_NE(dataset, nullptr);
    GDALExtendedDataTypeH type = GDALExtendedDataTypeCreate(GDT_Float32);
    auto const add = [type](GDALGroupH group, char const *name) {
        std::array<GDALDimensionH, 2> dimensions{
            GDALGroupCreateDimension(group, (DString("y") + name).c_str(), nullptr, nullptr, 20, nullptr),
            GDALGroupCreateDimension(group, (DString("x") + name).c_str(), nullptr, nullptr, 10, nullptr)};
        GDALMDArrayRelease(GDALGroupCreateMDArray(group, name, 2, dimensions.data(), type, nullptr));
        for (GDALDimensionH dimension : dimensions)
            GDALDimensionRelease(dimension);
    };
    GDALGroupH root = GDALDatasetGetRootGroup(dataset);
    add(root, "top");
    GDALGroupH outer = GDALGroupCreateGroup(root, "outer", nullptr);
    add(outer, "one");
    add(outer, "two");
    GDALGroupH inner = GDALGroupCreateGroup(outer, "inner", nullptr);
    add(inner, "deep");
    for (GDALGroupH group : {inner, outer, root})
        GDALGroupRelease(group);
    GDALExtendedDataTypeRelease(type);
    GDALClose(dataset);
    std::filesystem::rename(made, path);
}

void WriteNetCdfVariable(DString const &path, std::vector<NetCdfDimension> const &dimensions,
                         std::optional<double> nodata) {
    GDALDatasetH dataset = GDALCreateMultiDimensional(Driver("netCDF"), path.c_str(), nullptr, nullptr);
    ASSERT_NE(dataset, nullptr);
    GDALGroupH root = GDALDatasetGetRootGroup(dataset);
    GDALExtendedDataTypeH type = GDALExtendedDataTypeCreate(GDT_Int16);
    std::vector<GDALDimensionH> made;
    std::vector<std::size_t> counts;
    for (NetCdfDimension const &dimension : dimensions) {
        made.push_back(AddDimension(root, dimension, type));
        counts.push_back(static_cast<std::size_t>(dimension.length));
    }
    GDALMDArrayH array = GDALGroupCreateMDArray(root, "value", made.size(), made.data(), type, nullptr);
    ASSERT_NE(array, nullptr);
    if (nodata) {
        EXPECT_TRUE(GDALMDArraySetNoDataValueAsDouble(array, *nodata));
    }
    FillInOrder(array, counts);
    GDALMDArrayRelease(array);
    GDALExtendedDataTypeRelease(type);
    for (GDALDimensionH dimension : made)
        GDALDimensionRelease(dimension);
    GDALGroupRelease(root);
    GDALClose(dataset);
}

void WriteZip(DString const &path, std::vector<std::pair<DString, DString>> const &files) {
    Driver("GTiff");
    for (auto const &[name, from] : files) {
        DString const inside = DString("/vsizip/").append(path).append("/").append(name);
        VSILFILE *const file = VSIFOpenL(inside.c_str(), "wb");
        ASSERT_NE(file, nullptr) << name;
        std::string const bytes = ReadFile(from);
        VSIFWriteL(bytes.data(), 1, bytes.size(), file);
        VSIFCloseL(file);
    }
}

} // namespace zelvar::test
