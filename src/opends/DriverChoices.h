#pragma once

#include "zelvar/base/DString.h"

#include <map>
#include <set>

namespace zelvar {

/// Which raster driver data are to be opened with where several could read them: what the user chose the last time for
/// a file of that extension. Kept in the settings. User-interface thread.
class DriverChoices {
public:
    /// The driver's id; empty for the one that opens the data without being named.
    [[nodiscard]] DString Of(DString const &path) const;
    /// `options` with the driver's name among them, unless one stands there.
    [[nodiscard]] DString AddedTo(DString options, DString const &path) const;
    /// The user wants this driver for the data at `path`, and from now on for all with its extension. An empty id ends
    /// that.
    void Choose(DString const &path, DString const &id);
    /// The data at `path` do not open with the driver that others of their extension have: they are opened without.
    /// False, and nothing changed, if there is none or the user wants it for these very data.
    bool GiveUp(DString const &path);

private:
    [[nodiscard]] DString const &Remembered(DString const &extension) const;

    mutable std::map<DString, DString> m_byExtension; ///< as far as it was asked for
    std::map<DString, DString> m_byPath;              ///< what the user chose in this dialog
    std::set<DString> m_without;                      ///< paths that were given up
};

} // namespace zelvar
