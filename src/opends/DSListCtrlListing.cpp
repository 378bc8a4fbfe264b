// What a list lists; how it shows that stands in DSListCtrl.cpp.
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/model/TemplDataSourceItem.h"
#include "zelvar/opends/DSListing.h"
#include "zelvar/opends/ListColumns.h"
#include "zelvar/opends/ListResults.h"
#include "zelvar/platform/ui/EscapeWatch.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QTimer>

#include <algorithm>
#include <utility>

namespace zelvar {

namespace {

constexpr unsigned kGrow = LVSICF_NOINVALIDATEALL | LVSICF_NOSCROLL;

ListingSort SortOfColumn(int col) {
    if (col == kSizeColumn)
        return ListingSort::Size;
    return col == kDateColumn ? ListingSort::Date : ListingSort::Name;
}

/// What tells a root from others. One that is not open yet has no path, and is another one once it is. Several
/// definitions may have one address.
DString PlaceOf(DataSourceItem const &root) {
    auto const *const tree = dynamic_cast<TemplDataSourceItem const *>(&root);
    if (tree == nullptr)
        return root.GetPath();
    DString const place = tree->IsOpen() ? tree->GetPath() : "\n" + tree->GetSource();
    DString const definition = tree->GetDefinition();
    return definition.empty() ? place : place + "\n" + definition;
}

bool IsSamePlace(RefItemPtr<DataSourceItem> const &a, RefItemPtr<DataSourceItem> const &b) {
    return a != nullptr && b != nullptr && PlaceOf(*a) == PlaceOf(*b);
}

} // namespace

/// What was cut short is listed again by the next request for it.
void DSListCtrl::SavePaneState() {
    m_listing->savedState = m_listing->worker.IsCutShort() ? PaneState() : PresentState();
}

PaneState DSListCtrl::PresentState() const {
    PaneState state{.bdiFilter = m_bdiFilter,
                    .formatId = m_formatId,
                    .fileFilter = m_fileFilter,
                    .folding = m_foldingRule ? m_foldingRule(m_rootItems).Number() : 0};
    for (RefItemPtr<DataSourceItem> const &root : m_rootItems)
        state.rootPaths.push_back(root == nullptr ? DString() : PlaceOf(*root));
    return state;
}

bool DSListCtrl::HasStateChanged() const {
    return StateChanged(m_listing->savedState, PresentState(), m_mode == ModeRecursive);
}

void DSListCtrl::ShowDir(RefItemPtr<DataSourceItem> dir, RefItemPtr<DataSourceItem> const &selected) {
    LeaveResults();
    m_itemToSelect.reset();
    m_listing->selectedPaths.Clear();
    if (selected != nullptr)
        m_listing->selectedPaths.Add(selected->GetPath());
    ResetItemsIntrnl({std::move(dir)});
}

void DSListCtrl::ResetItems(ItemList const &items) {
    LeaveResults(); // what is asked for may be what they stand in place of
    SaveSelection();
    ResetItemsIntrnl(items);
}

void DSListCtrl::ResetItemsIntrnl(ItemList items) {
    ItemList before = std::exchange(m_rootItems, items);
    if (!HasStateChanged())
        return ShowRootName(); // what it is called may be new all the same
    bool const isElsewhere = !std::equal(before.begin(), before.end(), items.begin(), items.end(), IsSamePlace);
    if (isElsewhere) {
        m_rootItems = std::move(before);
        Q_EMIT PlaceLeft();
    }
    SaveFocus();
    Reset();
    m_rootItems = std::move(items);
    StartWindowFilling();
    if (isElsewhere)
        Q_EMIT PlaceShown();
}

void DSListCtrl::Refresh() {
    ItemList const roots = m_rootItems;
    SaveFocus();
    Reset();
    m_rootItems = roots;
    StartWindowFilling();
}

void DSListCtrl::Sort(int col, bool ascending) {
    if (m_results != nullptr)
        return SortResults(col, ascending);
    ItemList const roots = m_rootItems;
    SaveFocus();
    Reset();
    m_rootItems = roots;
    m_listing->sort = SortOfColumn(col);
    m_listing->ascending = ascending;
    m_listing->worker.SetSort(m_listing->sort, ascending);
    StartWindowFilling();
    GetLastSort() = LastSort(col, ascending);
    SetSortMark(m_mode == ModeFolders ? -1 : col, ascending);
}

void DSListCtrl::ApplyFileFilter(char const *mask, char const *formatId) {
    m_fileFilter = mask == nullptr ? "" : mask;
    if (formatId != nullptr)
        m_formatId = formatId;
    if (m_results != nullptr)
        m_results->isStale = true; // who shows results searches again
    else
        ResetItems(m_rootItems);
}

void DSListCtrl::CopyData(DSListCtrl *other) {
    if (other != nullptr)
        ResetItemsIntrnl(other->m_rootItems);
}

void DSListCtrl::Reset() {
    if (m_results != nullptr) {
        std::ignore = EndResults(); // nobody wants what it kept
        Q_EMIT ResultsLeft();
    }
    m_listing->ReleaseServer();
    m_listing->worker.Stop(true);
    m_listing->worker.ClearPending();
    m_listing->worker.ClearRoots();
    SetNumRow(0, 0);
    m_rootItems.clear();
    m_rows.clear();
    m_listing->savedState = {}; // what comes back is listed again
    if (m_mode == ModeFolders)
        SetColumnCaption(kNameColumn, "");
    viewport()->update();
}

void DSListCtrl::SaveSelection() {
    ItemList selected;
    GetSelectedItems(selected);
    if (m_itemToSelect != nullptr)
        selected.push_back(std::exchange(m_itemToSelect, nullptr));
    m_listing->selectedPaths.Clear();
    for (RefItemPtr<DataSourceItem> const &item : selected)
        if (item != nullptr)
            m_listing->selectedPaths.Add(item->GetPath());
}

// A listing that is asked for before the rows of the last one have come keeps what that one was to find.
void DSListCtrl::SaveFocus() {
    if (m_rows.empty())
        return;
    RefItemPtr<DataSourceItem> const item = ItemAt(GetFocusRow());
    m_listing->focusPath = item == nullptr ? DString() : item->GetPath();
}

void DSListCtrl::ShowRootName() {
    bool const single = m_rootItems.size() == 1 && m_rootItems.front() != nullptr;
    QString const name = single ? platform::ToShownName(m_rootItems.front()->GetName()) : QString();
    if (m_mode == ModeFolders)
        SetColumnCaption(kNameColumn, platform::ToDString(name));
}

void DSListCtrl::StartWindowFilling() {
    ShowRootName();
    if (m_rootItems.empty())
        return;
    if (m_tilePainter != nullptr)
        m_tilePainter->RootsChanged();
    AddParentRow();
    FolderListingWorker::Request request{m_rootItems, m_fileFilter,
                                         m_formatId,  m_dlgTemplate,
                                         m_bdiFilter, m_foldingRule ? m_foldingRule(m_rootItems) : DataSetFolding()};
    if (IsForThread()) {
        m_listing->server = ServerListing::Start(
            std::move(request), {static_cast<FolderListMode>(m_mode), m_listing->sort, m_listing->ascending});
        m_listing->savedState = PresentState();
        return;
    }
    m_listing->worker.SetRequest(std::move(request));
    {
        platform::EscapeWatch watch;
        m_listing->worker.SetInterrupt([&watch] { return watch.IsPressed(); });
        m_listing->worker.Run(); // to its end, on this thread
        m_listing->worker.SetInterrupt({});
    }
    SavePaneState();
    // What is all there need not wait for the next turn of the timer. What was cut short is listed again soon.
    if (!m_listing->worker.IsCutShort())
        QTimer::singleShot(0, this, &DSListCtrl::MergePending);
}

/// What is not open yet has no children, and tells so at once.
bool DSListCtrl::IsForThread() const {
    return std::any_of(m_rootItems.begin(), m_rootItems.end(), [](RefItemPtr<DataSourceItem> const &item) {
        auto const *const tree = dynamic_cast<TemplDataSourceItem const *>(item.get());
        return tree != nullptr && tree->IsOpen() && tree->IsOnServer();
    });
}

bool DSListCtrl::IsListing() const { return m_listing->server != nullptr && m_listing->server->IsAtWork(); }

void DSListCtrl::StopListing() {
    if (!IsListing())
        return;
    m_listing->server->Stop();
    m_listing->savedState = {}; // it is listed anew by the next request for it
}

void DSListCtrl::AddParentRow() {
    if (!m_showParentFolderItem || m_rootItems.size() != 1 || m_rootItems.front() == nullptr)
        return;
    RefItemPtr<DataSourceItem> parent = m_rootItems.front()->GetParent();
    if (parent == nullptr)
        parent = RefItemPtr<DataSourceItem>(NtwDataSourceItem::CreateDSItem());
    RefItemPtr<DataSourceItem> row = parent->Clone();
    if (row == nullptr)
        return;
    row->SetOwnIcon(m_parentFolderImages.get(), 0);
    row->SetName("..");
    m_rows.push_back(std::move(row));
    SetNumRow(static_cast<int>(m_rows.size()), kGrow);
}

std::vector<std::uint32_t> DSListCtrl::SelectedRows() const {
    std::vector<std::uint32_t> rows;
    for (int row = GetNextItem(-1, LVNI_SELECTED); row >= 0; row = GetNextItem(row, LVNI_SELECTED))
        rows.push_back(static_cast<std::uint32_t>(row));
    return rows;
}

void DSListCtrl::MergePending() {
    if (m_results != nullptr)
        return;
    std::vector<FolderListingWorker::Pending> batch =
        m_listing->server != nullptr ? m_listing->server->TakePending() : m_listing->worker.TakePending();
    if (batch.empty())
        return;
    if (m_rows.size() >= kListingRowLimit) {
        m_listing->worker.Stop(false);
        if (m_listing->server != nullptr)
            m_listing->server->Finish();
        return;
    }
    Merge(std::move(batch));
}

void DSListCtrl::Merge(std::vector<FolderListingWorker::Pending> batch) {
    std::vector<std::int32_t> places;
    places.reserve(batch.size());
    for (FolderListingWorker::Pending const &record : batch)
        places.push_back(record.row);
    RowPlan const plan(m_rows.size(), places);

    std::vector<std::uint32_t> const oldSelected = SelectedRows();
    std::vector<std::uint32_t> newSelected = plan.MoveOldRows(oldSelected);
    DString const wantedPath = m_itemToSelect == nullptr ? DString() : m_itemToSelect->GetPath();
    int wantedRow = -1;
    int const oldFocus = GetFocusRow();
    int focus = oldFocus < 0 ? -1 : static_cast<int>(plan.MoveOldRows({static_cast<std::uint32_t>(oldFocus)}).front());
    bool const isSought =
        m_itemToSelect != nullptr || !m_listing->selectedPaths.IsEmpty() || !m_listing->focusPath.empty();
    for (std::size_t i = 0; i < batch.size() && isSought; ++i) {
        DString const path = batch[i].item->GetPath();
        if (m_itemToSelect != nullptr && path == wantedPath)
            wantedRow = static_cast<int>(plan.InsertedRows()[i]);
        if (oldFocus < 0 && path == m_listing->focusPath)
            focus = static_cast<int>(plan.InsertedRows()[i]);
        if (m_listing->selectedPaths.Contains(path))
            newSelected.push_back(plan.InsertedRows()[i]);
    }
    plan.Apply(m_rows, std::move(batch));
    if (focus < 0 && !newSelected.empty())
        focus = static_cast<int>(*std::min_element(newSelected.begin(), newSelected.end()));

    SetNumRow(static_cast<int>(m_rows.size()), kGrow);
    for (std::uint32_t const row : oldSelected)
        SetItemState(static_cast<int>(row), 0, LVIS_SELECTED);
    // While no row is selected this is told to nobody.
    if (focus >= 0)
        SetItemState(focus, LVIS_FOCUSED, LVIS_FOCUSED);
    for (std::uint32_t const row : newSelected)
        SetItemState(static_cast<int>(row), LVIS_SELECTED, LVIS_SELECTED);
    if (wantedRow >= 0) {
        m_itemToSelect = m_rows[static_cast<std::size_t>(wantedRow)];
        SetItemState(wantedRow, LVIS_SELECTED, LVIS_SELECTED);
    }
    if (oldFocus < 0 && focus >= 0) {
        m_listing->focusPath.clear();
        SetSelectionMark(focus);
        EnsureVisible(focus);
    }
    viewport()->update();
}

} // namespace zelvar
