#include "zelvar/layout/cdxCDynamicWnd.h"

#include "zelvar/layout/cdxCSizeIconCtrl.h"
#include "zelvar/platform/ui/ControlId.h"

#include <QtCore/QTimer>
#include <QtWidgets/QWidget>

#include <utility>
#include <vector>

namespace zelvar {

namespace {

constexpr int kAntiFlickerDelay = 120; // ms
constexpr unsigned kRedrawBits = 3;    // redraw all when the width, when the height changes

QRect ToQRect(Rect const &rect) { return {rect.left, rect.top, rect.Width(), rect.Height()}; }
Rect ToRect(QRect const &rect) {
    return {rect.left(), rect.top(), rect.left() + rect.width(), rect.top() + rect.height()};
}

/// Direct children in window order; windows of their own are none.
std::vector<QWidget *> ChildrenOf(QWidget const &window) {
    std::vector<QWidget *> children;
    for (QObject *object : window.children())
        if (auto *child = qobject_cast<QWidget *>(object); child != nullptr && !child->isWindow())
            children.push_back(child);
    return children;
}

// A window whose contents stay where they are redraws only what a resize uncovers: that is what clear redraw bits mean.
unsigned RedrawBits(QWidget const &window) { return window.testAttribute(Qt::WA_StaticContents) ? 0 : kRedrawBits; }
void SetRedrawBits(QWidget &window, unsigned bits) { window.setAttribute(Qt::WA_StaticContents, bits == 0); }

LayoutPosition MakePosition(QWidget const &child, cdxCDynamicWnd::Bytes const &bytes, Size const &min) {
    Rect const rect = ToRect(child.geometry());
    return {rect.left, rect.top, rect.right, rect.bottom, bytes[0], bytes[1], bytes[2], bytes[3], min.cx, min.cy};
}

} // namespace

cdxCDynamicWnd::cdxCDynamicWnd(Freedom freedom, unsigned flags) : m_freedom(freedom), m_flags(flags) {}

cdxCDynamicWnd::~cdxCDynamicWnd() { DoOnDestroy(); }

bool cdxCDynamicWnd::IsUp() const { return m_pWnd != nullptr && !m_pWnd->isMinimized(); }

QWidget *cdxCDynamicWnd::GetSafeChildHWND(int id) const {
    return m_pWnd == nullptr ? nullptr : platform::GetDlgItem(*m_pWnd, id);
}

unsigned cdxCDynamicWnd::GetCtrlCount() const { return static_cast<unsigned>(m_map.size()); }

Size cdxCDynamicWnd::GetCurrentClientSize() const {
    return m_pWnd == nullptr ? Size{} : Size{m_pWnd->width(), m_pWnd->height()};
}

Size cdxCDynamicWnd::GetBorderSize() const {
    if (!IsUp())
        return {};
    QSize const border = m_pWnd->frameSize() - m_pWnd->size();
    return {border.width(), border.height()};
}

bool cdxCDynamicWnd::GetControlPosition(QWidget *child, Position &position) const {
    auto const at = m_map.find(child);
    if (at == m_map.end())
        return false;
    position = at->second;
    return true;
}

cdxCDynamicWnd::AxisPercent cdxCDynamicWnd::_translate(Mode mode) {
    switch (mode) {
    case ModeGrow:
        return {0, 100};
    case ModeMove:
        return {100, 100};
    case ModeHalf:
        return {50, 50};
    default:
        return {0, 0};
    }
}

bool cdxCDynamicWnd::AddSzControl(QWidget *child, Position const &position, bool repos) {
    if (m_pWnd == nullptr || child == nullptr)
        return false;
    m_map.insert_or_assign(child, position);
    if (repos)
        UpdateControlPosition(child);
    return true;
}

bool cdxCDynamicWnd::AddSzControl(QWidget *child, Bytes const &bytes, Size const &min, bool repos) {
    return child != nullptr && AddSzControl(child, MakePosition(*child, bytes, min), repos);
}

bool cdxCDynamicWnd::AddSzControl(int id, Bytes const &bytes, Size const &min, bool repos) {
    return AddSzControl(GetSafeChildHWND(id), bytes, min, repos);
}

bool cdxCDynamicWnd::AddSzControl(QWidget *child, signed char x1, signed char y1, signed char x2, signed char y2,
                                  Size const &min, bool repos) {
    return AddSzControl(child, Bytes{x1, y1, x2, y2}, min, repos);
}

bool cdxCDynamicWnd::AddSzControl(int id, signed char x1, signed char y1, signed char x2, signed char y2,
                                  Size const &min, bool repos) {
    return AddSzControl(GetSafeChildHWND(id), Bytes{x1, y1, x2, y2}, min, repos);
}

bool cdxCDynamicWnd::AddSzControl(QWidget *child, Mode x, Mode y, Size const &min, bool repos) {
    AxisPercent const horizontal = _translate(x);
    AxisPercent const vertical = _translate(y);
    return AddSzControl(child, Bytes{horizontal.near, vertical.near, horizontal.far, vertical.far}, min, repos);
}

bool cdxCDynamicWnd::AddSzControl(int id, Mode x, Mode y, Size const &min, bool repos) {
    return AddSzControl(GetSafeChildHWND(id), x, y, min, repos);
}

bool cdxCDynamicWnd::AddSzControl(QWidget *child, QWidget *likeThis, bool) {
    Position position;
    return GetControlPosition(likeThis, position) && AddSzControl(child, position, true);
}

bool cdxCDynamicWnd::AddSzControl(int id, QWidget *likeThis, bool repos) {
    return AddSzControl(GetSafeChildHWND(id), likeThis, repos);
}

bool cdxCDynamicWnd::AddSzXControl(QWidget *child, signed char x1, signed char x2, Size const &min, bool repos) {
    return AddSzControl(child, Bytes{x1, 0, x2, 0}, min, repos);
}

bool cdxCDynamicWnd::AddSzXControl(QWidget *child, Mode x, Size const &min, bool repos) {
    return AddSzControl(child, x, ModeFixed, min, repos);
}

bool cdxCDynamicWnd::AddSzYControl(QWidget *child, signed char y1, signed char y2, Size const &min, bool repos) {
    return AddSzControl(child, Bytes{0, y1, 0, y2}, min, repos);
}

bool cdxCDynamicWnd::AddSzYControl(QWidget *child, Mode y, Size const &min, bool repos) {
    return AddSzControl(child, ModeFixed, y, min, repos);
}

void cdxCDynamicWnd::AllControls(Bytes const &bytes, bool overwrite, bool repos) {
    if (m_pWnd == nullptr)
        return;
    bool added = false;
    for (QWidget *child : ChildrenOf(*m_pWnd))
        if (overwrite || !m_map.contains(child))
            added = AddSzControl(child, bytes, Size{}, true) || added;
    if (added && repos)
        Layout();
}

void cdxCDynamicWnd::AllControls(Mode x, Mode y, bool overwrite, bool repos) {
    AxisPercent const horizontal = _translate(x);
    AxisPercent const vertical = _translate(y);
    AllControls(Bytes{horizontal.near, vertical.near, horizontal.far, vertical.far}, overwrite, repos);
}

bool cdxCDynamicWnd::RemSzControl(QWidget *child, bool moveToInitial) {
    auto const at = m_map.find(child);
    if (at == m_map.end())
        return false;
    if (moveToInitial)
        child->setGeometry(ToQRect({at->second.left, at->second.top, at->second.right, at->second.bottom}));
    m_map.erase(at);
    return true;
}

bool cdxCDynamicWnd::UpdateControlPosition(QWidget *child) {
    if (m_pWnd == nullptr || child == nullptr)
        return false;
    std::unique_ptr<cdxCDynamicLayoutInfo> const info = DoCreateLayoutInfo();
    if (info == nullptr)
        return false;
    if (info->IsInitial())
        return true;
    Rect rect = ToRect(child->geometry());
    if (DoMoveCtrl(child, platform::GetDlgCtrlID(*child), rect, *info) && ToQRect(rect) != child->geometry())
        child->setGeometry(ToQRect(rect));
    return true;
}

bool cdxCDynamicWnd::DoMoveCtrl(QWidget *child, int, Rect &rect, cdxCDynamicLayoutInfo const &info) {
    auto const at = m_map.find(child);
    if (at == m_map.end())
        return false;
    rect = ComputeChildRect(at->second, info.Growth());
    return true;
}

void cdxCDynamicWnd::DoDestroyCtrl(QWidget *child) { m_map.erase(child); }

std::unique_ptr<cdxCDynamicLayoutInfo> cdxCDynamicWnd::DoCreateLayoutInfo() {
    auto info = std::make_unique<cdxCDynamicLayoutInfo>();
    if (!(*info = this))
        return nullptr;
    return info;
}

void cdxCDynamicWnd::Layout() {
    if (m_pWnd == nullptr)
        return;
    std::unique_ptr<cdxCDynamicLayoutInfo> const info = DoCreateLayoutInfo();
    if (info == nullptr)
        return;
    // All moves go in one batch: what lies under the children is painted once, behind the last of them.
    std::vector<std::pair<QWidget *, QRect>> moves;
    moves.reserve(info->m_nCtrlCnt);
    for (QWidget *child : ChildrenOf(*m_pWnd)) {
        Rect rect = ToRect(child->geometry());
        if (DoMoveCtrl(child, platform::GetDlgCtrlID(*child), rect, *info) && ToQRect(rect) != child->geometry())
            moves.emplace_back(child, ToQRect(rect));
    }
    if (moves.empty())
        return;
    bool const wasUpdating = m_pWnd->updatesEnabled();
    m_pWnd->setUpdatesEnabled(false);
    for (auto const &[child, rect] : moves)
        child->setGeometry(rect);
    m_pWnd->setUpdatesEnabled(wasUpdating);
    if (m_pSizeIcon != nullptr)
        m_pSizeIcon->update();
}

void cdxCDynamicWnd::DoInitWindow(QWidget &window) { DoInitWindow(window, {window.width(), window.height()}); }

void cdxCDynamicWnd::DoInitWindow(QWidget &window, Size const &size) {
    m_pWnd = &window;
    m_szInitial = size;
    m_szMin = size;
    unsigned const before = GetCtrlCount();
    ApplyDynMap();
    if ((m_flags & FlagSizeIcon) != 0) {
        m_pSizeIcon = new cdxCSizeIconCtrl(true);
        m_pSizeIcon->Create(m_pWnd, static_cast<unsigned>(m_idSizeIcon));
        AddSzControl(m_pSizeIcon, BotRight, Size{}, false);
        m_pSizeIcon->show();
    }
    m_bIsAntiFlickering = false;
    m_timerId = kAntiFlickerTimer;
    m_classStyle = RedrawBits(*m_pWnd);
    OnInitialized();
    if (GetCtrlCount() > before)
        Layout();
}

void cdxCDynamicWnd::ApplyDynMap() {
    constexpr std::uint32_t kPercent = 1;
    for (__dynEntry const *entry = __getDynMap(nullptr); entry != nullptr && entry->type != 0; ++entry) {
        AxisPercent x{entry->bytes[0], entry->bytes[2]};
        AxisPercent y{entry->bytes[1], entry->bytes[3]};
        if (entry->type != kPercent) {
            x = _translate(static_cast<Mode>(entry->bytes[0]));
            y = _translate(static_cast<Mode>(entry->bytes[1]));
        }
        Bytes const bytes{x.near, y.near, x.far, y.far};
        if (entry->id == 0)
            AllControls(bytes, false, false);
        else
            AddSzControl(static_cast<int>(entry->id), bytes, Size{}, false);
    }
}

void cdxCDynamicWnd::DoOnSize(SizeType type) {
    if (!IsDisabled() && m_pWnd != nullptr && type != SizeMinimized)
        Layout();
}

void cdxCDynamicWnd::DoOnSizing(int edge) {
    constexpr int kRight = 2;
    constexpr int kBottom = 6;
    constexpr int kBottomRight = 8;
    if (m_timerId != 0 && !IsDisabled() && m_pWnd != nullptr && (m_flags & FlagAntiFlicker) != 0)
        StartAntiFlickering(edge == kRight || edge == kBottom || edge == kBottomRight);
}

void cdxCDynamicWnd::DoOnGetMinMaxInfo(MinMaxInfo &info) const {
    if (IsDisabled() || m_pWnd == nullptr)
        return;
    Size const border = GetBorderSize();
    info.minTrack = {m_szMin.cx + border.cx, m_szMin.cy + border.cy};
    if ((m_freedom & FreedomHoriz) == 0)
        info.maxTrack.cx = info.minTrack.cx;
    else if (m_szMax.cx > 0)
        info.maxTrack.cx = m_szMax.cx + border.cx;
    if ((m_freedom & FreedomVert) == 0)
        info.maxTrack.cy = info.minTrack.cy;
    else if (m_szMax.cy > 0)
        info.maxTrack.cy = m_szMax.cy + border.cy;
}

void cdxCDynamicWnd::StartAntiFlickering(bool isBotRight) {
    if (m_pWnd == nullptr || m_timerId == 0)
        return;
    if (m_timer == nullptr) {
        m_timer = std::make_unique<QTimer>();
        m_timer->setSingleShot(true);
        QObject::connect(m_timer.get(), &QTimer::timeout, m_timer.get(), [this] { DoOnTimer(m_timerId); });
    }
    m_timer->start(kAntiFlickerDelay);
    if (m_bIsAntiFlickering)
        return;
    SetRedrawBits(*m_pWnd, isBotRight ? m_classStyle & ~kRedrawBits : m_classStyle | kRedrawBits);
    m_bIsAntiFlickering = true;
}

void cdxCDynamicWnd::DoOnTimer(std::int64_t id) {
    if (id == 0 || id != m_timerId)
        return;
    if (m_timer != nullptr)
        m_timer->stop();
    if (m_bIsAntiFlickering && m_pWnd != nullptr)
        SetRedrawBits(*m_pWnd, m_classStyle);
    m_bIsAntiFlickering = false;
}

void cdxCDynamicWnd::DoOnParentNotify(unsigned message, QWidget *child) {
    if (message != kChildDestroyed || child == nullptr)
        return;
    DoDestroyCtrl(child);
    if (child == m_pSizeIcon)
        m_pSizeIcon = nullptr;
}

void cdxCDynamicWnd::DoOnDestroy() {
    if (m_pWnd != nullptr)
        OnDestroying();
    m_iDisabled = 1;
    m_pWnd = nullptr;
    m_map.clear();
    m_timer.reset();
    delete std::exchange(m_pSizeIcon, nullptr);
}

} // namespace zelvar
