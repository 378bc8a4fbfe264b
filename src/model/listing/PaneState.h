#pragma once

#include "zelvar/base/DString.h"

#include <unordered_set>
#include <vector>

namespace zelvar {

/// Rows that a list may hold before it takes no further batch.
constexpr std::size_t kListingRowLimit = 32'000;

/// What a list's content was made from: a request that changes none of it costs nothing.
struct PaneState {
    int bdiFilter = 0;
    DString formatId{};
    DString fileFilter{};
    unsigned folding = 0; ///< a number for each way to fold rows
    std::vector<DString> rootPaths{};
};

/// True if a listing of `wanted` would not give what `saved` gave. A changed mask alone counts in a recursive list
/// only: the others take it up when they are listed again. The order of roots does not matter.
[[nodiscard]] ZELVAR_API bool StateChanged(PaneState const &saved, PaneState const &wanted, bool isRecursive);

/// True if a listing of `roots` may keep what one of `saved` found: all those roots are there again, others may be.
[[nodiscard]] ZELVAR_API bool CoversRoots(std::vector<DString> const &saved, std::vector<DString> const &roots);

/// Paths to look up: of rows that are to be selected when they turn up, or of items that are known.
class PathSet {
public:
    void Clear() { m_paths.clear(); }
    void Add(DString path) { m_paths.insert(std::move(path)); }
    void Remove(DString const &path) { m_paths.erase(path); }
    void Reserve(std::size_t count) { m_paths.reserve(count); }
    [[nodiscard]] bool Contains(DString const &path) const { return m_paths.contains(path); }
    [[nodiscard]] bool IsEmpty() const { return m_paths.empty(); }
    [[nodiscard]] std::size_t Count() const { return m_paths.size(); }

private:
    std::unordered_set<DString> m_paths;
};

} // namespace zelvar
