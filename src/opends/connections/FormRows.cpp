#include "zelvar/opends/connections/FormRows.h"

#include "zelvar/platform/ui/PaletteColors.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/platform/ui/WheelPast.h"

#include <QtWidgets/QComboBox>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QToolButton>

#include <algorithm>

namespace zelvar {

using platform::Shown;
using platform::ToDString;
using platform::ToQString;

namespace {

constexpr int kSpacing = 4;       // pixels between rows
constexpr int kColumns = 16;      // characters that a field keeps in a narrow window
constexpr int kControlColumn = 1; // of the grid; the labels' is before it

QLabel *MakeWords() {
    auto *const words = new QLabel;
    words->setTextFormat(Qt::PlainText);
    words->setWordWrap(true); // fields come before labels where there is little room
    return words;
}

} // namespace

FormRows::FormRows(QWidget *parent) : QWidget(parent), m_grid(new QGridLayout(this)) {
    m_grid->setContentsMargins(0, 0, 0, 0);
    m_grid->setVerticalSpacing(kSpacing);
    m_grid->setColumnStretch(kControlColumn, 1);
}

QLineEdit *FormRows::MakeEdit(DString const &text) {
    auto *const edit = new QLineEdit(ToQString(text));
    edit->setCursorPosition(0); // of a long text its beginning is shown
    edit->setMinimumWidth(edit->fontMetrics().averageCharWidth() * kColumns);
    return edit;
}

QComboBox *FormRows::MakeBox() {
    auto *const box = new QComboBox;
    platform::LetWheelPast(*box);
    // Long entries must not widen the page.
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    box->setMinimumContentsLength(kColumns);
    return box;
}

void FormRows::Add(DString const &key, char const *label, QWidget *control) {
    int const at = m_grid->rowCount();
    Row const row{.label = MakeWords(), .control = control, .fault = MakeWords(), .isFolded = m_more != nullptr};
    row.label->setText(Shown(label));
    row.label->setBuddy(control);
    row.fault->hide();
    control->setObjectName(ToQString(key));
    control->setAccessibleName(row.label->text());
    m_grid->addWidget(row.label, at, 0);
    m_grid->addWidget(control, at, kControlColumn);
    m_grid->addWidget(row.fault, at + 1, kControlColumn);
    m_focusOrder.push_back(control);
    m_rows[key] = row;
}

void FormRows::AddButton(DString const &key, QWidget *button) {
    button->setObjectName(ToQString(key));
    m_grid->addWidget(button, m_grid->rowCount(), kControlColumn, Qt::AlignLeft);
    m_focusOrder.push_back(button);
}

QLabel *FormRows::AddHint() {
    QLabel *const hint = MakeWords();
    m_grid->addWidget(hint, m_grid->rowCount(), kControlColumn);
    return hint;
}

void FormRows::AddFold() {
    m_more = new QToolButton;
    m_more->setText(Shown("More"));
    m_more->setObjectName(QStringLiteral("more"));
    m_more->setCheckable(true);
    m_more->setAutoRaise(true);
    m_more->setFocusPolicy(Qt::StrongFocus);
    m_more->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_more->setToolTip(Shown("Fields that most connections do without"));
    m_grid->addWidget(m_more, m_grid->rowCount(), 0, 1, 2, Qt::AlignLeft);
    m_focusOrder.push_back(m_more);
    connect(m_more, &QToolButton::toggled, this, &FormRows::ShowFolded);
}

void FormRows::End() { m_grid->setRowStretch(m_grid->rowCount(), 1); }

QWidget *FormRows::Control(DString const &key) const {
    auto const control = std::find_if(m_focusOrder.begin(), m_focusOrder.end(),
                                      [&](QWidget const *one) { return ToDString(one->objectName()) == key; });
    return control == m_focusOrder.end() ? nullptr : *control;
}

void FormRows::SetLabel(DString const &key, QString const &text) {
    auto const row = m_rows.find(key);
    if (row == m_rows.end())
        return;
    row->second.label->setText(text);
    row->second.control->setAccessibleName(text);
}

void FormRows::SetVisible(DString const &key, bool isVisible) {
    auto const row = m_rows.find(key);
    if (row == m_rows.end())
        return;
    row->second.label->setVisible(isVisible);
    row->second.control->setVisible(isVisible);
}

void FormRows::Unfold(DString const &key) {
    if (auto const row = m_rows.find(key); row != m_rows.end() && row->second.isFolded)
        m_more->setChecked(true);
}

void FormRows::SetUnfolded(bool isUnfolded) {
    m_more->setChecked(isUnfolded);
    ShowFolded(isUnfolded); // it may not have changed
}

void FormRows::ShowFolded(bool isShown) {
    m_more->setArrowType(isShown ? Qt::DownArrow : isRightToLeft() ? Qt::LeftArrow : Qt::RightArrow);
    for (auto const &[key, row] : m_rows) {
        if (!row.isFolded)
            continue;
        row.label->setVisible(isShown);
        row.control->setVisible(isShown);
        row.fault->setVisible(isShown && !row.fault->text().isEmpty());
    }
}

void FormRows::ShowFault(Row &row, DString const &words) {
    QPalette palette; // without a fault that of the page
    if (!words.empty())
        palette.setColor(QPalette::WindowText, platform::IsPaletteDark() ? QColor(255, 130, 120) : QColor(190, 0, 0));
    row.fault->setPalette(palette);
    row.fault->setText(ToQString(words));
    row.fault->setVisible(!words.empty());
    row.control->setAccessibleDescription(row.fault->text());
}

void FormRows::ShowFault(DString const &key, DString const &words) {
    if (auto const row = m_rows.find(key); row != m_rows.end())
        ShowFault(row->second, words);
}

void FormRows::ShowFaults(std::vector<ConnectionFault> const &faults) {
    for (auto &[key, row] : m_rows)
        ShowFault(row, {});
    QWidget *first = nullptr;
    auto const isAbove = [this](QWidget *one, QWidget *other) {
        return std::ranges::find(m_focusOrder, one) < std::ranges::find(m_focusOrder, other);
    };
    for (ConnectionFault const &fault : faults) {
        auto const at = m_rows.find(fault.field);
        if (at == m_rows.end())
            continue;
        Unfold(fault.field);
        ShowFault(at->second, fault.words);
        if (first == nullptr || isAbove(at->second.control, first))
            first = at->second.control;
    }
    if (first != nullptr)
        first->setFocus();
}

} // namespace zelvar
