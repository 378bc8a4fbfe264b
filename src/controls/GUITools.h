#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/Export.h"
#include "zelvar/base/Geometry.h"

#include <span>

class QFont;
class QWidget;

namespace zelvar {

/// What the windows of a library and its applications need again and again: sizes in dialog units, places on the
/// screen, controls by id, paths and texts by width, and the pointer of a busy program. It adds to the platform what
/// is no control's own business. Controls are found by the ids of `platform::SetDlgCtrlID` among the direct children of
/// a dialog.
class ZELVAR_API GUITools {
public:
    GUITools() = delete;

    /// Pixels of a size in dialog units, by the widget's font.
    [[nodiscard]] static Size DlgUnitsToPixels(QWidget const &widget, Size units);

    /// Moved, and cut only if it is larger, so that it lies within `screen`.
    [[nodiscard]] static Rect KeepWithin(Rect rect, Rect const &screen);
    /// Moves a window onto the screen that its middle lies on, panels left free.
    static void KeepOnScreen(QWidget &window);
    /// Over the middle of its parent's window, or of the screen without one, and kept on the screen.
    static void CenterWindow(QWidget &window);

    /// The number of controls that were found.
    static int EnableItems(QWidget const &dialog, std::span<int const> ids, bool enable);
    static int ShowItems(QWidget const &dialog, std::span<int const> ids, bool show);
    /// Of a label, a button, an edit field, a combo box or a group; false if there is no such control.
    static bool SetItemText(QWidget const &dialog, int id, DString const &text);
    [[nodiscard]] static DString GetItemText(QWidget const &dialog, int id);

    [[nodiscard]] static int TextWidth(QFont const &font, DString const &text); ///< pixels
    /// A path with as many of its folders as fit into `width` pixels, those in the middle replaced by an ellipsis:
    /// "/data/…/2024/scene.tif". The folders nearest to the first go first, the first after them; a file name that does
    /// not fit by itself is cut in its own middle. Bytes that are not UTF-8 show as U+FFFD.
    [[nodiscard]] static DString ShortenPath(DString const &path, QFont const &font, int width);

    /// The pointer of a busy program for as long as the object lives; they may be nested.
    class ZELVAR_API WaitCursor {
    public:
        WaitCursor();
        ~WaitCursor();
        WaitCursor(WaitCursor const &) = delete;
        WaitCursor &operator=(WaitCursor const &) = delete;
    };
};

} // namespace zelvar
