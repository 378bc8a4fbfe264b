#include "zelvar/gallery/PageForm.h"

#include "zelvar/platform/ui/Text.h"

#include <QtCore/QPointer>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QFormLayout>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QVBoxLayout>

namespace zelvar::gallery {

PageForm::PageForm() : m_form(new QFormLayout), m_buttons(new QHBoxLayout), m_said(new QLabel) {
    m_form->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
    m_form->setRowWrapPolicy(QFormLayout::WrapLongRows);
    m_buttons->addStretch();
    m_said->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_said->setAccessibleName(platform::Shown("What happened last"));
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(m_form);
    layout->addStretch(1);
    layout->addLayout(m_buttons);
    layout->addWidget(m_said);
}

void PageForm::Add(char const *label, QWidget *control) {
    control->setAccessibleName(platform::Shown(label).remove(QLatin1Char('&')));
    m_form->addRow(platform::Shown(label), control);
}

void PageForm::AddWide(char const *name, QWidget *control, bool stretch) {
    control->setAccessibleName(platform::Shown(name));
    auto *const layout = static_cast<QVBoxLayout *>(this->layout());
    if (stretch)
        layout->setStretch(1, 0); // the control takes it instead
    layout->insertWidget(layout->indexOf(m_buttons), control, stretch ? 1 : 0);
}

void PageForm::AddButton(char const *text, std::function<void()> act) {
    auto *const button = new QPushButton(platform::Shown(text));
    button->setAutoDefault(false);
    m_buttons->insertWidget(m_buttons->count() - 1, button);
    connect(button, &QPushButton::clicked, this, std::move(act));
}

void PageForm::AddSwitch(char const *text, bool on, std::function<void(bool)> act) {
    auto *const box = new QCheckBox(platform::Shown(text));
    box->setChecked(on);
    m_buttons->insertWidget(m_buttons->count() - 1, box);
    connect(box, &QCheckBox::toggled, this, std::move(act));
}

void PageForm::SayAnswer(std::function<DString()> const &ask) {
    QPointer<PageForm const> const alive(this);
    DString const answer = ask();
    if (!alive.isNull())
        Say(answer);
}

void PageForm::Say(char const *text) const { m_said->setText(platform::Shown(text)); }

void PageForm::Say(DString const &text) const { m_said->setText(platform::ToQString(text)); }

} // namespace zelvar::gallery
