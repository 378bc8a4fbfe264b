#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/Geometry.h"

#include <QtWidgets/QLineEdit>

namespace zelvar {

class CListCtrlFlex;

/// Edit of one cell of a flexible list. Lives on the heap, ends by losing the focus and deletes itself then.
class ZELVAR_API CEditCell : public QLineEdit {
    Q_OBJECT

public:
    static constexpr int kControlId = 1001;

    CEditCell(CListCtrlFlex &list, int item, int subItem, DString initialText);

    /// Stands up at `place`, in the list's pixels, with all text selected and the focus.
    void Open(Rect const &place);
    /// Goes where its cell is now, as wide as that unless the text has made it wider.
    void Follow();
    /// Its cell has another row or column now. Below 0 it is gone: the edit ends and leaves no text behind.
    void MoveCell(int item, int subItem);
    /// Tells nobody any more: the list begins to die.
    void Discard() { m_list = nullptr; }

    [[nodiscard]] int Item() const { return m_item; }
    [[nodiscard]] int SubItem() const { return m_subItem; }

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    /// True when the key was one of ours.
    bool MoveByKey(QKeyEvent const &event);
    void MoveByTab(bool back);
    void MoveTo(int item, int subItem);
    void CommitText();
    void LeaveToList();
    void End();
    void GrowToText();

    CListCtrlFlex *m_list; ///< not owned; null once it begins to die
    int m_item;
    int m_subItem;
    DString m_initialText;
    int m_grownWidth = 0; ///< pixels; 0 until the text takes more room than the cell has
    bool m_cancelled = false;
    bool m_committing = false;
    bool m_ended = false;
};

} // namespace zelvar
