#pragma once

#include "zelvar/base/Containers.h"
#include "zelvar/base/DFile.h"

namespace zelvar {

/// Files that match a mask under a directory, in byte order of their names, so that the same directory always gives the
/// same order.
class ZELVAR_API DFileFind {
public:
    /// `masks` as `PathMatchSpec` reads them. The last argument limits the number of results, 0 for all.
    DFileFind(DString const &directory, char const *masks, bool files, bool directories, bool recursive, bool hidden,
              int limit);
    [[nodiscard]] DVector<DFile> const &GetFiles() const { return m_files; }

private:
    DVector<DFile> m_files;
};

} // namespace zelvar
