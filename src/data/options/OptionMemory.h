#pragma once

#include "zelvar/base/DString.h"

#include <list>

namespace zelvar {

/// Which options somebody has read files with: what was chosen for a driver's files last, and for each of the files
/// used last its own.
class ZELVAR_API OptionMemory {
public:
    static constexpr std::size_t kMostFiles = 64;

    /// `text` is what stands behind "?" of a moniker; empty where the driver is to do as it does by itself.
    void Note(DString const &driver, DString const &file, DString const &text);
    /// The file's own, else the driver's.
    [[nodiscard]] DString For(DString const &driver, DString const &file) const;

    /// As one text for the settings, and back. Lines that are none are passed over.
    [[nodiscard]] DString ToText() const;
    [[nodiscard]] static OptionMemory FromText(DString const &text);

private:
    struct Entry {
        DString driver;
        DString file; ///< empty for the driver's
        DString text;
    };
    void Put(Entry entry);
    std::list<Entry> m_entries; ///< the one used last first
};

} // namespace zelvar
