#pragma once

#include "zelvar/data/RDIDriver.h"
#include "zelvar/data/gdal/BandReading.h"
#include "zelvar/data/gdal/GdalScope.h"

#include <algorithm>
#include <chrono>

namespace zelvar::gdal {

/// Reads damaged bands row of blocks by row of blocks: what cannot be read is zeros, and is counted. Once the rows that
/// fail have taken two seconds, the rest counts as one of them: some libraries begin anew with each row. Where one says
/// at the first row that the data end too soon, what it makes of them is taken, and counts as not read.
class Salvage {
public:
    /// `scope`: the one around the reading, which hears how the library fares.
    explicit Salvage(GdalScope const &scope) : m_scope(scope) {}

    /// The bands are read from the first of so many rows to the last, by one pass or several.
    void Begin(int rows);
    /// The next rows, as `gdal::ReadRows`. False if it was stopped.
    template <class Sample>
    [[nodiscard]] bool Read(std::vector<BandHandle> const &bands, Rows const &rows, Sample *out,
                            StopSignal const *stop);
    /// The next row, which `read` reads; false if that fails.
    template <class ReadRow>
    bool ReadOne(ReadRow const &read) {
        return Take(1, read);
    }
    /// Of `all` rows of a window over the bands, those that came in each pass.
    [[nodiscard]] RDIRowsRead Result(int all) const;
    /// Whether there is anything to show.
    [[nodiscard]] bool HasAny() const { return m_hasAny; }

private:
    template <class ReadPart>
    bool Take(int rows, ReadPart const &read);

    GdalScope const &m_scope;
    int m_rows = 0;
    int m_next = 0;     ///< row of this pass
    int m_lost = 0;     ///< of this pass
    double m_least = 1; ///< part of the rows that came in the worst of the passes so far
    bool m_hasAny = false;
    bool m_endsAtOnce = false;
    std::chrono::steady_clock::duration m_spent{};
};

template <class ReadPart>
bool Salvage::Take(int rows, ReadPart const &read) {
    constexpr std::chrono::seconds most{2};
    bool const isEnded = m_scope.HasEndedTooSoon() && !m_endsAtOnce;
    auto const begin = std::chrono::steady_clock::now();
    bool const isRead = !isEnded && m_spent < most && read();
    bool const endsHere = isRead && m_scope.HasEndedTooSoon();
    m_endsAtOnce = m_endsAtOnce || (endsHere && m_next == 0);
    bool const isTaken = isRead && (!endsHere || m_endsAtOnce);
    if (!isRead)
        m_spent += std::chrono::steady_clock::now() - begin;
    m_next += rows;
    if (!isTaken || endsHere)
        m_lost += rows;
    m_hasAny = m_hasAny || isTaken;
    m_least = m_rows < 1 ? m_least : std::min(m_least, 1 - static_cast<double>(m_lost) / m_rows);
    return isTaken;
}

} // namespace zelvar::gdal
