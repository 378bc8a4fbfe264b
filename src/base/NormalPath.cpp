#include "zelvar/base/NormalPath.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <memory>

#include <sys/stat.h>

namespace zelvar {

namespace {

/// What a link at the path leads to; the path itself for anything else.
DString WithoutLink(DString const &path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode))
        return path;
    std::unique_ptr<char, decltype(&std::free)> const real(realpath(path.c_str(), nullptr), &std::free);
    return real == nullptr ? path : DString(real.get());
}

} // namespace

DString NormalPath(std::string_view absolute, bool (*mayLook)(DString const &path)) {
    DString path; // what has been followed so far, "" for the root
    for (std::size_t start = 0; start < absolute.size();) {
        std::size_t const end = std::min(absolute.find('/', start), absolute.size());
        std::string_view const element = absolute.substr(start, end - start);
        if (element == ".." && !path.empty()) {
            if (mayLook == nullptr || mayLook(path))
                path = WithoutLink(path);
            path.resize(path.rfind('/'));
        } else if (!element.empty() && element != "." && element != "..") {
            path.append("/").append(element);
        }
        start = end + 1;
    }
    return path.empty() ? "/" : path;
}

} // namespace zelvar
