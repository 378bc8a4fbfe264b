#include "zelvar/pixels/ScaleKernels.h"

#if defined(__x86_64__)

#include <type_traits>

#include <immintrin.h>

// The compiler's own intrinsics leave a pass-through operand unset on purpose; g++ 12 warns about it.
#ifndef __clang__
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#define ZELVAR_AVX512 [[gnu::target("avx512f,avx512bw,avx512vl,avx512dq,avx512vbmi")]]

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

template <class Sample>
ZELVAR_AVX512 void Map(Sample const *samples, std::uint8_t *bytes, std::size_t count, Range const &range) {
    __m512d const min = _mm512_set1_pd(range.min);
    __m512d const max = _mm512_set1_pd(range.max);
    __m512d const scale = _mm512_set1_pd(range.scale);
    __m512d const full = _mm512_set1_pd(255.0);
    std::size_t i = 0;
    for (; i + kStep <= count; i += kStep) {
        // All samples of a step are read before its bytes are written.
        __m128i part[4];
        for (std::size_t k = 0; k < 4; ++k) {
            __m512d const v = Load(samples + i + 8 * k);
            // The second operand wins against NaN, so that it counts as below the range.
            __m512d const low = _mm512_max_pd(_mm512_mul_pd(_mm512_sub_pd(v, min), scale), _mm512_setzero_pd());
            __m512d const byte = _mm512_mask_mov_pd(low, _mm512_cmp_pd_mask(v, max, _CMP_GT_OQ), full);
            part[k] = _mm256_cvtepi32_epi8(_mm512_cvttpd_epi32(byte));
        }
        _mm_storeu_si128(reinterpret_cast<__m128i *>(bytes + i), _mm_unpacklo_epi64(part[0], part[1]));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(bytes + i + 16), _mm_unpacklo_epi64(part[2], part[3]));
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
