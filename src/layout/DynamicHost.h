#pragma once

#include "zelvar/layout/cdxCDynamicWndEx.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/DialogTemplate.h"

#include <QtCore/QChildEvent>
#include <QtGui/QResizeEvent>

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

namespace zelvar {

/// A window that hands its events to the layout engine: what dialogs and pages have in common.
///
/// The window comes up when it is first shown, or by `Create`: the controls of its template are made, then
/// `OnInitDialog` runs on a window that is not visible yet. Derived classes make and register what else they need
/// there, after the base.
template <class Platform>
class DynamicHost : public Platform, public cdxCDynamicWndEx {
public:
    ~DynamicHost() override { DoOnDestroy(); }

    /// The table that the controls are made from, set before the window comes up; it must outlive the window. Controls
    /// that move in it are registered that way.
    void SetTemplate(platform::DialogTemplate const &dialogTemplate) { m_template = &dialogTemplate; }

    /// Lets the window come up without showing it. Does nothing while it is up.
    void Create();
    /// Ends the engine, which stores the position, hides the window and deletes the controls that it got since it came
    /// up, those of its template and those of `OnInitDialog`. What was there before stays, and so do windows of their
    /// own. It may come up again.
    virtual bool DestroyWindow();
    /// While the window comes up, its showing and hiding wait for the end of `OnInitDialog`.
    void setVisible(bool visible) override;

protected:
    template <class... Arguments>
    explicit DynamicHost(Freedom freedom, unsigned flags, Arguments &&...arguments)
        : Platform(std::forward<Arguments>(arguments)...), cdxCDynamicWndEx(freedom, flags) {}

    virtual void OnCreate() { m_bNewDlg = true; }
    /// False tells that a derived class has set the focus itself.
    virtual bool OnInitDialog() {
        DoInitWindow(*this);
        return true;
    }
    [[nodiscard]] bool HasTemplate() const { return m_template != nullptr; }
    /// A widget for an item of the template, owned by the window from then on, or null for the usual one.
    virtual QWidget *MakeControl(platform::DialogItem const & /*item*/) { return nullptr; }
    /// Gives the toolkit the limits of `DoOnGetMinMaxInfo`. To be called when a derived class has changed them while
    /// the window is visible.
    void ApplyTrackSizes();

    void OnInitialized() override {
        ApplyTrackSizes(); // a stored position keeps to them
        cdxCDynamicWndEx::OnInitialized();
    }
    // NOLINTNEXTLINE(bugprone-reserved-identifier,readability-identifier-naming): applications use this name
    __dynEntry const *__getDynMap(__dynEntry const *last) const override;

    void showEvent(QShowEvent *event) override {
        ApplyTrackSizes(); // the frame is known from here on
        Platform::showEvent(event);
    }
    void resizeEvent(QResizeEvent *event) override;
    void childEvent(QChildEvent *event) override {
        Platform::childEvent(event);
        constexpr unsigned destroyed = 2;
        if (event->removed() && event->child()->isWidgetType())
            DoOnParentNotify(destroyed, static_cast<QWidget *>(event->child()));
    }

    bool m_bNewDlg = true; ///< not sized yet

private:
    template <class Visit>
    void ForEachControl(Visit const &visit);

    platform::DialogTemplate const *m_template = nullptr; ///< not owned
    mutable std::vector<__dynEntry> m_entries;            ///< the template's moves
    bool m_created = false;
    bool m_initializing = false;
    bool m_ended = false;                   ///< the engine was ended, which disables it
    std::vector<QPointer<QWidget>> m_older; ///< children that were there before the window came up
    std::optional<bool> m_wantedVisible;
};

template <class Platform>
void DynamicHost<Platform>::Create() {
    if (std::exchange(m_created, true))
        return;
    m_initializing = true;
    if (std::exchange(m_ended, false))
        --m_iDisabled; // what was disabled by hand, before the first time too, stays so
    // A part of another window has its size from that one, whatever the template was designed for.
    QSize const given = !this->isWindow() && this->testAttribute(Qt::WA_Resized) ? this->size() : QSize();
    m_older.clear();
    ForEachControl([this](QWidget &child) { m_older.emplace_back(&child); });
    OnCreate();
    if (m_template != nullptr)
        platform::BuildDialog(*this, *m_template,
                              [this](QWidget &, platform::DialogItem const &item) { return MakeControl(item); });
    OnInitDialog();
    if (given.isValid())
        this->resize(given);
    m_initializing = false;
    if (auto const wanted = std::exchange(m_wantedVisible, std::nullopt))
        setVisible(*wanted);
}

template <class Platform>
bool DynamicHost<Platform>::DestroyWindow() {
    if (!std::exchange(m_created, false))
        return false;
    DoOnDestroy();
    m_ended = true;
    Platform::setVisible(false);
    std::vector<QPointer<QWidget>> made; // one may take others with it
    ForEachControl([&](QWidget &child) {
        if (std::find(m_older.begin(), m_older.end(), &child) == m_older.end())
            made.emplace_back(&child);
    });
    for (QPointer<QWidget> const &child : made)
        delete child.data();
    return true;
}

template <class Platform>
template <class Visit>
void DynamicHost<Platform>::ForEachControl(Visit const &visit) {
    for (QObject *const object : this->children())
        if (auto *const child = qobject_cast<QWidget *>(object); child != nullptr && !child->isWindow())
            visit(*child);
}

template <class Platform>
void DynamicHost<Platform>::setVisible(bool visible) {
    if (m_initializing) {
        m_wantedVisible = visible;
        return;
    }
    if (visible && !m_created) {
        m_wantedVisible.reset();
        Create();
    }
    Platform::setVisible(visible);
}

template <class Platform>
void DynamicHost<Platform>::ApplyTrackSizes() {
    if (!this->isWindow())
        return; // only frames are held to limits
    MinMaxInfo info;
    DoOnGetMinMaxInfo(info);
    Size const border = GetBorderSize();
    auto const client = [](int whole, int frame, int none) { return whole > 0 ? std::max(whole - frame, 0) : none; };
    this->setMinimumSize(client(info.ptMinTrackSize.x, border.cx, 0), client(info.ptMinTrackSize.y, border.cy, 0));
    this->setMaximumSize(client(info.ptMaxTrackSize.x, border.cx, QWIDGETSIZE_MAX),
                         client(info.ptMaxTrackSize.y, border.cy, QWIDGETSIZE_MAX));
}

template <class Platform>
cdxCDynamicWnd::__dynEntry const *DynamicHost<Platform>::__getDynMap(__dynEntry const * /*last*/) const {
    constexpr std::uint32_t percentages = 1;
    m_entries.clear();
    if (m_template == nullptr)
        return nullptr;
    for (platform::DialogItem const &item : m_template->items) {
        platform::MoveRule const &move = item.move;
        if (move != platform::MoveRule{} && item.id != 0)
            m_entries.push_back(
                {percentages, static_cast<std::uint32_t>(item.id), {move.x1, move.y1, move.x2, move.y2}});
    }
    m_entries.push_back({});
    return m_entries.data();
}

template <class Platform>
void DynamicHost<Platform>::resizeEvent(QResizeEvent *event) {
    m_bNewDlg = false;
    Platform::resizeEvent(event);
    QSize const size = event->size();
    // The toolkit tells that the user sizes the window, but not by which edge.
    constexpr int bottomRightEdge = 8;
    if (event->spontaneous())
        DoOnSizing(bottomRightEdge, {0, 0, size.width(), size.height()});
    enum { Restored = 0, Minimized = 1, Maximized = 2 };
    int const type = this->isMinimized() ? Minimized : this->isMaximized() ? Maximized : Restored;
    DoOnSize(type, size.width(), size.height());
}

} // namespace zelvar
