#pragma once

#include <gdal.h>

#include <string>
#include <vector>

namespace zelvar::bench {

/// Writes waves with a little noise in three channels, pixel by pixel. `options` are those of GDAL's TIFF driver.
void WriteTiff(std::string const &path, int side, GDALDataType type, std::vector<char const *> options);
/// Adds levels down to a sixteenth.
void WritePyramid(std::string const &path);

} // namespace zelvar::bench
