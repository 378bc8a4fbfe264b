#pragma once

#include "zelvar/pixels/InstructionSet.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <tuple>
#include <type_traits>
#include <vector>

namespace zelvar::mix {

/// What the results along one axis are mixed of: for each a run of samples and their weights.
template <class Real>
struct Taps {
    std::vector<int> first;            ///< one a result: the first sample of its run
    std::vector<std::size_t> begin{0}; ///< one a result and one more: where its weights begin
    std::vector<Real> weights;         ///< of all results, one behind the other

    [[nodiscard]] std::size_t Size() const { return first.size(); }
    [[nodiscard]] std::size_t Count(std::size_t result) const { return begin[result + 1] - begin[result]; }
    [[nodiscard]] Real const *WeightsOf(std::size_t result) const { return weights.data() + begin[result]; }
    /// The sample behind a result's run.
    [[nodiscard]] int End(std::size_t result) const { return first[result] + static_cast<int>(Count(result)); }
    /// The longest run.
    [[nodiscard]] std::size_t Longest() const {
        std::size_t longest = 0;
        for (std::size_t result = 0; result < Size(); ++result)
            longest = std::max(longest, Count(result));
        return longest;
    }
};

/// Rows that stand side by side in a block, so that all of them are worked on at once: sample i of row r is
/// `block[i * kRows + r]`.
inline constexpr std::size_t kRows = 16;

/// Rows of samples in one piece of memory, all 0 at first. No two of a block have one place in the processor's cache.
template <class Real>
class RowBuffer {
public:
    RowBuffer() = default;
    RowBuffer(std::size_t rows, std::size_t length)
        : m_step((length + 2 * kRows - 1) / (2 * kRows) * (2 * kRows) + kRows), m_samples(rows * m_step) {}
    [[nodiscard]] bool IsEmpty() const { return m_samples.empty(); }
    [[nodiscard]] Real *Row(std::size_t row) { return m_samples.data() + row * m_step; }
    [[nodiscard]] Real const *Row(std::size_t row) const { return m_samples.data() + row * m_step; }

private:
    std::size_t m_step = 0;
    std::vector<Real> m_samples;
};

/// Weighted sums. Each is added up from the first sample to the last, one product at a time, whatever the instruction
/// set: all give the same bits.
template <class Real>
struct Kernels {
    /// Of `count` rows of `length` samples: one row.
    void (*mixRows)(Real const *const *rows, Real const *weights, std::size_t count, Real *out,
                    std::size_t length) = nullptr;
    /// Of the pixels of a block, `channels` samples each, the results `begin` to `end` of the taps: a block of these
    /// alone. Sample 0 of `block` belongs to pixel `firstPixel`.
    void (*mixColumns)(Real const *block, int firstPixel, Taps<Real> const &taps, std::size_t begin, std::size_t end,
                       std::size_t channels, Real *out) = nullptr;
    /// `kRows` rows of `length` samples to a block, and back.
    void (*toBlock)(Real const *const *rows, std::size_t length, Real *block) = nullptr;
    void (*fromBlock)(Real const *block, std::size_t length, Real *const *rows) = nullptr;
};
/// Between bytes and what they are mixed as.
struct ByteKernels {
    /// `kRows` rows of `length` bytes to a block.
    void (*toBlock)(std::uint8_t const *const *rows, std::size_t length, float *block) = nullptr;
    /// Rounded, halves up, and cut to the bytes' range.
    void (*toBytes)(float const *samples, std::size_t length, std::uint8_t *bytes) = nullptr;
};

/// What samples are mixed as: integers of 32 bits need more digits than a float has.
template <class Sample>
using MixedAs = std::conditional_t<std::is_integral_v<Sample> && sizeof(Sample) == 4, double, float>;

/// Rows of samples, as a file holds them, to one row of sums.
template <class Sample>
struct RowKernels {
    void (*set)(Sample const *samples, std::size_t length, MixedAs<Sample> *sums) = nullptr;
    void (*add)(Sample const *samples, std::size_t length, MixedAs<Sample> *sums) = nullptr;
};

using AllKernels =
    std::tuple<Kernels<float>, Kernels<double>, ByteKernels, RowKernels<std::uint8_t>, RowKernels<std::uint16_t>,
               RowKernels<std::int16_t>, RowKernels<std::uint32_t>, RowKernels<std::int32_t>, RowKernels<float>>;

/// Those of an instruction set, which `IsSupported`.
[[nodiscard]] AllKernels const &KernelsOf(Isa isa);
/// The fastest that this machine's processor runs.
template <class Wanted>
[[nodiscard]] Wanted const &Fastest() {
    return std::get<Wanted>(KernelsOf(FastestIsa()));
}

// One file an instruction set.
[[nodiscard]] AllKernels const &Avx2Kernels();
[[nodiscard]] AllKernels const &Avx512Kernels();

} // namespace zelvar::mix
