#include "Harness.h"
#include "zelvar/pixels/CubicResize.h"

#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace zelvar::bench {
namespace {

void BenchResize(int from, int to) {
    std::mt19937 random(1);
    DCanvas source;
    source.SetSize(from, from);
    for (int y = 0; y < from; ++y)
        for (int x = 0; x < 3 * from; ++x)
            source.Row(y)[x] = static_cast<std::uint8_t>(random());
    DCanvas target;
    // Nothing is faster than to move the bytes of the one picture and to fill the other.
    auto const bytesOf = [](int side) { return static_cast<std::size_t>(side) * static_cast<std::size_t>(side) * 3; };
    std::vector<std::uint8_t> copy(bytesOf(from));
    std::vector<std::uint8_t> filled(bytesOf(to));
    Pair const pair = Compare(
        31, [&] { ResizeCubic(source, to, to, target); },
        [&] {
            std::memcpy(copy.data(), source.Row(0), copy.size());
            std::memset(filled.data(), 1, filled.size());
        });
    std::string const name = "cubic_resize." + std::to_string(from) + "_to_" + std::to_string(to);
    Figure(name, pair.firstMs, "ms",
           {.alternatives = {{"the one copied, the other filled", pair.secondMs}}, .note = "three channels"});
    Figure(name + ".ratio", pair.ratio, "x", {.limit = from > to ? 5 : 12, .note = "copies"});
}

Register const kCubicResize("cubic_resize", [] {
    BenchResize(1024, 400);
    BenchResize(400, 1024);
});

} // namespace
} // namespace zelvar::bench
