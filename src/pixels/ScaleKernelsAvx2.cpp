#include "zelvar/pixels/ScaleKernels.h"

#if defined(__x86_64__)

#include <array>
#include <limits>
#include <numeric>
#include <type_traits>

#include <immintrin.h>

#define ZELVAR_AVX2 [[gnu::target("avx2")]]

namespace zelvar::scale {

namespace {

// Sixteen samples a step: four vectors of four doubles.
constexpr std::size_t kStep = 16;

template <class Raw>
ZELVAR_AVX2 inline Raw LoadRaw(void const *from) {
    Raw raw;
    __builtin_memcpy(&raw, from, sizeof raw);
    return raw;
}

ZELVAR_AVX2 inline __m256d Load(std::uint16_t const *at) {
    return _mm256_cvtepi32_pd(_mm_cvtepu16_epi32(_mm_cvtsi64_si128(LoadRaw<long long>(at))));
}
ZELVAR_AVX2 inline __m256d Load(std::int16_t const *at) {
    return _mm256_cvtepi32_pd(_mm_cvtepi16_epi32(_mm_cvtsi64_si128(LoadRaw<long long>(at))));
}
ZELVAR_AVX2 inline __m256d Load(std::int32_t const *at) { return _mm256_cvtepi32_pd(LoadRaw<__m128i>(at)); }
ZELVAR_AVX2 inline __m256d Load(std::uint32_t const *at) {
    // The bits behind the exponent of 2^52 are the integer itself.
    __m256d const base = _mm256_set1_pd(4503599627370496.0);
    __m256i const wide = _mm256_cvtepu32_epi64(LoadRaw<__m128i>(at));
    return _mm256_sub_pd(_mm256_castsi256_pd(_mm256_or_si256(wide, _mm256_castpd_si256(base))), base);
}
ZELVAR_AVX2 inline __m256d Load(float const *at) { return _mm256_cvtps_pd(LoadRaw<__m128>(at)); }

struct Lanes {
    __m256d min, max, sum, sumSq;
    __m256i zeros; // counts down: a comparison yields -1
};

template <class Sample>
ZELVAR_AVX2 Statistics Gather(Sample const *samples, std::size_t count) {
    Lanes lanes[4];
    for (Lanes &lane : lanes)
        lane = {_mm256_set1_pd(1e32), _mm256_set1_pd(-1e32), _mm256_setzero_pd(), _mm256_setzero_pd(),
                _mm256_setzero_si256()};
    std::size_t i = 0;
    for (; i + kStep <= count; i += kStep)
        for (std::size_t part = 0; part < 4; ++part) {
            Lanes &lane = lanes[part];
            __m256d const v = Load(samples + i + 4 * part);
            lane.min = _mm256_min_pd(v, lane.min); // the second operand wins against NaN
            lane.max = _mm256_max_pd(v, lane.max);
            lane.sum = _mm256_add_pd(lane.sum, v);
            lane.sumSq = _mm256_add_pd(lane.sumSq, _mm256_mul_pd(v, v));
            lane.zeros =
                _mm256_add_epi64(lane.zeros, _mm256_castpd_si256(_mm256_cmp_pd(v, _mm256_setzero_pd(), _CMP_EQ_OQ)));
        }
    Statistics found;
    GatherTail(samples + i, count - i, found);
    for (Lanes const &lane : lanes)
        for (int k = 0; k < 4; ++k) {
            found.min = lane.min[k] < found.min ? lane.min[k] : found.min;
            found.max = lane.max[k] > found.max ? lane.max[k] : found.max;
            found.sum += lane.sum[k];
            found.sumSq += lane.sumSq[k];
            found.zeros -= static_cast<double>(lane.zeros[k]);
        }
    return found;
}

template <class Sample>
ZELVAR_AVX2 void Map(Sample const *samples, std::uint8_t *bytes, std::size_t count, Range const &range) {
    __m256d const min = _mm256_set1_pd(range.min);
    __m256d const max = _mm256_set1_pd(range.max);
    __m256d const scale = _mm256_set1_pd(range.scale);
    __m256d const full = _mm256_set1_pd(255.0);
    std::size_t i = 0;
    for (; i + kStep <= count; i += kStep) {
        __m128i part[4];
        for (std::size_t k = 0; k < 4; ++k) {
            __m256d const v = Load(samples + i + 4 * k);
            __m256d const scaled = _mm256_mul_pd(_mm256_sub_pd(v, min), scale);
            // What lies below the range is negative, NaN becomes the smallest integer: packing makes both 0.
            __m256d const low = _mm256_max_pd(_mm256_set1_pd(-1.0), scaled);
            part[k] = _mm256_cvttpd_epi32(_mm256_blendv_pd(low, full, _mm256_cmp_pd(v, max, _CMP_GT_OQ)));
        }
        __m128i const packed = _mm_packus_epi16(_mm_packs_epi32(part[0], part[1]), _mm_packs_epi32(part[2], part[3]));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(bytes + i), packed);
    }
    MapTail(samples + i, bytes + i, count - i, range);
}

ZELVAR_AVX2 inline std::uint64_t SumOf64(__m256i v) {
    return static_cast<std::uint64_t>(v[0]) + static_cast<std::uint64_t>(v[1]) + static_cast<std::uint64_t>(v[2]) +
           static_cast<std::uint64_t>(v[3]);
}

ZELVAR_AVX2 inline std::int64_t SumOfSigned32(__m256i v) {
    std::array<int, 8> lanes;
    __builtin_memcpy(lanes.data(), &v, sizeof v);
    return std::accumulate(lanes.begin(), lanes.end(), std::int64_t{0});
}

/// Sums of whole numbers, shifted to where signed ones lie.
template <class Sample>
ZELVAR_AVX2 Statistics GatherShorts(Sample const *samples, std::size_t count) {
    constexpr std::size_t kBlock = std::size_t{16} * 16'384; // what the lanes of 16 and 32 bits can add up
    __m256i const none = _mm256_setzero_si256();
    __m256i const ones = _mm256_set1_epi16(1);
    __m256i const shift = _mm256_set1_epi16(std::is_signed_v<Sample> ? 0 : std::numeric_limits<short>::min());
    __m256i const low32 = _mm256_set1_epi64x(0xFFFFFFFF);
    ShortSums<Sample> sums;
    __m256i min = _mm256_set1_epi16(std::numeric_limits<short>::max());
    __m256i max = _mm256_set1_epi16(std::numeric_limits<short>::min());
    __m256i squares = none;
    std::size_t i = 0;
    while (i + 16 <= count) {
        __m256i sum = none;
        __m256i zeros = none;
        std::size_t const end = count - i < kBlock ? count : i + kBlock;
        for (; i + 16 <= end; i += 16) {
            __m256i const v = _mm256_xor_si256(LoadRaw<__m256i>(samples + i), shift);
            min = _mm256_min_epi16(min, v);
            max = _mm256_max_epi16(max, v);
            sum = _mm256_add_epi32(sum, _mm256_madd_epi16(v, ones));
            zeros = _mm256_sub_epi16(zeros, _mm256_cmpeq_epi16(v, shift));
            __m256i const pairs = _mm256_madd_epi16(v, v); // up to 2^31, without a sign
            squares = _mm256_add_epi64(squares, _mm256_and_si256(pairs, low32));
            squares = _mm256_add_epi64(squares, _mm256_srli_epi64(pairs, 32));
        }
        sums.sum += SumOfSigned32(sum);
        sums.zeros += SumOfSigned32(_mm256_madd_epi16(zeros, ones));
    }
    sums.squares = SumOf64(squares);
    sums.count = static_cast<std::int64_t>(i);
    std::array<short, 16> mins;
    std::array<short, 16> maxs;
    __builtin_memcpy(mins.data(), &min, sizeof min);
    __builtin_memcpy(maxs.data(), &max, sizeof max);
    for (std::size_t k = 0; k < 16; ++k)
        sums.Widen(mins[k], maxs[k]);
    Statistics found = sums.Found();
    GatherTail(samples + i, count - i, found);
    return found;
}

ZELVAR_AVX2 Statistics GatherBytes(std::uint8_t const *samples, std::size_t count) {
    constexpr std::size_t kBlock = std::size_t{32} * 4096; // squares of that many samples fit into the 32-bit lanes
    __m256i const none = _mm256_setzero_si256();
    __m256i min = _mm256_set1_epi8(-1);
    __m256i max = none;
    __m256i sum = none;
    __m256i sumSq = none;
    __m256i zeros = none;
    std::size_t i = 0;
    while (i + 32 <= count) {
        __m256i squares = none;
        std::size_t const end = count - i < kBlock ? count : i + kBlock;
        for (; i + 32 <= end; i += 32) {
            auto const v = LoadRaw<__m256i>(samples + i);
            min = _mm256_min_epu8(min, v);
            max = _mm256_max_epu8(max, v);
            sum = _mm256_add_epi64(sum, _mm256_sad_epu8(v, none));
            __m256i const zeroMask = _mm256_and_si256(_mm256_cmpeq_epi8(v, none), _mm256_set1_epi8(1));
            zeros = _mm256_add_epi64(zeros, _mm256_sad_epu8(zeroMask, none));
            __m256i const low = _mm256_unpacklo_epi8(v, none);
            __m256i const high = _mm256_unpackhi_epi8(v, none);
            squares = _mm256_add_epi32(squares, _mm256_madd_epi16(low, low));
            squares = _mm256_add_epi32(squares, _mm256_madd_epi16(high, high));
        }
        sumSq = _mm256_add_epi64(sumSq, _mm256_unpacklo_epi32(squares, none));
        sumSq = _mm256_add_epi64(sumSq, _mm256_unpackhi_epi32(squares, none));
    }
    Statistics found;
    found.sum = static_cast<double>(SumOf64(sum));
    found.sumSq = static_cast<double>(SumOf64(sumSq));
    found.zeros = static_cast<double>(SumOf64(zeros));
    if (i != 0) {
        alignas(32) std::uint8_t mins[32];
        alignas(32) std::uint8_t maxs[32];
        _mm256_store_si256(reinterpret_cast<__m256i *>(mins), min);
        _mm256_store_si256(reinterpret_cast<__m256i *>(maxs), max);
        for (int k = 0; k < 32; ++k) {
            found.min = mins[k] < found.min ? mins[k] : found.min;
            found.max = maxs[k] > found.max ? maxs[k] : found.max;
        }
    }
    GatherTail(samples + i, count - i, found);
    return found;
}

/// Looks 32 bytes up at once: sixteen tables of sixteen entries, each answering for one upper half-byte.
ZELVAR_AVX2 void MapBytes(std::uint8_t const *samples, std::uint8_t *bytes, std::size_t count, Range const &range) {
    ByteTable const table = MakeTable(range);
    std::size_t i = 0;
    for (; i + 32 <= count; i += 32) {
        auto const v = LoadRaw<__m256i>(samples + i);
        __m256i result = _mm256_setzero_si256();
        for (std::size_t high = 0; high < 16; ++high) {
            __m256i const entries = _mm256_broadcastsi128_si256(LoadRaw<__m128i>(table.data() + 16 * high));
            // Another upper half leaves bit 7 set after the addition, and the shuffle then yields 0.
            __m256i const index = _mm256_adds_epu8(_mm256_xor_si256(v, _mm256_set1_epi8(static_cast<char>(high << 4U))),
                                                   _mm256_set1_epi8(0x70));
            result = _mm256_or_si256(result, _mm256_shuffle_epi8(entries, index));
        }
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(bytes + i), result);
    }
    for (; i < count; ++i)
        bytes[i] = table[samples[i]];
}

} // namespace

template <class Sample>
Kernel<Sample> Avx2Kernel() {
    if constexpr (std::is_same_v<Sample, std::uint8_t>)
        return {&GatherBytes, &MapBytes};
    else if constexpr (sizeof(Sample) == 2)
        return {&GatherShorts<Sample>, &Map<Sample>};
    else
        return {&Gather<Sample>, &Map<Sample>};
}

template Kernel<std::uint8_t> Avx2Kernel();
template Kernel<std::uint16_t> Avx2Kernel();
template Kernel<std::int16_t> Avx2Kernel();
template Kernel<std::uint32_t> Avx2Kernel();
template Kernel<std::int32_t> Avx2Kernel();
template Kernel<float> Avx2Kernel();

} // namespace zelvar::scale

#endif
