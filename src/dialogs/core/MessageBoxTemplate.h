#pragma once

#include "zelvar/dialogs/core/CDialogTmpl.h"
#include "zelvar/dialogs/core/MessageBoxFlags.h"

#include <functional>

namespace zelvar {

/// Controls of a message box beside the buttons of its set.
enum MessageBoxControl : std::uint16_t {
    kMessageBoxHelp = 300,
    kMessageBoxIcon = 1000,
    kMessageBoxText = 1001,
    kMessageBoxCheck = 5555,
};

struct MessageBoxRequest {
    DString text{};
    DString caption{};
    DString checkText{};
    unsigned type = 0; ///< `MessageBoxFlags`
};

/// What the size of a message box depends on, pixels.
struct MessageBoxMetrics {
    Size screen{};
    Size icon{32, 32};
    Size baseUnits{}; ///< 4 by 8 dialog units
    int font = 12;    ///< of the font; the distances are made for 12, and grow with it
};

/// What the controls of a message box do.
struct MessageBoxState {
    std::uint16_t defaultButton = IDOK; ///< the control that gets the focus
    bool isCancelAllowed = false;
    bool hasCheckBox = false;
};

/// Width and height of a text that is wrapped to fit into a box of that width.
using MeasureText = std::function<Size(DString const &text, Size box)>;

/// Where a message box's text stands, and the client area around it, before there are icon and buttons.
struct MessageBoxPlaces {
    Rect text{};
    Rect dialog{};
};
[[nodiscard]] ZELVAR_API MessageBoxPlaces PlaceMessage(Size measured, int font);

/// Fills the template of a message box.
ZELVAR_API MessageBoxState BuildMessageBox(CDialogTmpl &dialogTemplate, MessageBoxRequest const &request,
                                           MessageBoxMetrics const &metrics, MeasureText const &measure);

/// A control of a message box that is about to be shown, pixels.
struct PlacedControl {
    int id = 0;
    Rect place{};
    int needed = 0; ///< width that its text takes; less than its place for most
};
/// What the screen has for a message box, pixels.
struct MessageBoxRoom {
    Size most{};       ///< of the client area
    int font = 12;     ///< as in `MessageBoxMetrics`
    int scrollBar = 0; ///< width of one
};
/// Makes buttons wide enough for their texts and the client area for all controls; where the screen is not, the buttons
/// get more rows. The text becomes so low that all the rest is seen: it has to scroll, and what stands below it moves
/// up. The size to be shown.
[[nodiscard]] ZELVAR_API Size FitMessageBox(std::vector<PlacedControl> &controls, Size dialog,
                                            MessageBoxRoom const &room);

/// The help file of a program's or library's file: its ending, from the last ".", becomes `ending`. Nothing for a name
/// without a "."; those of its folders do not count.
[[nodiscard]] ZELVAR_API std::optional<DString> HelpFileOf(DString const &module, DString const &ending);

/// What a message box's text looks like as text, buttons and all.
[[nodiscard]] ZELVAR_API DString MessageBoxAsText(MessageBoxRequest const &request);

} // namespace zelvar
