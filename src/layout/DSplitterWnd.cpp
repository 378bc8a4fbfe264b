#include "zelvar/layout/DSplitterWnd.h"

#include "zelvar/layout/SplitterBar.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/Convert.h"
#include "zelvar/platform/ui/PaletteColors.h"

#include <QtGui/QMouseEvent>
#include <QtGui/QPainter>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QStyle>

#include <algorithm>

namespace zelvar {

namespace {

constexpr int kBar = 3;    // pixels, in both directions
constexpr int kBorder = 1; // pixels around each pane
constexpr int kMostTracks = 16;
constexpr unsigned kFirstPaneId = 0xE900;

/// Where track `index` begins.
int TrackStart(std::vector<SplitterTrack> const &tracks, int index) {
    int start = 0;
    for (int i = 0; i < index; ++i)
        start += tracks[static_cast<std::size_t>(i)].current + kBar;
    return start;
}

bool IsInside(std::vector<SplitterTrack> const &tracks, int index) {
    return index >= 0 && index < static_cast<int>(tracks.size());
}

void ReadInfo(std::vector<SplitterTrack> const &tracks, int index, int &cur, int &ideal, int &min) {
    if (!IsInside(tracks, index))
        return;
    SplitterTrack const &track = tracks[static_cast<std::size_t>(index)];
    cur = track.current, ideal = track.ideal, min = track.minimum;
}

void WriteInfo(std::vector<SplitterTrack> &tracks, int index, int ideal, int min) {
    if (!IsInside(tracks, index))
        return;
    tracks[static_cast<std::size_t>(index)].ideal = ideal;
    tracks[static_cast<std::size_t>(index)].minimum = min;
}

/// A text that wraps has no scroll bar where the bar would take all of its width: without room its lines need none, so
/// that the toolkit would take the bar away and bring it back for ever.
void RestrainTextBars(QWidget &pane, QSize size) {
    constexpr char kept[] = "zelvarScrollBarPolicy";
    auto *const area = qobject_cast<QAbstractScrollArea *>(&pane);
    bool const wraps = qobject_cast<QPlainTextEdit *>(area) != nullptr || qobject_cast<QTextEdit *>(area) != nullptr;
    if (!wraps)
        return;
    int const least = 3 * pane.style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, &pane);
    bool const isTight = size.width() < least || size.height() < least;
    QVariant const former = pane.property(kept);
    if (isTight == former.isValid())
        return;
    pane.setProperty(kept, isTight ? QVariant(int{area->verticalScrollBarPolicy()}) : QVariant());
    area->setVerticalScrollBarPolicy(isTight ? Qt::ScrollBarAlwaysOff
                                             : static_cast<Qt::ScrollBarPolicy>(former.toInt()));
}

} // namespace

DSplitterWnd::DSplitterWnd(QWidget *parent) : QWidget(parent) { setMouseTracking(true); }

int DSplitterWnd::CreateStaticEx(QWidget *parent, int rows, int cols, int maxRows, int maxCols,
                                 PaneClass const *paneClass, unsigned id) {
    if (rows < 1 || cols < 1 || rows > kMostTracks || cols > kMostTracks)
        return 0;
    m_maxRows = std::clamp(maxRows, rows, kMostTracks);
    m_maxCols = std::clamp(maxCols, cols, kMostTracks);
    m_paneClass = paneClass;
    m_rows.assign(static_cast<std::size_t>(rows), {});
    m_columns.assign(static_cast<std::size_t>(cols), {});
    if (parent != nullptr)
        setParent(parent);
    platform::SetDlgCtrlID(*this, static_cast<int>(id));
    return 1;
}

int DSplitterWnd::CreateView(int row, int col, PaneClass const *paneClass, Size size) {
    if (!IsInside(m_rows, row) || !IsInside(m_columns, col) || GetPane(row, col) != nullptr)
        return 0;
    m_columns[static_cast<std::size_t>(col)].ideal = size.cx;
    m_rows[static_cast<std::size_t>(row)].ideal = size.cy;

    QWidget *pane = m_paneOwner != nullptr ? m_paneOwner->CreateViewObj(this, row, col, paneClass, size) : nullptr;
    if (pane == nullptr && paneClass != nullptr)
        pane = paneClass->createObject();
    if (pane == nullptr)
        return 0;
    unsigned const id = IdFromRowCol(row, col);
    Rect const rect{0, 0, size.cx, size.cy};
    if (m_paneOwner == nullptr || m_paneOwner->CreateViewWnd(this, pane, row, col, rect, this, id) == 0) {
        pane->setParent(this);
        pane->setGeometry(platform::ToQRect(rect));
        pane->show();
    }
    platform::SetDlgCtrlID(*pane, static_cast<int>(id));
    m_panes[{row, col}] = pane;
    return 1;
}

void DSplitterWnd::DeleteView(int row, int col) {
    auto const at = m_panes.find({row, col});
    if (at == m_panes.end())
        return;
    QPointer<QWidget> const pane = at->second;
    if (!pane.isNull())
        pane->hide();
    if (m_paneOwner != nullptr)
        m_paneOwner->DeleteView(this, row, col);
    else
        delete pane.data();
    m_panes.erase({row, col});
}

void DSplitterWnd::RecalcLayout() {
    if (m_rows.empty() || (m_paneOwner != nullptr && m_paneOwner->RecalcLayout(this)))
        return;
    LayOutPanes();
}

void DSplitterWnd::LayOutPanes() {
    LayOutTracks(m_rows, height(), kBar);
    LayOutTracks(m_columns, width(), kBar);
    for (auto const &[cell, pane] : m_panes) {
        if (pane.isNull())
            continue;
        Rect const rect = CellRect(cell.first, cell.second);
        QRect const inner = platform::ToQRect(rect).adjusted(kBorder, kBorder, -kBorder, -kBorder);
        RestrainTextBars(*pane, inner.size());
        pane->setGeometry(inner.isValid() ? inner : QRect(rect.left, rect.top, 0, 0));
    }
    PlaceBars();
    update();
}

Rect DSplitterWnd::BarRect(Qt::Orientation bar, int before) const {
    int const behind = TrackStart(TracksBeside(bar), before + 1);
    return bar == Qt::Vertical ? Rect{behind - kBar, 0, behind, height()} : Rect{0, behind - kBar, width(), behind};
}

void DSplitterWnd::PlaceBars() {
    auto const needed = static_cast<std::size_t>(GetColumnCount() - 1 + GetRowCount() - 1);
    if (m_bars.size() != needed) {
        for (SplitterBar *bar : m_bars)
            delete bar;
        m_bars.clear();
        for (int col = 0; col + 1 < GetColumnCount(); ++col)
            m_bars.push_back(new SplitterBar(*this, Qt::Vertical, col));
        for (int row = 0; row + 1 < GetRowCount(); ++row)
            m_bars.push_back(new SplitterBar(*this, Qt::Horizontal, row));
    }
    for (SplitterBar *bar : m_bars) {
        bar->setGeometry(platform::ToQRect(BarRect(bar->Orientation(), bar->Before())));
        bar->show();
    }
}

void DSplitterWnd::GetRowInfo(int row, int &cur, int &ideal, int &min) const { ReadInfo(m_rows, row, cur, ideal, min); }
void DSplitterWnd::GetColumnInfo(int col, int &cur, int &ideal, int &min) const {
    ReadInfo(m_columns, col, cur, ideal, min);
}
void DSplitterWnd::SetRowInfo(int row, int ideal, int min) { WriteInfo(m_rows, row, ideal, min); }
void DSplitterWnd::SetColumnInfo(int col, int ideal, int min) { WriteInfo(m_columns, col, ideal, min); }

QWidget *DSplitterWnd::GetPane(int row, int col) const {
    auto const at = m_panes.find({row, col});
    return at == m_panes.end() ? nullptr : at->second.data();
}

unsigned DSplitterWnd::IdFromRowCol(int row, int col) {
    return kFirstPaneId + static_cast<unsigned>(row * kMostTracks + col);
}

int DSplitterWnd::StaticSplitRow(int at, PaneClass const *paneClass) {
    PaneClass const *const former = m_paneClass;
    if (paneClass != nullptr)
        m_paneClass = paneClass;
    int const made = SplitIntrnl(Axis::Rows, at);
    m_paneClass = former;
    return made;
}

int DSplitterWnd::StaticSplitColumn(int at, PaneClass const *paneClass) {
    PaneClass const *const former = m_paneClass;
    if (paneClass != nullptr)
        m_paneClass = paneClass;
    int const made = SplitIntrnl(Axis::Columns, at);
    m_paneClass = former;
    return made;
}

int DSplitterWnd::SplitIntrnl(Axis axis, int at) {
    std::vector<SplitterTrack> &tracks = Tracks(axis);
    std::vector<SplitterTrack> const &across = axis == Axis::Rows ? m_columns : m_rows;
    if (tracks.empty() || static_cast<int>(tracks.size()) >= (axis == Axis::Rows ? m_maxRows : m_maxCols))
        return 0;
    std::optional<int> const size = SplitTrack(tracks.back(), at, kBar);
    if (!size)
        return 0;

    int const added = static_cast<int>(tracks.size());
    tracks.push_back({.ideal = *size, .minimum = tracks.back().minimum, .current = *size});
    for (int i = 0; i < static_cast<int>(across.size()); ++i) {
        int const ideal = across[static_cast<std::size_t>(i)].ideal;
        bool const made = axis == Axis::Rows ? CreateView(added, i, m_paneClass, {ideal, *size}) != 0
                                             : CreateView(i, added, m_paneClass, {*size, ideal}) != 0;
        if (made)
            continue;
        while (--i >= 0)
            axis == Axis::Rows ? DeleteView(added, i) : DeleteView(i, added);
        tracks.pop_back();
        return 0;
    }
    tracks[static_cast<std::size_t>(added) - 1].ideal = at;
    RecalcLayout();
    return 1;
}

void DSplitterWnd::StaticDeleteRow(int row) { DeleteTrack(Axis::Rows, row); }
void DSplitterWnd::StaticDeleteColumn(int col) { DeleteTrack(Axis::Columns, col); }

void DSplitterWnd::DeleteTrack(Axis axis, int index) {
    std::vector<SplitterTrack> &tracks = Tracks(axis);
    if (!IsInside(tracks, index) || tracks.size() < 2)
        return;
    int const across = axis == Axis::Rows ? GetColumnCount() : GetRowCount();
    for (int i = 0; i < across; ++i)
        axis == Axis::Rows ? DeleteView(index, i) : DeleteView(i, index);
    tracks.erase(tracks.begin() + index);

    std::map<std::pair<int, int>, QPointer<QWidget>> moved;
    for (auto const &[cell, pane] : m_panes) {
        std::pair<int, int> to = cell;
        int &position = axis == Axis::Rows ? to.first : to.second;
        position -= position > index ? 1 : 0;
        if (!pane.isNull())
            platform::SetDlgCtrlID(*pane, static_cast<int>(IdFromRowCol(to.first, to.second)));
        moved[to] = pane;
    }
    m_panes = std::move(moved);
    RecalcLayout();
}

Rect DSplitterWnd::CellRect(int row, int col) const {
    int const top = TrackStart(m_rows, row);
    int const left = TrackStart(m_columns, col);
    return {left, top, left + m_columns[static_cast<std::size_t>(col)].current,
            top + m_rows[static_cast<std::size_t>(row)].current};
}

void DSplitterWnd::OnDrawSplitter(QPainter *painter, DrawType type, Rect const &rect) {
    if (painter == nullptr) {
        update(platform::ToQRect(rect));
        for (QObject *child : children())
            if (auto *widget = qobject_cast<QWidget *>(child); widget != nullptr)
                widget->update();
        return;
    }
    if (type != Border) {
        painter->fillRect(platform::ToQRect(rect), platform::Themed(Qt::white));
        return;
    }
    painter->setPen(QPen(platform::Themed(QColor(191, 191, 191)), 0));
    painter->setBrush(Qt::NoBrush);
    painter->drawRect(platform::ToQRect(rect).adjusted(0, 0, -1, -1));
}

void DSplitterWnd::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    for (int row = 0; row + 1 < GetRowCount(); ++row)
        OnDrawSplitter(&painter, Bar, BarRect(Qt::Horizontal, row));
    for (int col = 0; col + 1 < GetColumnCount(); ++col)
        OnDrawSplitter(&painter, Bar, BarRect(Qt::Vertical, col));
    for (auto const &[cell, pane] : m_panes)
        if (!pane.isNull() && pane->isVisible())
            OnDrawSplitter(&painter, Border, CellRect(cell.first, cell.second));
}

void DSplitterWnd::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    RecalcLayout();
}

DSplitterWnd::BarHit DSplitterWnd::HitBar(Point point) const {
    auto const find = [](std::vector<SplitterTrack> const &tracks, Axis axis, int position) -> BarHit {
        for (int i = 0; i + 1 < static_cast<int>(tracks.size()); ++i) {
            int const far = TrackStart(tracks, i) + tracks[static_cast<std::size_t>(i)].current;
            if (position >= far && position < far + kBar)
                return {axis, i, position - far};
        }
        return {};
    };
    BarHit const hit = find(m_columns, Axis::Columns, point.x);
    return hit.before >= 0 ? hit : find(m_rows, Axis::Rows, point.y);
}

void DSplitterWnd::ShowBarCursor(BarHit const &hit) {
    if (hit.before < 0)
        unsetCursor();
    else
        setCursor(hit.axis == Axis::Columns ? Qt::SplitHCursor : Qt::SplitVCursor);
}

void DSplitterWnd::mousePressEvent(QMouseEvent *event) {
    if (event->button() == Qt::LeftButton)
        m_dragged = HitBar({event->pos().x(), event->pos().y()});
}

void DSplitterWnd::mouseMoveEvent(QMouseEvent *event) {
    if (m_dragged.before < 0) {
        ShowBarCursor(HitBar({event->pos().x(), event->pos().y()}));
        return;
    }
    Qt::Orientation const bar = m_dragged.axis == Axis::Columns ? Qt::Vertical : Qt::Horizontal;
    int const position = (bar == Qt::Vertical ? event->pos().x() : event->pos().y()) - m_dragged.offset;
    MoveBar(bar, m_dragged.before, position - TrackStart(TracksBeside(bar), m_dragged.before));
}

int DSplitterWnd::BarPosition(Qt::Orientation bar, int before) const {
    std::vector<SplitterTrack> const &tracks = TracksBeside(bar);
    return IsInside(tracks, before) ? tracks[static_cast<std::size_t>(before)].current : 0;
}

std::pair<int, int> DSplitterWnd::BarLimits(Qt::Orientation bar, int before) const {
    std::vector<SplitterTrack> const &tracks = TracksBeside(bar);
    if (!IsInside(tracks, before))
        return {0, 0};
    int behind = 0;
    for (std::size_t i = static_cast<std::size_t>(before) + 1; i < tracks.size(); ++i)
        behind += kBar + tracks[i].minimum;
    int const total = bar == Qt::Vertical ? width() : height();
    int const least = tracks[static_cast<std::size_t>(before)].minimum;
    return {least, std::max(total - TrackStart(tracks, before) - behind, least)};
}

void DSplitterWnd::MoveBar(Qt::Orientation bar, int before, int position) {
    std::vector<SplitterTrack> &tracks = Tracks(bar == Qt::Vertical ? Axis::Columns : Axis::Rows);
    if (before < 0 || before + 1 >= static_cast<int>(tracks.size()))
        return;
    auto const [least, most] = BarLimits(bar, before);
    tracks[static_cast<std::size_t>(before)].ideal = std::clamp(position, least, most);
    RecalcLayout();
}

bool DSplitterWnd::MoveBarsByKeyboard() { return SplitterBar::Enter(*this); }

void DSplitterWnd::mouseReleaseEvent(QMouseEvent *event) {
    if (event->button() == Qt::LeftButton)
        m_dragged = {};
}

} // namespace zelvar
