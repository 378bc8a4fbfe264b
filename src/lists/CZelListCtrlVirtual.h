#pragma once

#include "zelvar/lists/CZelListCtrl.h"

namespace zelvar {

/// Virtual list: holds a number of rows and asks its derived class for each cell that is to be seen.
///
/// Operations that write to a row's text, image or record have no meaning here; `GetItemData` is 0 for every row.
class ZELVAR_API CZelListCtrlVirtual : public CZelListCtrl {
    Q_OBJECT

public:
    explicit CZelListCtrlVirtual(QWidget *parent = nullptr);
    ~CZelListCtrlVirtual() override;

    /// `flags` are those of `SetItemCountEx`.
    void SetNumRow(int rows, unsigned long flags);

    using CZelListCtrl::Sort;
    /// A heading was clicked: a derived class that sorts reorders its own data and repaints.
    void Sort(int col, bool ascending) override;

    /// The text of a cell. Called at any moment on the user-interface thread, while painting and hit testing too; must
    /// not change the number of rows unless rows are read on demand.
    virtual DString OnGetItemText(int row, int col) = 0;
    virtual int OnGetItemImg(int row, int col); ///< -1 for none

protected:
    void PreCreateWindow(unsigned &style, Rect &place) override;
    void OnGetDispInfo(DispInfo &info) const override;

private:
    mutable DString m_lastText; ///< the cell text last handed out
};

} // namespace zelvar
