#pragma once

#include "zelvar/pixels/InstructionSet.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace zelvar::scale {

/// What one pass over the samples finds. Zeros do not enter the sums.
struct Statistics {
    double min = 1e32;
    double max = -1e32;
    double sum = 0;
    double sumSq = 0;
    double zeros = 0; ///< their number

    void Add(Statistics const &other) {
        min = other.min < min ? other.min : min;
        max = other.max > max ? other.max : max;
        sum += other.sum;
        sumSq += other.sumSq;
        zeros += other.zeros;
    }
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

/// The two passes for samples of one type. `map` reads sample i before it writes byte i, so that both may share a
/// buffer as long as bytes never stand behind the samples still to read.
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
/// What kernels add up of 16-bit samples: whole numbers, each less by `kShift`, so that all are signed.
template <class Sample>
struct ShortSums {
    static constexpr std::int64_t kShift = std::is_signed_v<Sample> ? 0 : 32'768;
    std::int64_t count = 0;
    std::int64_t sum = 0;
    std::uint64_t squares = 0; ///< their sum
    std::int64_t zeros = 0;    ///< samples that are 0
    std::int64_t min = 32'767;
    std::int64_t max = -32'768;

    void Widen(short low, short high) {
        min = std::min<std::int64_t>(min, low);
        max = std::max<std::int64_t>(max, high);
    }
    [[nodiscard]] Statistics Found() const {
        Statistics found;
        if (count == 0)
            return found;
        found.min = static_cast<double>(min + kShift);
        found.max = static_cast<double>(max + kShift);
        found.sum = static_cast<double>(sum + count * kShift);
        found.sumSq =
            static_cast<double>(static_cast<std::int64_t>(squares) + 2 * kShift * sum + count * kShift * kShift);
        found.zeros = static_cast<double>(zeros);
        return found;
    }
};
/// 8-bit samples have 256 answers, whatever the range.
[[nodiscard]] inline ByteTable MakeTable(Range const &range) {
    ByteTable table{};
    for (std::size_t v = 0; v < table.size(); ++v)
        table[v] = range.ByteOf(static_cast<double>(v));
    return table;
}

} // namespace zelvar::scale
