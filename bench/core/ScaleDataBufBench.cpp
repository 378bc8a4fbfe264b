#include "Harness.h"
#include "zelvar/pixels/ScaleDataBuf.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

namespace zelvar::bench {
namespace {

constexpr int kSide = 4472; // 20 million samples

template <class Sample>
void CompareWithCopy(char const *name, int type, double limit) {
    std::size_t const count = std::size_t{kSide} * kSide;
    std::mt19937 random(1);
    std::normal_distribution<double> values(110, 30);
    std::vector<Sample> source(count);
    for (Sample &sample : source)
        sample = static_cast<Sample>(std::min(std::max(values(random), 0.0), 255.0));

    // The reduction works in place: its buffer is filled anew outside the clock.
    std::vector<Sample> buffer(count);
    auto *bytes = reinterpret_cast<unsigned char *>(buffer.data());
    // Samples are read and bytes written: a copy of half as much reads and writes as many.
    std::size_t const copied = count * (sizeof(Sample) + 1) / 2;
    std::vector<unsigned char> copy(copied, 1);
    double scaleMs = 1e9;
    double copyMs = 1e9;
    for (int run = 0; run < 15; ++run) {
        std::memcpy(buffer.data(), source.data(), count * sizeof(Sample));
        copyMs = std::min(copyMs, BestMs(1, [&] { std::memcpy(copy.data(), source.data(), copied); }));
        scaleMs = std::min(scaleMs, BestMs(1, [&] { ScaleDataBuf(type, bytes, kSide, kSide); }));
    }
    Figure(std::string("scale_data_buf.") + name, scaleMs, "ms",
           {.alternatives = {{"a copy that moves as many bytes", copyMs}}, .note = "20 million samples"});
    Figure(std::string("scale_data_buf.") + name + ".ratio", scaleMs / copyMs, "x", {.limit = limit, .note = "copies"});
}

Register const kScaleDataBuf("scale_data_buf", [] {
    CompareWithCopy<std::uint8_t>("uint8", 1, 2);
    CompareWithCopy<std::uint16_t>("uint16", 2, 2);
    CompareWithCopy<std::int16_t>("int16", 4, 2);
    CompareWithCopy<std::uint32_t>("uint32", 8, 1.3);
    CompareWithCopy<std::int32_t>("int32", 16, 1.3);
    CompareWithCopy<float>("float32", 32, 1.3);
});

} // namespace
} // namespace zelvar::bench
