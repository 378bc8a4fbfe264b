#pragma once

#include "zelvar/data/ADIDriver.h"
#include "zelvar/data/gdal/Source.h"
#include "zelvar/data/gdal/Utf8Copy.h"

#include <memory>
#include <optional>

namespace zelvar::gdal {

/// A layer as a table: its attributes without its places.
///
/// Few formats find a row by its number, and none of them tells cheaply how many there are: a cursor goes forward, and
/// back to the beginning where a row before it is asked for. Columns of plain text files have the type that their first
/// rows suggest; their texts stay as they are written, so that no zero in front of a number gets lost.
class LayerTable {
public:
    /// Null, with the reason in `*error` (may be null), if `only`, or any format, does not read it.
    static std::unique_ptr<LayerTable> Open(BDIMoniker const &moniker, Format const *only, StopSignal const *stop,
                                            DError *error);

    [[nodiscard]] Format const &OpenedBy() const { return *m_format; }
    [[nodiscard]] std::vector<ADIColumn> const &Columns() const { return m_columns; }
    /// As `ADIDriver::ReadRows`.
    [[nodiscard]] bool ReadRows(std::int64_t first, int most, ADIRows &rows);

private:
    enum class Kind { Text, Real, Real32, Other };
    struct DestroyFeature {
        void operator()(void *feature) const;
    };
    using FeaturePtr = std::unique_ptr<void, DestroyFeature>;

    LayerTable() = default;
    [[nodiscard]] bool ChooseLayer(DString const &name, DError *error);
    void DescribeColumns();
    void SuggestTypes();
    [[nodiscard]] bool GoTo(std::int64_t row);
    /// Null at the end, which a row that cannot be read is too.
    [[nodiscard]] FeaturePtr Next();
    /// Texts of the cells of a feature; false if there is too much of them.
    [[nodiscard]] bool Append(void *feature, ADIRows &rows) const;
    [[nodiscard]] DString RealText(void *feature, int field) const;
    [[nodiscard]] bool IsStopped();

    std::unique_ptr<Utf8Copy> m_copy; ///< what is read in place of the file; may be null
    DatasetPtr m_dataset;
    void *m_layer = nullptr; ///< GDAL's handle, the data set's
    Format const *m_format = nullptr;
    Reach m_reach = Reach::Local;
    StopSignal const *m_stop = nullptr; ///< not owned, may be null
    std::vector<ADIColumn> m_columns;
    std::vector<Kind> m_kinds;
    std::vector<int> m_decimals;       ///< that a column says to have; 0 for none
    std::int64_t m_next = 0;           ///< the row that the cursor stands before
    std::optional<std::int64_t> m_end; ///< how many rows there are, once known
    unsigned m_looks = 0;              ///< at the stop question
};

} // namespace zelvar::gdal
