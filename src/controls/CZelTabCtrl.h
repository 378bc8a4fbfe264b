#pragma once

#include "zelvar/base/DString.h"

#include <QtWidgets/QTabWidget>

namespace zelvar {

/// Tab window: pages under tabs that can be hidden one by one.
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
    [[nodiscard]] DString GetTabLabel(int index) const;

    /// Shows or hides a tab; a shown one comes to the front with `activate`. Hiding the active tab brings another one
    /// to the front. The row of tabs is laid out anew at once, so that `recalc` changes nothing. False if there is no
    /// such tab.
    bool ShowTab(int index, bool show = true, bool recalc = true, bool activate = true);
    [[nodiscard]] bool IsTabVisible(int index) const;
    /// False for a tab that does not exist or is hidden.
    bool SetActiveTab(int index);
    [[nodiscard]] int GetActiveTab() const { return currentIndex(); } ///< -1 for none
};

} // namespace zelvar
