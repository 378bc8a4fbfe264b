#include "zelvar/data/gdal/Salvage.h"

#include <gdal.h>

#include <algorithm>
#include <cmath>

namespace zelvar::gdal {

void Salvage::Begin(int rows) {
    m_rows = rows;
    m_next = 0;
    m_lost = 0;
}

template <class Sample>
bool Salvage::Read(std::vector<BandHandle> const &bands, Rows const &rows, Sample *out, StopSignal const *stop) {
    int blockWidth = 1;
    int blockHeight = 1;
    GDALGetBlockSize(bands.front(), &blockWidth, &blockHeight);
    std::size_t const row = static_cast<std::size_t>(rows.width) * bands.size();
    Rows part = rows;
    for (int const end = rows.top + rows.height; part.top < end; part.top += part.height) {
        if (IsStopped(stop))
            return false;
        part.height = std::min(blockHeight - part.top % blockHeight, end - part.top);
        Sample *const samples = out + static_cast<std::size_t>(part.top - rows.top) * row;
        if (!Take(part.height, [&] { return ReadRows(bands, part, samples, stop); }))
            std::fill_n(samples, row * static_cast<std::size_t>(part.height), Sample{0});
    }
    return !IsStopped(stop);
}

RDIRowsRead Salvage::Result(int all) const {
    int const rows = static_cast<int>(std::lround(std::max(m_least, 0.0) * all));
    return {.rows = m_least < 1 ? std::min(rows, all - 1) : all, .all = all};
}

template bool Salvage::Read(std::vector<BandHandle> const &, Rows const &, std::uint8_t *, StopSignal const *);
template bool Salvage::Read(std::vector<BandHandle> const &, Rows const &, std::uint16_t *, StopSignal const *);
template bool Salvage::Read(std::vector<BandHandle> const &, Rows const &, std::int16_t *, StopSignal const *);
template bool Salvage::Read(std::vector<BandHandle> const &, Rows const &, std::uint32_t *, StopSignal const *);
template bool Salvage::Read(std::vector<BandHandle> const &, Rows const &, std::int32_t *, StopSignal const *);
template bool Salvage::Read(std::vector<BandHandle> const &, Rows const &, float *, StopSignal const *);

} // namespace zelvar::gdal
