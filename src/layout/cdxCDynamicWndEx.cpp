#include "zelvar/layout/cdxCDynamicWndEx.h"

#include "zelvar/base/DCnfg.h"

#include <QtGui/QGuiApplication>
#include <QtGui/QScreen>
#include <QtWidgets/QWidget>

#include <utility>

namespace zelvar {

namespace {

constexpr int kScreenMargin = 5;  // pixels of the virtual screen that do not count
constexpr int kFirstStretch = 10; // percent
constexpr int kNotStored = -1;
constexpr int kMinimized = 0;
constexpr int kMaximized = 1;

/// Where the window stands when it is neither minimised nor maximised: the frame's corner, the client area's size.
QRect NormalRect(QWidget const &window) {
    if ((window.windowState() & (Qt::WindowMinimized | Qt::WindowMaximized | Qt::WindowFullScreen)) == 0)
        return {window.pos(), window.size()};
    QPoint const frame = window.geometry().topLeft() - window.frameGeometry().topLeft();
    return window.normalGeometry().isValid() ? window.normalGeometry().translated(-frame)
                                             : QRect(window.pos(), window.size());
}

void MoveWindow(QWidget &window, QRect const &rect) {
    window.resize(rect.size());
    window.move(rect.topLeft());
}

} // namespace

char const *const cdxCDynamicWndEx::M_lpszAutoPosProfileSection = "WindowPositions";

void cdxCDynamicWndEx::ActivateAutoPos(unsigned id) {
    m_autoPosKey = Format("ID=0x%08lx", static_cast<unsigned long>(id));
}

DString cdxCDynamicWndEx::ProfileSection() const {
    DString section = M_lpszAutoPosProfileSection;
    if (!section.ends_with('\\'))
        section += '\\';
    return section + m_autoPosKey;
}

void cdxCDynamicWndEx::OnInitialized() {
    if (m_autoPosKey.empty() || RestoreWindowPosition(ProfileSection().c_str(), RestoreState | RestoreVisibility))
        return;
    CenterWindow();
    StretchWindow(kFirstStretch);
}

void cdxCDynamicWndEx::OnDestroying() {
    if (!m_autoPosKey.empty() && IsWindow())
        StoreWindowPosition(ProfileSection().c_str());
}

void cdxCDynamicWndEx::DoShowWindow(bool show) { Window()->setVisible(show); }

void cdxCDynamicWndEx::CenterWindow() {
    QWidget const *const parent = Window()->parentWidget();
    QRect const area = parent != nullptr ? parent->window()->frameGeometry() : Window()->screen()->availableGeometry();
    QRect place(QPoint(), Window()->size());
    place.moveCenter(area.center());
    Window()->move(place.topLeft());
}

bool cdxCDynamicWndEx::StretchWindow(Size const &by) {
    if (!IsWindow())
        return false;
    QRect const normal = NormalRect(*Window());
    Rect const stretched{normal.left() - by.cx / 2, normal.top() - by.cy / 2,
                         normal.left() + normal.width() + (by.cx + 1) / 2,
                         normal.top() + normal.height() + (by.cy + 1) / 2};
    if (stretched.IsEmpty())
        return false;
    MoveWindow(*Window(), {stretched.left, stretched.top, stretched.Width(), stretched.Height()});
    return true;
}

bool cdxCDynamicWndEx::StretchWindow(int percent) {
    Size const border = GetBorderSize();
    Size const client = GetCurrentClientSize();
    return StretchWindow(Size{(border.cx + client.cx) * percent / 100, (border.cy + client.cy) * percent / 100});
}

bool cdxCDynamicWndEx::StoreWindowPosition(char const *section) const {
    if (!IsWindow() || section == nullptr || !Profile::HasRegistryKey())
        return false;
    QRect const rect = NormalRect(*Window());
    int const state = Window()->isMinimized() ? kMinimized : Window()->isMaximized() ? kMaximized : kNotStored;
    std::pair<char const *, int> const values[] = {
        {"(valid)", 0}, // until all the others are there
        {"Left", rect.left()},
        {"Right", rect.left() + rect.width()},
        {"Top", rect.top()},
        {"Bottom", rect.top() + rect.height()},
        {"Visibility", Window()->isVisible() ? 1 : 0},
        {"State", state},
        {"(valid)", 1},
    };
    for (auto const &[name, value] : values)
        if (!Profile::WriteInt(section, name, value))
            return false;
    return true;
}

bool cdxCDynamicWndEx::RestoreWindowPosition(char const *section, unsigned flags) {
    if (!IsWindow() || section == nullptr || !Profile::HasRegistryKey() || Profile::GetInt(section, "(valid)", 0) != 1)
        return false;
    QRect const now = NormalRect(*Window());
    int const state = Profile::GetInt(section, "State", kNotStored);
    int left = Profile::GetInt(section, "Left", now.left());
    int right = Profile::GetInt(section, "Right", now.left() + now.width());
    int top = Profile::GetInt(section, "Top", now.top());
    int bottom = Profile::GetInt(section, "Bottom", now.top() + now.height());
    if (left > right)
        std::swap(left, right);
    if (top > bottom)
        std::swap(top, bottom);
    QRect const stored(left, top, right - left, bottom - top);

    QRect screens = QGuiApplication::primaryScreen()->virtualGeometry();
    if (!screens.isEmpty())
        screens.adjust(kScreenMargin, kScreenMargin, -kScreenMargin, -kScreenMargin);
    if (!screens.intersects(stored))
        return false;
    MoveWindow(*Window(), stored);
    if ((flags & RestoreState) != 0 && (state == kMaximized || state == kMinimized))
        Window()->setWindowState(state == kMaximized ? Qt::WindowMaximized : Qt::WindowMinimized);
    if ((flags & RestoreVisibility) != 0) {
        int const visibility = Profile::GetInt(section, "Visibility", kNotStored);
        if (visibility == 0 || visibility == 1)
            DoShowWindow(visibility == 1);
    }
    return true;
}

} // namespace zelvar
