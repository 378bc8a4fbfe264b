#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/platform/os/ShellNamespace.h"

#include <unordered_map>

namespace zelvar {

/// What the kind and the suffix of a child tell, for the children of one listing: each suffix is thought about once.
class SuffixFacts {
public:
    struct Facts {
        int icon = -1;           ///< in `SystemImages()`
        bool isClaimed = false;  ///< a plain file that some driver would open, going by its name
        bool isNameless = false; ///< a plain file that only a look into it can tell
    };

    explicit SuffixFacts(platform::ShellNamespace const &shell) : m_shell(shell) {}
    /// Stays where it is as long as this object.
    [[nodiscard]] Facts const &Of(platform::ShellChild const &child);

private:
    platform::ShellNamespace const &m_shell;
    std::unordered_map<DString, Facts> m_known;
    DString m_key; ///< keeps its memory from child to child
};

} // namespace zelvar
