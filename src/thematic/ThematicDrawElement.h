#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/Geometry.h"

#include <QtGui/QPixmap>

#include <cstdint>
#include <optional>

class QPainter;

namespace zelvar {

/// An item's ground at its lower end, on a light palette.
inline constexpr QRgb kItemGrey = qRgb(192, 192, 192);

/// Kinds of mouse events that elements hear of.
enum EMouseEvnt : std::uint8_t {
    MouseEvntMove = 1,
    MouseEvntLDown = 2,
    MouseEvntLUp = 3,
    MouseEvntLeave = 5,
};

/// Draw element of the thematic list: a visible piece of an item or a group. It is no window: its owner gives it a
/// rectangle and hands it events and the painter.
class ZELVAR_API ThematicDrawElement {
public:
    virtual ~ThematicDrawElement() = default;
    virtual void Draw(QPainter &painter, bool look3D) const = 0;
    /// Whether there is anything to show.
    [[nodiscard]] virtual bool IsValid() const { return false; }
    /// True if the element looks different now.
    virtual bool MouseEvent(EMouseEvnt event, Point const &point);

    [[nodiscard]] bool IsEnabled() const { return m_enabled; }
    void SetEnabled(bool enabled) { m_enabled = enabled; }
    [[nodiscard]] bool IsAvailable() const { return m_enabled && IsValid(); }
    [[nodiscard]] Rect const &GetRect() const { return m_rect; }
    void SetRect(Rect const &rect) { m_rect = rect; }
    /// Enabled, and the point is in the rectangle.
    [[nodiscard]] bool HitTest(Point const &point) const { return m_enabled && m_rect.Contains(point); }

protected:
    ThematicDrawElement() = default;
    ThematicDrawElement(ThematicDrawElement const &) = default;
    ThematicDrawElement(ThematicDrawElement &&) = default;
    ThematicDrawElement &operator=(ThematicDrawElement const &) = default;
    ThematicDrawElement &operator=(ThematicDrawElement &&) = default;

private:
    Rect m_rect;
    bool m_enabled = true;
};

/// A picture, stretched to its rectangle.
class ZELVAR_API ThematicBitmap : public ThematicDrawElement {
public:
    void SetBitmap(QPixmap picture);
    /// The picture in a file; null, an empty name, or one that cannot be read leaves none.
    void SetBitmap(char const *file);
    /// The icon that is registered under a number, see `CZelImageList::RegisterIcon`; a negative or unknown one leaves
    /// none.
    void SetBitmap(int iconId);

    void Draw(QPainter &painter, bool look3D) const override;
    [[nodiscard]] bool IsValid() const override { return !m_picture.isNull() || m_iconId; }

private:
    QPixmap m_picture;
    std::optional<unsigned> m_iconId; ///< drawn at the size and for the device that it is shown at
};

/// A line of text, cut with "..." where it does not fit.
class ZELVAR_API ThematicText : public ThematicDrawElement {
public:
    explicit ThematicText(char const *text) { SetText(text); }
    void SetText(char const *text) { m_text = text == nullptr ? "" : text; }
    [[nodiscard]] char const *GetText() const { return m_text.c_str(); }

    void Draw(QPainter &painter, bool look3D) const override;
    [[nodiscard]] bool IsValid() const override { return !m_text.empty(); }

private:
    DString m_text;
};

} // namespace zelvar
