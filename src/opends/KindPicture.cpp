#include "zelvar/opends/KindPicture.h"

#include "zelvar/data/BDINode.h"
#include "zelvar/model/TemplDataSourceItem.h"
#include "zelvar/opends/NewConnectionItem.h"

namespace zelvar {

namespace {

/// A name of the desktop's theme, as files on disks have theirs.
struct Look {
    std::uint32_t types; ///< bits of `BDINodeType`
    char const *name;
};
/// The first that fits holds.
constexpr Look kLooks[] = {{BDINode_Directory, "folder"},           {BDINode_Container, "package-x-generic"},
                           {BDINode_Raster, "image-x-generic"},     {BDINode_Thematic, "x-office-drawing"},
                           {BDINode_Table, "x-office-spreadsheet"}, {BDINode_Folder, "folder"}};

KindPicture PictureOf(char const *name) {
    static ImageList images; // few and for ever
    return {&images, images.Add({.name = name, .fallback = name})};
}

} // namespace

KindPicture PictureOfKind(DataSourceItem const &item) {
    if (item.GetImageList() != nullptr && item.GetIconIndex() >= 0)
        return {};
    if (IsNewConnection(&item))
        return PictureOf("list-add");
    auto const *const tree = dynamic_cast<TemplDataSourceItem const *>(&item);
    if (tree == nullptr || !tree->IsOnServer())
        return {};
    if (tree->IsRoot())
        return PictureOf("network-server");
    std::uint32_t const type = tree->GetNode() == nullptr ? 0 : tree->GetNode()->type;
    for (Look const &look : kLooks)
        if ((type & look.types) != 0)
            return PictureOf(look.name);
    return PictureOf("application-octet-stream");
}

} // namespace zelvar
