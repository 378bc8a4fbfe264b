#include "zelvar/views/ReportView.h"

#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/Convert.h"
#include "zelvar/platform/ui/Pictures.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/views/ReportAccessible.h"
#include "zelvar/views/ReportInput.h"
#include "zelvar/views/ReportRowPainter.h"
#include "zelvar/views/Typing.h"
#include "zelvar/views/core/ReportRows.h"
#include "zelvar/views/core/RowNavigation.h"

#include <QtGui/QContextMenuEvent>
#include <QtGui/QHelpEvent>
#include <QtGui/QKeyEvent>
#include <QtGui/QMouseEvent>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QToolTip>

#include <algorithm>
#include <array>
#include <utility>

namespace zelvar {

namespace {

constexpr std::size_t kLongestCell = 4096; // bytes that a virtual list may hand over for a cell

} // namespace

ReportView::ReportView(QWidget *parent)
    : ColumnArea(parent), m_rows(std::make_unique<ReportRows>()), m_input(std::make_unique<ReportInput>(*this)) {
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

int ReportView::InsertItem(ReportItem const &item) {
    if (IsVirtual() || item.row < 0)
        return -1;
    int const at = std::min(item.row, GetItemCount());
    m_rows->Insert(at, {.texts = {item.text}, .image = item.image, .group = item.group, .word = item.data});
    m_selection.InsertRows(at, 1);
    RowsChanged();
    RowsMoved([at](int old) { return old + (old >= at ? 1 : 0); });
    return at;
}

bool ReportView::DeleteItem(int row) {
    if (!m_rows->Erase(row))
        return false;
    m_selection.RemoveRows(row, 1);
    RowsChanged();
    RowsMoved([row](int old) { return old == row ? -1 : old - (old > row ? 1 : 0); });
    return true;
}

bool ReportView::DeleteAllItems() {
    m_rows->Clear();
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
    if (IsVirtual()) {
        if (!HasRow(row) || col < 0)
            return {};
        std::array<char, kLongestCell> buffer{};
        DispInfo info{
            .iItem = row, .iSubItem = col, .wantsText = true, .pszText = buffer.data(), .cchTextMax = kLongestCell};
        OnGetDispInfo(info);
        return info.pszText == nullptr ? DString{} : DString{info.pszText};
    }
    return m_rows->Text(row, col);
}

bool ReportView::SetItemText(int row, int col, DString const &text) {
    if (col < 0 || col >= std::max(GetColumnCount(), 1) || !m_rows->SetText(row, col, text))
        return false;
    RedrawItems(row, row);
    return true;
}

int ReportView::GetItemImage(int row) const {
    if (IsVirtual() && HasRow(row)) {
        DispInfo info{.iItem = row, .wantsImage = true};
        OnGetDispInfo(info);
        return info.iImage;
    }
    ReportRows::Row const *const stored = m_rows->Find(row);
    return stored == nullptr ? -1 : stored->image;
}

bool ReportView::SetItemImage(int row, int image) {
    ReportRows::Row *const stored = m_rows->Find(row);
    if (stored == nullptr)
        return false;
    stored->image = image;
    RedrawItems(row, row);
    return true;
}

ItemWord ReportView::GetItemWord(int row) const {
    ReportRows::Row const *const stored = m_rows->Find(row);
    return stored != nullptr ? stored->word : HasRow(row) ? 0 : -1;
}

bool ReportView::SetItemWord(int row, ItemWord word) {
    ReportRows::Row *const stored = m_rows->Find(row);
    if (stored == nullptr)
        return false;
    stored->word = word;
    return true;
}

void ReportView::OnGetDispInfo(DispInfo &info) const { info.pszText = nullptr; }

void ReportView::ColumnInserted(int col) {
    if (GetColumnCount() > 1)
        m_rows->InsertTexts(col);
}

void ReportView::ColumnDeleted(int col) { m_rows->EraseTexts(col); }

// --- groups ---

int ReportView::GetItemGroup(int row) const {
    ReportRows::Row const *const stored = m_rows->Find(row);
    return stored == nullptr ? -1 : stored->group;
}

bool ReportView::SetItemGroup(int row, int group) {
    ReportRows::Row *const stored = m_rows->Find(row);
    if (stored == nullptr)
        return false;
    stored->group = group;
    RowsChanged();
    return true;
}

void ReportView::EnableGroupView(bool enable) {
    m_groupView = enable;
    RowsChanged();
}

void ReportView::InsertGroup(DString const &header, int id) {
    m_rows->AddGroup(header, id);
    RowsChanged();
}

void ReportView::RemoveAllGroups() {
    m_rows->ClearGroups();
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

void ReportView::SelectOnly(int row) { m_selection.SelectOnly(row); }

void ReportView::RowStateChanged(int row, unsigned oldState, unsigned newState) {
    RedrawItems(row, row);
    if (std::exchange(m_isFramed, false))
        viewport()->update();
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
    std::vector<int> const newRows = m_rows->Sort([&](ItemWord a, ItemWord b) { return compare(a, b, parameter) > 0; });
    m_selection.Reorder(newRows);
    RowsChanged();
    RowsMoved([&newRows](int old) { return newRows[static_cast<std::size_t>(old)]; });
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

// --- the mouse and the keyboard ---

RowNavigation ReportView::Navigation() { return {m_selection, Geometry()}; }

Qt::KeyboardModifiers ReportView::ClickModifiers() const { return m_input->ClickModifiers(); }

void ReportView::OnChar(QChar character) { m_input->Type(character); }

void ReportView::mousePressEvent(QMouseEvent *event) {
    if (!m_input->Press(*event))
        event->ignore();
}

void ReportView::mouseReleaseEvent(QMouseEvent *event) {
    Point const point = platform::ToPoint(event->position());
    if (!m_input->Release(point))
        return;
    ReportHit const hit = SubItemHitTest(point);
    if (event->button() == Qt::LeftButton && !OnClick(hit, point))
        Q_EMIT Click(hit.row, hit.col);
    else if (event->button() == Qt::RightButton && !OnRClick(hit, point))
        Q_EMIT RightClick(hit.row, hit.col);
}

void ReportView::mouseDoubleClickEvent(QMouseEvent *event) {
    if (event->button() != Qt::LeftButton)
        return mousePressEvent(event);
    Point const point = platform::ToPoint(event->position());
    ReportHit const hit = SubItemHitTest(point);
    if (!OnDblClick(hit, point))
        Q_EMIT DoubleClick(hit.row, hit.col);
}

void ReportView::mouseMoveEvent(QMouseEvent *event) { OnMouseMove(platform::ToPoint(event->position())); }

void ReportView::contextMenuEvent(QContextMenuEvent *event) {
    QPoint at = event->globalPos();
    if (event->reason() == QContextMenuEvent::Keyboard) {
        Point const place = m_input->MenuPlace();
        at = viewport()->mapToGlobal(QPoint(place.x, place.y));
    }
    if (!OnContextMenu(at))
        Q_EMIT ContextMenu(at);
}

bool ReportView::event(QEvent *event) {
    if (event->type() == QEvent::ShortcutOverride) {
        auto *const key = static_cast<QKeyEvent *>(event);
        if (TypesText(*key) || key->matches(QKeySequence::SelectAll)) {
            key->accept();
            return true;
        }
    }
    bool const handled = ColumnArea::event(event);
    if (event->type() == QEvent::LayoutRequest)
        UpdateVerticalBar();
    return handled;
}

void ReportView::keyPressEvent(QKeyEvent *event) {
    if (m_input->Key(*event))
        return;
    if (TypesText(*event))
        OnChar(event->text().at(0));
    else
        event->ignore(); // Return, Escape, Tab and commands are the dialog's
}

void ReportView::focusInEvent(QFocusEvent *event) {
    ColumnArea::focusInEvent(event);
    viewport()->update();
    ReportAccessible::FocusEntered(*this);
}

void ReportView::focusOutEvent(QFocusEvent *event) {
    ColumnArea::focusOutEvent(event);
    viewport()->update();
}

bool ReportView::viewportEvent(QEvent *event) {
    if (event->type() == QEvent::ToolTip && (m_extendedStyle & LVS_EX_LABELTIP) != 0) {
        auto const *const help = static_cast<QHelpEvent const *>(event);
        if (ReportRowPainter(*this).ShowTip(platform::ToPoint(help->pos()), help->globalPos()))
            return true;
        QToolTip::hideText();
    }
    return ColumnArea::viewportEvent(event);
}

} // namespace zelvar
