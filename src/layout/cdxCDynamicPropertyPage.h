#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/layout/cdxCDynamicWndEx.h"

#include <QtWidgets/QWidget>

namespace zelvar {

/// Dynamic property page: a page of a tabbed window whose children follow its size and scroll with its scroll bars. It
/// never remembers a position.
class ZELVAR_API cdxCDynamicPropertyPage : public QWidget, public cdxCDynamicWndEx {
    Q_OBJECT

public:
    cdxCDynamicPropertyPage(unsigned templateId, Freedom freedom, unsigned flags);
    cdxCDynamicPropertyPage(char const *templateName, Freedom freedom, unsigned flags);
    ~cdxCDynamicPropertyPage() override;

    void setVisible(bool visible) override;

protected:
    /// Once, before the page is shown for the first time.
    virtual bool OnInitDialog();
    bool event(QEvent *event) override;

    bool m_bNewDlg = true; ///< until the first size event

private:
    bool m_initialized = false;
};

} // namespace zelvar
