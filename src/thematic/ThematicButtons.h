#pragma once

#include "zelvar/base/Color.h"
#include "zelvar/thematic/ThematicDrawElement.h"

class QFont;

namespace zelvar {

/// A piece that can be pressed: it knows whether the mouse is over it and whether it is pressed. What a release does is
/// decided by the list.
class ZELVAR_API ThematicButtonBase : public ThematicDrawElement {
public:
    /// Bits of the state.
    enum State { kHovered = 1, kPressed = 2 };

    void SetID(unsigned id) { m_id = id; }
    [[nodiscard]] unsigned GetID() const { return m_id; }
    void SetState(int state) { m_state = state; }
    [[nodiscard]] int GetState() const { return m_state; }

    /// A press is not held against moving away: leaving the rectangle clears the hover alone, and any release clears
    /// both.
    bool MouseEvent(EMouseEvnt event, Point const &point) override;

protected:
    explicit ThematicButtonBase(unsigned id = 0) : m_id(id) {}

private:
    unsigned m_id;
    int m_state = 0;
};

/// An arrow from the shared strip of six: down and up, each normal, hovered and pressed.
class ZELVAR_API ThematicBitmapButton : public ThematicButtonBase {
public:
    static constexpr Size sizeImage{9, 8};

    ThematicBitmapButton(unsigned id, int bitmapIndex) : ThematicButtonBase(id), m_bitmapIndex(bitmapIndex) {}
    [[nodiscard]] static int GetWidth() { return sizeImage.cx; }
    [[nodiscard]] static int GetHeight() { return sizeImage.cy; }
    void SetBitmapIndex(int index) { m_bitmapIndex = index; } ///< of the normal picture; negative for none
    [[nodiscard]] int GetBitmapIndex() const { return m_bitmapIndex; }
    /// The picture shown in the present state.
    [[nodiscard]] int GetShownIndex() const;

    void Draw(QPainter &painter, bool look3D) const override;
    [[nodiscard]] bool IsValid() const override { return m_bitmapIndex >= 0; }

private:
    int m_bitmapIndex;
};

/// A link while it is enabled, plain text otherwise. It is drawn either way.
class ZELVAR_API ThematicHyperlink : public ThematicButtonBase {
public:
    explicit ThematicHyperlink(unsigned id) : ThematicButtonBase(id) {}
    void SetText(char const *text) { m_text = text == nullptr ? "" : text; }
    [[nodiscard]] DString const &GetText() const { return m_text; }
    [[nodiscard]] QFont const &GetFont() const;

    void Draw(QPainter &painter, bool look3D) const override;
    [[nodiscard]] bool IsValid() const override { return !m_text.empty(); }

private:
    DString m_text;
};

/// A round button with a minus, or a plus.
class ZELVAR_API ThematicButton : public ThematicButtonBase {
public:
    ThematicButton();
    ThematicButton(unsigned id, bool addButton, ColorRef shadowColor)
        : ThematicButtonBase(id), m_shadowColor(shadowColor), m_addButton(addButton) {}
    void SetShadowColor(ColorRef color) { m_shadowColor = color; }
    [[nodiscard]] ColorRef GetShadowColor() const { return m_shadowColor; }
    void SetAddButton(bool add) { m_addButton = add; }
    [[nodiscard]] bool IsAddButton() const { return m_addButton; }

    /// Its outline is in the painter's pen.
    void Draw(QPainter &painter, bool look3D) const override;
    [[nodiscard]] bool IsValid() const override { return true; }

private:
    ColorRef m_shadowColor;
    bool m_addButton = true;
};

} // namespace zelvar
