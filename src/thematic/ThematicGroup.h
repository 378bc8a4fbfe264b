#pragma once

#include "zelvar/thematic/ThematicItem.h"

#include <functional>
#include <memory>

namespace zelvar {

/// Group of the thematic list: a coloured strip with a button that adds, and items beside it; while there are none, a
/// link in their place.
class ZELVAR_API ThematicGroup : public ThematicElement {
public:
    static constexpr int kStripWidth = 32; ///< pixels

    ThematicGroup(DString const &text, DString id, ColorRef startColor, ColorRef endColor, std::uint64_t data);
    ~ThematicGroup() override;
    [[nodiscard]] static ThematicGroup *Create(DString const &text, DString id, ColorRef startColor, ColorRef endColor,
                                               std::uint64_t data);
    static void Delete(ThematicGroup *group); ///< null is ignored

    [[nodiscard]] DString GetText() const override { return m_text.GetText(); }
    void SetText(char const *text); ///< the link's text follows
    [[nodiscard]] DString const &GetID() const { return m_id; }
    void SetID(char const *id) { m_id = id == nullptr ? "" : id; }
    [[nodiscard]] ColorRef GetStartColor() const { return m_startColor; }
    void SetStartColor(ColorRef color) { m_startColor = color; }
    [[nodiscard]] ColorRef GetEndColor() const { return m_endColor; }
    void SetEndColor(ColorRef color) { m_endColor = color; }
    void SetEnblAdd(bool enable); ///< button and link
    [[nodiscard]] bool GetEnblAdd() const { return m_addButton.IsEnabled(); }
    /// "Add %s..." or, where nothing can be added, "No %s items".
    [[nodiscard]] DString GetHyperlinkText() const;

    [[nodiscard]] int GetNumItem() const { return static_cast<int>(m_items.size()); }
    [[nodiscard]] int GetSize() const { return GetNumItem(); }
    [[nodiscard]] int GetNumVsblItem() const;
    /// An index past the size grows the group by empty entries; null for those and a negative index.
    ThematicItem *Get(int index);
    void AddTail(ThematicItem *item); ///< becomes the group's; null is ignored, as in `Insert`
    void Insert(ThematicItem *item, int pos);
    void AddTail(std::unique_ptr<ThematicItem> item) { AddTail(item.release()); }
    void Insert(std::unique_ptr<ThematicItem> item, int pos) { Insert(item.release(), pos); }
    /// Takes it out if it is there, and deletes it if wanted, there or not.
    void RmvItem(ThematicItem *item, bool del);
    /// Takes it out; null if it is not there.
    [[nodiscard]] std::unique_ptr<ThematicItem> TakeItem(ThematicItem *item);
    [[nodiscard]] bool HasItem(ThematicItem const *item) const { return IndexOf(item) >= 0; }
    /// Changes places with its neighbour; false at the ends and for an item that is not there.
    bool MoveItem(ThematicItem *item, bool up);
    /// What moves to the place of an item when that goes: the one behind it, null for the last one; the first one for
    /// null and for an item that is not there.
    [[nodiscard]] ThematicItem *FindRplcItem(ThematicItem const *item) const;
    /// Takes over all items of another group. They go on naming that one as theirs.
    void MoveChldr(ThematicGroup &other);

    enum class ItemChange { Added, Leaving, Moved };
    /// Told of each item that has come, is about to go or has changed places; the list that holds the group sets it.
    void WatchItems(std::function<void(ThematicItem &, ItemChange)> watch) { m_watch = std::move(watch); }

    [[nodiscard]] ThematicButton const &AddButton() const { return m_addButton; }
    [[nodiscard]] ThematicHyperlink const &Link() const { return m_hyperlink; }
    [[nodiscard]] std::vector<ThematicItem *> const &Items() const { return m_items; } ///< may hold null

    [[nodiscard]] Rect StripRect() const;
    void Draw(QPainter &painter, bool look3D) const override;
    /// The same for the part that lies in a rectangle.
    void DrawPart(QPainter &painter, bool look3D, Rect const &part) const;
    bool HitTest(Point const &point, ThematicHit *hit) override;
    [[nodiscard]] int ComputeHeight() const override;
    bool MouseEvent(EMouseEvnt event, Point const &point) override;
    void RepositionElmts() override;

private:
    [[nodiscard]] int IndexOf(ThematicItem const *item) const;
    void PlaceLink();
    void Tell(ThematicItem *item, ItemChange change) const;

    ColorRef m_startColor;
    ColorRef m_endColor;
    std::vector<ThematicItem *> m_items; ///< owned
    DString m_id;
    ThematicButton m_addButton;
    ThematicText m_text; ///< is not drawn
    ThematicHyperlink m_hyperlink;
    std::function<void(ThematicItem &, ItemChange)> m_watch;
};

} // namespace zelvar
