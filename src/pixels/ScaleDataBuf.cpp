#include "zelvar/pixels/ScaleDataBuf.h"

#include "zelvar/base/Aside.h"
#include "zelvar/pixels/ScaleKernels.h"

#include <algorithm>
#include <cmath>
#include <future>

namespace zelvar {

namespace {

/// 255 for each sample other than zero, where no range is left to spread. Bytes of zeros are passed over.
template <class Sample>
void MarkNonZero(Sample const *samples, unsigned char *bytes, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        if (samples[i] != Sample{0})
            bytes[i] = 255;
}

constexpr std::size_t kWorthAThread = std::size_t{1} << 18U; // samples

/// Does the work on both halves of a range at once where that is worth a thread. The halves depend on the range alone.
template <class Work>
void InHalves(std::size_t begin, std::size_t end, Work const &work) {
    // Vectors stay whole, and no line of the processor's cache is written by both.
    std::size_t const middle = end - begin < kWorthAThread ? begin : begin + (end - begin) / 2 / 64 * 64;
    std::future<void> first;
    if (middle > begin)
        first = DoAside([&] { work(begin, middle); });
    work(middle, end);
    if (first.valid())
        first.get();
}

template <class Sample>
scale::Statistics Gather(scale::Kernel<Sample> const &kernel, Sample const *samples, std::size_t count) {
    scale::Statistics first;
    scale::Statistics second;
    InHalves(0, count, [&](std::size_t begin, std::size_t end) {
        (end == count ? second : first) = kernel.gather(samples + begin, end - begin);
    });
    first.Add(second);
    return first;
}

/// Bytes take the place of samples. Those of a range are written over samples that stand before it, as long as its end
/// is no farther than its beginning times the size of a sample: within such a range the order does not matter.
template <class Sample>
void Map(scale::Kernel<Sample> const &kernel, Sample const *samples, unsigned char *bytes, std::size_t count,
         scale::Range const &range) {
    auto const map = [&](std::size_t begin, std::size_t end) {
        kernel.map(samples + begin, bytes + begin, end - begin, range);
    };
    std::size_t done = std::min(count, kWorthAThread);
    map(0, done);
    while (done < count) {
        std::size_t const end = std::min(count, std::max<std::size_t>(2, sizeof(Sample)) * done);
        InHalves(done, end, map);
        done = end;
    }
}

template <class Sample>
void ScaleSamples(unsigned char *buffer, std::size_t n) {
    auto const *samples = reinterpret_cast<Sample const *>(buffer);
    scale::Kernel<Sample> const kernel = scale::KernelFor<Sample>();

    // 1. Statistics. Zeros are no data, but only where nothing lies below them.
    scale::Statistics const found = Gather(kernel, samples, n);
    double const count = static_cast<double>(n) - (found.min == 0 ? found.zeros : 0);
    if (count == 0)
        return;
    double const mean = found.sum / count;
    double const spread = 3 * std::sqrt((found.sumSq - found.sum * found.sum / count) / count);

    // 2. The range, cut at three standard deviations. A rounding below zero gives NaN, which cuts nothing.
    double const min = mean - spread > found.min ? mean - spread : found.min;
    double const max = found.max > mean + spread ? mean + spread : found.max;

    // 3. The bytes.
    if (!(max - min > 0.000001))
        MarkNonZero(samples, buffer, n);
    else
        Map(kernel, samples, buffer, n, {min, max, 255.0 / (max - min)});
}

template <class Sample>
void SpreadSamples(unsigned char *buffer, std::size_t n, double min, double max) {
    if (max - min > 0)
        Map(scale::KernelFor<Sample>(), reinterpret_cast<Sample const *>(buffer), buffer, n,
            {min, max, 255.0 / (max - min)});
    else
        std::fill_n(buffer, n, std::uint8_t{255});
}

template <class Sample>
struct Typed {
    using Type = Sample;
};

/// Calls `work` with the type of samples and their number, or not at all where there is nothing to do.
template <class Work>
void WithSamples(int dataType, unsigned char const *buffer, int width, int height, Work const &work) {
    if (buffer == nullptr || width < 1 || height < 1)
        return;
    std::size_t const n = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    switch (dataType) {
    case 1:
        return work(Typed<std::uint8_t>(), n);
    case 2:
        return work(Typed<std::uint16_t>(), n);
    case 4:
        return work(Typed<std::int16_t>(), n);
    case 8:
        return work(Typed<std::uint32_t>(), n);
    case 16:
        return work(Typed<std::int32_t>(), n);
    case 32:
        return work(Typed<float>(), n);
    default:
        return;
    }
}

} // namespace

void ScaleDataBuf(int dataType, unsigned char *buffer, int width, int height) {
    WithSamples(dataType, buffer, width, height,
                [buffer]<class Sample>(Typed<Sample>, std::size_t n) { ScaleSamples<Sample>(buffer, n); });
}

void ScaleDataBufTo(int dataType, unsigned char *buffer, int width, int height, double min, double max) {
    WithSamples(dataType, buffer, width, height,
                [&]<class Sample>(Typed<Sample>, std::size_t n) { SpreadSamples<Sample>(buffer, n, min, max); });
}

} // namespace zelvar
