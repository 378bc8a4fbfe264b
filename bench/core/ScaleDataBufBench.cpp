#include "Harness.h"
#include "zelvar/pixels/ScaleDataBuf.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <type_traits>
#include <vector>

namespace zelvar::bench {
namespace {

constexpr int kSide = 4472; // 20 million samples

template <class Sample>
void CompareWithPlainPass(char const *name, int type, char const *limit) {
    std::size_t const count = std::size_t{kSide} * kSide;
    std::mt19937 random(1);
    std::normal_distribution<double> values(110, 30);
    std::vector<Sample> source(count);
    for (Sample &sample : source)
        sample = static_cast<Sample>(std::min(std::max(values(random), 0.0), 255.0));

    // Both work in place; each gets its own buffer, filled anew outside the clock.
    std::vector<Sample> buffer(count);
    auto *bytes = reinterpret_cast<unsigned char *>(buffer.data());
    double volatile keep = 0;
    auto const refill = [&] { std::memcpy(buffer.data(), source.data(), count * sizeof(Sample)); };
    double scaleMs = 1e9;
    double plainMs = 1e9;
    for (int run = 0; run < 15; ++run) {
        refill();
        double const plain = BestMs(1, [&] {
            std::conditional_t<std::is_floating_point_v<Sample>, double, std::uint64_t> sum = 0;
            for (std::size_t i = 0; i < count; ++i) {
                sum += static_cast<decltype(sum)>(buffer[i]);
                bytes[i] = static_cast<unsigned char>(buffer[i]);
            }
            keep = keep + static_cast<double>(sum);
        });
        refill();
        double const scale = BestMs(1, [&] { ScaleDataBuf(type, bytes, kSide, kSide); });
        plainMs = std::min(plainMs, plain);
        scaleMs = std::min(scaleMs, scale);
    }
    Figure(std::string("scale_data_buf.") + name + ".plain_pass", plainMs, "ms", "the pass to compare with");
    Figure(std::string("scale_data_buf.") + name, scaleMs, "ms", "20 million samples");
    Figure(std::string("scale_data_buf.") + name + ".ratio", scaleMs / plainMs, "x", limit);
}

Register const kScaleDataBuf("scale_data_buf", [] {
    CompareWithPlainPass<std::uint8_t>("uint8", 1, "limit: 2.6 times the plain pass");
    CompareWithPlainPass<std::uint16_t>("uint16", 2, "limit: 2.6 times the plain pass");
    CompareWithPlainPass<std::int16_t>("int16", 4, "limit: 2.6 times the plain pass");
    CompareWithPlainPass<std::uint32_t>("uint32", 8, "limit: 2.3 times the plain pass");
    CompareWithPlainPass<std::int32_t>("int32", 16, "limit: 2.3 times the plain pass");
    CompareWithPlainPass<float>("float32", 32, "limit: 2.3 times the plain pass");
});

} // namespace
} // namespace zelvar::bench
