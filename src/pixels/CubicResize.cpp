#include "zelvar/pixels/CubicResize.h"

#include "zelvar/base/Aside.h"
#include "zelvar/pixels/MixKernels.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <future>
#include <vector>

namespace zelvar {

namespace {

constexpr std::size_t kChannels = 3;
constexpr double kSharpness = -0.5;            // Keys' a
constexpr std::size_t kColumnsTogether = 64;   // pixels of a row that are made of one block
constexpr std::int64_t kWorthAThread = 65'536; // pixels of the larger picture

/// Keys' kernel: 1 at 0, 0 at the other whole numbers and from 2 on.
double Kernel(double x) {
    x = std::abs(x);
    if (x < 1)
        return ((kSharpness + 2) * x - (kSharpness + 3)) * x * x + 1;
    if (x < 2)
        return ((kSharpness * x - 5 * kSharpness) * x + 8 * kSharpness) * x - 4 * kSharpness;
    return 0;
}

using Taps = mix::Taps<float>;

Taps MakeTaps(int sourceSize, int targetSize) {
    double const ratio = static_cast<double>(sourceSize) / targetSize;
    double const widening = std::max(ratio, 1.0);
    Taps taps;
    for (int i = 0; i < targetSize; ++i) {
        double const centre = (i + 0.5) * ratio - 0.5;
        int const first = static_cast<int>(std::ceil(centre - 2 * widening));
        int const last = static_cast<int>(std::floor(centre + 2 * widening));
        int const begin = std::clamp(first, 0, sourceSize - 1);
        std::size_t const weights = taps.weights.size();
        taps.weights.resize(weights + static_cast<std::size_t>(std::clamp(last, 0, sourceSize - 1) - begin) + 1);
        double sum = 0;
        for (int at = first; at <= last; ++at)
            sum += Kernel((at - centre) / widening);
        // Samples beyond an edge repeat the edge.
        for (int at = first; at <= last; ++at)
            taps.weights[weights + static_cast<std::size_t>(std::clamp(at, 0, sourceSize - 1) - begin)] +=
                static_cast<float>(Kernel((at - centre) / widening) / sum);
        taps.first.push_back(begin);
        taps.begin.push_back(taps.weights.size());
    }
    return taps;
}

/// Makes rows of the target, from the top to the bottom. Each row of the source is narrowed once, with fifteen others;
/// a ring of narrowed rows is all that is kept.
class RowMaker {
public:
    RowMaker(DCanvas const &source, Taps const &columns, Taps const &rows, Isa isa)
        : m_source(source), m_columns(columns), m_rows(rows),
          m_kernels(std::get<mix::Kernels<float>>(mix::KernelsOf(isa))),
          m_bytes(std::get<mix::ByteKernels>(mix::KernelsOf(isa))), m_length(columns.Size() * kChannels),
          m_depth(rows.Longest() + mix::kRows), m_ring(m_depth, m_length), m_sums(m_length),
          m_narrowed(kColumnsTogether * kChannels * mix::kRows) {}

    void Make(std::size_t begin, std::size_t end, DCanvas &target) {
        auto const stop = static_cast<std::size_t>(m_rows.End(end - 1));
        auto ready = static_cast<std::size_t>(m_rows.first[begin]);
        for (std::size_t y = begin; y < end; ++y) {
            for (; ready < static_cast<std::size_t>(m_rows.End(y)); ready = std::min(ready + mix::kRows, stop))
                Narrow(ready, std::min(mix::kRows, stop - ready));
            std::vector<float const *> rows(m_rows.Count(y));
            for (std::size_t i = 0; i < rows.size(); ++i)
                rows[i] = RingRow(static_cast<std::size_t>(m_rows.first[y]) + i);
            m_kernels.mixRows(rows.data(), m_rows.WeightsOf(y), rows.size(), m_sums.data(), m_length);
            m_bytes.toBytes(m_sums.data(), m_length, target.Row(static_cast<int>(y)));
        }
    }

private:
    [[nodiscard]] float *RingRow(std::size_t row) { return m_ring.Row(row % m_depth); }

    /// Rows of the source to rows of the ring.
    void Narrow(std::size_t first, std::size_t count) {
        for (std::size_t begin = 0; begin < m_columns.Size(); begin += kColumnsTogether) {
            std::size_t const end = std::min(begin + kColumnsTogether, m_columns.Size());
            auto const firstPixel = static_cast<std::size_t>(m_columns.first[begin]);
            auto const length = (static_cast<std::size_t>(m_columns.End(end - 1)) - firstPixel) * kChannels;
            std::array<std::uint8_t const *, mix::kRows> from{};
            std::array<float *, mix::kRows> to{};
            for (std::size_t row = 0; row < mix::kRows; ++row) {
                // The last ones are repeated where a block is not full, and not kept.
                std::size_t const at = first + std::min(row, count - 1);
                from[row] = m_source.Row(static_cast<int>(at)) + firstPixel * kChannels;
                to[row] = RingRow(first + row) + begin * kChannels;
            }
            m_block.resize(std::max(m_block.size(), length * mix::kRows));
            m_bytes.toBlock(from.data(), length, m_block.data());
            m_kernels.mixColumns(m_block.data(), static_cast<int>(firstPixel), m_columns, begin, end, kChannels,
                                 m_narrowed.data());
            m_kernels.fromBlock(m_narrowed.data(), (end - begin) * kChannels, to.data());
        }
    }

    DCanvas const &m_source;
    Taps const &m_columns;
    Taps const &m_rows;
    mix::Kernels<float> const &m_kernels;
    mix::ByteKernels const &m_bytes;
    std::size_t m_length; ///< samples of a row of the target
    std::size_t m_depth;  ///< rows of the ring: a block may be narrowed while the longest run is needed
    mix::RowBuffer<float> m_ring;
    std::vector<float> m_sums;
    std::vector<float> m_block;
    std::vector<float> m_narrowed;
};

} // namespace

void ResizeCubic(DCanvas const &source, int width, int height, DCanvas &target, Isa isa) {
    if (!source.HasData() || width < 1 || height < 1) {
        target.Clear();
        return;
    }
    if (width == source.GetWidth() && height == source.GetHeight()) {
        target.Copy(source);
        return;
    }
    DCanvas result;
    result.SetSize(width, height);
    if (result.HasData()) {
        Taps const columns = MakeTaps(source.GetWidth(), width);
        Taps const rows = MakeTaps(source.GetHeight(), height);
        auto const make = [&](std::size_t begin, std::size_t end) {
            RowMaker(source, columns, rows, isa).Make(begin, end, result);
        };
        std::int64_t const pixels =
            std::max(std::int64_t{width} * height, std::int64_t{source.GetWidth()} * source.GetHeight());
        std::size_t const half = pixels < kWorthAThread ? 0 : rows.Size() / 2;
        std::future<void> upper;
        if (half > 0)
            upper = DoAside([&] { make(0, half); });
        make(half, rows.Size());
        if (upper.valid())
            upper.get();
    }
    target = std::move(result);
}

} // namespace zelvar
