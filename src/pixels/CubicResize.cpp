#include "zelvar/pixels/CubicResize.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace zelvar {

namespace {

constexpr int kChannels = 3;
constexpr double kSharpness = -0.5; // Keys' a

/// Keys' kernel: 1 at 0, 0 at the other whole numbers and from 2 on.
double Kernel(double x) {
    x = std::abs(x);
    if (x < 1)
        return ((kSharpness + 2) * x - (kSharpness + 3)) * x * x + 1;
    if (x < 2)
        return ((kSharpness * x - 5 * kSharpness) * x + 8 * kSharpness) * x - 4 * kSharpness;
    return 0;
}

/// The source samples that one target sample is made of.
struct Taps {
    int first = 0;
    std::vector<float> weights; ///< add up to 1
};

std::vector<Taps> MakeTaps(int sourceSize, int targetSize) {
    double const ratio = static_cast<double>(sourceSize) / targetSize;
    double const widening = std::max(ratio, 1.0);
    std::vector<Taps> all(static_cast<std::size_t>(targetSize));
    for (int i = 0; i < targetSize; ++i) {
        double const centre = (i + 0.5) * ratio - 0.5;
        int const first = static_cast<int>(std::ceil(centre - 2 * widening));
        int const last = static_cast<int>(std::floor(centre + 2 * widening));
        Taps &taps = all[static_cast<std::size_t>(i)];
        taps.first = std::clamp(first, 0, sourceSize - 1);
        int const count = std::clamp(last, 0, sourceSize - 1) - taps.first + 1;
        taps.weights.assign(static_cast<std::size_t>(count), 0.0F);
        double sum = 0;
        for (int at = first; at <= last; ++at)
            sum += Kernel((at - centre) / widening);
        // Samples beyond an edge repeat the edge.
        for (int at = first; at <= last; ++at)
            taps.weights[static_cast<std::size_t>(std::clamp(at, 0, sourceSize - 1) - taps.first)] +=
                static_cast<float>(Kernel((at - centre) / widening) / sum);
    }
    return all;
}

std::uint8_t ToByte(float value) { return static_cast<std::uint8_t>(std::clamp(value + 0.5F, 0.0F, 255.0F)); }

void ResizeRow(std::uint8_t const *source, std::vector<Taps> const &columns, float *target) {
    for (Taps const &taps : columns) {
        float red = 0;
        float green = 0;
        float blue = 0;
        std::uint8_t const *pixel = source + static_cast<std::ptrdiff_t>(taps.first) * kChannels;
        for (float const weight : taps.weights) {
            red += weight * static_cast<float>(pixel[0]);
            green += weight * static_cast<float>(pixel[1]);
            blue += weight * static_cast<float>(pixel[2]);
            pixel += kChannels;
        }
        *target++ = red, *target++ = green, *target++ = blue;
    }
}

} // namespace

void ResizeCubic(DCanvas const &source, int width, int height, DCanvas &target) {
    if (!source.HasData() || width < 1 || height < 1) {
        target.Clear();
        return;
    }
    if (width == source.GetWidth() && height == source.GetHeight()) {
        target.Copy(source);
        return;
    }
    std::vector<Taps> const columns = MakeTaps(source.GetWidth(), width);
    std::vector<Taps> const rows = MakeTaps(source.GetHeight(), height);
    auto const rowLength = static_cast<std::size_t>(width) * kChannels;

    // Rows are narrowed once each, when a target row first needs them; a ring of them is all that is kept.
    std::size_t deepest = 0;
    for (Taps const &taps : rows)
        deepest = std::max(deepest, taps.weights.size());
    std::vector<float> ring(deepest * rowLength);
    int narrowed = -1; // the last source row in the ring
    std::vector<float> sums(rowLength);

    DCanvas result;
    result.SetSize(width, height);
    for (int y = 0; y < height && result.HasData(); ++y) {
        Taps const &taps = rows[static_cast<std::size_t>(y)];
        int const last = taps.first + static_cast<int>(taps.weights.size()) - 1;
        for (int row = std::max(narrowed + 1, taps.first); row <= last; ++row)
            ResizeRow(source.Row(row), columns, ring.data() + static_cast<std::size_t>(row) % deepest * rowLength);
        narrowed = std::max(narrowed, last);

        std::fill(sums.begin(), sums.end(), 0.0F);
        for (std::size_t i = 0; i < taps.weights.size(); ++i) {
            float const *row = ring.data() + (static_cast<std::size_t>(taps.first) + i) % deepest * rowLength;
            for (std::size_t x = 0; x < rowLength; ++x)
                sums[x] += taps.weights[i] * row[x];
        }
        std::transform(sums.begin(), sums.end(), result.Row(y), ToByte);
    }
    target = std::move(result);
}

} // namespace zelvar
