#include "zelvar/opends/PlaceNotice.h"

#include "zelvar/platform/ui/Text.h"

#include <QtCore/QEvent>
#include <QtWidgets/QAbstractScrollArea>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QVBoxLayout>

namespace zelvar {

PlaceNotice::PlaceNotice(QAbstractScrollArea &list)
    : QWidget(&list), m_list(list), m_label(new QLabel(this)), m_button(new QPushButton(this)) {
    setObjectName("placeNotice");
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Base);
    m_label->setForegroundRole(QPalette::Text);
    m_label->setTextFormat(Qt::PlainText); // names and servers' words are no markup
    m_label->setWordWrap(true);
    m_label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_label->setFocusPolicy(Qt::ClickFocus);
    m_button->setAutoDefault(false);
    auto *const column = new QVBoxLayout(this);
    column->addWidget(m_label);
    column->addWidget(m_button, 0, Qt::AlignLeft);
    column->addStretch(1);
    connect(m_button, &QPushButton::clicked, this, [this] {
        if (m_onButton)
            m_onButton();
    });
    list.viewport()->installEventFilter(this);
    hide();
}

void PlaceNotice::Show(DString const &words, DString const &button, int top) {
    if (words.empty()) {
        hide();
        return;
    }
    QString const text = platform::ToQString(words);
    QString const name = platform::ToQString(button);
    if (isVisibleTo(parentWidget()) && m_label->text() == text && m_button->text() == name && m_top == top)
        return;
    m_top = top;
    m_label->setText(text);
    m_button->setText(name);
    setAccessibleName(text);
    Place();
    show();
    raise();
    layout()->activate(); // the height of the words depends on the width
}

void PlaceNotice::Place() {
    QRect place = m_list.viewport()->geometry();
    place.setTop(place.top() + m_top);
    setGeometry(place);
}

bool PlaceNotice::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() == QEvent::Resize || event->type() == QEvent::Move)
        Place();
    return QWidget::eventFilter(watched, event);
}

} // namespace zelvar
