#pragma once

#include "zelvar/model/FolderVisits.h"
#include "zelvar/model/datasets/DataSetFolding.h"

#include <functional>
#include <system_error>
#include <vector>

namespace zelvar {

/// Goes through what lies in places, and below them: the one walk behind every listing of the command and of the open
/// dialog. On the calling thread.
class ZELVAR_API ListingWalk {
public:
    struct Options {
        bool recursive = false; ///< enters every folder and container below, depth first
        DString filter{};       ///< mask for plain files, as "*.tif;*.img"; empty for all
        DString driverId{};     ///< the driver that containers are limited to; empty for any
        int nodeMask = 0;       ///< driver nodes to visit
        DLGTemplate purpose = DT_DATA;
        DataSourceItem::ICancel *cancel = nullptr; ///< not owned; ends the walk between two children
        DataSetFolding folding{};                  ///< of folders of the file system
        /// Hears of each place that was not read, or not to its end. May be empty.
        std::function<void(DataSourceItem &place, std::error_code error)> onUnread{};
    };
    /// Is given each child, those of a folder before what lies in them; false ends the folder.
    using Take = std::function<bool(RefItemPtr<DataSourceItem> child)>;

    explicit ListingWalk(Options options) : m_options(std::move(options)) {}

    /// A folder is entered once in all places of one walk if a link leads to it: see `FolderVisits`.
    void Through(RefItemPtr<DataSourceItem> const &place, Take const &take);

private:
    using Items = std::vector<RefItemPtr<DataSourceItem>>;

    [[nodiscard]] bool IsStopped() const { return m_options.cancel != nullptr && m_options.cancel->IsCanceled(); }
    void Tell(DataSourceItem &place, std::error_code error) const;
    void ListOne(DataSourceItem &folder, Take const &take, Items &below);
    [[nodiscard]] std::error_code List(DataSourceItem &folder, Take const &take, Items &below);

    Options m_options;
    FolderVisits m_visits;
};

/// The item of one of these paths, wherever below a container, with the parents that list it: of several the one whose
/// path comes first. What lies side by side is looked at before what lies deeper. Null for none, and if `cancel` ended
/// the look.
[[nodiscard]] ZELVAR_API RefItemPtr<DataSourceItem> FindBelow(RefItemPtr<DataSourceItem> const &container,
                                                              std::vector<DString> const &paths,
                                                              DataSourceItem::ICancel &cancel);

} // namespace zelvar
