#pragma once

#include "zelvar/pixels/MixKernels.h"

// The loops of `MixKernels.h`, written once with the compiler's vectors. Each instruction set has a source that names
// itself here and the width of its registers; no function of one set is called by another.
#ifndef ZELVAR_MIX_TARGET
#define ZELVAR_MIX_TARGET
#define ZELVAR_MIX_WIDTH 16
#endif

namespace zelvar::mix {

template <class Real, std::size_t Width>
struct Loops {
    static constexpr std::size_t kLanes = Width / sizeof(Real);
    static constexpr std::size_t kParts = kRows / kLanes; ///< registers for one sample of a block
    using Vector [[gnu::vector_size(Width), gnu::aligned(alignof(Real)), gnu::may_alias]] = Real;

    ZELVAR_MIX_TARGET static void MixRows(Real const *const *rows, Real const *weights, std::size_t count, Real *out,
                                          std::size_t length) {
        std::size_t x = 0;
        for (; x + 4 * kLanes <= length; x += 4 * kLanes) {
            Vector a{};
            Vector b{};
            Vector c{};
            Vector d{};
            for (std::size_t i = 0; i < count; ++i) {
                auto const *from = reinterpret_cast<Vector const *>(rows[i] + x);
                Real const weight = weights[i];
                a += weight * from[0], b += weight * from[1], c += weight * from[2], d += weight * from[3];
            }
            auto *to = reinterpret_cast<Vector *>(out + x);
            to[0] = a, to[1] = b, to[2] = c, to[3] = d;
        }
        for (; x < length; ++x) {
            Real sum = 0;
            for (std::size_t i = 0; i < count; ++i)
                sum += weights[i] * rows[i][x];
            out[x] = sum;
        }
    }

    /// `Samples` samples side by side of each pixel, whose sums do not wait for each other.
    template <std::size_t Samples>
    ZELVAR_MIX_TARGET static void MixSamples(Real const *from, Real const *weights, std::size_t count,
                                             std::size_t pixelStep, Real *out) {
        Vector sums[Samples * kParts]{};
        for (std::size_t i = 0; i < count; ++i, from += pixelStep) {
            auto const *parts = reinterpret_cast<Vector const *>(from);
            for (std::size_t part = 0; part < Samples * kParts; ++part)
                sums[part] += weights[i] * parts[part];
        }
        auto *to = reinterpret_cast<Vector *>(out);
        for (std::size_t part = 0; part < Samples * kParts; ++part)
            to[part] = sums[part];
    }

    ZELVAR_MIX_TARGET static void MixColumns(Real const *block, int firstPixel, Taps<Real> const &taps,
                                             std::size_t begin, std::size_t end, std::size_t channels, Real *out) {
        std::size_t const step = channels * kRows;
        for (std::size_t result = begin; result < end; ++result, out += step) {
            Real const *from = block + static_cast<std::size_t>(taps.first[result] - firstPixel) * step;
            if (channels == 3)
                MixSamples<3>(from, taps.WeightsOf(result), taps.Count(result), step, out);
            else
                for (std::size_t channel = 0; channel < channels; ++channel)
                    MixSamples<1>(from + channel * kRows, taps.WeightsOf(result), taps.Count(result), step,
                                  out + channel * kRows);
        }
    }

    ZELVAR_MIX_TARGET static void ToBlock(Real const *const *rows, std::size_t length, Real *block) {
        std::size_t x = 0;
        if constexpr (sizeof(Real) == 4)
            for (; x + 4 <= length; x += 4)
                for (std::size_t r = 0; r < kRows; r += 4)
                    Turn(rows[r] + x, rows[r + 1] + x, rows[r + 2] + x, rows[r + 3] + x, block + x * kRows + r,
                         block + (x + 1) * kRows + r, block + (x + 2) * kRows + r, block + (x + 3) * kRows + r);
        for (; x < length; ++x)
            for (std::size_t r = 0; r < kRows; ++r)
                block[x * kRows + r] = rows[r][x];
    }

    ZELVAR_MIX_TARGET static void FromBlock(Real const *block, std::size_t length, Real *const *rows) {
        std::size_t x = 0;
        if constexpr (sizeof(Real) == 4)
            for (; x + 4 <= length; x += 4)
                for (std::size_t r = 0; r < kRows; r += 4)
                    Turn(block + x * kRows + r, block + (x + 1) * kRows + r, block + (x + 2) * kRows + r,
                         block + (x + 3) * kRows + r, rows[r] + x, rows[r + 1] + x, rows[r + 2] + x, rows[r + 3] + x);
        for (; x < length; ++x)
            for (std::size_t r = 0; r < kRows; ++r)
                rows[r][x] = block[x * kRows + r];
    }

    static constexpr Kernels<Real> kAll{
        .mixRows = &MixRows, .mixColumns = &MixColumns, .toBlock = &ToBlock, .fromBlock = &FromBlock};

private:
    using Four [[gnu::vector_size(16), gnu::aligned(alignof(Real)), gnu::may_alias]] = Real;

    /// Four samples of four rows, turned so that the rows become columns.
    ZELVAR_MIX_TARGET static void Turn(Real const *from0, Real const *from1, Real const *from2, Real const *from3,
                                       Real *to0, Real *to1, Real *to2, Real *to3) {
        Four const a = *reinterpret_cast<Four const *>(from0);
        Four const b = *reinterpret_cast<Four const *>(from1);
        Four const c = *reinterpret_cast<Four const *>(from2);
        Four const d = *reinterpret_cast<Four const *>(from3);
        Four const lowA = __builtin_shufflevector(a, b, 0, 4, 1, 5);
        Four const highA = __builtin_shufflevector(a, b, 2, 6, 3, 7);
        Four const lowB = __builtin_shufflevector(c, d, 0, 4, 1, 5);
        Four const highB = __builtin_shufflevector(c, d, 2, 6, 3, 7);
        *reinterpret_cast<Four *>(to0) = __builtin_shufflevector(lowA, lowB, 0, 1, 4, 5);
        *reinterpret_cast<Four *>(to1) = __builtin_shufflevector(lowA, lowB, 2, 3, 6, 7);
        *reinterpret_cast<Four *>(to2) = __builtin_shufflevector(highA, highB, 0, 1, 4, 5);
        *reinterpret_cast<Four *>(to3) = __builtin_shufflevector(highA, highB, 2, 3, 6, 7);
    }
};

template <std::size_t Width>
struct ByteLoops {
    using Bytes [[gnu::vector_size(16), gnu::aligned(1), gnu::may_alias]] = std::uint8_t;
    using FourInts [[gnu::vector_size(16)]] = int;
    using FourFloats [[gnu::vector_size(16), gnu::aligned(alignof(float)), gnu::may_alias]] = float;

    ZELVAR_MIX_TARGET static void ToBlock(std::uint8_t const *const *rows, std::size_t length, float *block) {
        std::size_t x = 0;
        for (; x + kRows <= length; x += kRows) {
            Bytes turned[kRows];
#pragma GCC unroll 16
            for (std::size_t r = 0; r < kRows; ++r)
                turned[r] = *reinterpret_cast<Bytes const *>(rows[r] + x);
                // Four times the first half of the lines is dealt between those of the second.
#pragma GCC unroll 4
            for (int pass = 0; pass < 4; ++pass) {
                Bytes dealt[kRows];
#pragma GCC unroll 8
                for (std::size_t r = 0; r < kRows / 2; ++r) {
                    Bytes const a = turned[r];
                    Bytes const b = turned[r + kRows / 2];
                    dealt[2 * r] =
                        __builtin_shufflevector(a, b, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
                    dealt[2 * r + 1] =
                        __builtin_shufflevector(a, b, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
                }
#pragma GCC unroll 16
                for (std::size_t r = 0; r < kRows; ++r)
                    turned[r] = dealt[r];
            }
#pragma GCC unroll 16
            for (std::size_t r = 0; r < kRows; ++r)
                Widen(turned[r], block + (x + r) * kRows);
        }
        for (; x < length; ++x)
            for (std::size_t r = 0; r < kRows; ++r)
                block[x * kRows + r] = static_cast<float>(rows[r][x]);
    }

    ZELVAR_MIX_TARGET static void ToBytes(float const *samples, std::size_t length, std::uint8_t *bytes) {
        for (std::size_t i = 0; i < length; ++i) {
            float const rounded = samples[i] + 0.5F;
            float const low = rounded < 0.0F ? 0.0F : rounded;
            bytes[i] = static_cast<std::uint8_t>(static_cast<int>(low > 255.0F ? 255.0F : low));
        }
    }

    /// Sixteen bytes to floats, without a way through memory: it would wait for the stores.
    ZELVAR_MIX_TARGET static void Widen(Bytes bytes, float *out) {
        constexpr Bytes none{};
        Bytes const low = __builtin_shufflevector(bytes, none, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
        Bytes const high =
            __builtin_shufflevector(bytes, none, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
        auto *const to = reinterpret_cast<FourFloats *>(out);
        to[0] = ToFloats(__builtin_shufflevector(low, none, 0, 1, 16, 17, 2, 3, 18, 19, 4, 5, 20, 21, 6, 7, 22, 23));
        to[1] =
            ToFloats(__builtin_shufflevector(low, none, 8, 9, 24, 25, 10, 11, 26, 27, 12, 13, 28, 29, 14, 15, 30, 31));
        to[2] = ToFloats(__builtin_shufflevector(high, none, 0, 1, 16, 17, 2, 3, 18, 19, 4, 5, 20, 21, 6, 7, 22, 23));
        to[3] =
            ToFloats(__builtin_shufflevector(high, none, 8, 9, 24, 25, 10, 11, 26, 27, 12, 13, 28, 29, 14, 15, 30, 31));
    }
    ZELVAR_MIX_TARGET static FourFloats ToFloats(Bytes wholeNumbers) {
        return __builtin_convertvector(reinterpret_cast<FourInts>(wholeNumbers), FourFloats);
    }

    static constexpr ByteKernels kAll{.toBlock = &ToBlock, .toBytes = &ToBytes};
};

template <class Sample, std::size_t Width>
struct RowLoops {
    using Real = MixedAs<Sample>;

    ZELVAR_MIX_TARGET static void Set(Sample const *__restrict samples, std::size_t length, Real *__restrict sums) {
        for (std::size_t i = 0; i < length; ++i)
            sums[i] = static_cast<Real>(samples[i]);
    }
    ZELVAR_MIX_TARGET static void Add(Sample const *__restrict samples, std::size_t length, Real *__restrict sums) {
        for (std::size_t i = 0; i < length; ++i)
            sums[i] += static_cast<Real>(samples[i]);
    }
    static constexpr RowKernels<Sample> kAll{.set = &Set, .add = &Add};
};

/// The kernels of this source's instruction set.
template <std::size_t Width>
constexpr AllKernels kKernels{Loops<float, Width>::kAll,
                              Loops<double, Width>::kAll,
                              ByteLoops<Width>::kAll,
                              RowLoops<std::uint8_t, Width>::kAll,
                              RowLoops<std::uint16_t, Width>::kAll,
                              RowLoops<std::int16_t, Width>::kAll,
                              RowLoops<std::uint32_t, Width>::kAll,
                              RowLoops<std::int32_t, Width>::kAll,
                              RowLoops<float, Width>::kAll};

} // namespace zelvar::mix
