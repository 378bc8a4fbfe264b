#include "zelvar/data/gdal/DataFolderTree.h"

#include "zelvar/data/gdal/ContainerProbe.h"
#include "zelvar/data/gdal/ContainerTree.h"

namespace zelvar::gdal {

bool DataFolderDriver::CanReadPath(DString const &path) const { return IsFolderOfSeveral(path); }

std::unique_ptr<Tree> DataFolderDriver::OpenTree(DString const &url, DString const &, DError &) const {
    auto const source = Resolve({url, nullptr}, nullptr);
    std::optional<Members> members = source && source->folder ? ListMembers(*source, nullptr) : std::nullopt;
    return members ? ContainerTree::Make(*source, std::move(*members)) : nullptr;
}

} // namespace zelvar::gdal
