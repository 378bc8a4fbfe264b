#pragma once

#include "zelvar/base/ImageList.h"
#include "zelvar/platform/os/ShellNamespace.h"

#include <unordered_map>

namespace zelvar {

/// The one list of small pictures that all items of the shell namespace share. Any thread.
[[nodiscard]] ImageList &SystemImages();

/// Looks pictures up for the children of one listing: by kind and suffix, so each suffix is asked for once.
class IconLookup {
public:
    explicit IconLookup(platform::ShellNamespace const &shell) : m_shell(shell) {}
    /// Index in `SystemImages()`.
    [[nodiscard]] int IndexOf(platform::ShellChild const &child);

private:
    platform::ShellNamespace const &m_shell;
    std::unordered_map<DString, int> m_known;
    DString m_key; ///< keeps its memory from child to child
};

} // namespace zelvar
