#pragma once

#include "zelvar/base/DString.h"

#include <QtCore/QSize>
#include <QtWidgets/QDialog>

class QPlainTextEdit;
class QPushButton;

namespace zelvar {

/// Message with details: a short message and, when the user asks for it, a long text below.
///
/// It opens collapsed, each time that it is shown; "Details..." grows it to its designed height for good. User
/// interface thread.
class ZELVAR_API DlgMsgDetails : public QDialog {
    Q_OBJECT

public:
    /// Texts may be null. Lines of `details` end in "\n".
    DlgMsgDetails(char const *caption, char const *message, char const *details, QWidget *parent);

    /// 1 for OK, 2 if the dialog was closed otherwise.
    int DoModal();
    void setVisible(bool visible) override;
    /// The details with "\r\n" at the end of lines, also where there was a "\r" before.
    [[nodiscard]] DString const &GetDetails() const { return m_details; }

private:
    void OnInitDialog();
    void Collapse();
    void OnBnClickedDetails();

    DString m_caption;
    DString m_message;
    DString m_details;
    QSize m_rcFull; ///< the designed size
    QPlainTextEdit *m_detailsEdit = nullptr;
    QPushButton *m_detailsButton = nullptr;
};

} // namespace zelvar
