#include "zelvar/filedlg/HistoryRow.h"

#include "zelvar/base/Translation.h"
#include "zelvar/controls/CZelComboBox.h"
#include "zelvar/filedlg/CCustomFileDlg.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/DialogTemplate.h"

#include <QtWidgets/QCheckBox>
#include <QtWidgets/QLabel>

#include <algorithm>
#include <array>
#include <initializer_list>
#include <utility>

namespace zelvar {

namespace {

using platform::ControlKind;
using platform::DialogItem;
using platform::DialogTemplate;

enum ControlIds { kHistoryCombo = 6008, kHistoryLabel = 6009, kEditOnly = 6010, kReadOnly = 6011 };

constexpr DialogItem kCombo{kHistoryCombo, ControlKind::DropDownList, "", 130, 0, 164, 184};
constexpr DialogItem kLabel{kHistoryLabel, ControlKind::Label, Mark("Go to folder:"), 68, 2, 44, 9};
constexpr std::array kHistoryItems{kCombo, kLabel};
constexpr std::array kProjectItems{
    kCombo,
    kLabel,
    DialogItem{kEditOnly, ControlKind::CheckBox, Mark("Project-Edit"), 305, 0, 53, 10},
    DialogItem{kReadOnly, ControlKind::CheckBox, Mark("Read-Only"), 305, 11, 50, 10},
};
constexpr DialogTemplate kHistory{CCustomFileDlg::kHistoryTemplate, "", 407, 17, kHistoryItems};
constexpr DialogTemplate kProject{CCustomFileDlg::kProjectTemplate, "", 407, 27, kProjectItems};
constexpr int kSmallestCombo = 64; // dialog units

DString WithoutEndSeparators(DString path) {
    while (path.size() > 1 && path.ends_with('/'))
        path.pop_back();
    return path;
}

QWidget *MakeComboBox(QWidget &, DialogItem const &item) {
    return item.id == kHistoryCombo ? new CZelComboBox : nullptr;
}

int BottomOf(QWidget const *child) { return child == nullptr ? 0 : child->geometry().bottom() + 1; }

} // namespace

HistoryRow::HistoryRow(int templateId, QWidget &commonDialog) : QWidget(&commonDialog), m_dialog(commonDialog) {
    BuildDialog(*this, templateId == CCustomFileDlg::kProjectTemplate ? kProject : kHistory, MakeComboBox);
    m_cmbHist = platform::GetDlgItem<CZelComboBox>(*this, kHistoryCombo);
    m_lblHist = platform::GetDlgItem<QLabel>(*this, kHistoryLabel);
    m_editOnlyBox = platform::GetDlgItem<QCheckBox>(*this, kEditOnly);
    m_readOnlyBox = platform::GetDlgItem<QCheckBox>(*this, kReadOnly);
    m_lblHist->setBuddy(m_cmbHist);
    m_cmbHist->setLayoutDirection(Qt::LeftToRight); // as its paths are read

    // The controls of a bigger style must not be cut.
    setFixedHeight(std::max({height(), BottomOf(m_cmbHist), BottomOf(m_editOnlyBox), BottomOf(m_readOnlyBox)}));

    connect(m_cmbHist, &QComboBox::activated, this, &HistoryRow::OnSelEndOk);
    if (m_readOnlyBox == nullptr)
        return; // and so is the other
    connect(m_readOnlyBox, &QCheckBox::clicked, this, &HistoryRow::OnReadOnlyClicked);
    connect(m_editOnlyBox, &QCheckBox::clicked, this, &HistoryRow::OnEditOnlyClicked);
}

void HistoryRow::OnInitDone(DVectorSafe<DString> const &folders, bool showHistory, DString initialDir) {
    m_cmbHist->setVisible(showHistory);
    m_lblHist->setVisible(showHistory);
    if (showHistory) {
        initialDir = WithoutEndSeparators(std::move(initialDir));
        m_cmbHist->ResetContent();
        for (DString const &folder : folders) {
            DString const shown = WithoutEndSeparators(folder);
            int const index = m_cmbHist->AddString(shown);
            if (shown == initialDir)
                m_cmbHist->SetCurSel(index);
        }
    }
    setVisible(showHistory || m_readOnlyBox != nullptr);
    // What the combo box can give away is what the dialog can shrink by.
    int const smallest = platform::MapDialogRect(*this, {0, 0, kSmallestCombo, 0}).right;
    if (showHistory)
        m_dialog.setMinimumWidth(m_dialog.width() - std::max(0, m_cmbHist->width() - smallest));
    m_bInitDone = true;
    Reposition();
}

void HistoryRow::Reposition() {
    QSize const size = m_dialog.size();
    if (m_prevCx == 0 || m_prevCy == 0) {
        m_prevCx = size.width();
        m_prevCy = size.height();
    }
    int const growth = size.width() - m_prevCx;
    TurnRound(std::exchange(m_turnedIn, 0));
    m_cmbHist->resize(m_cmbHist->width() + growth, m_cmbHist->height());
    for (QWidget *const box : {m_readOnlyBox, m_editOnlyBox})
        if (box != nullptr)
            box->move(box->x() + growth, box->y());
    m_prevCx = size.width();
    m_prevCy = size.height();
    TurnRound(m_turnedIn = isRightToLeft() ? width() : 0);
}

void HistoryRow::TurnRound(int width) {
    for (QWidget *const child : std::initializer_list<QWidget *>{m_cmbHist, m_lblHist, m_readOnlyBox, m_editOnlyBox})
        if (child != nullptr && width > 0)
            child->move(width - child->x() - child->width(), child->y());
}

void HistoryRow::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    if (m_bInitDone)
        Reposition();
}

void HistoryRow::OnSelEndOk(int index) {
    DString const folder = m_cmbHist->GetLBText(index);
    if (!folder.empty())
        Q_EMIT FolderChosen(folder);
}

void HistoryRow::OnReadOnlyClicked(bool checked) {
    m_bReadOnly = checked;
    m_bEditOnly = false;
    m_editOnlyBox->setChecked(false);
}

void HistoryRow::OnEditOnlyClicked(bool checked) {
    m_bEditOnly = checked;
    m_bReadOnly = false;
    m_readOnlyBox->setChecked(false);
}

} // namespace zelvar
