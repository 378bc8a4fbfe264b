#pragma once

#include "zelvar/base/DString.h"

namespace zelvar {

/// File format descriptor: what an application offers to open or save.
class ZELVAR_API DFileFrmt {
public:
    DFileFrmt() = default;
    DFileFrmt(DString id, DString name, DString extensions, DString driverText = {}, bool singleFile = true)
        : m_id(std::move(id)), m_name(std::move(name)), m_extensions(std::move(extensions)),
          m_driverText(std::move(driverText)), m_singleFile(singleFile) {}
    DFileFrmt(DFileFrmt const &) = default;
    DFileFrmt(DFileFrmt &&) = default;
    DFileFrmt &operator=(DFileFrmt const &) = default;
    DFileFrmt &operator=(DFileFrmt &&) = default;
    virtual ~DFileFrmt() = default;

    [[nodiscard]] DString const &GetId() const { return m_id; }
    [[nodiscard]] DString const &GetName() const { return m_name; }
    /// The mask, as "*.tif;*.tiff".
    [[nodiscard]] DString const &GetExtn() const { return m_extensions; }
    /// The text that tells jobs of the property pane apart; often the id of the raster driver.
    [[nodiscard]] DString const &GetDriverText() const { return m_driverText; }
    /// One file holds one document, so a dialog may offer the format in its file type box.
    [[nodiscard]] bool IsSingleFile() const { return m_singleFile; }

private:
    DString m_id;
    DString m_name;
    DString m_extensions;
    DString m_driverText;
    bool m_singleFile = true;
};

} // namespace zelvar
