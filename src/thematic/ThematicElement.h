#pragma once

#include "zelvar/thematic/ThematicButtons.h"

#include <memory>
#include <vector>

namespace zelvar {

class ThematicGroup;
class ThematicItem;

/// What lies under a point of the thematic list; null for nothing of that kind.
struct ThematicHit {
    ThematicGroup *group = nullptr;
    ThematicItem *item = nullptr;
    ThematicDrawElement *element = nullptr;
};

/// Commands of the buttons.
enum ThematicCommand : unsigned {
    kThematicAdd = 101, ///< of a group
    kThematicRemove = 102,
    kThematicUp = 103,
    kThematicDown = 104,
};

/// Element of the thematic list: a group or an item. Owned by what it was added to.
class ZELVAR_API ThematicElement {
public:
    using HITTEST = ThematicHit;
    using DrawElmt = ThematicDrawElement;
    using Bitmap = ThematicBitmap;
    using Text = ThematicText;
    using ButtonBase = ThematicButtonBase;
    using BitmapButton = ThematicBitmapButton;
    using Hyperlink = ThematicHyperlink;
    using Button = ThematicButton;

    virtual ~ThematicElement();
    ThematicElement(ThematicElement const &) = delete;
    ThematicElement &operator=(ThematicElement const &) = delete;

    [[nodiscard]] virtual DString GetText() const = 0;
    virtual void Draw(QPainter &painter, bool look3D) const = 0;
    /// Sets what is hit, if it is this element or inside it; false if not.
    virtual bool HitTest(Point const &point, ThematicHit *hit) = 0;
    [[nodiscard]] virtual int ComputeHeight() const = 0;
    /// Hands the event to each child; true if any looks different now.
    virtual bool MouseEvent(EMouseEvnt event, Point const &point);
    /// Places the children in the rectangle.
    virtual void RepositionElmts() = 0;

    [[nodiscard]] std::uint64_t GetData() const { return m_data; } ///< the caller's value
    void SetData(std::uint64_t data) { m_data = data; }
    [[nodiscard]] Rect const &GetRect() const { return m_rect; }
    void SetRect(Rect const &rect) { m_rect = rect; }
    /// Lays it out from the right edge of a list of that many pixels; 0, the default, from the left.
    void SetMirror(int listWidth) { m_mirror = listWidth; }
    /// A rectangle of the list as it is laid out from the left, to where it stands, and back.
    [[nodiscard]] Rect Mirrored(Rect const &rect) const;
    /// An invisible element takes no room, does not draw and is not hit.
    [[nodiscard]] bool IsVisible() const { return m_visible; }
    void SetVisible(bool visible) { m_visible = visible; }
    [[nodiscard]] bool IsSelected() const { return m_selected; } ///< drawn with a gold border
    void SetSelected(bool selected) { m_selected = selected; }

    /// Expires with the element.
    [[nodiscard]] std::weak_ptr<ThematicElement *const> Life() const { return m_life; }

protected:
    explicit ThematicElement(std::uint64_t data);
    /// In drawing and event order; the element is a member of this one.
    void AddChild(ThematicDrawElement &child) { m_children.push_back(&child); }
    void DrawChildren(QPainter &painter, bool look3D) const;
    /// The last enabled child under the point, or null.
    [[nodiscard]] ThematicDrawElement *ChildAt(Point const &point) const;
    [[nodiscard]] int Mirror() const { return m_mirror; }
    /// Background and border over a part of the rectangle.
    void DrawBack(QPainter &painter, Rect const &rect, ColorRef start, ColorRef end, bool vertical) const;

private:
    std::uint64_t m_data;
    Rect m_rect;
    int m_mirror = 0;
    bool m_visible = true;
    bool m_selected = false;
    std::vector<ThematicDrawElement *> m_children; ///< members of the derived element
    std::shared_ptr<ThematicElement *const> m_life;
};

} // namespace zelvar
