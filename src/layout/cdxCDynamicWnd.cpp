#include "zelvar/layout/cdxCDynamicWnd.h"

#include "zelvar/layout/DynamicWndWatch.h"
#include "zelvar/layout/HostScrollBars.h"
#include "zelvar/layout/WindowClassStyle.h"
#include "zelvar/layout/cdxCSizeIconCtrl.h"
#include "zelvar/platform/ui/ControlId.h"

#include <QtWidgets/QAbstractScrollArea>
#include <QtWidgets/QScrollBar>

namespace zelvar {

namespace {

constexpr std::intptr_t kAntiFlickerTimer = 29028;
constexpr std::uint32_t kRedrawBits = CS_VREDRAW | CS_HREDRAW;
constexpr unsigned kChildDestroyed = 2;
constexpr int kMinimized = 1;

Rect GeometryOf(QWidget const &child) {
    QRect const &geometry = child.geometry();
    return {geometry.x(), geometry.y(), geometry.x() + geometry.width(), geometry.y() + geometry.height()};
}

void MoveTo(QWidget &child, Rect const &rect) { child.setGeometry(rect.left, rect.top, rect.Width(), rect.Height()); }

/// Holds back the painting of a window while its children move, from the first move on.
class PaintingPause {
public:
    explicit PaintingPause(QWidget &window) : m_window(window) {}
    PaintingPause(PaintingPause const &) = delete;
    PaintingPause &operator=(PaintingPause const &) = delete;
    ~PaintingPause() {
        if (m_paused)
            m_window.setUpdatesEnabled(true); // and draws it all once
    }
    void Begin() {
        if (m_paused || !m_window.updatesEnabled())
            return;
        m_window.setUpdatesEnabled(false);
        m_paused = true;
    }

private:
    QWidget &m_window;
    bool m_paused = false;
};

} // namespace

cdxCDynamicWnd::Bytes const cdxCDynamicWnd::TopLeft = {0, 0, 0, 0};
cdxCDynamicWnd::Bytes const cdxCDynamicWnd::TopRight = {100, 0, 100, 0};
cdxCDynamicWnd::Bytes const cdxCDynamicWnd::BotLeft = {0, 100, 0, 100};
cdxCDynamicWnd::Bytes const cdxCDynamicWnd::BotRight = {100, 100, 100, 100};

cdxCDynamicWnd::cdxCDynamicWnd(Freedom freedom, unsigned flags)
    : m_freedom(freedom), m_flags(flags), m_watch(std::make_unique<Watch>(*this)) {}

cdxCDynamicWnd::~cdxCDynamicWnd() { DoOnDestroy(); }

QWidget *cdxCDynamicWnd::Client() const {
    auto const *const area = qobject_cast<QAbstractScrollArea const *>(m_pWnd.data());
    return area == nullptr ? m_pWnd.data() : area->viewport();
}

QWidget *cdxCDynamicWnd::GetSafeChildHWND(int id) const {
    return IsWindow() ? platform::GetDlgItem(*m_pWnd, id) : nullptr;
}

bool cdxCDynamicWnd::GetControlPosition(QWidget *child, Position &position) const {
    auto const *const at = m_map.find(child);
    if (at == nullptr)
        return false;
    position = at->second.position;
    return true;
}

Size cdxCDynamicWnd::GetCurrentClientSize() const {
    if (m_scrollBars && IsWindow())
        return m_scrollBars->ClientSize();
    return IsWindow() ? Size{Client()->width(), Client()->height()} : Size{};
}

Size cdxCDynamicWnd::GetBorderSize() const {
    if (!IsUp())
        return {};
    QSize const whole = m_pWnd->frameGeometry().size();
    Size const client = GetCurrentClientSize();
    return {whole.width() - client.cx, whole.height() - client.cy};
}

bool cdxCDynamicWnd::DoMoveCtrl(QWidget *child, int /*id*/, Rect &rect, cdxCDynamicLayoutInfo const &info) {
    auto const *const at = m_map.find(child);
    if (at == nullptr)
        return false;
    rect = ComputeChildRect(at->second.position, info.Growth());
    return true;
}

int cdxCDynamicWnd::IdOf(QWidget &child) const {
    auto const *const at = m_map.find(&child);
    return at == nullptr ? platform::GetDlgCtrlID(child) : at->second.id;
}

void cdxCDynamicWnd::FitScrollBars() {
    if (!IsUp() || !m_bUseScrollPos || Client() != m_pWnd)
        return; // an area has bars
    bool const isSmaller = m_pWnd->width() < m_szInitial.cx || m_pWnd->height() < m_szInitial.cy;
    if (!m_scrollBars && isSmaller)
        m_scrollBars = std::make_unique<HostScrollBars>(*m_pWnd, m_szInitial, [this](Point by) { OnScrolled(by); });
    if (m_scrollBars)
        m_scrollBars->Fit();
}

void cdxCDynamicWnd::OnScrolled(Point by) {
    // What is not registered keeps its place beside what is.
    for (QObject *const object : QObjectList(m_pWnd->children())) {
        auto *const child = qobject_cast<QWidget *>(object);
        if (child != nullptr && !child->isWindow() && !m_map.contains(child) && !m_scrollBars->Owns(child))
            child->move(child->x() - by.x, child->y() - by.y);
    }
    LayoutChildren();
}

void cdxCDynamicWnd::Layout() {
    FitScrollBars();
    LayoutChildren();
}

void cdxCDynamicWnd::LayoutChildren() {
    auto const info = IsWindow() ? DoCreateLayoutInfo() : nullptr;
    if (!info)
        return;
    {
        QWidget &client = *Client();
        // The pixels of a moved child can only be kept while painting goes on.
        PaintingPause pause(client);
        bool const pauses = (m_flags & FlagCopyBits) == 0;
        // By index: a child that moves may make or delete others. NOLINTNEXTLINE(modernize-loop-convert)
        for (qsizetype i = 0; i < client.children().size(); ++i) {
            QObject *const object = client.children().at(i);
            if (!object->isWidgetType())
                continue;
            auto *const child = static_cast<QWidget *>(object);
            Rect rect = GeometryOf(*child);
            Rect const current = rect;
            if (child->isWindow() || !DoMoveCtrl(child, IdOf(*child), rect, *info) || rect == current)
                continue;
            if (pauses)
                pause.Begin();
            MoveTo(*child, rect);
        }
    }
    if (!m_pSizeIcon.isNull())
        m_pSizeIcon->update(); // it stays in the corner, but what lies under it changes
}

bool cdxCDynamicWnd::UpdateControlPosition(QWidget *child) {
    auto const info = IsWindow() && child != nullptr ? DoCreateLayoutInfo() : nullptr;
    if (!info)
        return false;
    if (info->IsInitial())
        return true;
    Rect rect = GeometryOf(*child);
    Rect const current = rect;
    if (!DoMoveCtrl(child, IdOf(*child), rect, *info))
        return false;
    if (rect != current)
        MoveTo(*child, rect);
    return true;
}

std::unique_ptr<cdxCDynamicLayoutInfo> cdxCDynamicWnd::DoCreateLayoutInfo() {
    auto info = std::make_unique<cdxCDynamicLayoutInfo>();
    return (*info = this) ? std::move(info) : nullptr;
}

// NOLINTNEXTLINE(misc-unconventional-assign-operator): it tells whether it did
bool cdxCDynamicLayoutInfo::operator=(cdxCDynamicWnd const *wnd) {
    if (wnd == nullptr || !wnd->IsUp())
        return false;
    m_szCurrent = wnd->GetCurrentClientSize();
    m_szInitial = wnd->m_szInitial;
    m_szDelta = {m_szCurrent.cx - m_szInitial.cx, m_szCurrent.cy - m_szInitial.cy};
    m_nCtrlCnt = wnd->GetCtrlCount();
    m_bUseScrollPos = wnd->m_bUseScrollPos;
    auto const *const area = qobject_cast<QAbstractScrollArea const *>(wnd->Window());
    if (m_bUseScrollPos && area != nullptr)
        m_pntScrollPos = {area->horizontalScrollBar()->value(), area->verticalScrollBar()->value()};
    else if (m_bUseScrollPos && wnd->m_scrollBars)
        m_pntScrollPos = wnd->m_scrollBars->Position();
    return true;
}

void cdxCDynamicWnd::DoInitWindow(QWidget &window) {
    m_scrollBars.reset();
    m_pWnd = &window;
    DoInitWindow(window, GetCurrentClientSize());
}

void cdxCDynamicWnd::DoInitWindow(QWidget &window, Size initial) {
    m_scrollBars.reset();
    m_pWnd = &window;
    m_szInitial = m_szMin = initial;
    unsigned const former = GetCtrlCount();
    ApplyDynMap();
    if ((m_flags & FlagSizeIcon) != 0)
        CreateSizeIcon();
    m_bIsAntiFlickering = false;
    m_timerId = kAntiFlickerTimer;
    m_classStyle = GetClassStyle(window) & kRedrawBits;
    OnInitialized();
    if (GetCtrlCount() > former)
        Layout();
}

void cdxCDynamicWnd::ApplyDynMap() {
    for (__dynEntry const *entry = __getDynMap(nullptr); entry != nullptr && entry->type != 0; ++entry) {
        EdgePercents x{entry->b[0], entry->b[2]};
        EdgePercents y{entry->b[1], entry->b[3]};
        if (entry->type == 2) {
            x = TranslateMode(entry->b[0]);
            y = TranslateMode(entry->b[1]);
        }
        if (entry->id == 0)
            AddAllControls(x, y, false);
        else
            AddAt(GetSafeChildHWND(static_cast<int>(entry->id)), x, y, {}, false);
    }
}

void cdxCDynamicWnd::CreateSizeIcon() {
    delete m_pSizeIcon.data();
    auto grip = std::make_unique<cdxCSizeIconCtrl>(true);
    if (!grip->Create(Client(), static_cast<int>(m_idSizeIcon)))
        return;
    m_pSizeIcon = grip.release();
    AddSzControl(m_pSizeIcon, BotRight, {}, false);
    m_pSizeIcon->show();
}

EdgePercents cdxCDynamicWnd::_translate(Mode mode) { return TranslateMode(mode); }

cdxCDynamicWnd::__dynEntry const *cdxCDynamicWnd::__getDynMap(__dynEntry const * /*last*/) const { return nullptr; }

void cdxCDynamicWnd::DoOnSize(int type, int /*cx*/, int /*cy*/) {
    if (!IsDisabled() && IsWindow() && type != kMinimized)
        Layout();
}

void cdxCDynamicWnd::DoOnSizing(int edge, Rect const & /*rect*/) {
    constexpr int right = 2;
    constexpr int bottom = 6;
    constexpr int bottomRight = 8;
    if (m_timerId != 0 && !IsDisabled() && IsWindow() && (m_flags & FlagAntiFlicker) != 0)
        StartAntiFlickering(edge == right || edge == bottom || edge == bottomRight);
}

void cdxCDynamicWnd::DoOnGetMinMaxInfo(MinMaxInfo &info) const {
    if (IsDisabled() || !IsWindow())
        return;
    TrackSizes const sizes = ComputeTrackSizes(m_szMin, m_szMax, GetBorderSize(), (m_freedom & FreedomHoriz) != 0,
                                               (m_freedom & FreedomVert) != 0);
    info.ptMinTrackSize = {sizes.min.cx, sizes.min.cy};
    if (sizes.max.cx > 0)
        info.ptMaxTrackSize.x = sizes.max.cx;
    if (sizes.max.cy > 0)
        info.ptMaxTrackSize.y = sizes.max.cy;
}

void cdxCDynamicWnd::StartAntiFlickering(bool isBotRight) {
    if (!IsWindow() || m_timerId == 0)
        return;
    m_watch->StartTimer(m_timerId);
    if (m_bIsAntiFlickering)
        return;
    // Only the redraw bits are written back, here and when the timer ends it: all others of the class style are lost
    // with the first sizing, and callers have come to know them cleared.
    SetClassStyle(*m_pWnd, isBotRight ? m_classStyle & ~kRedrawBits : m_classStyle | kRedrawBits);
    m_bIsAntiFlickering = true;
}

void cdxCDynamicWnd::DoOnTimer(std::intptr_t id) {
    if (id != m_timerId || m_timerId == 0)
        return;
    m_watch->StopTimer();
    if (m_bIsAntiFlickering && IsWindow())
        SetClassStyle(*m_pWnd, m_classStyle);
    m_bIsAntiFlickering = false;
}

void cdxCDynamicWnd::DoOnParentNotify(unsigned message, QWidget *child) {
    if (message == kChildDestroyed && child != nullptr)
        DoDestroyCtrl(child);
}

void cdxCDynamicWnd::DoDestroyCtrl(QWidget *child) { m_map.erase(child); }

void cdxCDynamicWnd::DoOnDestroy() {
    if (IsWindow())
        OnDestroying();
    m_iDisabled = 1;
    m_watch->Rest();
    m_scrollBars.reset();
    m_pWnd = nullptr;
    m_map.clear();
    delete m_pSizeIcon.data();
}

} // namespace zelvar
