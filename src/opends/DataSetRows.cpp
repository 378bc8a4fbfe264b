#include "zelvar/opends/DataSetRows.h"

#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/platform/ui/ModalLoop.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/store/DCnfg.h"

#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>
#include <QtWidgets/QMenu>

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

void DataSetRows::CopyMonikers(ItemList const &items) const {
    DString text;
    for (RefItemPtr<DataSourceItem> const &item : items)
        text.append(text.empty() ? "" : "\n").append(m_actions.moniker(*item));
    QGuiApplication::clipboard()->setText(platform::ToQString(text));
}

QAction *DataSetRows::AddFoldingTo(QMenu &menu, ItemList const &roots) const {
    menu.addSeparator();
    QAction *const all = menu.addAction(platform::Shown("Show All Files"));
    all->setCheckable(true);
    all->setChecked(m_showsAll);
    if (m_foldsNumbered) {
        QAction *const numbered = menu.addAction(platform::Shown("Fold Numbered Files"));
        numbered->setCheckable(true);
        numbered->setChecked(FoldingOf(roots).series);
    }
    return all;
}

void DataSetRows::RunMenu(QWidget &list, QPoint screenPoint, ItemList const &roots, ItemList const &selected,
                          std::vector<Command> const &first) {
    QMenu menu(&list);
    std::vector<QAction const *> firstActions;
    for (Command const &command : first)
        firstActions.push_back(menu.addAction(platform::ToQString(command.words)));
    QAction *const copy = menu.addAction(platform::Shown("Copy Moniker"));
    copy->setEnabled(!selected.empty());
    RefItemPtr<DataSourceItem> const folder = FolderOf(selected);
    QAction const *const contents = folder == nullptr ? nullptr : menu.addAction(platform::Shown("Show Contents"));
    QAction const *const all = roots.empty() ? nullptr : AddFoldingTo(menu, roots);
    QAction const *const chosen = platform::RunMenu(menu, screenPoint);
    for (std::size_t i = 0; i < first.size() && chosen != nullptr; ++i)
        if (chosen == firstActions[i])
            return first[i].run();
    if (chosen == nullptr)
        return;
    if (chosen == copy) {
        CopyMonikers(selected);
    } else if (chosen == contents) {
        m_actions.show(folder);
    } else {
        if (chosen == all)
            m_showsAll = !m_showsAll;
        else
            ToggleNumbered(roots);
        m_actions.listAgain();
    }
}

} // namespace zelvar
