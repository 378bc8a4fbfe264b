#pragma once

#include "zelvar/pixels/InstructionSet.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace zelvar::scale {

/// What one pass over the samples finds. Zeros do not enter the sums.
struct Statistics {
    double min = 1e32;
    double max = -1e32;
    double sum = 0;
    double sumSq = 0;
    double zeros = 0; ///< their number
};

/// The range that is spread over the bytes. `scale` is 255 / (`max` - `min`).
struct Range {
    double min = 0;
    double max = 0;
    double scale = 0;

    [[nodiscard]] std::uint8_t ByteOf(double v) const {
        if (v > max)
            return 255;
        return v >= min ? static_cast<std::uint8_t>((v - min) * scale) : std::uint8_t{0}; // NaN is not >= either
    }
};

using ByteTable = std::array<std::uint8_t, 256>;

/// The two passes for samples of one type. `map` reads sample i before it writes byte i, and bytes never stand behind
/// the samples still to read, so both may share a buffer.
template <class Sample>
struct Kernel {
    Statistics (*gather)(Sample const *samples, std::size_t count) = nullptr;
    void (*map)(Sample const *samples, std::uint8_t *bytes, std::size_t count, Range const &range) = nullptr;
};

/// The fastest pair that this machine's processor runs.
template <class Sample>
[[nodiscard]] Kernel<Sample> KernelFor();

template <class Sample>
[[nodiscard]] Kernel<Sample> KernelFor(Isa isa);

// One file an instruction set. Only those that `IsSupported` may be called.
template <class Sample>
[[nodiscard]] Kernel<Sample> Avx2Kernel();
template <class Sample>
[[nodiscard]] Kernel<Sample> Avx512Kernel();

/// Adds the samples behind the last full vector.
template <class Sample>
inline void GatherTail(Sample const *samples, std::size_t count, Statistics &found) {
    for (std::size_t i = 0; i < count; ++i) {
        auto const v = static_cast<double>(samples[i]);
        found.min = v < found.min ? v : found.min;
        found.max = v > found.max ? v : found.max;
        found.sum += v;
        found.sumSq += v * v;
        found.zeros += v == 0 ? 1.0 : 0.0;
    }
}
template <class Sample>
inline void MapTail(Sample const *samples, std::uint8_t *bytes, std::size_t count, Range const &range) {
    for (std::size_t i = 0; i < count; ++i)
        bytes[i] = range.ByteOf(static_cast<double>(samples[i]));
}
/// 8-bit samples have 256 answers, whatever the range.
[[nodiscard]] inline ByteTable MakeTable(Range const &range) {
    ByteTable table{};
    for (std::size_t v = 0; v < table.size(); ++v)
        table[v] = range.ByteOf(static_cast<double>(v));
    return table;
}

} // namespace zelvar::scale
