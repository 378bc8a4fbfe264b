#include "zelvar/opends/PlaceFinder.h"

#include "zelvar/controls/GUITools.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/model/ListingWalk.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/model/PlaceResolver.h"
#include "zelvar/opends/AccessRefusal.h"
#include "zelvar/platform/ui/EscapeWatch.h"

#include <chrono>

namespace zelvar {

namespace {

constexpr std::chrono::seconds kLook{3};

/// The user's Escape, or the end of the time for a look.
class LookEnd final : public DataSourceItem::ICancel {
public:
    [[nodiscard]] bool IsCanceled() override {
        return m_watch.IsPressed() || std::chrono::steady_clock::now() >= m_end;
    }

private:
    platform::EscapeWatch m_watch;
    std::chrono::steady_clock::time_point m_end = std::chrono::steady_clock::now() + kLook;
};

} // namespace

PlaceFinder::Item PlaceFinder::Find(DString const &path, bool report) const {
    Item item;
    DError error;
    {
        GUITools::WaitCursor const cursor;
        platform::EscapeWatch watch;
        RequestScope const scope(RequestKind::List, [&watch] { return watch.IsPressed(); });
        item = ItemFromPlace(path, &error);
        if (watch.IsPressed())
            return nullptr;
    }
    if (item == nullptr && report)
        Refuse(path, error);
    return item;
}

PlaceFinder::Item PlaceFinder::FindBelow(Item const &container, DString const &path) {
    GUITools::WaitCursor const cursor;
    LookEnd end;
    RequestScope const scope(
        RequestKind::List, [&end] { return end.IsCanceled(); }, kLook);
    return zelvar::FindBelow(container, {path}, end);
}

void PlaceFinder::Refuse(DString const &path, DError const &error) const {
    TellNoPath(path, m_givesCause ? error : DError());
}

void PlaceFinder::Show(Item const &item) const {
    item->BuildParents();
    Item const parent = item->GetParent();
    m_show(item->IsFolder() || parent == nullptr ? item : parent);
}

void PlaceFinder::ShowParent(Item const &item) const {
    item->BuildParents();
    Item const parent = item->GetParent();
    m_show(parent == nullptr ? item : parent);
}

std::optional<bool> PlaceFinder::EnterLateContainer(Item const &item) const {
    auto *const file = dynamic_cast<NtwDataSourceItem *>(item.get());
    if (file == nullptr)
        return false;
    if (file->MayTurnOutContainer()) {
        GUITools::WaitCursor const cursor;
        platform::EscapeWatch watch;
        RequestScope const scope(RequestKind::List, [&watch] { return watch.IsPressed(); });
        std::optional<bool> const isContainer = ClassifyAtLeisure(file->GetPath(), nullptr);
        if (watch.IsPressed())
            return std::nullopt;
        if (isContainer)
            file->SetClassified(*isContainer);
    }
    if (!file->IsFolder())
        return false;
    m_show(item);
    return true;
}

} // namespace zelvar
