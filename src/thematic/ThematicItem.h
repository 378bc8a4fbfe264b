#pragma once

#include "zelvar/thematic/ThematicElement.h"

namespace zelvar {

/// Item of the thematic list: a row with an icon, a text, another icon, a button that removes it, and two that move it.
class ZELVAR_API ThematicItem : public ThematicElement {
public:
    static constexpr int kHeight = 32; ///< pixels

    /// One that is not editable has no buttons.
    ThematicItem(DString const &text, std::uint64_t data, bool editable);
    /// On the heap, with its left icon; whatever it is added to owns it.
    [[nodiscard]] static ThematicItem *Create(DString const &text, int iconId, std::uint64_t data, bool editable);
    [[nodiscard]] static ThematicItem *Create(DString const &text, char const *iconFile, std::uint64_t data,
                                              bool editable);

    [[nodiscard]] DString GetText() const override { return m_text.GetText(); }
    void SetText(char const *text) { m_text.SetText(text); }
    [[nodiscard]] ThematicGroup *GetGrp() const { return m_group; } ///< null for an item directly in the list
    void SetGrp(ThematicGroup *group) { m_group = group; }
    [[nodiscard]] bool GetReadOnly() const { return m_readOnly; }
    void SetIconLeft(int iconId) { m_iconLeft.SetBitmap(iconId); }
    void SetIconLeft(char const *file) { m_iconLeft.SetBitmap(file); }
    void SetIconRight(int iconId) { m_iconRight.SetBitmap(iconId); }

    /// Whether it can move: the first of a group not up, the last not down, a read-only one not at all.
    void EnableMoves(bool up, bool down);
    [[nodiscard]] ThematicButton &RemoveButton() { return m_removeButton; }
    [[nodiscard]] ThematicBitmapButton const &UpButton() const { return m_upButton; }
    [[nodiscard]] ThematicBitmapButton const &DownButton() const { return m_downButton; }
    [[nodiscard]] ThematicText const &TextElement() const { return m_text; }
    [[nodiscard]] ThematicBitmap const &IconLeft() const { return m_iconLeft; }
    [[nodiscard]] ThematicBitmap const &IconRight() const { return m_iconRight; }

    void Draw(QPainter &painter, bool look3D) const override;
    bool HitTest(Point const &point, ThematicHit *hit) override;
    [[nodiscard]] int ComputeHeight() const override { return kHeight; }
    void RepositionElmts() override;

private:
    ThematicBitmap m_iconLeft;
    ThematicBitmap m_iconRight;
    ThematicBitmapButton m_upButton;
    ThematicBitmapButton m_downButton;
    ThematicButton m_removeButton;
    ThematicText m_text;
    ThematicGroup *m_group = nullptr; ///< not owned
    bool m_readOnly;
};

} // namespace zelvar
