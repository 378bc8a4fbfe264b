#pragma once

#include "zelvar/layout/cdxCDynamicWndEx.h"

#include <QtWidgets/QDialog>

namespace zelvar {

/// Dynamic dialog: a dialog whose children follow its size and that remembers its position under its template's id or
/// name.
///
/// A derived class makes its controls in `OnInitDialog` before it calls the base, which binds the engine, and registers
/// them behind that. The position is stored when the modal loop ends or the object goes. A dialog object is shown once.
/// User-interface thread.
class ZELVAR_API cdxCDynamicDialog : public QDialog, public cdxCDynamicWndEx {
    Q_OBJECT

public:
    /// Id 0 and an empty name: the position is not remembered.
    cdxCDynamicDialog(unsigned templateId, QWidget *parent, Freedom freedom, unsigned flags);
    cdxCDynamicDialog(char const *templateName, QWidget *parent, Freedom freedom, unsigned flags);
    ~cdxCDynamicDialog() override;

    /// Runs the dialog until it is closed: `QDialog::Accepted` or `QDialog::Rejected`.
    int DoModal();

    void setVisible(bool visible) override;
    void accept() override { OnOK(); }
    void reject() override { OnCancel(); }

protected:
    /// Once, before the window is shown for the first time. True lets the first control take the focus.
    virtual bool OnInitDialog();
    /// Closes the dialog with that answer.
    virtual void OnOK() { QDialog::accept(); }
    virtual void OnCancel() { QDialog::reject(); }

    void DoShowWindow(bool show) override;
    bool event(QEvent *event) override;

    bool m_bNewDlg = true; ///< until the first size event

private:
    bool m_initialized = false;
};

/// Dynamic child dialog: a dialog inside another window. Its children scroll with its scroll bars; it never remembers a
/// position.
class ZELVAR_API cdxCDynamicChildDlg : public cdxCDynamicDialog {
    Q_OBJECT

public:
    cdxCDynamicChildDlg(unsigned templateId, QWidget *parent, Freedom freedom, unsigned flags);
    cdxCDynamicChildDlg(char const *templateName, QWidget *parent, Freedom freedom, unsigned flags);
};

} // namespace zelvar
