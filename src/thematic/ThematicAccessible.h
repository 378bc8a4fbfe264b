#pragma once

#include "zelvar/thematic/ThematicGroup.h"

#include <QtWidgets/QAccessibleWidget>

#include <map>
#include <utility>

namespace zelvar {

class TmtcListCtrl;

/// A thematic list as screen readers see it: a list of groups and items, the groups with their items below them, each
/// with its name, its state, what can be done with it, and below it the buttons and the link that stand in it.
class ThematicAccessible final : public QAccessibleWidget {
public:
    explicit ThematicAccessible(TmtcListCtrl &list);
    ~ThematicAccessible() override;
    ThematicAccessible(ThematicAccessible const &) = delete;
    ThematicAccessible &operator=(ThematicAccessible const &) = delete;

    // What the list tells; next to nothing while no one listens.
    static void Install(); ///< lets the toolkit know; any number of calls
    static void Forget(TmtcListCtrl &list);
    static void SelectionChanged(TmtcListCtrl &list, ThematicElement *oldElmt, ThematicElement *newElmt);
    static void FocusMoved(TmtcListCtrl &list); ///< while the list has the focus
    static void
    FocusEntered(TmtcListCtrl &list); ///< told behind what the toolkit tells, or nobody would hear the element
    static void Added(TmtcListCtrl &list, ThematicElement &elmt);
    static void ItemChanged(TmtcListCtrl &list, ThematicItem &item, ThematicGroup::ItemChange change);
    static void Leaving(TmtcListCtrl &list, ThematicElement &elmt); ///< while it is still in its place

    [[nodiscard]] TmtcListCtrl &List() const { return m_list; }
    static constexpr unsigned kWhole = 0; ///< the element itself
    static constexpr unsigned kLink = 1;  ///< a group's link; its buttons are known by their commands

    /// The interface of an element or of a piece of it, made at the first question; null for null.
    [[nodiscard]] QAccessibleInterface *Part(ThematicElement *elmt, unsigned piece = kWhole) const;

    [[nodiscard]] int childCount() const override;
    [[nodiscard]] QAccessibleInterface *child(int index) const override;
    [[nodiscard]] int indexOfChild(QAccessibleInterface const *child) const override;
    [[nodiscard]] QAccessibleInterface *childAt(int x, int y) const override;
    [[nodiscard]] QAccessibleInterface *focusChild() const override;

private:
    struct Made {
        std::weak_ptr<ThematicElement *const> life;
        QAccessible::Id id = 0;
    };
    void DropParts();

    TmtcListCtrl &m_list;
    bool m_isFocusDue = false; ///< what has the focus is told as soon as events are handled
    mutable std::map<std::pair<ThematicElement *, unsigned>, Made> m_parts; ///< by element and piece
};

} // namespace zelvar
