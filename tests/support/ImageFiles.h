#pragma once

#include "support/Test.h"
#include "zelvar/base/DString.h"

#include <gdal.h>
#include <ogr_api.h>

namespace zelvar::test {

/// An image as a test writes it down for a real file.
struct ImageSpec {
    int width = 64;
    int height = 48;
    int channels = 1;
    GDALDataType type = GDT_Byte;
    char const *format = "GTiff";
    std::vector<char const *> options = {}; ///< of the format, as "TILED=YES"
    std::function<double(int channel, int x, int y)> sample = [](int channel, int x, int y) {
        return (x + 2 * y + 50 * channel) % 251;
    };
    std::optional<double> nodata = {};        ///< of the first channel
    std::vector<GDALColorEntry> palette = {}; ///< as this
};

/// Writes the image at `path`, with overviews of these reductions inside the file. Fails the test if GDAL cannot.
void WriteImage(DString const &path, ImageSpec const &spec = {}, std::vector<int> const &overviews = {});
/// A TIFF of that many pages; page `i` has the constant value 10 * (i + 1).
void WritePages(DString const &path, int pages);
/// A database with that many layers of points and tables without geometry, named "layer 1" ... and "table 1" ...; with
/// `pictures` raster tables "picture 1" ... beside them.
void WriteGeoPackage(DString const &path, int layers, int tables, int pictures);
/// A data set of that format with layers of these names, one point in each.
void WriteLayers(DString const &path, char const *format, std::vector<DString> const &layers);
/// A netCDF file with that many variables "var1" ... of 20 * 10 samples.
void WriteNetCdf(DString const &path, int variables);
/// The same format with variables "top", "outer/one", "outer/two" and "outer/inner/deep", in groups of these names. It
/// is an HDF5 file as well.
void WriteGroups(DString const &path);
/// A dimension of a netCDF variable.
struct NetCdfDimension {
    char const *name = "";
    int length = 1;
    char const *unit = ""; ///< an attribute of its values; none if empty
    char const *axis = ""; ///< the same
    bool hasValues = true; ///< 0, 1, 2...
};
/// A netCDF file with one variable "value" of 16-bit samples over these dimensions, the outermost first: 0, 1, 2... in
/// the order of the file. With `nodata` that value means "no data".
void WriteNetCdfVariable(DString const &path, std::vector<NetCdfDimension> const &dimensions,
                         std::optional<double> nodata = {});
/// An archive of files: names inside and the files on disk that they are copied from.
void WriteZip(DString const &path, std::vector<std::pair<DString, DString>> const &files);

} // namespace zelvar::test
