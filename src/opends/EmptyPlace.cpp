#include "zelvar/opends/EmptyPlace.h"

#include "zelvar/base/Translation.h"
#include "zelvar/connections/ConnectionAddress.h"
#include "zelvar/data/BDINode.h"
#include "zelvar/model/TemplDataSourceItem.h"
#include "zelvar/opends/DSListCtrl.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace zelvar {

namespace {

constexpr std::chrono::milliseconds kSettled{400};

/// Rows that somebody can pick from; the way up is none.
bool HasRows(DSListCtrl const &list) { return list.GetNumRow() > (list.ShowParentFolderItem() ? 1 : 0); }

DString WordsOf(DSListCtrl const &items, std::vector<DSListCtrl const *> const &folders) {
    DSListCtrl::ItemList roots;
    items.GetRootItems(roots);
    auto const *const root =
        roots.size() != 1 ? nullptr : dynamic_cast<TemplDataSourceItem const *>(roots.front().get());
    if (root == nullptr || !root->IsOnServer() || !root->IsOpen() || HasRows(items))
        return {};
    std::optional<ConnectionAddress> const address = ParseConnectionAddress(root->GetSource());
    bool const isDatabase = address && (address->scheme == "odbc" || address->scheme.starts_with("postgresql"));
    bool isListed = isDatabase && !root->IsRoot(); // there are no folders in a schema
    for (DSListCtrl const *const list : folders) {
        DSListCtrl::ItemList own;
        list->GetRootItems(own);
        if (own != roots)
            continue;
        isListed = true;
        if (HasRows(*list))
            return {};
    }
    if (!isListed)
        return {};
    DString words = Format(Translated("%s holds nothing that can be picked here."), root->GetName().c_str());
    if (isDatabase && (static_cast<unsigned>(items.GetBDIFilter()) & BDINode_Table) == 0)
        words.append(" ").append(Translated("Tables are picked where a table is to be opened."));
    return words;
}

} // namespace

void EmptyPlace::Look(DSListCtrl const &items, std::vector<DSListCtrl const *> const &folders, bool isWaiting) {
    DString words = isWaiting ? DString() : WordsOf(items, folders);
    if (words != m_words)
        m_since = Clock::now();
    m_words = std::move(words);
}

DString EmptyPlace::Words() const { return Clock::now() - m_since >= kSettled ? m_words : DString(); }

} // namespace zelvar
