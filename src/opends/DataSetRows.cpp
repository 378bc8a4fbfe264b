#include "zelvar/opends/DataSetRows.h"

#include "zelvar/base/Translation.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/store/DCnfg.h"

#include <utility>

namespace zelvar {

namespace {

constexpr char kSection[] = "DlgOpenDS";
constexpr char kUnfoldedKey[] = "unfolded";

DString PathOf(DataSetRows::ItemList const &roots) {
    return roots.empty() || roots.front() == nullptr ? DString() : roots.front()->GetPath();
}

/// The folder behind a data set that is one; null for all else.
RefItemPtr<DataSourceItem> FolderOf(DataSetRows::ItemList const &items) {
    auto const *const item = items.size() == 1 ? dynamic_cast<NtwDataSourceItem *>(items.front().get()) : nullptr;
    if (item == nullptr || !item->GetDataFolder())
        return nullptr;
    RefItemPtr<NtwDataSourceItem> folder(NtwDataSourceItem::CreateItem(item->GetId(), items.front()->GetParent(), ""));
    return folder;
}

} // namespace

DataSetRows::DataSetRows(Actions actions, bool foldsNumbered)
    : m_actions(std::move(actions)), m_foldsNumbered(foldsNumbered),
      m_unfolded(DUserCnfg(kSection).ReadString(kUnfoldedKey, "")) {}

DataSetFolding DataSetRows::FoldingOf(ItemList const &roots) const {
    DString const path = PathOf(roots);
    bool const isSingly = m_singly.contains(path);
    return {.sidecars = !m_showsAll && !isSingly,
            .series = m_foldsNumbered && !isSingly && !m_unfolded.Contains(path),
            .folders = true};
}

void DataSetRows::ToggleNumbered(ItemList const &roots) {
    DString const path = PathOf(roots);
    if (m_singly.erase(path) > 0)
        return;
    if (m_unfolded.Contains(path))
        m_unfolded.Remove(path);
    else
        m_unfolded.Add(path);
    DUserCnfg(kSection).WriteString(kUnfoldedKey, m_unfolded.Text());
}

std::vector<MenuCommand> DataSetRows::CommandsFor(ItemList const &roots, ItemList const &selected) {
    std::vector<MenuCommand> commands;
    if (RefItemPtr<DataSourceItem> const folder = FolderOf(selected); folder != nullptr)
        commands.push_back({.words = Translated("Show Contents"), .run = [this, folder] { m_actions.show(folder); }});
    if (roots.empty())
        return commands;
    auto const offer = [&](char const *words, bool isChecked, bool beginsGroup, std::function<void()> change) {
        commands.push_back({.words = words,
                            .run =
                                [this, change = std::move(change)] {
                                    change();
                                    m_actions.listAgain();
                                },
                            .isChecked = isChecked,
                            .beginsGroup = beginsGroup});
    };
    offer(Translated("Show All Files"), m_showsAll, true, [this] { m_showsAll = !m_showsAll; });
    if (m_foldsNumbered)
        offer(Translated("Fold Numbered Files"), FoldingOf(roots).series, false,
              [this, roots] { ToggleNumbered(roots); });
    return commands;
}

} // namespace zelvar
