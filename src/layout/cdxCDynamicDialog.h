#pragma once

#include "zelvar/layout/DynamicHost.h"

#include <QtWidgets/QDialog>

namespace zelvar {

/// Dynamic dialog: its controls follow its size, and it remembers where it stood.
///
/// The position is kept under a key made of the template's id or name; `ActivateAutoPos` gives another key and
/// `NoAutoPos` none, before `OnInitDialog`. Without a key the dialog opens where the toolkit puts it, in its own size.
class ZELVAR_API cdxCDynamicDialog : public DynamicHost<QDialog> {
    Q_OBJECT
public:
    /// 0 is no template and no key.
    explicit cdxCDynamicDialog(unsigned templateId, QWidget *parent = nullptr, Freedom freedom = FreedomAll,
                               unsigned flags = kDefaultFlags);
    /// Null or empty is no template and no key.
    explicit cdxCDynamicDialog(char const *templateName, QWidget *parent = nullptr, Freedom freedom = FreedomAll,
                               unsigned flags = kDefaultFlags);
    /// The controls come from the table; the key from its id.
    explicit cdxCDynamicDialog(platform::DialogTemplate const &dialogTemplate, QWidget *parent = nullptr,
                               Freedom freedom = FreedomAll, unsigned flags = kDefaultFlags);
    ~cdxCDynamicDialog() override;

    /// Runs the dialog and takes its window down again. What `done` was given: 1 for OK, 0 for cancel.
    virtual int DoModal();
    void accept() override { OnOK(); }
    void reject() override { OnCancel(); }

protected:
    bool OnInitDialog() override;
    /// Return presses the button that has the focus, of whatever kind of dialog; elsewhere the default button.
    void keyPressEvent(QKeyEvent *event) override;
    virtual void OnOK() { QDialog::accept(); }     ///< the template's control with id 1 was pressed
    virtual void OnCancel() { QDialog::reject(); } ///< that with id 2, Escape, or the frame's close button
};

/// Dynamic child dialog: stands inside another window, scrolls its children, and never stores its position.
///
/// Escape is a key of the window around it, and so is Return unless it has a default button. Its own OK and Cancel tell
/// `accepted`, `rejected` and `finished` and leave it where it is; `hide` takes it away.
class ZELVAR_API cdxCDynamicChildDlg : public cdxCDynamicDialog {
    Q_OBJECT
public:
    explicit cdxCDynamicChildDlg(unsigned templateId, QWidget *parent = nullptr, Freedom freedom = FreedomAll,
                                 unsigned flags = kDefaultFlags);
    explicit cdxCDynamicChildDlg(char const *templateName, QWidget *parent = nullptr, Freedom freedom = FreedomAll,
                                 unsigned flags = kDefaultFlags);
    explicit cdxCDynamicChildDlg(platform::DialogTemplate const &dialogTemplate, QWidget *parent = nullptr,
                                 Freedom freedom = FreedomAll, unsigned flags = kDefaultFlags);

    void done(int result) override;

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void BecomeChild();
};

} // namespace zelvar
