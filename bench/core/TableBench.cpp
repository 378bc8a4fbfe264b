// Rows of tables in this process, beside a loop over GDAL's own features.
#include "Harness.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/DriverProvider.h"
#include "zelvar/data/RDIDriverMngr.h"
#include "zelvar/data/gdal/GdalDrivers.h"
#include "zelvar/data/tables/ADIFile.h"

#include <gdal.h>
#include <ogr_api.h>

#include <cstdlib>
#include <fstream>

#include <unistd.h>

namespace zelvar::bench {
namespace {

constexpr int kRows = 300'000;

int ReadByUs(std::string const &path) {
    ADIFile table(DFile(path), "", tdFormatAccess_Read, nullptr, "");
    int rows = 0;
    std::size_t bytes = 0;
    while (table.SetRow(rows)) {
        for (int col = 0; col < table.GetNumCols(); ++col)
            bytes += table.GetText(col).size();
        ++rows;
    }
    return bytes == 0 ? 0 : rows;
}

int ReadByGdal(std::string const &path) {
    GDALDatasetH source = GDALOpenEx(path.c_str(), GDAL_OF_VECTOR, nullptr, nullptr, nullptr);
    OGRLayerH layer = GDALDatasetGetLayer(source, 0);
    int const columns = OGR_FD_GetFieldCount(OGR_L_GetLayerDefn(layer));
    int rows = 0;
    std::size_t bytes = 0;
    while (OGRFeatureH feature = OGR_L_GetNextFeature(layer)) {
        for (int col = 0; col < columns; ++col)
            bytes += std::string(OGR_F_GetFieldAsString(feature, col)).size();
        OGR_F_Destroy(feature);
        ++rows;
    }
    GDALClose(source);
    return bytes == 0 ? 0 : rows;
}

void Require(int rows) {
    if (rows != kRows)
        std::abort();
}

Register const kTables("table_rows", [] {
    std::string folder = "/tmp/zelvar-bench-XXXXXX";
    if (mkdtemp(folder.data()) == nullptr)
        std::abort();
    BDIDrvrMngr::Instance()->Reset();
    RDIDriverMngr::Instance()->Reset();
    SetDriverProvider(&RegisterGdalDrivers);
    GDALAllRegister();
    for (char const *format : {"CSV", "DBF"}) {
        std::string const path = folder + "/a." + (std::string(format) == "CSV" ? "csv" : "dbf");
        ADIFile table(DFile(path), format, tdFormatAccess_Write, nullptr, "");
        table.AddCol("id", ADICol_Int);
        table.AddCol("name", ADICol_String);
        table.AddCol("value", ADICol_Double);
        for (int row = 0; row < kRows; ++row) {
            table.AddRow();
            table.WriteInt(row);
            table.WriteString("name");
            table.WriteDouble(row * 0.37);
        }
        if (!table.Finish())
            std::abort();
        Pair const pair = Compare(
            5, [&] { Require(ReadByUs(path)); }, [&] { Require(ReadByGdal(path)); });
        Figure(std::string("table_rows.") + format, kRows / pair.firstMs, "rows/ms", "all cells of 3 columns");
        Figure(std::string("table_rows.") + format + ".gdal", kRows / pair.secondMs, "rows/ms", "a loop over features");
        Figure(std::string("table_rows.") + format + ".ratio", pair.ratio, "x", "limit: 1.3 times as long");
        unlink(path.c_str());
    }
    unlink((folder + "/a.cpg").c_str());
    rmdir(folder.c_str());
});

} // namespace
} // namespace zelvar::bench
