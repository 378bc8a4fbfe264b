#pragma once

#include "zelvar/base/Containers.h"
#include "zelvar/base/DString.h"

#include <QtWidgets/QWidget>

class QCheckBox;
class QLabel;

namespace zelvar {

class CZelComboBox;

/// The child template of the custom file dialog: the folders used last and, in one template, two check boxes of which
/// one at most is checked.
class HistoryRow final : public QWidget {
    Q_OBJECT

public:
    HistoryRow(int templateId, QWidget &commonDialog);

    /// Fills the row when the dialog is complete and about to be shown for the first time, as wide as the template at
    /// least: the row follows from there.
    void OnInitDone(DVectorSafe<DString> const &folders, bool showHistory, DString initialDir);

    [[nodiscard]] bool IsReadOnly() const { return m_bReadOnly; }
    [[nodiscard]] bool IsEditOnly() const { return m_bEditOnly; }

Q_SIGNALS:
    void FolderChosen(DString const &folder);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void Reposition();
    void TurnRound(int width);
    void OnSelEndOk(int index);
    void OnReadOnlyClicked(bool checked);
    void OnEditOnlyClicked(bool checked);

    QWidget &m_dialog;
    CZelComboBox *m_cmbHist = nullptr;
    QLabel *m_lblHist = nullptr;
    QCheckBox *m_editOnlyBox = nullptr; ///< null in a template without the two, as the next one
    QCheckBox *m_readOnlyBox = nullptr;
    bool m_bReadOnly = false;
    bool m_bEditOnly = false;
    int m_turnedIn = 0; ///< the width in which the controls stand turned round; 0 for as the template has them
    int m_prevCx = 0;   ///< the dialog's last size
    int m_prevCy = 0;
    bool m_bInitDone = false;
};

} // namespace zelvar
