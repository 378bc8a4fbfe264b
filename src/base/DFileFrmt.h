#pragma once

#include "zelvar/base/DString.h"

#include <cstddef>

namespace zelvar {

/// File format descriptor: what an application offers to open or save.
class ZELVAR_API DFileFrmt {
public:
    DFileFrmt() = default;
    /// Null counts as empty. `extensions` is the mask, as "*.tif;*.tiff".
    DFileFrmt(char const *id, char const *name, char const *extensions);
    DFileFrmt(DString id, DString name, DString extensions, DString driverText, bool singleFile)
        : m_id(std::move(id)), m_name(std::move(name)), m_extensions(std::move(extensions)),
          m_driverText(std::move(driverText)), m_singleFile(singleFile) {}
    DFileFrmt(DFileFrmt const &) = default;
    DFileFrmt(DFileFrmt &&) = default;
    DFileFrmt &operator=(DFileFrmt const &) = default;
    DFileFrmt &operator=(DFileFrmt &&) = default;
    virtual ~DFileFrmt() = default;

    [[nodiscard]] DString const &GetID() const { return m_id; } ///< that of its driver, where it has one
    [[nodiscard]] DString const &GetName() const { return m_name; }
    /// The mask, as "*.tif;*.tiff".
    [[nodiscard]] DString const &GetExtn() const { return m_extensions; }
    /// The text that tells jobs of the property pane apart; often the id of the raster driver.
    [[nodiscard]] DString const &GetDriverText() const { return m_driverText; }
    void SetDriver(DString text) { m_driverText = std::move(text); }
    /// One file holds one document, so a dialog may offer the format in its file type box.
    [[nodiscard]] bool IsSingleFileConnector() const { return m_singleFile; }
    void SetSingleFileConnector(bool singleFile) { m_singleFile = singleFile; }

    /// Appends "name|mask|" to the text in `buffer`, which has room for `size` bytes with the zero at the end. False,
    /// and the text as it was, if that does not fit. A "|" of the name or the mask is written as a blank: it would end
    /// the field.
    [[nodiscard]] bool GetFilter(char *buffer, std::size_t size) const;

private:
    DString m_id;
    DString m_name;
    DString m_extensions;
    DString m_driverText;
    bool m_singleFile = true;
};

} // namespace zelvar
