// The results of a search in a list; how it lists stands in DSListCtrlListing.cpp.
#include "zelvar/base/PathStyle.h"
#include "zelvar/base/Translation.h"
#include "zelvar/opends/DSListing.h"
#include "zelvar/opends/ListColumns.h"
#include "zelvar/opends/ListResults.h"
#include "zelvar/opends/search/SearchLine.h"

#include <QtWidgets/QScrollBar>

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace zelvar {

namespace {

ResultOrder::By OrderOfColumn(int col) {
    switch (col) {
    case kNameColumn:
        return ResultOrder::By::Name;
    case kSizeColumn:
        return ResultOrder::By::Size;
    case kDateColumn:
        return ResultOrder::By::Date;
    case kFolderColumn:
        return ResultOrder::By::Folder;
    default:
        return ResultOrder::By::Arrival;
    }
}

/// While it lives nobody is told of what is selected.
class Quiet {
public:
    explicit Quiet(bool &isQuiet) : m_isQuiet(isQuiet), m_former(std::exchange(isQuiet, true)) {}
    Quiet(Quiet const &) = delete;
    Quiet &operator=(Quiet const &) = delete;
    ~Quiet() { m_isQuiet = m_former; }

private:
    bool &m_isQuiet;
    bool m_former;
};

} // namespace

void DSListCtrl::ShowResults() {
    if (m_results == nullptr)
        KeepListing();
    Quiet const quiet(m_isQuiet);
    m_itemToSelect.reset();
    m_listing->selectedPaths.Clear();
    m_listing->focusPath.clear();
    SetNumRow(0, 0);
    m_rows.clear();
    m_results->order.Begin(ResultOrder::By::Arrival, true);
    m_results->bases.clear();
    for (RefItemPtr<DataSourceItem> const &root : m_rootItems) {
        DString const path = root == nullptr ? DString() : root->GetPath();
        // Of several places the name tells which.
        m_results->bases.push_back(m_rootItems.size() == 1 ? path : DString(ParentPathOf(path)));
    }
    GetLastSort() = {};
    SetSortMark(-1, true);
    viewport()->update();
}

void DSListCtrl::KeepListing() {
    MergePending();
    m_results = std::make_unique<ListResults>();
    ListResults &kept = *m_results;
    // What was still coming is listed anew afterwards.
    kept.isStale = IsListing() || m_listing->worker.IsCutShort();
    m_listing->ReleaseServer();
    kept.selected = SelectedRows();
    kept.focus = GetFocusRow();
    kept.scroll = verticalScrollBar()->value();
    kept.sort = GetLastSort();
    kept.state = std::exchange(m_listing->savedState, {});
    kept.rows = std::move(m_rows);
    if (GetColumnCount() != kFolderColumn)
        return; // one column has no room for another
    bool const areNamesFitted = GetColumnWidth(kNameColumn) == m_fittedNames;
    int const room = GetClientRect().Width() - GetColumnWidth(kSizeColumn) - GetColumnWidth(kDateColumn);
    CListCtrlFlex::InsertColumn(kFolderColumn, ADICol_String, Translated("Folder"), false, LVCFMT_LEFT,
                                std::max(LeastNameWidth() / 2, room * 2 / 5), kFolderColumn);
    std::vector<int> order = GetColumnOrderArray();
    std::erase(order, kFolderColumn);
    order.insert(std::find(order.begin(), order.end(), kNameColumn) + 1, kFolderColumn);
    SetColumnOrderArray(order);
    if (areNamesFitted)
        FitNames();
}

void DSListCtrl::AppendResults(std::vector<RefItemPtr<DataSourceItem>> items) {
    if (m_results == nullptr || items.empty())
        return;
    Quiet const quiet(m_isQuiet); // those that were selected have been told
    Merge(m_results->order.Add(std::move(items)));
}

void DSListCtrl::SortResults(int col, bool ascending) {
    Quiet const quiet(m_isQuiet);
    std::unordered_set<DataSourceItem const *> selected;
    for (std::uint32_t const row : SelectedRows())
        selected.insert(m_rows[row].get());
    DataSourceItem const *const focus = ItemAt(GetFocusRow()).get();
    SetItemState(-1, 0, LVIS_SELECTED);
    // What is equal stays in the order of the sort before.
    m_results->order.Begin(OrderOfColumn(col), ascending);
    std::vector<PendingRow<RefItemPtr<DataSourceItem>>> batch = m_results->order.Add(std::exchange(m_rows, {}));
    std::vector<std::int32_t> places;
    places.reserve(batch.size());
    for (auto const &record : batch)
        places.push_back(record.row);
    RowPlan(0, places).Apply(m_rows, std::move(batch));
    int focusRow = -1;
    for (int row = 0; row < static_cast<int>(m_rows.size()); ++row) {
        DataSourceItem const *const item = m_rows[static_cast<std::size_t>(row)].get();
        if (!selected.empty() && selected.contains(item))
            SetItemState(row, LVIS_SELECTED, LVIS_SELECTED);
        if (item == focus)
            focusRow = row;
    }
    if (focusRow >= 0) {
        SetItemState(focusRow, LVIS_FOCUSED, LVIS_FOCUSED);
        SetSelectionMark(focusRow);
        EnsureVisible(focusRow);
    }
    GetLastSort() = LastSort(col, ascending);
    SetSortMark(col, ascending);
    viewport()->update();
}

std::unique_ptr<ListResults> DSListCtrl::EndResults() {
    std::unique_ptr<ListResults> kept = std::move(m_results);
    SetNumRow(0, 0);
    m_rows.clear();
    if (GetColumnCount() > kFolderColumn) {
        bool const areNamesFitted = GetColumnWidth(kNameColumn) == m_fittedNames;
        DeleteColumn(kFolderColumn);
        if (areNamesFitted)
            FitNames();
    }
    GetLastSort() = kept->sort;
    SetSortMark(m_mode == ModeFolders ? -1 : kept->sort.GetCol(), kept->sort.IsSortedAscnd());
    return kept;
}

void DSListCtrl::LeaveResults() {
    if (m_results == nullptr)
        return;
    bool isAnySelected = false;
    bool isStale = false;
    {
        Quiet const quiet(m_isQuiet);
        std::unique_ptr<ListResults> const kept = EndResults();
        m_rows = std::move(kept->rows);
        m_listing->savedState = std::move(kept->state);
        SetNumRow(static_cast<int>(m_rows.size()), 0);
        for (std::uint32_t const row : kept->selected)
            SetItemState(static_cast<int>(row), LVIS_SELECTED, LVIS_SELECTED);
        if (kept->focus >= 0) {
            SetItemState(kept->focus, LVIS_FOCUSED, LVIS_FOCUSED);
            SetSelectionMark(kept->focus);
        }
        verticalScrollBar()->setValue(kept->scroll);
        viewport()->update();
        isAnySelected = !kept->selected.empty();
        isStale = kept->isStale;
    }
    Q_EMIT ResultsLeft();
    if (isStale)
        Refresh();
    else if (isAnySelected)
        Tell(m_selChangeMessage, 0);
}

LastSort DSListCtrl::GetListingSort() const { return m_results == nullptr ? GetLastSort() : m_results->sort; }

DString DSListCtrl::FolderText(DataSourceItem &item) const {
    if (m_results == nullptr)
        return {};
    DString folder = FolderPathOf(item);
    for (DString const &base : m_results->bases)
        if (DString below = FolderBelow(folder, base); below != folder)
            return below;
    return folder;
}

} // namespace zelvar
