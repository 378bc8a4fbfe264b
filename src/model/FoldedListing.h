#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/model/datasets/DataSetFolding.h"

namespace zelvar {

/// While one lives, on its thread: folders of the file system are listed with that folding, see `DataSetFolding`.
class ZELVAR_API FoldedListing {
public:
    explicit FoldedListing(DataSetFolding folding);
    ~FoldedListing();
    FoldedListing(FoldedListing const &) = delete;
    FoldedListing &operator=(FoldedListing const &) = delete;

    /// That of the innermost one of this thread; nothing folded without one.
    [[nodiscard]] static DataSetFolding Current();

private:
    DataSetFolding m_former;
};

} // namespace zelvar
