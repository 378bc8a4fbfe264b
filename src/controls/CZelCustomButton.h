#pragma once

#include "zelvar/base/Color.h"
#include "zelvar/controls/CZelButton.h"

#include <array>
#include <optional>

namespace zelvar {

/// Custom button: a push button in the application's own colours. It adds to `CZelButton` a face as a gradient, a text
/// colour and a border for each of its states, and rounded corners. What is not set follows from what is: a hovered
/// face is a little lighter, a pressed one darker, and the text black or white, whichever is read better. A disabled
/// button fades into the window. Where the desktop's user has asked for strong colours, those are used instead.
class ZELVAR_API CZelCustomButton : public CZelButton {
    Q_OBJECT

public:
    explicit CZelCustomButton(QWidget *parent = nullptr);

    // A gradient from `top` to `bottom`, or from the left to the right edge.
    void SetFaceColor(ColorRef top, ColorRef bottom);
    void SetFaceColor(ColorRef color) { SetFaceColor(color, color); }
    void SetHoverColor(ColorRef top, ColorRef bottom);
    void SetPressedColor(ColorRef top, ColorRef bottom);
    void SetGradientVertical(bool vertical);
    void SetTextColor(ColorRef color);
    void SetTextHoverColor(ColorRef color);
    /// `width` in pixels; 0 for none.
    void SetBorder(ColorRef color, int width = 1);
    void SetRadius(int pixels);
    /// All colours back to what the desktop says.
    void ResetColors();

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    enum State : std::uint8_t { kNormal, kHover, kPressed, kStates };
    struct Face {
        QColor top{};
        QColor bottom{};
        QColor text{};
        QColor border{};
    };
    [[nodiscard]] State PresentState() const;
    /// What is painted now, the disabled and the strong colours regarded.
    [[nodiscard]] Face PresentFace() const;
    [[nodiscard]] Face ChosenFace(State state) const;
    void SetColors(State state, ColorRef top, ColorRef bottom);

    struct Gradient {
        QColor top{};
        QColor bottom{};
    };
    std::array<std::optional<Gradient>, kStates> m_faces;
    std::optional<QColor> m_text;
    std::optional<QColor> m_hoverText;
    std::optional<QColor> m_border;
    int m_borderWidth = 1;
    int m_radius = 4;
    bool m_vertical = true;
};

} // namespace zelvar
