#pragma once

#include "zelvar/data/gdal/Tree.h"

namespace zelvar::gdal {

/// Tree driver "DataFolder": folders that are data sets, whichever format reads them. A folder's name does not tell
/// which formats to ask.
class DataFolderDriver : public TreeDriver {
public:
    [[nodiscard]] DString GetId() const override { return "DataFolder"; }
    [[nodiscard]] DString GetInfo() const override { return "Folder that is a data set"; }
    [[nodiscard]] DString GetExtensions() const override { return {}; }
    [[nodiscard]] DString GetFamily() const override { return "GDAL"; }
    [[nodiscard]] bool CanReadPath(DString const &path) const override;

protected:
    [[nodiscard]] std::unique_ptr<Tree> OpenTree(DString const &url, DString const &filter,
                                                 DError &error) const override;
};

} // namespace zelvar::gdal
