#pragma once

namespace zelvar {

/// What of a folder is shown as one.
struct DataSetFolding {
    bool sidecars = false; ///< files that belong to another one stand under it
    bool series = false;   ///< numbered files are one row
    bool folders = false;  ///< folders that are data are no folders

    /// A number for each way to fold; 0 for none.
    [[nodiscard]] unsigned Number() const { return (sidecars ? 1U : 0U) | (series ? 2U : 0U) | (folders ? 4U : 0U); }
    [[nodiscard]] bool IsAny() const { return sidecars || series || folders; }
    friend bool operator==(DataSetFolding const &, DataSetFolding const &) = default;
};

} // namespace zelvar
