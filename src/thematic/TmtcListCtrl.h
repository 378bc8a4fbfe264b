#pragma once

#include "zelvar/thematic/ThematicGroup.h"

#include <QtGui/QFont>
#include <QtWidgets/QWidget>

#include <memory>

namespace zelvar {

/// Thematic list: a stack of groups, each with a coloured strip and items, and of items that stand alone. What the
/// items mean is known to a derived class, which overrides the operations that buttons lead to.
///
/// Where everything lies is worked out at every paint. There is no scrolling: put the list into a scroll area, with the
/// height of `GetContentHeight`, where it may not fit. It owns its elements.
class ZELVAR_API TmtcListCtrl : public QWidget {
    Q_OBJECT
public:
    using Elmt = ThematicElement;
    using Item = ThematicItem;
    using Group = ThematicGroup;
    using HITTEST = ThematicHit;

    explicit TmtcListCtrl(QWidget *parent = nullptr);
    ~TmtcListCtrl() override;

    /// Puts the list into a parent, as its control of that id. Nonzero if that could be done. `style` has no bits of
    /// its own.
    virtual int Create(unsigned long style, Rect const &rect, QWidget *parent, unsigned id);
    /// `newElmt` is selected in place of `oldElmt`; either may be null.
    virtual void OnSlctChng(Elmt *oldElmt, Elmt *newElmt);
    /// Takes the item out and deletes it. The remove button of the item that comes into its place lights up.
    virtual void OnRmvItem(Group *group, Item *item);
    /// Makes an item and yields it, or null: nothing is added. An item that is in no group yet becomes the group's
    /// last.
    virtual Item *OnAddToGroup(Group *group);
    [[nodiscard]] virtual bool Get3DLook() const { return true; }
    virtual bool OnMoveItem(Group *group, Item *item, bool up);

    void AddTail(Elmt *elmt); ///< the list owns it; the first item becomes selected
    void AddPos(int pos, Elmt *elmt);
    void AddTail(std::unique_ptr<Elmt> elmt) { AddTail(elmt.release()); }
    void AddPos(int pos, std::unique_ptr<Elmt> elmt) { AddPos(pos, elmt.release()); }
    [[nodiscard]] Elmt *Get(int index) const; ///< null outside
    [[nodiscard]] int GetNumElmt() const { return static_cast<int>(m_elements.size()); }
    [[nodiscard]] Elmt *GetHead() const { return Get(0); }
    [[nodiscard]] Elmt *GetTail() const { return Get(GetNumElmt() - 1); }
    /// Take an element out and give it to the caller; null from an empty list.
    [[nodiscard]] Elmt *RmvHead();
    [[nodiscard]] Elmt *RmvTail();
    [[nodiscard]] std::unique_ptr<Elmt> TakeHead() { return std::unique_ptr<Elmt>(RmvHead()); }
    [[nodiscard]] std::unique_ptr<Elmt> TakeTail() { return std::unique_ptr<Elmt>(RmvTail()); }
    void Rmv(Elmt *elmt); ///< deletes it
    [[nodiscard]] Group *FindGroup(Item const *item) const;
    [[nodiscard]] Group *FindGroup(DString const &id) const;
    [[nodiscard]] static bool IsGroup(Elmt const *elmt);
    [[nodiscard]] static bool IsItem(Elmt const *elmt);
    [[nodiscard]] Elmt *GetSlctElmt() const;
    [[nodiscard]] Item *GetSlctItem() const;
    /// The item behind `item` in the order shown, the first for null; backwards the one before it.
    [[nodiscard]] Item *GetNextItem(Item const *item, bool visibleOnly, bool backward) const;
    /// Groups alone change places with a neighbour, which must be a group too. The caller repaints.
    bool MoveElmnt(Elmt *elmt, bool up);
    void ShowElement(Elmt const *elmt, bool show); ///< has no effect
    void RepositionItems();
    bool HitTest(Point const &point, HITTEST *hit) const;
    [[nodiscard]] int GetContentHeight() const; ///< pixels

    [[nodiscard]] bool GetEnblGrpSlct() const { return m_enblGrpSlct; }
    void SetEnblGrpSlct(bool enable) { m_enblGrpSlct = enable; }
    void SetListFont(QFont const &font);

    /// Off by default: keys do nothing. On, Up, Down, Home and End go from element to element and select items (and
    /// groups, where they may be selected), Ctrl+Up and Ctrl+Down move the item, Delete removes it, Enter on a group
    /// adds to it.
    void SetKeyboardControl(bool on);
    /// The element that keys act on; null for none.
    [[nodiscard]] Elmt *GetFocusElmt() const;
    /// What keys and screen readers do, by the commands of the buttons; false where it cannot be done now.
    bool Perform(ThematicCommand command, Elmt *elmt);
    void Select(Elmt *elmt); ///< as a click does

protected:
    void paintEvent(QPaintEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    /// An element that may go at any time.
    using Watched = std::weak_ptr<Elmt *const>;

    [[nodiscard]] static Elmt *Of(Watched const &watched);
    static void Watch(Watched &watched, Elmt *elmt);
    [[nodiscard]] static bool Holds(Elmt const *elmt, Elmt const *other);
    Elmt *TakeOut(int index);
    void LetGoOf(Elmt *elmt);
    bool ProcessMouseEvent(EMouseEvnt event, Point const &point);
    void SlctItem(Point const &point);
    void SetCursorAt(Point const &point);
    void MoveFocus(int steps);
    void FocusOn(Elmt *elmt);
    void RemoveAndFocus(Group *group, Item &item);
    [[nodiscard]] std::vector<Elmt *> InOrder() const;

    std::vector<Elmt *> m_elements; ///< owned
    Watched m_selected;
    Watched m_replacement; ///< its remove button lights up after a removal
    Watched m_focus;
    QFont m_font;
    bool m_enblGrpSlct = false;
    bool m_isKeyboardOn = false;
};

} // namespace zelvar
