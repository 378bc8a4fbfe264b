#pragma once

#include "support/GuiTest.h"
#include "zelvar/opends/DSListCtrl.h"
#include "zelvar/opends/DSPropertyWnd.h"
#include "zelvar/opends/DlgOpenDS.h"
#include "zelvar/opends/OpenDialogTemplate.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/props/CZelPropList.h"

#include <QtCore/QTimer>

namespace zelvar::test {

struct DeleteDialog {
    void operator()(DlgOpenDS *dialog) const { DlgOpenDS::DeleteDialogObject(dialog); }
};
using DialogPtr = std::unique_ptr<DlgOpenDS, DeleteDialog>;

/// Counts what panes tell their coordinator.
class Coordinator : public QObject {
public:
    std::map<int, int> told;

protected:
    bool event(QEvent *event) override {
        ++told[event->type()];
        return QObject::event(event);
    }
};

/// The row of that name, -1 without one.
inline int RowOf(DSListCtrl const &list, DString const &name) {
    for (int row = 0; row < list.GetNumRow(); ++row)
        if (list.ItemAt(row)->GetName() == name)
            return row;
    return -1;
}

inline QPoint PlaceOf(DSListCtrl &list, DString const &name) {
    EXPECT_GE(RowOf(list, name), 0) << name;
    list.EnsureVisible(RowOf(list, name));
    Rect const rect = list.GetItemRect(RowOf(list, name));
    return {rect.left + 40, (rect.top + rect.bottom) / 2};
}

/// Presses OK once that can be pressed.
inline void PressOk(DlgOpenDS &dialog) {
    auto *const ok = platform::GetDlgItem<QPushButton>(dialog, kOkId);
    ASSERT_TRUE(Eventually([&] { return ok->isEnabled(); }));
    Click(ok);
}

/// Runs the dialog, does `act` once `when` is true, and closes it if `act` did not. The dialog's answer.
inline int RunWhen(DlgOpenDS &dialog, std::function<bool()> const &when, std::function<void()> const &act) {
    QTimer look;
    bool done = false;
    QObject::connect(&look, &QTimer::timeout, &look, [&] {
        if (done || !when())
            return;
        done = true;
        look.stop();
        act();
        if (dialog.isVisible())
            dialog.reject();
    });
    look.start(5);
    int const answer = dialog.DoModal();
    EXPECT_TRUE(done) << "it did not come to that";
    return answer;
}

/// The shown text of a property; "no such row" without it.
inline DString PropertyIn(DSPropertyWnd const &pane, DString const &name) {
    CZelPropList &list = *pane.Properties();
    for (int i = 0; i < list.GetPropertyCount(); ++i)
        for (int j = 0; j < list.GetProperty(i)->GetSubItemsCount(); ++j)
            if (CZelProp const *prop = list.GetProperty(i)->GetSubItem(j); prop->GetName() == name)
                return prop->GetValue();
    return "no such row";
}

} // namespace zelvar::test
