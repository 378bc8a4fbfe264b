#include "zelvar/pixels/ScaleKernels.h"

#if defined(__x86_64__)

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>
#include <type_traits>

#include <immintrin.h>

// The compiler's own intrinsics leave a pass-through operand unset on purpose; g++ 12 warns about it.
#ifndef __clang__
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#define ZELVAR_AVX512 [[gnu::target("avx512f,avx512bw,avx512vl,avx512dq,avx512vbmi,popcnt")]]

namespace zelvar::scale {

namespace {

// Thirty-two samples a step: four vectors of eight doubles.
constexpr std::size_t kStep = 32;

template <class Raw>
ZELVAR_AVX512 inline Raw LoadRaw(void const *from) {
    Raw raw;
    __builtin_memcpy(&raw, from, sizeof raw);
    return raw;
}

ZELVAR_AVX512 inline __m512d Load(std::uint16_t const *at) {
    return _mm512_cvtepi32_pd(_mm256_cvtepu16_epi32(LoadRaw<__m128i>(at)));
}
ZELVAR_AVX512 inline __m512d Load(std::int16_t const *at) {
    return _mm512_cvtepi32_pd(_mm256_cvtepi16_epi32(LoadRaw<__m128i>(at)));
}
ZELVAR_AVX512 inline __m512d Load(std::int32_t const *at) { return _mm512_cvtepi32_pd(LoadRaw<__m256i>(at)); }
ZELVAR_AVX512 inline __m512d Load(std::uint32_t const *at) { return _mm512_cvtepu32_pd(LoadRaw<__m256i>(at)); }
ZELVAR_AVX512 inline __m512d Load(float const *at) { return _mm512_cvtps_pd(LoadRaw<__m256>(at)); }

struct Lanes {
    __m512d min, max, sum, sumSq;
    __m512i zeros;
};

template <class Sample>
ZELVAR_AVX512 Statistics Gather(Sample const *samples, std::size_t count) {
    Lanes lanes[4];
    for (Lanes &lane : lanes)
        lane = {_mm512_set1_pd(1e32), _mm512_set1_pd(-1e32), _mm512_setzero_pd(), _mm512_setzero_pd(),
                _mm512_setzero_si512()};
    __m512i const one = _mm512_set1_epi64(1);
    std::size_t i = 0;
    for (; i + kStep <= count; i += kStep)
        for (std::size_t part = 0; part < 4; ++part) {
            Lanes &lane = lanes[part];
            __m512d const v = Load(samples + i + 8 * part);
            lane.min = _mm512_min_pd(v, lane.min); // the second operand wins against NaN
            lane.max = _mm512_max_pd(v, lane.max);
            lane.sum = _mm512_add_pd(lane.sum, v);
            lane.sumSq = _mm512_add_pd(lane.sumSq, _mm512_mul_pd(v, v));
            __mmask8 const zero = _mm512_cmp_pd_mask(v, _mm512_setzero_pd(), _CMP_EQ_OQ);
            lane.zeros = _mm512_mask_add_epi64(lane.zeros, zero, lane.zeros, one);
        }
    Statistics found;
    GatherTail(samples + i, count - i, found);
    for (Lanes const &lane : lanes)
        for (int k = 0; k < 8; ++k) {
            found.min = lane.min[k] < found.min ? lane.min[k] : found.min;
            found.max = lane.max[k] > found.max ? lane.max[k] : found.max;
            found.sum += lane.sum[k];
            found.sumSq += lane.sumSq[k];
            found.zeros += static_cast<double>(lane.zeros[k]);
        }
    return found;
}

/// Sums of whole numbers, shifted to where signed ones lie.
template <class Sample>
ZELVAR_AVX512 Statistics GatherShorts(Sample const *samples, std::size_t count) {
    constexpr std::size_t kBlock = std::size_t{32} * 16'384; // what the lanes of 32 bits can add up
    __m512i const ones = _mm512_set1_epi16(1);
    __m512i const shift = _mm512_set1_epi16(std::is_signed_v<Sample> ? 0 : std::numeric_limits<short>::min());
    __m512i const low32 = _mm512_set1_epi64(0xFFFFFFFF);
    ShortSums<Sample> sums;
    __m512i min = _mm512_set1_epi16(std::numeric_limits<short>::max());
    __m512i max = _mm512_set1_epi16(std::numeric_limits<short>::min());
    __m512i squares = _mm512_setzero_si512();
    std::size_t i = 0;
    while (i + 32 <= count) {
        __m512i sum = _mm512_setzero_si512();
        std::size_t const end = count - i < kBlock ? count : i + kBlock;
        for (; i + 32 <= end; i += 32) {
            __m512i const v = _mm512_xor_si512(LoadRaw<__m512i>(samples + i), shift);
            min = _mm512_min_epi16(min, v);
            max = _mm512_max_epi16(max, v);
            sum = _mm512_add_epi32(sum, _mm512_madd_epi16(v, ones));
            sums.zeros += __builtin_popcount(_mm512_cmpeq_epi16_mask(v, shift));
            __m512i const pairs = _mm512_madd_epi16(v, v); // up to 2^31, without a sign
            squares = _mm512_add_epi64(squares, _mm512_and_si512(pairs, low32));
            squares = _mm512_add_epi64(squares, _mm512_srli_epi64(pairs, 32));
        }
        std::array<int, 16> lanes;
        __builtin_memcpy(lanes.data(), &sum, sizeof sum);
        sums.sum += std::accumulate(lanes.begin(), lanes.end(), std::int64_t{0});
    }
    sums.squares = static_cast<std::uint64_t>(_mm512_reduce_add_epi64(squares));
    sums.count = static_cast<std::int64_t>(i);
    std::array<short, 32> mins;
    std::array<short, 32> maxs;
    __builtin_memcpy(mins.data(), &min, sizeof min);
    __builtin_memcpy(maxs.data(), &max, sizeof max);
    for (std::size_t k = 0; k < 32; ++k)
        sums.Widen(mins[k], maxs[k]);
    Statistics found = sums.Found();
    GatherTail(samples + i, count - i, found);
    return found;
}

/// The same for floats: least, greatest and zeros are found among twice as many at once.
ZELVAR_AVX512 Statistics GatherFloats(float const *samples, std::size_t count) {
    constexpr std::size_t kParts = 2;
    __m512 min[kParts];
    __m512 max[kParts];
    __m512d sum[2 * kParts];
    __m512d sumSq[2 * kParts];
    for (std::size_t part = 0; part < kParts; ++part)
        min[part] = _mm512_set1_ps(1e32F), max[part] = _mm512_set1_ps(-1e32F);
    for (std::size_t part = 0; part < 2 * kParts; ++part)
        sum[part] = sumSq[part] = _mm512_setzero_pd();
    std::int64_t zeros = 0;
    std::size_t i = 0;
    for (; i + kStep <= count; i += kStep)
        for (std::size_t part = 0; part < kParts; ++part) {
            float const *const at = samples + i + 16 * part;
            auto const v = LoadRaw<__m512>(at);
            min[part] = _mm512_min_ps(v, min[part]); // the second operand wins against NaN
            max[part] = _mm512_max_ps(v, max[part]);
            zeros += __builtin_popcount(_mm512_cmp_ps_mask(v, _mm512_setzero_ps(), _CMP_EQ_OQ));
            for (std::size_t half = 0; half < 2; ++half) {
                std::size_t const lane = 2 * part + half;
                __m512d const wide = Load(at + 8 * half);
                sum[lane] = _mm512_add_pd(sum[lane], wide);
                // The square of a float is exact, so that nothing is lost between product and sum.
                sumSq[lane] = _mm512_fmadd_pd(wide, wide, sumSq[lane]);
            }
        }
    Statistics found;
    GatherTail(samples + i, count - i, found);
    found.zeros += static_cast<double>(zeros);
    for (std::size_t part = 0; part < kParts; ++part)
        for (int k = 0; k < 16; ++k) {
            found.min = std::min(found.min, static_cast<double>(min[part][k]));
            found.max = std::max(found.max, static_cast<double>(max[part][k]));
        }
    for (std::size_t lane = 0; lane < 2 * kParts; ++lane)
        for (int k = 0; k < 8; ++k)
            found.sum += sum[lane][k], found.sumSq += sumSq[lane][k];
    return found;
}

/// The greatest sample that lies not above a limit, which is one of theirs or lies between them.
template <class Sample>
Sample LastNotAbove(double limit) {
    if constexpr (std::is_integral_v<Sample>) {
        return static_cast<Sample>(std::clamp(std::floor(limit),
                                              static_cast<double>(std::numeric_limits<Sample>::min()),
                                              static_cast<double>(std::numeric_limits<Sample>::max())));
    } else {
        auto const nearest = static_cast<float>(limit);
        return static_cast<double>(nearest) > limit ? std::nextafter(nearest, -HUGE_VALF) : nearest;
    }
}

ZELVAR_AVX512 inline __mmask16 Above(std::uint16_t const *at, std::uint16_t limit) {
    return _mm256_cmpgt_epu16_mask(LoadRaw<__m256i>(at), _mm256_set1_epi16(static_cast<short>(limit)));
}
ZELVAR_AVX512 inline __mmask16 Above(std::int16_t const *at, std::int16_t limit) {
    return _mm256_cmpgt_epi16_mask(LoadRaw<__m256i>(at), _mm256_set1_epi16(limit));
}
ZELVAR_AVX512 inline __mmask16 Above(std::uint32_t const *at, std::uint32_t limit) {
    return _mm512_cmpgt_epu32_mask(LoadRaw<__m512i>(at), _mm512_set1_epi32(static_cast<int>(limit)));
}
ZELVAR_AVX512 inline __mmask16 Above(std::int32_t const *at, std::int32_t limit) {
    return _mm512_cmpgt_epi32_mask(LoadRaw<__m512i>(at), _mm512_set1_epi32(limit));
}
ZELVAR_AVX512 inline __mmask16 Above(float const *at, float limit) {
    return _mm512_cmp_ps_mask(LoadRaw<__m512>(at), _mm512_set1_ps(limit), _CMP_GT_OQ);
}

template <class Sample>
ZELVAR_AVX512 void Map(Sample const *samples, std::uint8_t *bytes, std::size_t count, Range const &range) {
    __m512d const min = _mm512_set1_pd(range.min);
    __m512d const scale = _mm512_set1_pd(range.scale);
    __m128i const full = _mm_set1_epi8(-1);
    auto const last = LastNotAbove<Sample>(range.max);
    std::size_t i = 0;
    for (; i + 16 <= count; i += 16) {
        // All samples of a step are read before its bytes are written.
        __mmask16 const isAbove = Above(samples + i, last);
        __m512d const low = _mm512_mul_pd(_mm512_sub_pd(Load(samples + i), min), scale);
        __m512d const high = _mm512_mul_pd(_mm512_sub_pd(Load(samples + i + 8), min), scale);
        // What lies below the range is negative, NaN and what lies far above become the smallest integer.
        __m512i const whole =
            _mm512_inserti64x4(_mm512_castsi256_si512(_mm512_cvttpd_epi32(low)), _mm512_cvttpd_epi32(high), 1);
        __m128i const inside = _mm512_cvtusepi32_epi8(_mm512_max_epi32(whole, _mm512_setzero_si512()));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(bytes + i), _mm_mask_mov_epi8(inside, isAbove, full));
    }
    MapTail(samples + i, bytes + i, count - i, range);
}

/// Looks 64 bytes up at once: two tables of 128 entries, chosen by the uppermost bit.
ZELVAR_AVX512 void MapBytes(std::uint8_t const *samples, std::uint8_t *bytes, std::size_t count, Range const &range) {
    ByteTable const table = MakeTable(range);
    __m512i entries[4];
    for (std::size_t k = 0; k < 4; ++k)
        entries[k] = LoadRaw<__m512i>(table.data() + 64 * k);
    std::size_t i = 0;
    for (; i + 64 <= count; i += 64) {
        auto const v = LoadRaw<__m512i>(samples + i);
        __m512i const low = _mm512_permutex2var_epi8(entries[0], v, entries[1]);
        __m512i const high = _mm512_permutex2var_epi8(entries[2], v, entries[3]);
        _mm512_storeu_si512(bytes + i, _mm512_mask_mov_epi8(low, _mm512_movepi8_mask(v), high));
    }
    for (; i < count; ++i)
        bytes[i] = table[samples[i]];
}

} // namespace

template <class Sample>
Kernel<Sample> Avx512Kernel() {
    if constexpr (std::is_same_v<Sample, std::uint8_t>)
        return {Avx2Kernel<std::uint8_t>().gather, &MapBytes}; // its sums wait for memory either way
    else if constexpr (sizeof(Sample) == 2)
        return {&GatherShorts<Sample>, &Map<Sample>};
    else if constexpr (std::is_same_v<Sample, float>)
        return {&GatherFloats, &Map<float>};
    else
        return {&Gather<Sample>, &Map<Sample>};
}

template Kernel<std::uint8_t> Avx512Kernel();
template Kernel<std::uint16_t> Avx512Kernel();
template Kernel<std::int16_t> Avx512Kernel();
template Kernel<std::uint32_t> Avx512Kernel();
template Kernel<std::int32_t> Avx512Kernel();
template Kernel<float> Avx512Kernel();

} // namespace zelvar::scale

#endif
