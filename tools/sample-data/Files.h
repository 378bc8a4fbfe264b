#pragma once

#include <gdal.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace sample {

struct CloseDataset {
    void operator()(void *dataset) const { GDALClose(dataset); }
};
using Dataset = std::unique_ptr<void, CloseDataset>;

/// What a sample is at a place of a channel.
using SampleAt = std::function<double(int channel, int x, int y)>;

/// Ends the program with a word on stderr: a sample folder is whole or not there.
[[noreturn]] void Fail(std::string const &what);

[[nodiscard]] Dataset Create(char const *format, std::string const &path, int width, int height, int channels,
                             GDALDataType type, std::vector<std::string> const &options);
void Fill(GDALDatasetH dataset, int width, int height, SampleAt const &sample);
/// Fills, builds overviews of these reductions, closes.
void Finish(Dataset dataset, int width, int height, SampleAt const &sample, std::vector<int> levels = {},
            char const *resampling = "AVERAGE");
/// Writes through a picture in memory: for formats that cannot be written piece by piece.
void WriteCopy(char const *format, std::string const &path, int width, int height, int channels, GDALDataType type,
               SampleAt const &sample, std::vector<std::string> const &options = {});
/// Degrees: the upper left corner and the size of a pixel.
void Georeference(GDALDatasetH dataset, double west, double north, double step);

void WriteText(std::string const &path, std::string const &text);
[[nodiscard]] std::string ReadBytes(std::string const &path);

} // namespace sample
