#pragma once

#include "zelvar/layout/cdxCDynamicDialog.h"
#include "zelvar/opends/basket/Basket.h"

class QKeyEvent;

namespace zelvar {

class CZelListCtrlVirtual;
class RowDrag;

/// The list of what a basket holds: rows are removed (Delete), moved (Alt with an arrow, or dragged), written to a file
/// of monikers and read from one. What is changed is changed at once. User-interface thread.
// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor): the base has a virtual one
class BasketDlg : public cdxCDynamicDialog {
    Q_OBJECT

public:
    /// `basket` outlives it. `keep`, which may be empty, makes a favourite of the basket; it is given this window.
    BasketDlg(QWidget *parent, Basket &basket, std::function<void(QWidget &)> keep);
    ~BasketDlg() override;

    [[nodiscard]] CZelListCtrlVirtual *List() const;

protected:
    bool OnInitDialog() override;
    bool DestroyWindow() override;
    QWidget *MakeControl(platform::DialogItem const &item) override;

private:
    class Rows;
    bool OnKey(QKeyEvent const &key); ///< of the list; false for those that are not of this
    [[nodiscard]] std::set<int> Selected() const;
    void Remove();
    void Move(bool down);
    void Drop(int row, int beside, bool behind);
    void Save();
    void Load();
    void Show(std::set<int> const &selected, int focus);
    void ShowState();

    Basket &m_basket;
    std::function<void(QWidget &)> m_keep;
    Rows *m_list = nullptr; ///< a child
    bool m_isFilling = false;
    std::unique_ptr<RowDrag> m_drag;
};

} // namespace zelvar
