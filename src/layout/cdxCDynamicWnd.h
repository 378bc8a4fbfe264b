#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/layout/cdxCDynamicLayoutInfo.h"
#include "zelvar/layout/core/LayoutRule.h"

#include <QtCore/QRect>

#include <cstdint>
#include <memory>
#include <unordered_map>

class QTimer;
class QWidget;

namespace zelvar {

class cdxCSizeIconCtrl;

/// Dynamic window: makes the children of a window follow its resizing, each by four percentages and a minimum size.
///
/// It is a second base class of a dialog or page, not a window itself, and is driven by that window's events.
/// Rectangles are always computed from those at registration, so there is no drift. Failure is told by the result.
/// User-interface thread only.
class ZELVAR_API cdxCDynamicWnd {
public:
    enum Freedom { FreedomNone = 0, FreedomHoriz = 1, FreedomVert = 2, FreedomAll = 3 };
    /// How the two edges of one axis follow; any other value counts as `ModeFixed`.
    enum Mode {
        ModeFixed = 0, ///< 0, 0 percent
        ModeGrow = 1,  ///< 0, 100
        ModeMove = 2,  ///< 100, 100
        ModeHalf = 3,  ///< 50, 50
    };
    enum Flags : unsigned {
        FlagSizeIcon = 1,    ///< create the resize grip
        FlagAntiFlicker = 2, ///< while sizing, redraw only what changes
        FlagCopyBits = 4,    ///< children keep their pixels when they move
    };
    using Position = LayoutPosition;
    using Bytes = signed char[4]; ///< percentages of the left, top, right and bottom edge

    static constexpr Bytes TopLeft = {0, 0, 0, 0};
    static constexpr Bytes TopRight = {100, 0, 100, 0};
    static constexpr Bytes BotLeft = {0, 100, 0, 100};
    static constexpr Bytes BotRight = {100, 100, 100, 100};

    /// Entry of a class's static layout table, which ends at type 0. Type 1: `bytes` are percentages; type 2: its first
    /// two are a `Mode` for each axis. Id 0 stands for all children.
    struct __dynEntry { // NOLINT(bugprone-reserved-identifier): a given name
        std::uint32_t type;
        std::uint32_t id;
        Bytes bytes;
    };
    /// What a window may be dragged to, pixels with its border; 0 leaves the system's value.
    struct MinMaxInfo {
        Size minTrack;
        Size maxTrack;
    };

    cdxCDynamicWnd(Freedom freedom, unsigned flags);
    cdxCDynamicWnd(cdxCDynamicWnd const &) = delete;
    cdxCDynamicWnd &operator=(cdxCDynamicWnd const &) = delete;
    virtual ~cdxCDynamicWnd();

    [[nodiscard]] bool IsWindow() const { return m_pWnd != nullptr; }
    [[nodiscard]] bool IsValid() const { return IsWindow(); }
    [[nodiscard]] bool IsUp() const; ///< exists and is not minimised
    [[nodiscard]] QWidget *Window() const { return m_pWnd; }
    [[nodiscard]] QWidget *GetSafeChildHWND(int id) const; ///< null if there is no such child
    [[nodiscard]] Freedom GetFreedom() const { return m_freedom; }
    [[nodiscard]] unsigned GetFlags() const { return m_flags; }
    void ModifyFlags(unsigned add, unsigned remove) { m_flags = (m_flags & ~remove) | add; }
    [[nodiscard]] bool UsesScrollPos() const { return m_bUseScrollPos; }
    [[nodiscard]] Size InitialSize() const { return m_szInitial; }
    void SetMaxSize(Size size) { m_szMax = size; } ///< of the client area; 0 for no limit

    // Nested: a window that was disabled twice must be enabled twice.
    void Disable() { ++m_iDisabled; }
    bool Enable() { return --m_iDisabled < 1; } ///< true if it is enabled now
    [[nodiscard]] bool IsDisabled() const { return m_iDisabled > 0; }

    [[nodiscard]] virtual unsigned GetCtrlCount() const;
    [[nodiscard]] virtual Size GetCurrentClientSize() const;
    [[nodiscard]] Size GetBorderSize() const; ///< window size less client size; 0 when minimised
    [[nodiscard]] bool GetControlPosition(QWidget *child, Position &position) const;

    /// Registers `child`, replacing an earlier entry; with `repos` it moves at once to where the rule puts it now.
    /// False, and nothing registered, if the child or the window does not exist. The forms without a `Position` take
    /// the child's present rectangle.
    virtual bool AddSzControl(QWidget *child, Position const &position, bool repos);
    bool AddSzControl(QWidget *child, Bytes const &bytes, Size const &min, bool repos);
    bool AddSzControl(int id, Bytes const &bytes, Size const &min, bool repos);
    bool AddSzControl(QWidget *child, signed char x1, signed char y1, signed char x2, signed char y2, Size const &min,
                      bool repos);
    bool AddSzControl(int id, signed char x1, signed char y1, signed char x2, signed char y2, Size const &min,
                      bool repos);
    bool AddSzControl(QWidget *child, Mode x, Mode y, Size const &min, bool repos);
    bool AddSzControl(int id, Mode x, Mode y, Size const &min, bool repos);
    /// Copies the whole entry of `likeThis`, its rectangle included. False if that is not registered. The child moves
    /// at once, whatever the last argument says.
    bool AddSzControl(QWidget *child, QWidget *likeThis, bool repos);
    bool AddSzControl(int id, QWidget *likeThis, bool repos);
    bool AddSzXControl(QWidget *child, signed char x1, signed char x2, Size const &min, bool repos);
    bool AddSzXControl(QWidget *child, Mode x, Size const &min, bool repos);
    bool AddSzYControl(QWidget *child, signed char y1, signed char y2, Size const &min, bool repos);
    bool AddSzYControl(QWidget *child, Mode y, Size const &min, bool repos);
    /// Registers all direct children, those that are registered already only with `overwrite`. With `repos` and at
    /// least one added, a layout pass follows.
    void AllControls(Bytes const &bytes, bool overwrite, bool repos);
    void AllControls(Mode x, Mode y, bool overwrite, bool repos);
    /// True if an entry was removed. With `moveToInitial` the child goes back to its rectangle at registration.
    bool RemSzControl(QWidget *child, bool moveToInitial);
    bool UpdateControlPosition(QWidget *child);

    /// Moves every registered child to where the rule puts it now; an unchanged child costs no window call. Nothing
    /// while the window is minimised.
    virtual void Layout();

    /// Binds the engine to `window`, whose client size, or `size`, becomes the one that rectangles refer to. Not owned.
    void DoInitWindow(QWidget &window);
    void DoInitWindow(QWidget &window, Size const &size);

    // Hooks of the hosting window.
    enum SizeType { SizeRestored = 0, SizeMinimized = 1, SizeMaximized = 2 };
    void DoOnSize(SizeType type);
    /// `edge` counts from 1: left, right, top, top left, top right, bottom, bottom left, bottom right.
    void DoOnSizing(int edge);
    void DoOnGetMinMaxInfo(MinMaxInfo &info) const;
    void DoOnTimer(std::int64_t id);
    void DoOnParentNotify(unsigned message, QWidget *child);
    void DoOnDestroy();

    static constexpr int kSizeIconId = 59936;
    static constexpr std::int64_t kAntiFlickerTimer = 29028;
    static constexpr unsigned kChildDestroyed = 2; ///< message of `DoOnParentNotify`

protected:
    /// The rectangle of a registered child in this pass; false leaves the child alone. Subclasses treat single children
    /// differently here.
    virtual bool DoMoveCtrl(QWidget *child, int id, Rect &rect, cdxCDynamicLayoutInfo const &info);
    virtual void DoDestroyCtrl(QWidget *child);
    virtual void OnInitialized() {}
    virtual void OnDestroying() {}
    /// Null without a window or while it is minimised.
    [[nodiscard]] virtual std::unique_ptr<cdxCDynamicLayoutInfo> DoCreateLayoutInfo();
    virtual void StartAntiFlickering(bool isBotRight);
    // NOLINTNEXTLINE(bugprone-reserved-identifier): a given name
    [[nodiscard]] virtual __dynEntry const *__getDynMap(__dynEntry const *base) const { return base; }

    void SetUseScrollPos(bool use) { m_bUseScrollPos = use; }
    [[nodiscard]] cdxCSizeIconCtrl *SizeIcon() const { return m_pSizeIcon; }

private:
    struct AxisPercent {
        signed char near = 0;
        signed char far = 0;
    };
    [[nodiscard]] static AxisPercent _translate(Mode mode); // NOLINT(bugprone-reserved-identifier): a given name
    void ApplyDynMap();

    QWidget *m_pWnd = nullptr;               ///< the window served, not owned
    cdxCSizeIconCtrl *m_pSizeIcon = nullptr; ///< the grip, owned
    bool m_bIsAntiFlickering = false;
    int m_iDisabled = 0;
    unsigned m_classStyle = 0; ///< the redraw bits at the start
    std::unordered_map<QWidget *, Position> m_map;
    Freedom m_freedom;
    unsigned m_flags;
    Size m_szInitial; ///< client size that rectangles refer to
    Size m_szMin;     ///< of the client area
    Size m_szMax;     ///< 0 for none
    int m_idSizeIcon = kSizeIconId;
    std::int64_t m_timerId = 0; ///< 0 until the window is initialised
    bool m_bUseScrollPos = false;
    std::unique_ptr<QTimer> m_timer;
};

} // namespace zelvar
