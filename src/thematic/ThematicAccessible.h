#pragma once

#include "zelvar/thematic/ThematicElement.h"

#include <QtWidgets/QAccessibleWidget>

#include <map>

namespace zelvar {

class TmtcListCtrl;

/// A thematic list as screen readers see it: a list of groups and items, the groups with their items below them, each
/// with its name, its state and what can be done with it.
class ThematicAccessible final : public QAccessibleWidget {
public:
    explicit ThematicAccessible(TmtcListCtrl &list);
    ~ThematicAccessible() override;
    ThematicAccessible(ThematicAccessible const &) = delete;
    ThematicAccessible &operator=(ThematicAccessible const &) = delete;

    // What the list tells; next to nothing while no one listens.
    static void Install(); ///< lets the toolkit know; any number of calls
    static void Forget(TmtcListCtrl &list);
    static void SelectionChanged(TmtcListCtrl &list, ThematicElement *elmt);
    static void FocusMoved(TmtcListCtrl &list, ThematicElement *elmt);

    [[nodiscard]] TmtcListCtrl &List() const { return m_list; }
    /// The interface of an element, made at the first question; null for null.
    [[nodiscard]] QAccessibleInterface *Part(ThematicElement *elmt) const;

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
    mutable std::map<ThematicElement *, Made> m_parts;
};

} // namespace zelvar
