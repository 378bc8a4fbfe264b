#include "zelvar/bars/CZelToolbarComboBoxButton.h"

#include "zelvar/controls/CZelComboBox.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/Text.h"

#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMenu>
#include <QtWidgets/QToolButton>

#include <vector>

namespace zelvar {

namespace {

/// All there are, in the order they were made. User-interface thread.
std::vector<CZelToolbarComboBoxButton *> &Elements() {
    static std::vector<CZelToolbarComboBoxButton *> elements;
    return elements;
}

} // namespace

CZelToolbarComboBoxButton::CZelToolbarComboBoxButton(int id, DString const &name, int width, QObject *parent)
    : QWidgetAction(parent), m_combo(new CZelComboBox), m_button(new QToolButton) {
    setData(id);
    setText(platform::ToQString(name));
    auto *const both = new QWidget;
    auto *const row = new QHBoxLayout(both);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(m_combo);
    row->addWidget(m_button);
    platform::SetDlgCtrlID(*m_combo, id);
    m_combo->setMinimumContentsLength(width);
    m_combo->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    m_combo->setAccessibleName(text());
    m_combo->setToolTip(platform::ToToolTip(text()));
    m_button->setAutoRaise(true);
    m_button->setPopupMode(QToolButton::InstantPopup);
    m_button->setMenu(new QMenu(m_button));
    connect(m_button->menu(), &QMenu::aboutToShow, this, &CZelToolbarComboBoxButton::FillMenu);
    connect(m_combo, &QComboBox::activated, this, &CZelToolbarComboBoxButton::Send);
    setDefaultWidget(both);
    ShowAsButton(false);
    Elements().push_back(this);
}

CZelToolbarComboBoxButton::~CZelToolbarComboBoxButton() { std::erase(Elements(), this); }

CZelToolbarComboBoxButton *CZelToolbarComboBoxButton::GetByCmd(int id) {
    for (CZelToolbarComboBoxButton *const element : Elements())
        if (element->GetId() == id)
            return element;
    return nullptr;
}

int CZelToolbarComboBoxButton::AddItem(DString const &text, std::uint64_t word) {
    int const index = m_combo->AddString(text);
    m_combo->SetItemData(index, word);
    return index;
}

void CZelToolbarComboBoxButton::RemoveAllItems() {
    m_combo->ResetContent();
    UpdateButton();
}

int CZelToolbarComboBoxButton::GetCount() const { return m_combo->GetCount(); }

DString CZelToolbarComboBoxButton::GetItem(int index) const { return m_combo->GetLBText(index); }

std::uint64_t CZelToolbarComboBoxButton::GetItemData(int index) const { return m_combo->GetItemData(index); }

int CZelToolbarComboBoxButton::FindItem(DString const &text) const { return m_combo->FindStringExact(text); }

int CZelToolbarComboBoxButton::GetCurSel() const { return m_combo->GetCurSel(); }

DString CZelToolbarComboBoxButton::GetText() const { return m_combo->GetWindowText(); }

bool CZelToolbarComboBoxButton::SelectItem(int index, bool notify) {
    if (index < 0 || index >= GetCount())
        return false;
    m_combo->SetCurSel(index);
    if (notify)
        Send();
    else
        KeepInStep();
    return true;
}

void CZelToolbarComboBoxButton::SetEditable(bool editable) {
    m_combo->SetEditable(editable);
    if (!editable)
        return;
    m_combo->lineEdit()->setAccessibleName(text());
    connect(m_combo->lineEdit(), &QLineEdit::returnPressed, this, [this] {
        // For the text of an entry the box tells of a choice by itself.
        if (m_combo->findText(m_combo->currentText(), Qt::MatchFixedString) < 0)
            Send();
    });
}

void CZelToolbarComboBoxButton::Send() {
    KeepInStep();
    Q_EMIT Command(GetId());
}

void CZelToolbarComboBoxButton::KeepInStep() {
    UpdateButton();
    DString const chosen = GetText();
    for (CZelToolbarComboBoxButton *const other : Elements())
        if (other != this && other->GetId() == GetId()) {
            other->m_combo->SetWindowText(chosen);
            other->UpdateButton();
        }
}

void CZelToolbarComboBoxButton::ShowAsButton(bool on) {
    m_asButton = on;
    m_combo->setVisible(!on);
    m_button->setVisible(on);
    defaultWidget()->setFocusProxy(on ? static_cast<QWidget *>(m_button) : m_combo);
    UpdateButton();
}

void CZelToolbarComboBoxButton::UpdateButton() {
    QString const chosen = m_combo->currentText();
    QString const whole = text() + QStringLiteral(": ") + chosen;
    m_button->setIcon(icon());
    m_button->setText(chosen.isEmpty() ? text() : chosen);
    m_button->setToolButtonStyle(icon().isNull() ? Qt::ToolButtonTextOnly : Qt::ToolButtonIconOnly);
    m_button->setToolTip(platform::ToToolTip(whole));
    m_button->setAccessibleName(whole);
}

void CZelToolbarComboBoxButton::FillMenu() {
    QMenu &menu = *m_button->menu();
    menu.clear();
    for (int index = 0; index < GetCount(); ++index) {
        QString label = m_combo->itemText(index);
        QAction *const entry = menu.addAction(label.replace(u'&', QStringLiteral("&&")));
        entry->setCheckable(true);
        entry->setChecked(index == GetCurSel());
        connect(entry, &QAction::triggered, this, [this, index] { SelectItem(index, true); });
    }
}

} // namespace zelvar
