#include "zelvar/lists/CListCtrlFlex.h"

#include "zelvar/base/CellNumber.h"
#include "zelvar/lists/CEditCell.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/PaletteColors.h"
#include "zelvar/platform/ui/Pictures.h"
#include "zelvar/platform/ui/SystemColor.h"
#include "zelvar/views/ReportPainter.h"

#include <QtCore/QEvent>
#include <QtGui/QPainter>

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <tuple>

namespace zelvar {

using platform::SystemColor;
using platform::ToQColor;
using platform::ToQRect;

namespace {

constexpr ColorRef kWhite = 0xFFFFFF;
constexpr std::size_t kNumberBytes = 24; // of a cell's text that are read as a number
constexpr std::size_t kTextSlice = 256;  // bytes of a cell's text that a sort compares, the end mark included

/// Rows carry the address of their record as their word.
ItemWord ToWord(FlexRow const *record) { return reinterpret_cast<ItemWord>(record); }
FlexRow *ToRecord(ItemWord word) {
    return word == -1 ? nullptr : reinterpret_cast<FlexRow *>(word); // NOLINT(performance-no-int-to-ptr): see above
}

} // namespace

CListCtrlFlex::CListCtrlFlex(QWidget *parent)
    : ReportView(parent), m_highlightText(SystemColor(COLOR_HIGHLIGHTTEXT)), m_highlight(SystemColor(COLOR_HIGHLIGHT)) {
}

CListCtrlFlex::~CListCtrlFlex() {
    // An edit that is still open has nobody left to tell.
    if (!m_edit.isNull())
        m_edit->Discard();
    while (m_records != nullptr)
        delete std::exchange(m_records, m_records->next);
}

// --- rows and their records ---

FlexRow *CListCtrlFlex::Record(int item) const { return ToRecord(GetItemWord(item)); }

FlexRow *CListCtrlFlex::AddRecord(std::uint64_t itemData, QFont const *font, ColorRef textColor, ColorRef bkColor,
                                  int indent) {
    m_records = new FlexRow{.owner = this,
                            .next = m_records,
                            .data = itemData,
                            .font = font,
                            .textColor = textColor,
                            .bkColor = bkColor == kWhite ? SystemColor(COLOR_WINDOW) : bkColor,
                            .indent = indent,
                            .sortVal = {}};
    return m_records;
}

int CListCtrlFlex::InsertItem(int item, DString const &text, std::uint64_t itemData, QFont const *font,
                              ColorRef textColor, ColorRef bkColor, int indent) {
    // Only here 0 is replaced; the other overload takes it as black.
    ColorRef const back = bkColor == 0 ? SystemColor(COLOR_WINDOWTEXT) : bkColor;
    return ReportView::InsertItem(
        {.row = item, .text = text, .data = ToWord(AddRecord(itemData, font, textColor, back, indent))});
}

int CListCtrlFlex::InsertItem(int item, DString const &text, int image, std::uint64_t itemData, QFont const *font,
                              ColorRef textColor, ColorRef bkColor, int indent) {
    return ReportView::InsertItem({.row = item,
                                   .text = text,
                                   .image = image,
                                   .data = ToWord(AddRecord(itemData, font, textColor, bkColor, indent))});
}

std::uint64_t CListCtrlFlex::GetItemData(int item) const {
    ItemWord const word = GetItemWord(item);
    if (word == -1)
        return static_cast<std::uint64_t>(-1);
    return word == 0 ? 0 : ToRecord(word)->data;
}

int CListCtrlFlex::SetItemData(int item, std::uint64_t itemData) {
    FlexRow *const record = Record(item);
    if (record == nullptr)
        return -1;
    record->data = itemData;
    return 0;
}

// --- columns ---

int CListCtrlFlex::InsertColumn(int col, ADIColType type, DString const &caption, bool editable, int format, int width,
                                int subItem) {
    int const result = ReportView::InsertColumn(col, caption, format, width, subItem);
    SetColType(col, type, editable);
    return result;
}

void CListCtrlFlex::SetColType(int col, ADIColType type, bool editable) { m_columns.Set(col, {editable, type}); }

int CListCtrlFlex::MoveColumn(int from, int to) {
    m_columns.Move(from, to);
    return 1;
}

int CListCtrlFlex::DeleteColumn(int col) {
    m_columns.Remove(col);
    return ReportView::DeleteColumn(col);
}

void CListCtrlFlex::RmvAllCol() {
    while (DeleteColumn(0) != 0) {
    }
}

int CListCtrlFlex::SetBkColor(ColorRef color) {
    m_bkColor = color;
    viewport()->update();
    return 1;
}

// --- sorting ---

bool CListCtrlFlex::OnColumnClick(int col) {
    Sort(col);
    return true;
}

void CListCtrlFlex::Sort(int col) {
    bool const ascending = m_lastSort.IsSortAscnd(col);
    Sort(col, ascending);
    m_lastSort = LastSort(col, ascending);
    if (m_sortEnabled)
        SetSortMark(col, ascending);
}

void CListCtrlFlex::Sort(int col, bool ascending) {
    if (col < 0 || !m_sortEnabled || IsVirtual() || !EveryRowHasARecord())
        return;
    ADIColType const type = GetColType(col);
    if (type == ADICol_Int || type == ADICol_Double)
        SortAsNumbers(col, ascending);
    else
        SortAsText(col, ascending);
}

bool CListCtrlFlex::EveryRowHasARecord() const {
    for (int item = 0; item < GetItemCount(); ++item)
        if (Record(item) == nullptr)
            return false;
    return true;
}

void CListCtrlFlex::SortAsNumbers(int col, bool ascending) {
    for (int item = 0; item < GetItemCount(); ++item) {
        DString const text = GetItemText(item, col);
        SetSortVal(item, ParseCellNumber(std::string_view(text).substr(0, kNumberBytes))
                             .value_or(std::numeric_limits<double>::max()));
    }
    SortItems(CompareNum, ascending ? 1 : 0);
}

void CListCtrlFlex::SortAsText(int col, bool ascending) {
    auto const rows = static_cast<std::size_t>(GetItemCount());
    std::size_t slice = kTextSlice;
    std::unique_ptr<char[]> block(new (std::nothrow) char[slice * rows]);
    while (block == nullptr && slice > 1) {
        slice /= 2;
        block.reset(new (std::nothrow) char[slice * rows]);
    }
    if (block == nullptr)
        return;
    for (std::size_t row = 0; row < rows; ++row) {
        DString const text = GetItemText(static_cast<int>(row), col);
        char *const place = block.get() + row * slice;
        place[text.copy(place, slice - 1)] = '\0';
        SetSortVal(static_cast<int>(row), place);
    }
    SortItems(CompareStr, ascending ? 1 : 0);
}

void CListCtrlFlex::SetSortVal(int item, char const *text) { Record(item)->sortVal.text = text; }

void CListCtrlFlex::SetSortVal(int item, double number) { Record(item)->sortVal.number = number; }

int CListCtrlFlex::CompareStr(long long first, long long second, long long ascending) {
    int const order = std::strcmp(ToRecord(first)->sortVal.text, ToRecord(second)->sortVal.text);
    return (ascending != 0 ? order >= 0 : order < 0) ? 1 : 0;
}

int CListCtrlFlex::CompareNum(long long first, long long second, long long ascending) {
    double const a = ToRecord(first)->sortVal.number;
    double const b = ToRecord(second)->sortVal.number;
    return (ascending != 0 ? a >= b : b > a) ? 1 : 0;
}

// --- drawing ---

CListCtrlFlex::RowColors CListCtrlFlex::ColorsOf(DrawItemStruct const &item, FlexRow const *record) const {
    if ((item.state & LVIS_SELECTED) != 0)
        return {m_highlightText, m_highlight};
    if (record != nullptr)
        return {record->textColor, record->bkColor};
    return {item.textColor, IsBkColorSet() ? m_bkColor : item.bkColor};
}

void CListCtrlFlex::DrawItem(DrawItemStruct const &item) {
    FlexRow const *const record = ToRecord(item.itemData);
    RowColors const colors = ColorsOf(item, record);
    Rect label = Mirrored(item.rcItem);
    label.left += Inset(record);

    item.painter.fillRect(ToQRect(item.rcItem), ToQColor(colors.back));
    if (GetImageList() != nullptr)
        DrawRowPicture(item); // at the row's corner, whatever the indent
    QColor const ink = platform::ThemedInk(ToQColor(colors.text), ToQColor(colors.back));
    item.painter.setPen(ink);
    if (record != nullptr && record->font != nullptr)
        item.painter.setFont(*record->font);
    DrawCells(item, label);
    if ((item.state & LVIS_FOCUSED) != 0)
        DrawFocusRect(item.painter, item.rcItem, platform::ToColorRef(ink));
}

void CListCtrlFlex::DrawCells(DrawItemStruct const &item, Rect const &label) const {
    Rect const client = GetClientRect();
    for (int col = 0; col < GetColumnCount(); ++col) {
        ReportColumn column;
        std::ignore = GetColumn(col, column);
        int const start = ColumnStart(col);
        int const left = std::max(start, label.left);
        int const right = std::min(start + column.width, label.right);
        if (left < client.right && right > client.left)
            DrawCellText(item.painter, Mirrored({left + 1, label.top, right - 1, label.bottom}),
                         GetItemText(item.itemID, column.subItem), column.format, CellPlace::Top);
    }
}

int CListCtrlFlex::Inset(FlexRow const *record) const {
    return (record == nullptr ? 0 : record->indent) + (GetImageList() == nullptr ? 0 : platform::kSmallPicture);
}

int CListCtrlFlex::LabelLeft(int row, int col) const {
    int const inset = Inset(Record(row));
    return inset <= 0 ? 0 : std::max(inset - ColumnPosition(col), 0);
}

void CListCtrlFlex::EraseBackground(QPainter &painter, Rect const &area) const {
    if (!IsBkColorSet())
        return ReportView::EraseBackground(painter, area);
    painter.fillRect(ToQRect({area.left, area.top, area.right + 1, area.bottom + 1}), ToQColor(m_bkColor));
}

int CListCtrlFlex::MeasureCell(int row, int col) const {
    FlexRow const *const record = Record(row);
    if (record == nullptr || record->font == nullptr)
        return ReportView::MeasureCell(row, col);
    return QFontMetrics(*record->font).horizontalAdvance(ShownText(row, col)) + CellMargins(row, col);
}

void CListCtrlFlex::changeEvent(QEvent *event) {
    ReportView::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        m_highlightText = SystemColor(COLOR_HIGHLIGHTTEXT);
        m_highlight = SystemColor(COLOR_HIGHLIGHT);
        RowPalette const former = std::exchange(m_rowPalette, RowPalette::Current());
        for (FlexRow *record = m_records; record != nullptr; record = record->next) {
            record->textColor = former.TextIn(m_rowPalette, record->textColor);
            record->bkColor = former.BackIn(m_rowPalette, record->bkColor);
        }
    }
}

// --- editing ---

bool CListCtrlFlex::OnSetCursor(Point point) {
    bool const hasHeader = (GetStyle() & LVS_NOCOLUMNHEADER) == 0;
    int const col = SubItemHitTest(point).col;
    if (hasHeader && (col < 0 || col >= GetColumnCount())) {
        viewport()->unsetCursor();
        return false;
    }
    viewport()->setCursor(m_inEditing ? Qt::IBeamCursor : Qt::ArrowCursor);
    return true;
}

bool CListCtrlFlex::OnDblClick(ReportHit hit, Point) {
    if (hit.row < 0)
        return false;
    m_columns.Grow(hit.col);
    if (m_columns.IsEditable(hit.col)) {
        SetItemState(hit.row, 0, LVIS_FOCUSED | LVIS_SELECTED);
        OnEdit(hit.row, hit.col, false);
    } else {
        SetItemState(hit.row, LVIS_SELECTED, LVIS_SELECTED);
    }
    return false;
}

bool CListCtrlFlex::LeadsToCell(int &item, int &subItem, bool skipReadOnly) {
    m_columns.Grow(subItem);
    if (skipReadOnly && !m_columns.IsEditable(subItem))
        return FindEditableCell(m_columns, GetItemCount(), GetColumnCount(), item, subItem);
    return item >= 0 && item < GetItemCount() && subItem >= 0;
}

void CListCtrlFlex::OnEdit(int item, int subItem, bool skipReadOnly) {
    if (!LeadsToCell(item, subItem, skipReadOnly))
        return;
    QWidget const *const parent = parentWidget();
    LabelEditNotify notify{.hwndFrom = this,
                           .idFrom = platform::GetDlgCtrlID(*this),
                           .wParam = parent == nullptr ? 0 : platform::GetDlgCtrlID(*parent),
                           .iItem = item,
                           .iSubItem = subItem};
    Q_EMIT BeginLabelEdit(&notify);
    if (notify.veto)
        return;
    EnsureVisible(item); // or a page key would open a cell that nobody sees
    EnsureColumnVisible(subItem);
    m_edit = new CEditCell(*this, item, subItem, GetItemText(item, subItem));
    m_edit->Open(GetSubItemRect(item, subItem, LVIR_LABEL));
}

void CListCtrlFlex::TellEndOfEdit(LabelEditNotify notify) {
    if (!OnEndLabelEdit(notify))
        Q_EMIT EndLabelEdit(&notify);
}

bool CListCtrlFlex::OnEndLabelEdit(LabelEditNotify const &notify) {
    if (notify.iItem != -1 && notify.pszText != nullptr)
        SetItemText(notify.iItem, notify.iSubItem, *notify.pszText);
    return false;
}

// --- an open edit goes with its cell ---

void CListCtrlFlex::RowsMoved(NewPlace const &newPlace) {
    ReportView::RowsMoved(newPlace);
    if (!m_edit.isNull() && m_edit->Item() >= 0)
        m_edit->MoveCell(newPlace(m_edit->Item()), m_edit->SubItem());
}

void CListCtrlFlex::ColumnInserted(int col) {
    ReportView::ColumnInserted(col);
    if (!m_edit.isNull())
        m_edit->MoveCell(m_edit->Item(), m_edit->SubItem() + (m_edit->SubItem() >= col ? 1 : 0));
}

void CListCtrlFlex::ColumnDeleted(int col) {
    ReportView::ColumnDeleted(col);
    if (m_edit.isNull())
        return;
    int const subItem = m_edit->SubItem();
    m_edit->MoveCell(m_edit->Item(), subItem == col ? -1 : subItem - (subItem > col ? 1 : 0));
}

void CListCtrlFlex::ColumnsChanged() {
    ReportView::ColumnsChanged();
    if (!m_edit.isNull())
        m_edit->Follow();
}

void CListCtrlFlex::scrollContentsBy(int dx, int dy) {
    ReportView::scrollContentsBy(dx, dy);
    if (!m_edit.isNull())
        m_edit->Follow();
}

} // namespace zelvar
