#include "zelvar/pixels/ScaleKernels.h"

#include <type_traits>

namespace zelvar::scale {

namespace {

constexpr std::size_t kLanes = 8;

/// Lanes of their own break the chain of dependent additions.
template <class Sample>
Statistics Gather(Sample const *samples, std::size_t count) {
    std::array<Statistics, kLanes> lanes;
    std::size_t i = 0;
    for (; i + kLanes <= count; i += kLanes)
        for (std::size_t lane = 0; lane < kLanes; ++lane)
            GatherTail(samples + i + lane, 1, lanes[lane]);
    GatherTail(samples + i, count - i, lanes[0]);
    Statistics found = lanes[0];
    for (std::size_t lane = 1; lane < kLanes; ++lane)
        found.Add(lanes[lane]);
    return found;
}

template <class Sample>
void Map(Sample const *samples, std::uint8_t *bytes, std::size_t count, Range const &range) {
    if constexpr (std::is_same_v<Sample, std::uint8_t>) {
        ByteTable const table = MakeTable(range);
        for (std::size_t i = 0; i < count; ++i)
            bytes[i] = table[samples[i]];
    } else {
        MapTail(samples, bytes, count, range);
    }
}

} // namespace

template <class Sample>
Kernel<Sample> KernelFor(Isa isa) {
#if defined(__x86_64__)
    if (isa == Isa::Avx2)
        return Avx2Kernel<Sample>();
    if (isa == Isa::Avx512)
        return Avx512Kernel<Sample>();
#endif
    return {&Gather<Sample>, &Map<Sample>};
}

template <class Sample>
Kernel<Sample> KernelFor() {
    return KernelFor<Sample>(FastestIsa());
}

template Kernel<std::uint8_t> KernelFor();
template Kernel<std::uint8_t> KernelFor(Isa);
template Kernel<std::uint16_t> KernelFor();
template Kernel<std::uint16_t> KernelFor(Isa);
template Kernel<std::int16_t> KernelFor();
template Kernel<std::int16_t> KernelFor(Isa);
template Kernel<std::uint32_t> KernelFor();
template Kernel<std::uint32_t> KernelFor(Isa);
template Kernel<std::int32_t> KernelFor();
template Kernel<std::int32_t> KernelFor(Isa);
template Kernel<float> KernelFor();
template Kernel<float> KernelFor(Isa);

} // namespace zelvar::scale
