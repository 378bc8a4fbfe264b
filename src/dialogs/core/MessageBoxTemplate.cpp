#include "zelvar/dialogs/core/MessageBoxTemplate.h"

#include "zelvar/base/Translation.h"
#include "zelvar/dialogs/core/MessageBoxSet.h"

#include <algorithm>

namespace zelvar {

namespace {

constexpr std::uint32_t kStyle = 0x90C80880;       // popup, visible, caption, system menu, modal frame, centred
constexpr std::uint32_t kSystemModal = 0x00000002; // on top of all
constexpr int kStep = 76;                          // from one button to the next
constexpr int kGap = 6;                            // between buttons
constexpr int kLeastText = 40;                     // height that is left to a text that scrolls

/// Distances for a font of 12 pixels become those for another one.
class Distance {
public:
    explicit Distance(int font) : m_font(font) {}
    int operator()(int pixels) const { return (pixels * m_font + (pixels < 0 ? -6 : 6)) / 12; }

private:
    int m_font;
};

/// The controls one by one, and the client area that grows with them.
class MessageBoxBuilder {
public:
    MessageBoxBuilder(CDialogTmpl &dialogTemplate, MessageBoxRequest const &request, MessageBoxMetrics const &metrics)
        : m_template(dialogTemplate), m_request(request), m_metrics(metrics), m_px(metrics.font),
          m_set(SetOfMessageBox(request.type)), m_counted(m_set.counted + (Has(MB_HELP) ? 1 : 0)) {
        m_state.isCancelAllowed = m_set.allowsCancel;
        m_state.hasCheckBox = Has(MB_DONTASKAGAIN);
    }

    MessageBoxState Build(MeasureText const &measure) {
        int const box = m_metrics.screen.cx / 2 + m_px(50);
        MessageBoxPlaces const places = PlaceMessage(measure(m_request.text, {box, box}), m_metrics.font);
        m_text = places.text;
        m_dialog = places.dialog;
        m_template.SetCaption(m_request.caption);
        m_template.SetStyle(Has(MB_SYSTEMMODAL) ? kStyle | kSystemModal : kStyle);
        AddIcon();
        Add(CDialogTmpl::kStatic, kMessageBoxText, m_request.text, m_text);
        PlaceRow();
        AddButtons();
        if (m_state.hasCheckBox)
            AddCheckBox();
        if (m_last.bottom >= m_dialog.bottom)
            m_dialog.bottom = m_last.bottom + m_px(16);
        m_dialog.right = std::max(m_dialog.right, m_row.right + m_px(16));
        m_template.SetSize({m_dialog.Width(), m_dialog.Height()});
        return m_state;
    }

private:
    [[nodiscard]] bool Has(unsigned flag) const { return (m_request.type & flag) != 0; }

    void Add(CDialogTmpl::ControlType type, std::uint16_t id, std::string_view title, Rect const &place,
             bool isDefault = false) {
        m_last = place;
        m_template.AddItem(type, id, title, place, isDefault);
    }

    void AddIcon() {
        unsigned const icon = m_request.type & MB_ICONMASK;
        if (icon != MB_ICONHAND && icon != MB_ICONQUESTION && icon != MB_ICONEXCLAMATION && icon != MB_ICONASTERISK)
            return;
        int const right = m_metrics.icon.cx + m_px(8);
        m_text.left += right;
        m_text.right += right;
        m_dialog.right = m_text.right + m_px(8);
        m_icon = {m_px(8), m_px(8), m_metrics.icon.cx + m_px(10), m_metrics.icon.cy + m_px(10)};
        Add(CDialogTmpl::kStatic, kMessageBoxIcon, "", m_icon);
    }

    // The least height without buttons never shows: their row, not that height, tells where the dialog ends.
    void PlaceRow() {
        int const width = m_counted * m_px(kStep) - m_px(kGap) + m_px(m_set.extra);
        m_row.top = std::max(m_text.bottom, m_icon.bottom) + m_px(8);
        m_row.bottom = m_row.top + m_px(23);
        m_dialog.bottom = m_row.bottom + m_px(10);
        m_dialog.right = std::max(m_dialog.right, width + m_px(32));
        m_row.left = (m_dialog.Width() - width) / 2;
        m_row.right = m_row.left + width;
    }

    void AddButtons() {
        unsigned const wanted = ((m_request.type & MB_DEFMASK) >> 8U) + 1;
        m_default = wanted > static_cast<unsigned>(m_counted) ? 1 : static_cast<int>(wanted);
        int left = m_row.left;
        int lastLeft = left;
        for (MessageBoxButton const &button : m_set.buttons) {
            lastLeft = left;
            AddButton(button.id, Translated(button.text), left, m_px(button.width));
            left += m_px(button.width) + m_px(kGap);
        }
        if (Has(MB_HELP))
            AddButton(kMessageBoxHelp, Translated("&Help"), lastLeft + m_px(kStep), m_px(kStep - kGap));
    }

    void AddButton(std::uint16_t id, char const *text, int left, int width) {
        bool const isDefault = ++m_number == m_default;
        if (isDefault)
            m_state.defaultButton = id;
        Add(CDialogTmpl::kButton, id, text, {left, m_row.top, left + width, m_row.bottom}, isDefault);
    }

    void AddCheckBox() {
        Add(CDialogTmpl::kCheckBox, kMessageBoxCheck, m_request.checkText,
            {m_px(17), m_row.top + m_px(35), m_px(137), m_row.top + m_px(51)});
        m_dialog.bottom = m_row.top + m_px(59);
        m_dialog.right = std::max(m_dialog.right, m_px(137));
    }

    CDialogTmpl &m_template;
    MessageBoxRequest const &m_request;
    MessageBoxMetrics const &m_metrics;
    Distance m_px;
    MessageBoxSet m_set;
    int m_counted; ///< buttons that the row is made for
    int m_number = 0;
    int m_default = 1;
    MessageBoxState m_state;
    Rect m_text;
    Rect m_dialog;
    Rect m_icon;
    Rect m_row;
    Rect m_last; ///< of the control that was added last
};

bool IsButton(PlacedControl const &control) {
    return control.id != kMessageBoxIcon && control.id != kMessageBoxText && control.id != kMessageBoxCheck;
}

/// Gives each button the width of its text. The row grows to both sides, as far as the left edge has room.
void WidenButtons(std::vector<PlacedControl> &controls, Distance px) {
    int grown = 0;
    for (PlacedControl &control : controls) {
        if (!IsButton(control))
            continue;
        int const width = std::max(control.place.Width(), control.needed);
        int const left = control.place.left + grown;
        grown += width - control.place.Width();
        control.place.left = left;
        control.place.right = left + width;
    }
    auto const first = std::find_if(controls.begin(), controls.end(), IsButton);
    if (grown == 0 || first == controls.end())
        return;
    int const back = std::min(grown / 2, std::max(0, first->place.left - px(16)));
    for (PlacedControl &control : controls)
        if (IsButton(control)) {
            control.place.left -= back;
            control.place.right -= back;
        }
}

/// Moves what begins at `top` or below it.
void MoveBelow(std::vector<PlacedControl> &controls, int top, int by) {
    for (PlacedControl &control : controls)
        if (control.place.top >= top) {
            control.place.top += by;
            control.place.bottom += by;
        }
}

/// Puts the buttons into as many rows as it takes; how much lower what is below them stands then.
int FlowButtons(std::vector<PlacedControl> &controls, MessageBoxRoom const &room) {
    Distance const px(room.font);
    int left = px(16);
    int down = 0;
    int bottom = 0; // of the row as it was
    for (PlacedControl &control : controls) {
        if (!IsButton(control))
            continue;
        Rect &place = control.place;
        int const width = place.Width();
        int const step = place.Height() + px(kGap);
        bottom = place.bottom;
        if (left + width > room.most.cx - px(8) && left > px(16)) {
            left = px(16);
            down += step;
        }
        place = {left, place.top + down, left + width, place.bottom + down};
        left += width + px(kGap);
    }
    for (PlacedControl &control : controls)
        if (!IsButton(control) && control.place.top >= bottom) {
            control.place.top += down;
            control.place.bottom += down;
        }
    return down;
}

} // namespace

MessageBoxPlaces PlaceMessage(Size measured, int font) {
    Distance const px(font);
    Rect const text{px(16), px(16), measured.cx + px(12) + px(16), measured.cy + px(5) + px(16)};
    return {.text = text, .dialog = {0, 0, text.right, std::max(text.bottom, px(70))}};
}

MessageBoxState BuildMessageBox(CDialogTmpl &dialogTemplate, MessageBoxRequest const &request,
                                MessageBoxMetrics const &metrics, MeasureText const &measure) {
    return MessageBoxBuilder(dialogTemplate, request, metrics).Build(measure);
}

Size FitMessageBox(std::vector<PlacedControl> &controls, Size dialog, MessageBoxRoom const &room) {
    Distance const px(room.font);
    WidenButtons(controls, px);
    for (PlacedControl const &control : controls)
        dialog.cx = std::max(dialog.cx, control.place.right + px(8));
    if (dialog.cx > room.most.cx) {
        dialog.cx = room.most.cx;
        dialog.cy += FlowButtons(controls, room);
    }
    auto const text = std::find_if(controls.begin(), controls.end(),
                                   [](PlacedControl const &control) { return control.id == kMessageBoxText; });
    if (text == controls.end())
        return dialog;
    text->place.right = std::min(text->place.right, std::max(dialog.cx - px(8), text->place.left));
    int const cut = std::min(dialog.cy - room.most.cy, text->place.Height() - px(kLeastText));
    if (cut <= 0)
        return dialog;
    MoveBelow(controls, text->place.bottom, -cut);
    text->place.bottom -= cut;
    text->place.right += room.scrollBar;
    return {std::min(std::max(dialog.cx, text->place.right), room.most.cx), dialog.cy - cut};
}

std::optional<DString> HelpFileOf(DString const &module, DString const &ending) {
    std::size_t const name = module.rfind('/') + 1; // 0 without a folder
    std::size_t const dot = module.rfind('.');
    if (dot == DString::npos || dot < name)
        return std::nullopt;
    return module.substr(0, dot) + ending;
}

DString MessageBoxAsText(MessageBoxRequest const &request) {
    DString const line = "---------------------------\n";
    DString buttons;
    auto const addButton = [&buttons](DString text) {
        std::erase(text, '&');
        buttons += text + "   ";
    };
    for (MessageBoxButton const &button : SetOfMessageBox(request.type).buttons)
        addButton(Translated(button.text));
    if ((request.type & MB_HELP) != 0)
        addButton(Translated("&Help"));
    return line + request.caption + "\n" + line + request.text + "\n" + line + buttons + "\n" + line;
}

} // namespace zelvar
