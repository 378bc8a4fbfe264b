#include "zelvar/opends/DSListCtrl.h"

#include "zelvar/base/Translation.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/model/SeriesItem.h"
#include "zelvar/model/TemplDataSourceItem.h"
#include "zelvar/model/listing/ListingTexts.h"
#include "zelvar/opends/DSListing.h"
#include "zelvar/opends/DSMessages.h"
#include "zelvar/opends/FolderListingWorker.h"
#include "zelvar/opends/ItemColors.h"
#include "zelvar/opends/ListColumns.h"
#include "zelvar/opends/ListResults.h"
#include "zelvar/opends/ServerListing.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/EscapeWatch.h"
#include "zelvar/platform/ui/SystemColor.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QTimer>
#include <QtGui/QPainter>

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace zelvar {

namespace {

constexpr int kMergeTimer = 1000;
constexpr int kMergeInterval = 300; // ms
constexpr int kCharsPerInch = 16;   // of the list's font
constexpr int kDateMargin = 12;     // pixels beside a date
constexpr int kFolderExtra = 100;   // pixels of the folder column beyond the window
constexpr unsigned kGrow = LVSICF_NOINVALIDATEALL | LVSICF_NOSCROLL;

ListingSort SortOfColumn(int col) {
    if (col == kSizeColumn)
        return ListingSort::Size;
    return col == kDateColumn ? ListingSort::Date : ListingSort::Name;
}

/// Behind the name of a series stands how many it has, and which are missing.
DString NameText(DataSourceItem const &item) {
    auto const *const series = dynamic_cast<SeriesItem const *>(&item);
    return series == nullptr ? item.GetName() : series->GetName() + "   " + series->ShownSummary();
}

/// What tells a root from others. One that is not open yet has no path, and is another one once it is.
DString PlaceOf(DataSourceItem const &root) {
    auto const *const tree = dynamic_cast<TemplDataSourceItem const *>(&root);
    return tree == nullptr || tree->IsOpen() ? root.GetPath() : "\n" + tree->GetSource();
}

bool IsSamePlace(RefItemPtr<DataSourceItem> const &a, RefItemPtr<DataSourceItem> const &b) {
    return a != nullptr && b != nullptr && PlaceOf(*a) == PlaceOf(*b);
}

/// Cells are one pixel smaller than their column on every side.
constexpr int kCellInset = 1;

} // namespace

DSListCtrl::DSListCtrl(QWidget *parent)
    : CZelListCtrlVirtual(parent), m_listing(std::make_unique<Listing>()), m_selChangeMessage(WM_DS_DATA_ITEM_SELECTED),
      m_dblClckMessage(WM_DS_DATA_ITEM_DBLCLICK), m_timers(*this) {}

DSListCtrl::~DSListCtrl() {
    m_listing->ReleaseServer();
    m_listing->worker.Stop(true);
}

int DSListCtrl::Create(unsigned style, Rect const &rect, DLGTemplate dlgTemplate, QWidget *parent, unsigned id) {
    m_dlgTemplate = dlgTemplate;
    setFrameShape(QFrame::NoFrame); // its splitter draws one
    return ReportView::Create(style | LVS_REPORT | LVS_SHOWSELALWAYS, rect, parent, static_cast<int>(id));
}

void DSListCtrl::PreCreateWindow(unsigned &style, Rect &place) {
    style |= LVS_OWNERDRAWFIXED;
    CZelListCtrlVirtual::PreCreateWindow(style, place);
}

int DSListCtrl::OnCreate() {
    if (int const refused = CZelListCtrlVirtual::OnCreate(); refused != 0)
        return refused;
    SetExtendedStyle(GetExtendedStyle() | LVS_EX_FULLROWSELECT | LVS_EX_LABELTIP);
    if (m_mode == ModeRecursive) {
        int const inch = fontMetrics().averageCharWidth() * kCharsPerInch;
        m_fittedNames = 4 * inch;
        AddCol(Translated("Name"), ADICol_String, false, m_fittedNames, LVCFMT_LEFT);
        AddCol(Translated("Size"), ADICol_String, false, inch, LVCFMT_RIGHT);
        // An inch, or more where the user's language writes longer dates.
        constexpr SystemTime kLongDate{.wYear = 2028, .wMonth = 12, .wDay = 28, .wHour = 22, .wMinute = 58};
        int const date = fontMetrics().horizontalAdvance(platform::ToQString(FormatTime(kLongDate))) + kDateMargin;
        QString const heading = platform::Shown("Date Modified");
        int const least = std::max(date, fontMetrics().horizontalAdvance(heading) + kDateMargin);
        AddCol(platform::ToDString(heading), ADICol_String, false, std::max(inch, least), LVCFMT_RIGHT);
    } else {
        AddCol("", ADICol_String, false, GetClientRect().Width() + kFolderExtra, LVCFMT_LEFT);
    }
    m_timers.Set(kMergeTimer, kMergeInterval);
    m_parentFolderImages = std::make_unique<ImageList>();
    m_parentFolderImages->Add({.kind = ImageDescription::Kind::Strip, .name = "folder-up", .fallback = ""});
    return 0;
}

void DSListCtrl::resizeEvent(QResizeEvent *event) {
    CZelListCtrlVirtual::resizeEvent(event);
    if (height() > 0 && m_mode == ModeFolders)
        SetColumnWidth(kNameColumn, GetClientRect().Width());
    FitNames();
}

void DSListCtrl::FitNames() {
    if (GetColumnCount() <= kDateColumn || GetColumnWidth(kNameColumn) != m_fittedNames)
        return;
    int const rest = GetClientRect().Width() - GetColumnWidth(kSizeColumn) - GetColumnWidth(kDateColumn) -
                     GetColumnWidth(kFolderColumn) - m_reservedHeading; // 0 for no such column
    // Beside their folders they get along with less.
    int const least = m_results == nullptr ? LeastNameWidth() : LeastNameWidth() * 2 / 3;
    m_fittedNames = std::max(least, rest);
    SetColumnWidth(kNameColumn, m_fittedNames);
}

int DSListCtrl::LeastNameWidth() const { return fontMetrics().averageCharWidth() * kCharsPerInch; }
void DSListCtrl::ReserveHeading(int width) {
    m_reservedHeading = width;
    FitNames();
}

void DSListCtrl::SetMode(Mode mode) {
    m_mode = mode;
    m_listing->worker.SetMode(static_cast<FolderListMode>(mode));
}

// ------------------------------------------------------------------------------------------ changing the content

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
        return;
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

// The heading of folders is their root's name and has no room for a mark.
bool DSListCtrl::OnColumnClick(int col) {
    bool const isHandled = CZelListCtrlVirtual::OnColumnClick(col);
    if (m_mode == ModeFolders)
        SetSortMark(-1, true);
    return isHandled;
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

void DSListCtrl::StartWindowFilling() {
    if (m_mode == ModeFolders) {
        bool const single = m_rootItems.size() == 1 && m_rootItems.front() != nullptr;
        SetColumnCaption(kNameColumn, single ? m_rootItems.front()->GetName() : "");
    }
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

// ------------------------------------------------------------------------------------------------------ merging

void DSListCtrl::timerEvent(QTimerEvent *event) {
    if (m_timers.Expired(kMergeTimer, *event))
        MergePending();
    else
        CZelListCtrlVirtual::timerEvent(event);
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
            m_listing->server->Stop();
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

// ---------------------------------------------------------------------------------------------------- selection

RefItemPtr<DataSourceItem> DSListCtrl::ItemAt(int row) const {
    return row >= 0 && row < static_cast<int>(m_rows.size()) ? m_rows[static_cast<std::size_t>(row)] : nullptr;
}

void DSListCtrl::GetSelectedItems(ItemList &items) const {
    for (std::uint32_t const row : SelectedRows())
        if (RefItemPtr<DataSourceItem> item = ItemAt(static_cast<int>(row)); item != nullptr)
            items.push_back(std::move(item));
}

void DSListCtrl::ClearSelection() {
    for (std::uint32_t const row : SelectedRows())
        SetItemState(static_cast<int>(row), 0, LVIS_SELECTED);
}

std::vector<bool> DSListCtrl::SelectPaths(std::vector<DString> const &paths) {
    MergePending();
    m_listing->selectedPaths.Clear(); // what comes back quietly
    std::unordered_map<DString, int> rows;
    for (std::size_t row = 0; row < m_rows.size(); ++row)
        if (m_rows[row] != nullptr)
            rows.emplace(m_rows[row]->GetPath(), static_cast<int>(row));
    ClearSelection();
    std::vector<bool> found;
    int first = -1;
    for (DString const &path : paths) {
        auto const at = rows.find(path);
        found.push_back(at != rows.end());
        if (at == rows.end())
            continue;
        SetItemState(at->second, LVIS_SELECTED, LVIS_SELECTED);
        first = first < 0 ? at->second : std::min(first, at->second);
    }
    if (first >= 0) {
        SetItemState(first, LVIS_FOCUSED, LVIS_FOCUSED);
        SetSelectionMark(first);
        EnsureVisible(first);
    }
    return found;
}

void DSListCtrl::Tell(platform::MessageId message, platform::MessageParam second) {
    if (!m_coordinator.isNull())
        platform::PostMessage(m_coordinator, message, platform::GetDlgCtrlID(*this), second);
}

bool DSListCtrl::OnItemChanged(int row, unsigned, unsigned newState) {
    if ((newState & LVIS_SELECTED) == 0 || m_isQuiet)
        return true;
    // A row that comes back from a refill stays quiet, once; a real click on it later is told.
    if (RefItemPtr<DataSourceItem> const item = ItemAt(row); item != nullptr && !m_listing->selectedPaths.IsEmpty()) {
        DString const path = item->GetPath();
        if (m_listing->selectedPaths.Contains(path)) {
            m_listing->selectedPaths.Remove(path);
            return true;
        }
    }
    Tell(m_selChangeMessage, 0);
    return true;
}

bool DSListCtrl::OnRangeChanged(int, int, unsigned, unsigned newState) {
    if ((newState & LVIS_SELECTED) != 0 && !m_isQuiet)
        Tell(m_selChangeMessage, 0);
    return true;
}

bool DSListCtrl::OnDblClick(ReportHit hit, Point) {
    m_dblClckBesideRows = hit.row < 0;
    Tell(m_dblClckMessage, GetCrntRow());
    return true;
}

void DSListCtrl::OnChar(QChar character) {
    // Always the first row that begins with it: pressing the key again does not move on.
    for (std::size_t row = 0; row < m_rows.size(); ++row) {
        QString const name = m_rows[row] == nullptr ? QString() : platform::ToQString(m_rows[row]->GetName());
        if (name.isEmpty() || name.front().toLower() != character.toLower())
            continue;
        ClearSelection();
        SetItemState(static_cast<int>(row), LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
        SetSelectionMark(static_cast<int>(row));
        EnsureVisible(static_cast<int>(row));
        return;
    }
}

// ------------------------------------------------------------------------------------------------------ painting

DString DSListCtrl::OnGetItemText(int, int) { return {}; }
int DSListCtrl::OnGetItemImg(int, int) { return -1; }

DString DSListCtrl::CellText(DataSourceItem &item, int col) const {
    SystemTime time;
    switch (col) {
    case kNameColumn:
        return NameText(item);
    case kSizeColumn:
        return item.GetFileSize() < 0 ? DString() : FormatFileSize(item.GetFileSize());
    case kDateColumn:
        return item.GetModificationTime(time) ? FormatTime(time) : DString();
    case kFolderColumn:
        return FolderText(item);
    default:
        return {};
    }
}

QString DSListCtrl::ShownText(int row, int col) const {
    RefItemPtr<DataSourceItem> const item = ItemAt(row);
    return item == nullptr ? QString() : platform::ToShownName(CellText(*item, col));
}

int DSListCtrl::MeasureCell(int row, int col) const {
    return LabelLeft(row, col) + fontMetrics().horizontalAdvance(ShownText(row, col)) + 2 * kCellInset;
}

int DSListCtrl::LabelLeft(int, int col) const { return col == kNameColumn ? kPictureBand : 0; }

void DSListCtrl::paintEvent(QPaintEvent *event) {
    CZelListCtrlVirtual::paintEvent(event);
    if (IsTiled() && m_tilePainter != nullptr)
        m_tilePainter->TilesPainted();
}

void DSListCtrl::DrawItem(DrawItemStruct const &request) {
    if (request.action != ODA_DRAWENTIRE) {
        CZelListCtrlVirtual::DrawItem(request);
        return;
    }
    RefItemPtr<DataSourceItem> const item = ItemAt(request.itemID);
    if (item == nullptr)
        return;
    if (IsTiled() && m_tilePainter != nullptr) {
        m_tilePainter->DrawTile(request, *item);
        return;
    }
    (m_showsKinds ? DrawItemOrKindPicture : DrawItemPicture)(request.painter, PictureRect(request.rcItem), *item);
    Rect marked = Mirrored(request.rcItem);
    marked.left += kPictureBand;
    marked = Mirrored(marked);
    ItemColors const colors = ItemColorsOf((request.state & LVIS_SELECTED) != 0, hasFocus());
    request.painter.fillRect(platform::ToQRect(marked), colors.background);
    request.painter.setPen(colors.text);
    for (int const col : GetColumnOrderArray()) {
        Rect cell = request.rcItem;
        cell.left = ColumnStart(col);
        cell.right = cell.left + GetColumnWidth(col);
        if (col == kNameColumn)
            cell.left += kPictureBand + kCellInset, cell.top += kCellInset, cell.right -= kCellInset,
                cell.bottom -= kCellInset;
        bool const isText = col == kNameColumn || col == kFolderColumn;
        DrawCellText(request.painter, Mirrored(cell), platform::ToDString(ShownText(request.itemID, col)),
                     isText ? LVCFMT_LEFT : LVCFMT_RIGHT, CellPlace::Centered, platform::Reading::LeftToRight);
    }
    if ((request.state & LVIS_FOCUSED) != 0)
        DrawFocusRect(request.painter, marked, platform::ToColorRef(colors.text));
}

} // namespace zelvar
