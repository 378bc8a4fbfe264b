#pragma once

#include "zelvar/base/Containers.h"
#include "zelvar/base/DFileFrmt.h"

#include <memory>
#include <string_view>
#include <vector>

namespace zelvar {

/// The formats that a request for a file offers, in order, and those among them that were made for it. Null ones keep
/// their place and are passed over. A copy offers the same ones.
class FormatOffer {
public:
    void Add(DFileFrmt *format, bool sorted); ///< not owned; `sorted`: before the first with a greater name
    void AddFirst(DFileFrmt *format) { m_formats.insert(m_formats.begin(), format); }
    void Remove(DFileFrmt const *format); ///< the first entry of it
    void RemoveId(std::string_view id);   ///< the first with it
    /// Owns `made` from now on. Those of the extension "RSTR_FRMT" stand ahead when loading and are not offered
    /// otherwise; the rest, with all that were taken over before, is sorted in.
    void TakeOver(DList<DFileFrmt *> const &made, bool loads);
    void Clear();

    [[nodiscard]] bool IsEmpty() const { return m_formats.empty(); }
    [[nodiscard]] bool Owns(DFileFrmt const *format) const;
    [[nodiscard]] DVector<DFileFrmt *> const &All() const { return m_formats; } ///< null ones too
    [[nodiscard]] std::vector<DFileFrmt *> Offered() const;

    // The first one, or null.
    [[nodiscard]] DFileFrmt *ById(std::string_view id) const;
    [[nodiscard]] DFileFrmt *ByName(std::string_view name) const;
    [[nodiscard]] DFileFrmt *ByExtension(std::string_view masks) const; ///< of exactly these masks

    /// What to begin with where the settings name none and `mask` is that of the initial file: of hundreds the first in
    /// the alphabet is no good guess. `all` when loading, a plain TIFF when saving, whose mask is `tiff`. Null where
    /// the file's own mask names one.
    [[nodiscard]] DFileFrmt *Usual(bool saves, DString const &mask, DFileFrmt &all, DString const &tiff) const;

private:
    using Owned = DList<std::shared_ptr<DFileFrmt>>;

    DVector<DFileFrmt *> m_formats;
    Owned m_named; ///< those of plug-ins that are sorted in
    Owned m_ahead; ///< those that are not offered by their name
};

/// "*.ini;*.txt" has two.
[[nodiscard]] bool HasMask(DFileFrmt const &format, DString const &mask);

} // namespace zelvar
