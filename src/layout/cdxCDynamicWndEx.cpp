#include "zelvar/layout/cdxCDynamicWndEx.h"

#include "zelvar/platform/ui/Convert.h"
#include "zelvar/platform/ui/MainWindow.h"
#include "zelvar/store/DCnfg.h"

#include <QtGui/QScreen>
#include <QtWidgets/QApplication>

#include <algorithm>

namespace zelvar {

namespace {

constexpr char const *kValid = "(valid)";
enum State { kOther = -1, kMinimized = 0, kMaximized = 1 };

Rect VirtualScreen() {
    QScreen const *const screen = QGuiApplication::primaryScreen();
    return screen == nullptr ? Rect{} : platform::ToRect(screen->virtualGeometry());
}

void MoveWindow(QWidget &window, Rect const &rect) {
    window.setGeometry(rect.left, rect.top, rect.Width(), rect.Height());
}

} // namespace

char const *const cdxCDynamicWndEx::M_lpszAutoPosProfileSection = "WindowPositions";

cdxCDynamicWndEx::~cdxCDynamicWndEx() { DoOnDestroy(); }

void cdxCDynamicWndEx::ActivateAutoPos(unsigned id) {
    m_autoPosKey = Format("ID=0x%08lx", static_cast<unsigned long>(id));
}

DString cdxCDynamicWndEx::Section() const {
    DString section = M_lpszAutoPosProfileSection;
    if (!section.ends_with('\\'))
        section += '\\';
    return section + m_autoPosKey;
}

Rect cdxCDynamicWndEx::NormalRect() const {
    // A window that was never shown knows no other rectangle than its present one.
    QRect const normal = m_pWnd->isWindow() ? m_pWnd->normalGeometry() : QRect();
    return platform::ToRect(normal.isValid() && (m_pWnd->isMaximized() || m_pWnd->isMinimized()) ? normal
                                                                                                 : m_pWnd->geometry());
}

void cdxCDynamicWndEx::OnInitialized() {
    if (m_autoPosKey.empty() || RestoreWindowPosition(Section().c_str(), RestoreState | RestoreVisibility))
        return;
    constexpr int percent = 10; // a window opens bigger than it was designed
    CenterWindow();
    StretchWindow(percent);
    // What it stands over may be at the edge of the screen.
    QRect const screen = m_pWnd->screen()->availableGeometry();
    QRect const place = m_pWnd->geometry();
    m_pWnd->move(std::max(screen.left(), std::min(place.left(), screen.right() + 1 - place.width())),
                 std::max(screen.top(), std::min(place.top(), screen.bottom() + 1 - place.height())));
}

void cdxCDynamicWndEx::OnDestroying() {
    if (!m_autoPosKey.empty() && IsWindow())
        StoreWindowPosition(Section().c_str());
}

void cdxCDynamicWndEx::CenterWindow() {
    QWidget const *parent = m_pWnd->parentWidget();
    if (parent == nullptr) {
        QWidget const *const modal = QApplication::activeModalWidget();
        parent = modal != nullptr && modal != m_pWnd ? modal : platform::MainWindow();
    }
    bool const overParent = parent != nullptr && parent->window()->isVisible();
    QRect const over = overParent ? parent->window()->geometry() : m_pWnd->screen()->availableGeometry();
    m_pWnd->move(over.center() - QPoint(m_pWnd->width() / 2, m_pWnd->height() / 2));
}

bool cdxCDynamicWndEx::StretchWindow(Size growth) {
    if (!IsWindow())
        return false;
    Rect const stretched = StretchedRect(NormalRect(), growth);
    if (stretched.IsEmpty())
        return false;
    MoveWindow(*m_pWnd, stretched);
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
    Rect const rect = NormalRect();
    int const state = m_pWnd->isMinimized() ? kMinimized : m_pWnd->isMaximized() ? kMaximized : kOther;
    // Invalid until all is written.
    return Profile::WriteInt(section, kValid, 0) && Profile::WriteInt(section, "Left", rect.left) &&
           Profile::WriteInt(section, "Right", rect.right) && Profile::WriteInt(section, "Top", rect.top) &&
           Profile::WriteInt(section, "Bottom", rect.bottom) &&
           Profile::WriteInt(section, "Visibility", m_pWnd->isVisible() ? 1 : 0) &&
           Profile::WriteInt(section, "State", state) && Profile::WriteInt(section, kValid, 1);
}

bool cdxCDynamicWndEx::RestoreWindowPosition(char const *section, unsigned flags) {
    if (!IsWindow() || section == nullptr || !Profile::HasRegistryKey() || Profile::GetInt(section, kValid, 0) != 1)
        return false;
    Rect const now = NormalRect();
    int const state = Profile::GetInt(section, "State", kOther);
    Rect const stored =
        NormalizedRect({Profile::GetInt(section, "Left", now.left), Profile::GetInt(section, "Top", now.top),
                        Profile::GetInt(section, "Right", now.right), Profile::GetInt(section, "Bottom", now.bottom)});
    if (!IsReachable(stored, VirtualScreen()))
        return false;
    MoveWindow(*m_pWnd, stored);
    if ((flags & RestoreState) != 0 && state == kMaximized)
        m_pWnd->showMaximized();
    else if ((flags & RestoreState) != 0 && state == kMinimized)
        m_pWnd->showMinimized();
    if ((flags & RestoreVisibility) == 0)
        return true;
    int const visibility = Profile::GetInt(section, "Visibility", -1);
    if (visibility == 0 || visibility == 1)
        m_pWnd->setVisible(visibility == 1);
    return true;
}

} // namespace zelvar
