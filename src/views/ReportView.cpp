#include "zelvar/views/ReportView.h"

#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/Pictures.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/views/ReportAccessible.h"
#include "zelvar/views/core/MergeSort.h"

#include <QtWidgets/QHeaderView>
#include <QtWidgets/QScrollBar>

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>

namespace zelvar {

namespace {

constexpr std::size_t kLongestCell = 4096; // bytes that a virtual list may hand over for a cell

std::size_t Index(int value) { return static_cast<std::size_t>(value); }

} // namespace

ReportView::ReportView(QWidget *parent) : ColumnArea(parent) {
    InstallReportAccessibility();
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setMouseTracking(true);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    UpdateRowHeight();
    connect(GetHeaderCtrl(), &QHeaderView::sortIndicatorChanged, this,
            [this](int col) { ReportAccessible::SortMarkMoved(*this, col); });
}

ReportView::~ReportView() { ReportAccessible::Forget(*this); }

int ReportView::Create(unsigned style, Rect const &place, QWidget *parent, int id) {
    unsigned wanted = style;
    Rect area = place;
    PreCreateWindow(wanted, area);
    setParent(parent);
    platform::SetDlgCtrlID(*this, id);
    setGeometry(area.left, area.top, area.Width(), area.Height());
    ModifyStyle(~0U, wanted | LVS_REPORT);
    return OnCreate() == 0 ? 1 : 0;
}

void ReportView::PreCreateWindow(unsigned &, Rect &) {}

void ReportView::ModifyStyle(unsigned remove, unsigned add) {
    bool const wasVirtual = IsVirtual();
    m_style = (m_style & ~remove) | add;
    if (IsVirtual() != wasVirtual)
        DeleteAllItems();
    m_selection.SetSingle((m_style & LVS_SINGLESEL) != 0);
    m_selection.SetTellsRanges(IsVirtual());
    if (GetHeaderCtrl()->isHidden() != ((m_style & LVS_NOCOLUMNHEADER) != 0))
        ShowHeader((m_style & LVS_NOCOLUMNHEADER) == 0);
}

void ReportView::SetExtendedStyle(unsigned style) {
    m_extendedStyle = style;
    GetHeaderCtrl()->setSectionsMovable((style & LVS_EX_HEADERDRAGDROP) != 0);
}

// --- rows ---

ReportView::Row const *ReportView::Stored(int row) const {
    return row >= 0 && Index(row) < m_rows.size() ? &m_rows[Index(row)] : nullptr;
}

int ReportView::InsertItem(ReportItem const &item) {
    if (IsVirtual() || item.row < 0)
        return -1;
    int const at = std::min(item.row, GetItemCount());
    Row row{.texts = {item.text}, .image = item.image, .group = item.group, .word = item.data};
    m_rows.insert(m_rows.begin() + at, std::move(row));
    m_selection.InsertRows(at, 1);
    RowsChanged();
    RowsMoved([at](int old) { return old + (old >= at ? 1 : 0); });
    return at;
}

bool ReportView::DeleteItem(int row) {
    if (Stored(row) == nullptr)
        return false;
    m_rows.erase(m_rows.begin() + row);
    m_selection.RemoveRows(row, 1);
    RowsChanged();
    RowsMoved([row](int old) { return old == row ? -1 : old - (old > row ? 1 : 0); });
    return true;
}

bool ReportView::DeleteAllItems() {
    m_rows.clear();
    m_selection.SetRowCount(0);
    RowsChanged();
    verticalScrollBar()->setValue(0);
    RowsMoved([](int) { return -1; });
    return true;
}

void ReportView::SetItemCountEx(int count, unsigned flags) {
    if (!IsVirtual())
        return;
    int const before = GetItemCount();
    m_selection.SetRowCount(std::max(count, 0));
    m_layoutDue = true;
    UpdateVerticalBar();
    ReportAccessible::RowsReset(*this);
    if ((flags & LVSICF_NOINVALIDATEALL) == 0)
        viewport()->update();
    else if (count != before)
        RedrawItems(std::min(count, before), std::max(count, before) - 1);
    RowsMoved([this](int old) { return HasRow(old) ? old : -1; });
}

DString ReportView::GetItemText(int row, int col) const {
    if (!HasRow(row) || col < 0)
        return {};
    if (IsVirtual()) {
        std::array<char, kLongestCell> buffer{};
        DispInfo info{
            .iItem = row, .iSubItem = col, .wantsText = true, .pszText = buffer.data(), .cchTextMax = kLongestCell};
        OnGetDispInfo(info);
        return info.pszText == nullptr ? DString{} : DString{info.pszText};
    }
    auto const &texts = m_rows[Index(row)].texts;
    return Index(col) < texts.size() ? texts[Index(col)] : DString{};
}

bool ReportView::SetItemText(int row, int col, DString const &text) {
    if (Stored(row) == nullptr || col < 0 || col >= std::max(GetColumnCount(), 1))
        return false;
    auto &texts = m_rows[Index(row)].texts;
    if (Index(col) >= texts.size())
        texts.resize(Index(col) + 1);
    texts[Index(col)] = text;
    RedrawItems(row, row);
    return true;
}

int ReportView::GetItemImage(int row) const {
    if (IsVirtual() && HasRow(row)) {
        DispInfo info{.iItem = row, .wantsImage = true};
        OnGetDispInfo(info);
        return info.iImage;
    }
    Row const *const stored = Stored(row);
    return stored == nullptr ? -1 : stored->image;
}

bool ReportView::SetItemImage(int row, int image) {
    if (Stored(row) == nullptr)
        return false;
    m_rows[Index(row)].image = image;
    RedrawItems(row, row);
    return true;
}

ItemWord ReportView::GetItemWord(int row) const {
    Row const *const stored = Stored(row);
    return stored != nullptr ? stored->word : HasRow(row) ? 0 : -1;
}

bool ReportView::SetItemWord(int row, ItemWord word) {
    if (Stored(row) == nullptr)
        return false;
    m_rows[Index(row)].word = word;
    return true;
}

void ReportView::OnGetDispInfo(DispInfo &info) const { info.pszText = nullptr; }

void ReportView::ColumnInserted(int col) {
    for (Row &row : m_rows)
        if (Index(col) < row.texts.size() && GetColumnCount() > 1)
            row.texts.insert(row.texts.begin() + col, DString{});
}

void ReportView::ColumnDeleted(int col) {
    for (Row &row : m_rows)
        if (Index(col) < row.texts.size())
            row.texts.erase(row.texts.begin() + col);
}

// --- groups ---

int ReportView::GetItemGroup(int row) const {
    Row const *const stored = Stored(row);
    return stored == nullptr ? -1 : stored->group;
}

bool ReportView::SetItemGroup(int row, int group) {
    if (Stored(row) == nullptr)
        return false;
    m_rows[Index(row)].group = group;
    RowsChanged();
    return true;
}

void ReportView::EnableGroupView(bool enable) {
    m_groupView = enable;
    RowsChanged();
}

void ReportView::InsertGroup(DString const &header, int id) {
    m_groups.push_back({header, id});
    RowsChanged();
}

void ReportView::RemoveAllGroups() {
    m_groups.clear();
    RowsChanged();
}

// --- states ---

unsigned ReportView::GetItemState(int row, unsigned mask) const { return m_selection.State(row) & mask; }

bool ReportView::SetItemState(int row, unsigned state, unsigned mask) {
    if (row != -1 && !HasRow(row))
        return false;
    m_selection.SetState(row, state, mask);
    return true;
}

int ReportView::GetNextItem(int row, unsigned flags) const {
    int const next = row + 1;
    if (row < -1 || next >= GetItemCount())
        return -1;
    int const focus = GetFocusRow();
    if ((flags & LVNI_SELECTED) == 0)
        return (flags & LVNI_FOCUSED) == 0 ? next : focus >= next ? focus : -1;
    if ((flags & LVNI_FOCUSED) == 0)
        return m_selection.Selected().NextFrom(next);
    return focus >= next && m_selection.Selected().Contains(focus) ? focus : -1;
}

void ReportView::SelectOnly(int row) {
    IntervalSet rows;
    rows.Insert(row, row);
    m_selection.SetAnchor(row);
    m_selection.Select(rows, row);
}

void ReportView::RowStateChanged(int row, unsigned oldState, unsigned newState) {
    RedrawItems(row, row);
    ReportAccessible::StateChanged(*this, row, row, oldState, newState);
    if (!OnItemChanged(row, oldState, newState))
        Q_EMIT ItemChanged(row, oldState, newState);
}

void ReportView::RangeStateChanged(int first, int last, unsigned oldState, unsigned newState) {
    RedrawItems(first, last);
    ReportAccessible::StateChanged(*this, first, last, oldState, newState);
    if (!OnRangeChanged(first, last, oldState, newState))
        Q_EMIT RangeChanged(first, last, oldState, newState);
}

// --- sorting ---

bool ReportView::SortItems(CompareItems compare, long long parameter) {
    if (IsVirtual())
        return false;
    std::vector<int> order(m_rows.size());
    std::iota(order.begin(), order.end(), 0);
    MergeSort(order,
              [&](int a, int b) { return compare(m_rows[Index(a)].word, m_rows[Index(b)].word, parameter) > 0; });
    std::vector<Row> sorted;
    sorted.reserve(m_rows.size());
    std::vector<int> newRows(m_rows.size());
    for (int const old : order) {
        newRows[Index(old)] = static_cast<int>(sorted.size());
        sorted.push_back(std::move(m_rows[Index(old)]));
    }
    m_rows = std::move(sorted);
    m_selection.Reorder(newRows);
    RowsChanged();
    RowsMoved([&newRows](int old) { return newRows[Index(old)]; });
    return true;
}

void ReportView::SetImageList(HIMAGELIST list) {
    m_images = list;
    UpdateRowHeight();
}

QString ReportView::ShownText(int row, int col) const {
    return platform::ToQString(GetItemText(row, GetColumnSubItem(col)));
}

// --- what happens, unless a derived class sees to it ---

bool ReportView::OnItemChanged(int, unsigned, unsigned) { return false; }
bool ReportView::OnRangeChanged(int, int, unsigned, unsigned) { return false; }
bool ReportView::OnColumnClick(int) { return false; }
bool ReportView::OnClick(ReportHit, Point) { return false; }
bool ReportView::OnRClick(ReportHit, Point) { return false; }
bool ReportView::OnDblClick(ReportHit, Point) { return false; }
bool ReportView::OnContextMenu(QPoint) { return false; }

void ReportView::HeadingClicked(int col) {
    if (!OnColumnClick(col))
        Q_EMIT ColumnClick(col);
}

} // namespace zelvar
