#pragma once

#include "zelvar/model/DataSourceItem.h"
#include "zelvar/platform/os/ShellNamespace.h"

#include <set>

namespace zelvar {

/// Which folders a recursive listing has entered: links that lead back to one of them are not followed, so that a link
/// to a folder above ends no listing in a circle.
class ZELVAR_API FolderVisits {
public:
    /// True if the folder may be entered; it counts as entered then. Only a folder reached by a symbolic link is ever
    /// refused, or one of a server, where links look like folders.
    [[nodiscard]] bool Enter(DataSourceItem const &folder);

private:
    std::set<platform::FolderIdentity> m_entered;
};

} // namespace zelvar
