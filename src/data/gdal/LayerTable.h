#pragma once

#include "zelvar/data/gdal/Source.h"
#include "zelvar/data/tables/OpenTable.h"
#include "zelvar/data/tables/TextRecoder.h"

#include <memory>

namespace zelvar::gdal {

/// A layer as a table: its attributes without its places.
class LayerTable : public OpenTable {
public:
    /// Null, with the reason in `*error` (may be null), if `only`, or any format, does not read it.
    static std::unique_ptr<LayerTable> Open(Source const &source, Format const *only, StopSignal const *stop,
                                            DError *error);
    [[nodiscard]] Format const &OpenedBy() const { return *m_format; }

protected:
    std::int64_t GoBack(std::int64_t row) override;
    [[nodiscard]] bool Step() override;
    [[nodiscard]] bool HasFailed() const override { return m_hasFailed; }
    [[nodiscard]] bool Append(ADIRows &rows) const override;

private:
    struct Field {
        enum class Kind { Text, Real, Real32 };
        Kind kind = Kind::Text;
        int decimals = 0; ///< that it says to have; 0 for none
    };
    struct DestroyFeature {
        void operator()(void *feature) const;
    };

    explicit LayerTable(StopSignal const *stop) : OpenTable(stop) {}
    [[nodiscard]] bool OpenLayer(Source const &source, Format const *only, DError *error);
    [[nodiscard]] DString StatedEncoding(Source const &source) const;
    [[nodiscard]] bool OpenUncoded(Source const &source);
    void AppendRecoded(DString &out, char const *text, std::size_t most) const;
    [[nodiscard]] bool ChooseLayer(DString const &name, DError *error);
    void DescribeColumns();
    [[nodiscard]] DString RealText(std::size_t column) const;

    DatasetPtr m_dataset;
    bool m_isOfService = false;
    bool m_hasFailed = false; ///< the service did not give the row
    void *m_layer = nullptr;  ///< GDAL's handle, the data set's
    Format const *m_format = nullptr;
    std::vector<Field> m_fields;
    std::unique_ptr<TextRecoder> m_recoder;          ///< of texts as the file has them; null where they come in UTF-8
    std::unique_ptr<void, DestroyFeature> m_feature; ///< the row read last
};

} // namespace zelvar::gdal
