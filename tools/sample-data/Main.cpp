// Writes a folder of varied images, containers and tables, with connection definitions and templates beside it, to try
// the dialogs on. The same bytes each time.
//
//   sample-data FOLDER      makes FOLDER/images, FOLDER/definitions, FOLDER/templates
#include "Files.h"
#include "Patterns.h"

#include <cpl_conv.h>
#include <cpl_error.h>
#include <cpl_string.h>
#include <cpl_vsi.h>
#include <ogr_api.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <utility>

namespace sample {
namespace {

namespace fs = std::filesystem;

SampleAt PixelsOf(std::vector<Color> pixels, int width) {
    return [pixels = std::move(pixels), width](int channel, int x, int y) -> double {
        Color const &color =
            pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)];
        return channel == 0 ? color.red : channel == 1 ? color.green : color.blue;
    };
}

SampleAt CellsOf(int width, int height, int cells, unsigned seed) {
    return [samples = MakeCells(width, height, cells, seed), width](int, int x, int y) -> double {
        return samples[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)];
    };
}

void WritePictures(std::string const &folder) {
    Finish(Create("GTiff", folder + "/aerial view.tif", 900, 700, 3, GDT_Byte,
                  {"TILED=YES", "COMPRESS=JPEG", "PHOTOMETRIC=YCBCR", "JPEG_QUALITY=85"}),
           900, 700, PixelsOf(MakeAerialView(900, 700, 3), 900), {2, 4});
    Finish(Create("GTiff", folder + "/cells 16 bit.tif", 720, 540, 1, GDT_UInt16, {"COMPRESS=DEFLATE", "PREDICTOR=2"}),
           720, 540, CellsOf(720, 540, 90, 5));
    WriteCopy("JPEG", folder + "/evening.jpg", 1024, 640, 3, GDT_Byte, PixelsOf(MakeEvening(1024, 640, 8), 1024));
    fs::create_directories(folder + "/Köln & Umgebung");
    WriteCopy("JPEG", folder + "/Köln & Umgebung/Brücke (1).jpg", 640, 480, 3, GDT_Byte,
              PixelsOf(MakeEvening(640, 480, 21), 640));
    WriteCopy("PNG", folder + "/Köln & Umgebung/солнце 日.png", 320, 240, 3, GDT_Byte,
              PixelsOf(MakeEvening(320, 240, 30), 320));
    fs::create_directories(folder + "/slices");
    for (int slice = 1; slice <= 12; ++slice) {
        Terrain const volume(40, 60, 3);
        std::array<char, 32> name{};
        std::snprintf(name.data(), name.size(), "/slices/slice_%d.png", slice);
        WriteCopy("PNG", folder + name.data(), 160, 160, 1, GDT_Byte, [&](int, int x, int y) {
            double const fromMiddle = std::hypot(x - 80.0, y - 80.0) / (76 - std::abs(slice - 6.5) * 5);
            return fromMiddle > 1 ? 0.0 : std::floor(40 + 200 * volume.At(x + 7.0 * slice, y));
        });
    }
}

void WriteMaps(std::string const &folder) {
    Terrain const hills(7, 170, 6);
    {
        Dataset map = Create("GTiff", folder + "/elevation.tif", 600, 500, 1, GDT_Float32,
                             {"COMPRESS=DEFLATE", "PREDICTOR=3", "TILED=YES"});
        Georeference(map.get(), 7.0, 47.0, 0.001);
        GDALSetRasterNoDataValue(GDALGetRasterBand(map.get(), 1), -9999);
        Finish(std::move(map), 600, 500,
               [&](int, int x, int y) {
                   bool const outside = std::hypot((x - 300) / 330.0, (y - 250) / 270.0) > 1;
                   return outside ? -9999.0 : std::floor(4 * 2400 * hills.At(x, y)) / 4; // steps of 25 cm
               },
               {2, 4});
    }
    Dataset cover = Create("GTiff", folder + "/land cover.tif", 6000, 6000, 1, GDT_Byte,
                           {"COMPRESS=LZW", "TILED=YES", "BLOCKXSIZE=512", "BLOCKYSIZE=512", "PHOTOMETRIC=PALETTE"});
    GDALColorTableH table = GDALCreateColorTable(GPI_RGB);
    for (int i = 0; i < 6; ++i) {
        Color const &color = kLandCoverColors[i];
        GDALColorEntry const entry{color.red, color.green, color.blue, 255};
        GDALSetColorEntry(table, i, &entry);
    }
    GDALSetRasterColorTable(GDALGetRasterBand(cover.get(), 1), table);
    GDALDestroyColorTable(table);
    Georeference(cover.get(), 7.0, 47.0, 0.0001);
    // Each class is a patch of 15 * 15 pixels: a map of that size from a smaller one.
    std::vector<std::uint8_t> small(std::size_t{400} * 400);
    for (std::size_t i = 0; i < small.size(); ++i) {
        std::size_t const row = i / 400;
        small[i] = LandCoverOf(hills.At(static_cast<double>(i % 400) * 1.5, static_cast<double>(row) * 1.25));
    }
    Finish(
        std::move(cover), 6000, 6000,
        [&](int, int x, int y) {
            return small[static_cast<std::size_t>(y / 15) * 400 + static_cast<std::size_t>(x / 15)];
        },
        {2, 4, 8, 16}, "NEAREST");
}

void WriteContainers(std::string const &folder) {
    for (int page = 0; page < 5; ++page)
        Finish(Create("GTiff", folder + "/time series.tif", 300, 240, 1, GDT_UInt16,
                      {"COMPRESS=DEFLATE", page == 0 ? "APPEND_SUBDATASET=NO" : "APPEND_SUBDATASET=YES"}),
               300, 240, CellsOf(300, 240, 10 + 6 * page, 60));

    Terrain const sea(12, 50, 4);
    GDALDatasetH ocean =
        GDALCreateMultiDimensional(GDALGetDriverByName("netCDF"), (folder + "/ocean.nc").c_str(), nullptr, nullptr);
    if (ocean == nullptr)
        Fail("ocean.nc");
    GDALGroupH root = GDALDatasetGetRootGroup(ocean);
    std::array<GDALDimensionH, 2> axes{GDALGroupCreateDimension(root, "y", nullptr, nullptr, 120, nullptr),
                                       GDALGroupCreateDimension(root, "x", nullptr, nullptr, 180, nullptr)};
    GDALExtendedDataTypeH type = GDALExtendedDataTypeCreate(GDT_Float32);
    constexpr std::pair<char const *, double> kVariables[] = {{"temperature", 24}, {"salinity", 38}, {"depth", 4200}};
    for (auto const &[name, scale] : kVariables) {
        GDALMDArrayH array = GDALGroupCreateMDArray(root, name, axes.size(), axes.data(), type, nullptr);
        std::vector<float> samples;
        for (int y = 0; y < 120; ++y)
            for (int x = 0; x < 180; ++x)
                samples.push_back(static_cast<float>(scale * sea.At(x + scale, y)));
        std::array<GUInt64, 2> const start{0, 0};
        std::array<std::size_t, 2> const count{120, 180};
        if (array == nullptr ||
            GDALMDArrayWrite(array, start.data(), count.data(), nullptr, nullptr, type, samples.data(), samples.data(),
                             samples.size() * sizeof(float)) == FALSE)
            Fail("ocean.nc");
        GDALMDArrayRelease(array);
    }
    GDALExtendedDataTypeRelease(type);
    for (GDALDimensionH axis : axes)
        GDALDimensionRelease(axis);
    GDALGroupRelease(root);
    GDALClose(ocean);
}

struct Station {
    char const *name;
    double east;
    double north;
    int height; ///< metres
};
constexpr Station kStations[] = {{"Nordhang", 7.12, 46.93, 1840},
                                 {"Seeblick", 7.22, 46.81, 612},
                                 {"Alte Mühle", 7.31, 46.88, 735},
                                 {"Passhöhe", 7.41, 46.74, 2104},
                                 {"Île du Lac", 7.18, 46.70, 604}};

/// A layer of the stations; with `wkbNone` a table.
void AddStations(GDALDatasetH dataset, char const *name, OGRwkbGeometryType geometry) {
    OGRLayerH layer = GDALDatasetCreateLayer(dataset, name, nullptr, geometry, nullptr);
    if (layer == nullptr)
        Fail(name);
    constexpr std::pair<char const *, OGRFieldType> kFields[] = {{"name", OFTString}, {"height", OFTInteger}};
    for (auto const &[field, type] : kFields) {
        OGRFieldDefnH definition = OGR_Fld_Create(field, type);
        OGR_L_CreateField(layer, definition, TRUE);
        OGR_Fld_Destroy(definition);
    }
    for (Station const &station : kStations) {
        OGRFeatureH feature = OGR_F_Create(OGR_L_GetLayerDefn(layer));
        OGR_F_SetFieldString(feature, 0, station.name);
        OGR_F_SetFieldInteger(feature, 1, station.height);
        if (geometry != wkbNone) {
            OGRGeometryH point = OGR_G_CreateGeometry(wkbPoint);
            OGR_G_SetPoint_2D(point, 0, station.east, station.north);
            OGR_F_SetGeometryDirectly(feature, point);
        }
        if (OGR_L_CreateFeature(layer, feature) != OGRERR_NONE)
            Fail(name);
        OGR_F_Destroy(feature);
    }
}

void WriteDatabase(std::string const &folder) {
    std::string const path = folder + "/region.gpkg";
    constexpr std::pair<char const *, unsigned> kPictures[] = {{"summer", 3}, {"autumn", 14}};
    for (auto const &[name, seed] : kPictures) {
        Dataset picture = Create("GPKG", path, 256, 256, 3, GDT_Byte,
                                 {std::string("RASTER_TABLE=") + name, "TILE_FORMAT=JPEG",
                                  seed == 3 ? "APPEND_SUBDATASET=NO" : "APPEND_SUBDATASET=YES"});
        Georeference(picture.get(), 7.0, 47.0, 0.002);
        Finish(std::move(picture), 256, 256, PixelsOf(MakeAerialView(256, 256, seed), 256));
    }
    Dataset const database(GDALOpenEx(path.c_str(), GDAL_OF_VECTOR | GDAL_OF_UPDATE, nullptr, nullptr, nullptr));
    if (database == nullptr)
        Fail(path);
    AddStations(database.get(), "stations", wkbPoint);
    AddStations(database.get(), "heights", wkbNone);
}

void WriteVectors(std::string const &folder) {
    fs::create_directories(folder + "/vectors");
    constexpr std::pair<char const *, char const *> kFiles[] = {{"ESRI Shapefile", "/vectors/stations.shp"},
                                                                {"GeoJSON", "/vectors/stations.geojson"},
                                                                {"CSV", "/vectors/heights.csv"}};
    for (auto const &[format, name] : kFiles) {
        Dataset const file = Create(format, folder + name, 0, 0, 0, GDT_Unknown, {});
        AddStations(file.get(), "stations", std::string(format) == "CSV" ? wkbNone : wkbPoint);
    }
}

void WriteArchive(std::string const &folder) {
    constexpr std::pair<char const *, char const *> kMembers[] = {{"read me.txt", nullptr},
                                                                  {"evening.jpg", "/evening.jpg"},
                                                                  {"maps/elevation.tif", "/elevation.tif"},
                                                                  {"slices/slice_6.png", "/slices/slice_6.png"}};
    for (auto const &[name, from] : kMembers) {
        std::string const bytes = from == nullptr ? "Pictures to try the dialogs on.\n" : ReadBytes(folder + from);
        VSILFILE *file = VSIFOpenL(("/vsizip/" + folder + "/archive.zip/" + name).c_str(), "wb");
        if (file == nullptr || VSIFWriteL(bytes.data(), 1, bytes.size(), file) != bytes.size())
            Fail("archive.zip");
        VSIFCloseL(file);
    }
    std::string const whole = ReadBytes(folder + "/cells 16 bit.tif");
    WriteText(folder + "/damaged.tif", whole.substr(0, whole.size() / 3));
}

std::string EscapedXml(std::string const &text) {
    char *escaped = CPLEscapeString(text.c_str(), static_cast<int>(text.size()), CPLES_XML);
    std::string result = escaped;
    CPLFree(escaped);
    return result;
}

void WriteDefinitions(std::string const &folder, std::string const &images) {
    std::string const place = EscapedXml(images);
    constexpr char const *kIcons =
        "    <Icons>\n      <Icon type=\"DataSource\" path=\"source.svg\"/>\n      <Icon "
        "type=\"Folder\" path=\"folder.svg\"/>\n      <Icon type=\"Image\" path=\"image.svg\"/>\n    </Icons>\n";
    auto const source = [&](char const *name, char const *url, std::string const &parameters, char const *driver,
                            char const *raster) {
        return std::string("  <DataSource name=\"") + name + "\" url=\"" + url + "\">\n    <Parameters>" + parameters +
               "</Parameters>\n    <BDIDriver id=\"" + driver + "\"/>\n" +
               (*raster == '\0' ? std::string() : std::string("    <RDIDriver id=\"") + raster + "\"/>\n") + kIcons +
               "  </DataSource>\n";
    };
    WriteText(
        folder + "/connections.xml",
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<DataSources>\n" +
            source("Sample images", "${folder}", "folder=" + place, "Directory", "") +
            source("Region database", "${folder}/${file}", "folder=" + place + ";file=region.gpkg", "GPKG", "GPKG") +
            source("Archive", "${folder}/${file}", "folder=" + place + ";file=archive.zip", "ZIP", "") +
            "  <DataSource name=\"Web server\" url=\"http://${host}:${port}/\" visible=\"false\">\n"
            "    <Parameters>host=localhost;port=8000</Parameters>\n    <BDIDriver id=\"WebDirectory\"/>\n  "
            "</DataSource>\n"
            "</DataSources>\n");
}

void WriteTemplates(std::string const &folder) {
    constexpr char const *kSvg =
        R"(<svg xmlns="http://www.w3.org/2000/svg" width="16" height="16" viewBox="0 0 16 16">)";
    WriteText(folder + "/source.svg", std::string(kSvg) + "<ellipse cx=\"8\" cy=\"3.5\" rx=\"6\" ry=\"2.5\" "
                                                          "fill=\"#9cc3e6\" stroke=\"#2f5d87\"/><path d=\"M2 3.5v9c0 "
                                                          "1.4 2.7 2.5 6 2.5s6-1.1 6-2.5v-9c0 1.4-2.7 2.5-6 2.5S2 4.9 "
                                                          "2 3.5z\" fill=\"#6ea3d2\" stroke=\"#2f5d87\"/></svg>\n");
    WriteText(folder + "/folder.svg", std::string(kSvg) + "<path d=\"M1.5 3.5h5l1.5 2h6.5v8h-13z\" fill=\"#f2c94c\" "
                                                          "stroke=\"#a97d12\" stroke-linejoin=\"round\"/></svg>\n");
    WriteText(
        folder + "/image.svg",
        std::string(kSvg) +
            "<rect x=\"1.5\" y=\"2.5\" width=\"13\" height=\"11\" fill=\"#dff0fb\" stroke=\"#44657f\"/><circle "
            "cx=\"11\" "
            "cy=\"5.7\" r=\"1.4\" fill=\"#f2b33d\"/><path d=\"M2 13l4-6 3 4 2-2 3 4z\" fill=\"#5f9b57\"/></svg>\n");
    WriteText(folder + "/import-options.xml", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<DataSourceExtras>\n  "
                                              "<DataSourceOptions datasource=\"\" driver=\"GTiff\" "
                                              "template=\"geotiff-options.html\"/>\n</DataSourceExtras>\n");
    WriteText(folder + "/geotiff-options.html", R"(<!DOCTYPE html>
<html lang="en">
<head><meta charset="utf-8"><title>Import of GeoTIFF</title></head>
<body>
<p>The level of the pyramid that is imported. Coarser levels are smaller and quicker.</p>
<table>
<tr><td>Level</td><td><select name="OVERVIEW_LEVEL">
<option value="">Full size</option>
<option value="0">First reduction</option>
<option value="1">Second reduction</option>
</select></td></tr>
<tr><td>Threads</td><td><input type="text" name="NUM_THREADS" value="1"></td></tr>
</table>
<p><input type="button" id="Apply" value="Apply"></p>
</body>
</html>
)");
}

void WriteAll(std::string const &folder) {
    // Nothing in the files may tell when they were made.
    CPLSetConfigOption("OGR_CURRENT_DATE", "2024-01-01T00:00:00.000Z");
    CPLSetConfigOption("GDAL_PAM_ENABLED", "NO");
    CPLSetConfigOption("DBF_DATE_LAST_UPDATE", "2024-01-01");
    GDALAllRegister();
    for (char const *part : {"images", "definitions", "templates"}) {
        fs::remove_all(fs::path(folder) / part);
        fs::create_directories(fs::path(folder) / part);
    }
    std::string const images = fs::canonical(fs::path(folder) / "images").string();
    WritePictures(images);
    WriteMaps(images);
    WriteContainers(images);
    WriteDatabase(images);
    WriteVectors(images);
    WriteArchive(images);
    WriteDefinitions(folder + "/definitions", images);
    WriteTemplates(folder + "/templates");
}

} // namespace
} // namespace sample

int main(int argc, char **argv) {
    if (argc != 2) {
        std::fputs("usage: sample-data FOLDER\n", stderr);
        return 2;
    }
    try {
        sample::WriteAll(argv[1]);
    } catch (std::exception const &failure) {
        std::fprintf(stderr, "sample-data: %s\n", failure.what());
        return 3;
    }
    return 0;
}
