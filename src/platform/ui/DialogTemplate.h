#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/base/Geometry.h"

#include <cstdint>
#include <functional>
#include <span>

class QFont;
class QWidget;

namespace zelvar::platform {

enum class ControlKind : std::uint8_t {
    Button,
    DefaultButton, ///< the one that Return presses
    CheckButton,   ///< push button that stays down
    CheckBox,
    RadioButton,
    Label,
    CenteredLabel,
    RightLabel,
    EllipsisLabel, ///< one line, cut at a word with "..." where it does not fit
    Edit,
    ReadOnlyEdit,
    MultiLineEdit,
    Combo,        ///< drop-down with an edit field; `h` is the height with its list open
    DropDownList, ///< the same without the edit field
    Group,        ///< frame with a caption
    List,         ///< plain list of texts
    Progress,
    Place, ///< invisible: only marks where something else is put
};

/// The share of the dialog's growth that each edge of a control follows, in percent; all 0 stays.
struct MoveRule {
    std::int8_t x1 = 0;
    std::int8_t y1 = 0;
    std::int8_t x2 = 0;
    std::int8_t y2 = 0;

    friend bool operator==(MoveRule const &, MoveRule const &) = default;
};

struct DialogItem {
    int id = 0;
    ControlKind kind = ControlKind::Label;
    char const *text = "";
    int x = 0; ///< dialog units, as the three below
    int y = 0;
    int w = 0;
    int h = 0;
    MoveRule move{};
    bool visible = true;
};

/// A dialog as a table. Units are those of dialog templates: a quarter of the average width and an eighth of the height
/// of the dialog's font, so that a bigger font makes a bigger dialog.
struct DialogTemplate {
    int id = 0;
    char const *caption = "";
    int width = 0; ///< dialog units, as `height`; the client area
    int height = 0;
    std::span<DialogItem const> items{};
};

/// Makes the widget for an item, or yields null for the usual one. The builder names, places and shows it.
using ControlFactory = std::function<QWidget *(QWidget &dialog, DialogItem const &item)>;

/// Makes the template's controls children of `dialog`, in order, which is the tab order; gives the dialog its caption
/// and size. Nothing is connected.
ZELVAR_API void BuildDialog(QWidget &dialog, DialogTemplate const &dialogTemplate, ControlFactory const &factory = {});

/// Average character width and height of a font, pixels: 4 by 8 dialog units.
[[nodiscard]] ZELVAR_API Size DialogBaseUnits(QFont const &font);
/// Dialog units to pixels with the widget's font, edge by edge, rounded to the nearest.
[[nodiscard]] ZELVAR_API Rect MapDialogRect(QWidget const &dialog, Rect const &units);

} // namespace zelvar::platform
