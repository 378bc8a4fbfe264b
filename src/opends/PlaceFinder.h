#pragma once

#include "zelvar/base/Report.h"
#include "zelvar/model/DataSourceItem.h"

#include <functional>
#include <optional>

namespace zelvar {

/// Places and files that the open dialog has to ask about before it can show them. The user waits, with a busy pointer,
/// and may end the wait by Escape. User-interface thread.
class PlaceFinder {
public:
    using Item = RefItemPtr<DataSourceItem>;
    /// `show`: its children in all panes. With `givesCause` what cannot be shown is told with the reason.
    PlaceFinder(std::function<void(Item)> show, bool givesCause) : m_show(std::move(show)), m_givesCause(givesCause) {}

    /// Null for none, which is told with `report`, and if the user ends the wait.
    [[nodiscard]] Item Find(DString const &path, bool report) const;
    /// The node of that path, with the parents that it is listed in, wherever below a container; null for none, if the
    /// user ends the wait, and if it takes longer than three seconds.
    [[nodiscard]] static Item FindBelow(Item const &container, DString const &path);
    void Refuse(DString const &path, DError const &error) const;
    /// Shows it; what holds nothing stands for what it lies in.
    void Show(Item const &item) const;
    /// Shows what it lies in, or itself if that is nothing.
    void ShowParent(Item const &item) const;
    /// Finds out whether a file is a container after all; true if it is and is shown, nothing if the user ended it.
    [[nodiscard]] std::optional<bool> EnterLateContainer(Item const &item) const;

private:
    std::function<void(Item)> m_show;
    bool m_givesCause;
};

} // namespace zelvar
