#pragma once

#include "zelvar/base/DString.h"

#include <QtWidgets/QTabWidget>

namespace zelvar {

/// Tab window: pages under tabs. It adds to the platform's tab window tabs that can be hidden one by one and keep their
/// index, the customary operations by index or page, tips, and labels as `DString`.
class ZELVAR_API CZelTabCtrl : public QTabWidget {
    Q_OBJECT

public:
    explicit CZelTabCtrl(QWidget *parent = nullptr);

    /// The page becomes a child; the tab's index is returned.
    int AddTab(QWidget *page, DString const &label) { return InsertTab(page, label, GetTabsNum()); }
    int InsertTab(QWidget *page, DString const &label, int index);
    /// The page is left without a tab, not deleted.
    bool RemoveTab(int index);
    [[nodiscard]] int GetTabsNum() const { return count(); }
    void RemoveAllTabs();
    [[nodiscard]] virtual DString GetTabLabel(int index) const; ///< empty for a tab that does not exist
    virtual bool SetTabLabel(int index, DString const &label);
    bool SetTabTooltip(int index, DString const &text);
    /// A disabled tab is seen but cannot be chosen.
    bool EnableTab(int index, bool enable = true);

    /// Shows or hides a tab; a shown one comes to the front with `activate`. Hiding the active tab brings another one
    /// to the front. The row of tabs is laid out anew at once, so that `recalc` changes nothing. False if there is no
    /// such tab.
    bool ShowTab(int index, bool show = true, bool recalc = true, bool activate = true);
    [[nodiscard]] bool IsTabVisible(int index) const;
    /// False for a tab that does not exist or is hidden.
    bool SetActiveTab(int index);
    [[nodiscard]] int GetActiveTab() const { return currentIndex(); } ///< -1 for none
    [[nodiscard]] int GetVisibleTabsNum() const;
    // The page of a tab and the tab of a page; null and -1 for none.
    [[nodiscard]] QWidget *GetTabWnd(int index) const { return widget(index); }
    [[nodiscard]] QWidget *GetActiveWnd() const { return currentWidget(); }
    [[nodiscard]] int GetTabFromWnd(QWidget const *page) const;

protected:
    [[nodiscard]] bool HasTab(int index) const { return index >= 0 && index < count(); }
};

} // namespace zelvar
