#pragma once

#include "zelvar/layout/cdxCDynamicLayoutInfo.h"
#include "zelvar/layout/core/WalkedMap.h"
#include "zelvar/layout/core/WindowRule.h"

#include <QtCore/QPointer>
#include <QtWidgets/QWidget>

#include <cstdint>
#include <memory>

namespace zelvar {

class HostScrollBars;
class cdxCSizeIconCtrl;

/// Dynamic window: makes the children of a window follow its resizing, each by four percentages and a minimum size.
///
/// It is no window itself but a second base class of a dialog or page, whose events drive it. Rectangles are always
/// computed from the one that a child had when it was registered, so nothing drifts. All operations tell failure by
/// false. User interface thread.
class ZELVAR_API cdxCDynamicWnd {
public:
    /// What the user may resize.
    enum Freedom { FreedomNone = 0, FreedomHoriz = 1, FreedomVert = 2, FreedomAll = 3 };
    /// What the two edges of an axis do when the window grows.
    enum Mode { ModeFixed = 0, ModeGrow = 1, ModeMove = 2, ModeHalf = 3 };
    enum Flags : unsigned {
        FlagSizeIcon = 1,    ///< a grip in the bottom right corner
        FlagAntiFlicker = 2, ///< the redraw bits of the class style are changed while the user sizes the window
        FlagCopyBits = 4,    ///< moved children keep their pixels; without it a pass draws the window anew, once
    };
    using Position = LayoutPosition;
    using Bytes = signed char[4]; ///< left, top, right, bottom

    static Bytes const TopLeft;
    static Bytes const TopRight;
    static Bytes const BotLeft;
    static Bytes const BotRight;
    static constexpr unsigned kDefaultFlags = FlagSizeIcon | FlagAntiFlicker;

    /// Limits of a window under its user's hand, borders included; 0 is no limit.
    struct MinMaxInfo {
        Point ptMinTrackSize{};
        Point ptMaxTrackSize{};
    };

    explicit cdxCDynamicWnd(Freedom freedom = FreedomAll, unsigned flags = kDefaultFlags);
    cdxCDynamicWnd(cdxCDynamicWnd const &) = delete;
    cdxCDynamicWnd &operator=(cdxCDynamicWnd const &) = delete;
    virtual ~cdxCDynamicWnd();

    [[nodiscard]] bool IsWindow() const { return !m_pWnd.isNull(); }
    [[nodiscard]] bool IsValid() const { return IsWindow(); }
    /// The window exists and is not minimised.
    [[nodiscard]] bool IsUp() const { return IsWindow() && !m_pWnd->isMinimized(); }
    [[nodiscard]] bool IsDisabled() const { return m_iDisabled > 0; }
    void Disable() { ++m_iDisabled; }
    /// True if the engine is enabled now. Calls need not pair: one too many counts.
    bool Enable() { return --m_iDisabled < 1; }
    [[nodiscard]] QWidget *Window() const { return m_pWnd; }
    /// The child with that id, or null.
    [[nodiscard]] QWidget *GetSafeChildHWND(int id) const;
    [[nodiscard]] unsigned GetFlags() const { return m_flags; }
    void ModifyFlags(unsigned add, unsigned remove) { m_flags = (m_flags & ~remove) | add; }

    [[nodiscard]] virtual unsigned GetCtrlCount() const { return static_cast<unsigned>(m_map.size()); }
    bool GetControlPosition(QWidget *child, Position &position) const;
    /// Pixels; 0, 0 without a window. The viewport's size of a window that scrolls, without the bars that stand in it.
    [[nodiscard]] virtual Size GetCurrentClientSize() const;
    /// What frame and title take; 0, 0 without a window or while it is minimised.
    [[nodiscard]] Size GetBorderSize() const;

    /// Registers `child`, replacing an earlier entry; with `repos` it moves at once to where the rule puts it now.
    virtual bool AddSzControl(QWidget *child, Position const &position, bool repos);
    /// The forms that take the child's present rectangle. `min` in pixels.
    bool AddSzControl(QWidget *child, Bytes const &bytes, Size min = {}, bool repos = true);
    bool AddSzControl(QWidget *child, signed char x1, signed char y1, signed char x2, signed char y2, Size min = {},
                      bool repos = true);
    bool AddSzControl(QWidget *child, Mode x, Mode y, Size min = {}, bool repos = true);
    bool AddSzControl(int id, Position const &position, bool repos);
    bool AddSzControl(int id, Bytes const &bytes, Size min = {}, bool repos = true);
    bool AddSzControl(int id, signed char x1, signed char y1, signed char x2, signed char y2, Size min = {},
                      bool repos = true);
    bool AddSzControl(int id, Mode x, Mode y, Size min = {}, bool repos = true);
    /// Gives `child` all of what is registered for `likeThis`, its rectangle included. It moves at once whatever the
    /// last argument says.
    bool AddSzControl(QWidget *child, QWidget *likeThis, bool repos);
    bool AddSzControl(int id, QWidget *likeThis, bool repos);
    /// One axis follows, the other stays.
    bool AddSzXControl(QWidget *child, signed char x1, signed char x2, Size min = {}, bool repos = true);
    bool AddSzXControl(QWidget *child, Mode x, Size min = {}, bool repos = true);
    bool AddSzXControl(int id, signed char x1, signed char x2, Size min = {}, bool repos = true);
    bool AddSzXControl(int id, Mode x, Size min = {}, bool repos = true);
    bool AddSzYControl(QWidget *child, signed char y1, signed char y2, Size min = {}, bool repos = true);
    bool AddSzYControl(QWidget *child, Mode y, Size min = {}, bool repos = true);
    bool AddSzYControl(int id, signed char y1, signed char y2, Size min = {}, bool repos = true);
    bool AddSzYControl(int id, Mode y, Size min = {}, bool repos = true);
    /// Registers all direct children, those that are registered already only with `overwrite`.
    void AllControls(Bytes const &bytes, bool overwrite = false, bool repos = true);
    void AllControls(signed char x1, signed char y1, signed char x2, signed char y2, bool overwrite = false,
                     bool repos = true);
    void AllControls(Mode x, Mode y, bool overwrite = false, bool repos = true);
    /// With `moveToInitial` the child goes back to the rectangle that it was registered with. False if unregistered.
    bool RemSzControl(QWidget *child, bool moveToInitial = false);

    /// Moves one child to where the rule puts it now.
    bool UpdateControlPosition(QWidget *child);
    /// Moves every registered child to where the rule puts it now; one that stands there already is not touched.
    virtual void Layout();

    /// Binds the engine to `window`; its client size, or `initial`, is what the rectangles of children refer to.
    void DoInitWindow(QWidget &window);
    void DoInitWindow(QWidget &window, Size initial);

    // What the hosting window hands on.
    void DoOnSize(int type, int cx, int cy); ///< type 1: minimised
    void DoOnSizing(int edge, Rect const &rect);
    void DoOnGetMinMaxInfo(MinMaxInfo &info) const;
    void DoOnTimer(std::intptr_t id);
    void DoOnParentNotify(unsigned message, QWidget *child); ///< message 2: the child is being destroyed
    void DoOnDestroy();                                      ///< ends the engine; repeated calls find nothing to do

protected:
    friend class cdxCDynamicLayoutInfo;

    /// Entry of a class's static layout table.
    // NOLINTNEXTLINE(bugprone-reserved-identifier,readability-identifier-naming): applications use this name
    struct __dynEntry {
        std::uint32_t type = 0; ///< 0 ends the table, 1: `b` is percentages, 2: `b` begins with the modes of x and y
        std::uint32_t id = 0;   ///< 0 for all children that are not named
        std::int8_t b[4]{};
    };

    struct Entry {
        Position position{};
        int id = 0; ///< control id when it was registered: asking the child costs as much as moving it
    };

    /// Where `child` shall stand; false leaves it alone. Derived classes treat single children differently.
    virtual bool DoMoveCtrl(QWidget *child, int id, Rect &rect, cdxCDynamicLayoutInfo const &info);
    /// Forgets a child that is being destroyed.
    virtual void DoDestroyCtrl(QWidget *child);
    virtual void OnInitialized() {}
    virtual void OnDestroying() {}
    /// Null if the window cannot be laid out now.
    virtual std::unique_ptr<cdxCDynamicLayoutInfo> DoCreateLayoutInfo();
    /// `isBotRight`: the top left corner of the window stays.
    virtual void StartAntiFlickering(bool isBotRight);
    /// The class's layout table, asked for with null; null for none.
    // NOLINTNEXTLINE(bugprone-reserved-identifier,readability-identifier-naming): applications use this name
    virtual __dynEntry const *__getDynMap(__dynEntry const *last) const;

    [[nodiscard]] static EdgePercents _translate(Mode mode);

    // Windows of hosts and derived classes read and set these by name.
    QPointer<QWidget> m_pWnd;               ///< the window served, not owned
    QPointer<cdxCSizeIconCtrl> m_pSizeIcon; ///< the grip, owned
    bool m_bIsAntiFlickering = false;       ///< the class style is changed
    std::int32_t m_iDisabled = 0;           ///< above 0: disabled
    std::uint32_t m_classStyle = 0;         ///< the redraw bits as they were at the start
    WalkedMap<QWidget *, Entry> m_map;
    Freedom m_freedom;
    unsigned m_flags;
    Size m_szInitial;
    Size m_szMin; ///< of the client area; the initial size unless changed
    Size m_szMax; ///< 0 for none
    unsigned m_idSizeIcon = 59936;
    std::intptr_t m_timerId = 0;  ///< 0 until the window is initialised
    bool m_bUseScrollPos = false; ///< children scroll with the window's scroll bars; one without any gets its own

private:
    class Watch;
    /// The widget whose children are laid out: the viewport of a window that scrolls.
    [[nodiscard]] QWidget *Client() const;
    [[nodiscard]] int IdOf(QWidget &child) const;
    void FitScrollBars();
    void LayoutChildren();
    void OnScrolled(Point by);
    void ApplyDynMap();
    void CreateSizeIcon();
    bool AddAt(QWidget *child, EdgePercents x, EdgePercents y, Size min, bool repos);
    bool AddAllControls(EdgePercents x, EdgePercents y, bool overwrite);

    std::unique_ptr<Watch> m_watch;               ///< hears of children that die and of the timer
    std::unique_ptr<HostScrollBars> m_scrollBars; ///< once they were needed
};

} // namespace zelvar
