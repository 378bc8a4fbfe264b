#include "zelvar/model/listing/PaneState.h"

#include <algorithm>

namespace zelvar {

namespace {

bool AllAmong(std::vector<DString> const &paths, std::vector<DString> const &others) {
    PathSet set;
    for (DString const &path : others)
        set.Add(path);
    return std::all_of(paths.begin(), paths.end(), [&](DString const &path) { return set.Contains(path); });
}

} // namespace

bool StateChanged(PaneState const &saved, PaneState const &wanted, bool isRecursive) {
    if (isRecursive && wanted.fileFilter != saved.fileFilter)
        return true;
    return wanted.bdiFilter != saved.bdiFilter || wanted.folding != saved.folding ||
           wanted.formatId != saved.formatId || wanted.rootPaths.size() != saved.rootPaths.size() ||
           !AllAmong(saved.rootPaths, wanted.rootPaths);
}

bool CoversRoots(std::vector<DString> const &saved, std::vector<DString> const &roots) {
    return !saved.empty() && !roots.empty() && AllAmong(saved, roots);
}

} // namespace zelvar
