#include "zelvar/opends/DSListCtrl.h"

#include "zelvar/base/Translation.h"
#include "zelvar/model/SeriesItem.h"
#include "zelvar/model/listing/ListingTexts.h"
#include "zelvar/opends/DSListing.h"
#include "zelvar/opends/DSMessages.h"
#include "zelvar/opends/ItemColors.h"
#include "zelvar/opends/ListColumns.h"
#include "zelvar/opends/ListResults.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/SystemColor.h"
#include "zelvar/platform/ui/Text.h"

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

/// Behind the name of a series stands how many it has, and which are missing.
DString NameText(DataSourceItem const &item) {
    auto const *const series = dynamic_cast<SeriesItem const *>(&item);
    return series == nullptr ? item.GetName() : series->GetName() + "   " + series->ShownSummary();
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

// The heading of folders is their root's name and has no room for a mark.
bool DSListCtrl::OnColumnClick(int col) {
    bool const isHandled = CZelListCtrlVirtual::OnColumnClick(col);
    if (m_mode == ModeFolders)
        SetSortMark(-1, true);
    return isHandled;
}

void DSListCtrl::timerEvent(QTimerEvent *event) {
    if (m_timers.Expired(kMergeTimer, *event))
        MergePending();
    else
        CZelListCtrlVirtual::timerEvent(event);
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
