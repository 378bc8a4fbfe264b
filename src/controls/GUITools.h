#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/Export.h"
#include "zelvar/base/Geometry.h"

#include <span>

class QFont;
class QWidget;

/// What the windows of a library and its applications need again and again: sizes in dialog units, places on the
/// screen, controls by id, paths and texts by width, and the pointer of a busy program. Controls are found by the ids
/// of `platform::SetDlgCtrlID` among the direct children of a dialog.
namespace zelvar::GUITools {

/// Pixels of a size in dialog units, by the widget's font.
[[nodiscard]] ZELVAR_API Size DlgUnitsToPixels(QWidget const &widget, Size units);

/// Moved, and cut only if it is larger, so that it lies within `screen`.
[[nodiscard]] ZELVAR_API Rect KeepWithin(Rect rect, Rect const &screen);
/// Moves a window onto the screen that most of it lies on, panels left free.
ZELVAR_API void KeepOnScreen(QWidget &window);
/// Over the middle of its parent's window, or of the screen without one, and kept on the screen.
ZELVAR_API void CenterWindow(QWidget &window);

/// The number of controls that were found.
ZELVAR_API int EnableItems(QWidget const &dialog, std::span<int const> ids, bool enable);
ZELVAR_API int ShowItems(QWidget const &dialog, std::span<int const> ids, bool show);
/// Of a label, a button, an edit field, a combo box or a group; false if there is no such control.
ZELVAR_API bool SetItemText(QWidget const &dialog, int id, DString const &text);
[[nodiscard]] ZELVAR_API DString GetItemText(QWidget const &dialog, int id);

[[nodiscard]] ZELVAR_API int TextWidth(QFont const &font, DString const &text); ///< pixels
/// A path with as many of its folders as fit into `width` pixels, those in the middle replaced by an ellipsis:
/// "/data/…/2024/scene.tif". The beginning goes first, then the folders nearest to it; a file name that does not fit by
/// itself is cut in its own middle. Bytes that are not UTF-8 show as U+FFFD.
[[nodiscard]] ZELVAR_API DString ShortenPath(DString const &path, QFont const &font, int width);

/// The pointer of a busy program for as long as the object lives; they may be nested.
class ZELVAR_API WaitCursor {
public:
    WaitCursor();
    ~WaitCursor();
    WaitCursor(WaitCursor const &) = delete;
    WaitCursor &operator=(WaitCursor const &) = delete;
};

} // namespace zelvar::GUITools
