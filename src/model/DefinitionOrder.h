#pragma once

#include "zelvar/base/DString.h"

#include <vector>

namespace zelvar {

/// The order in which the user has put the rows of his connections. It is a setting: the definitions' files may be
/// shared. Those that it does not name follow, by name.
class ZELVAR_API DefinitionOrder {
public:
    /// Names; empty while the user has moved none.
    [[nodiscard]] static std::vector<DString> Read();
    /// May be written later than at once, where another process keeps the settings.
    static void Keep(std::vector<DString> const &names);
    /// Where the order names the one, it names the other from now on.
    static void Rename(DString const &name, DString const &newName);
};

} // namespace zelvar
