#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/Geometry.h"

#include <QtWidgets/QDockWidget>

#include <memory>

class QMainWindow;

namespace zelvar {

class XMLNode;

/// Docking pane: a bar with a caption that docks to the four sides of a main window, floats, hides, and shares its
/// place with others as tabs.
///
/// To a `QDockWidget` it adds an id, operations that dock, float and join it, the state of all bars and tool bars of a
/// window as XML, and the keyboard: F6 and Shift+F6 walk from bar to bar and through the window's middle, Tab comes to
/// the buttons of the caption. `toggleViewAction` is what a menu "View" holds.
class ZELVAR_API CZelDockBar : public QDockWidget {
    Q_OBJECT

public:
    /// `title` is the caption and, like `id`, what names the bar in saved states; an `id` of 0 leaves that to the title
    /// alone.
    CZelDockBar(DString const &title, int id, QWidget *parent = nullptr);

    [[nodiscard]] int GetId() const;

    /// At the end of a side of `window`, which owns it from now on.
    void Dock(QMainWindow &window, Qt::DockWidgetArea side);
    /// Lets it float in `rect`, in screen coordinates; moved onto a screen if it lies on none.
    void Float(Rect const &rect);
    /// As a tab in the place of `other`, which is docked. False if it is not.
    bool AttachToTabWnd(CZelDockBar &other);
    /// With `activate` a bar that is shown comes to the front of its tabs and gets the focus.
    void ShowControlBar(bool show, bool activate = false);
    [[nodiscard]] bool IsBarShown() const { return !isHidden(); }

    // What the state needs to know of a bar that stands elsewhere or nowhere now; empty if it has never been there.
    [[nodiscard]] Rect const &GetFloatingRect() const { return m_floatingRect; }
    [[nodiscard]] Rect const &GetDockedRect() const { return m_dockedRect; } ///< in the main window
    void SetDockedRect(Rect const &rect) { m_dockedRect = rect; }

    /// The bars of a main window, docked and floating ones, in no order.
    [[nodiscard]] static QList<CZelDockBar *> BarsOf(QMainWindow const &window);
    /// The arrangement of bars and tool bars: an element "DOCKBAR_DATA". Bars that stand beside others of
    /// their side keep their places.
    [[nodiscard]] static std::unique_ptr<XMLNode> SaveState(QMainWindow const &window);
    /// Arranges the window's bars as told by an element "DOCKBAR_DATA": false, and nothing changes, for any other.
    /// Bars that the element does not name stay as they are, names of no bar are passed over, and so is everything
    /// that makes no sense.
    static bool LoadState(QMainWindow &window, XMLNode const &root);
    /// Gives the focus to the next bar that is shown, or to the middle of the window.
    static void FocusNextBar(QMainWindow &window, bool forward);

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void Remember();
    void EnableKeys();

    Rect m_floatingRect{};
    Rect m_dockedRect{};
};

} // namespace zelvar
