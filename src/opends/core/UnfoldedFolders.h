#pragma once

#include "zelvar/base/DString.h"

#include <vector>

namespace zelvar {

/// The folders whose numbered files the user wants to see one by one: the last hundred of them.
class ZELVAR_API UnfoldedFolders {
public:
    static constexpr std::size_t kMost = 100;

    UnfoldedFolders() = default;
    /// From what `Text` gave.
    explicit UnfoldedFolders(std::string_view text);

    [[nodiscard]] bool Contains(DString const &folder) const;
    void Add(DString const &folder);
    void Remove(DString const &folder);
    /// For the settings: UTF-8 without control characters, whatever the names are.
    [[nodiscard]] DString Text() const;

private:
    std::vector<DString> m_folders; ///< the last one added last
};

} // namespace zelvar
