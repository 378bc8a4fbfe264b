#include "zelvar/opends/PlaceNotice.h"

#include "zelvar/opends/WrapLayout.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QEvent>
#include <QtWidgets/QAbstractScrollArea>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QVBoxLayout>

namespace zelvar {

namespace {

constexpr int kSpacing = 6; // pixels between buttons

} // namespace

PlaceNotice::PlaceNotice(QAbstractScrollArea &list)
    : QWidget(&list), m_list(list), m_label(new QLabel(this)), m_button(new QPushButton(this)),
      m_offer(new QPushButton(this)) {
    setObjectName("placeNotice");
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Base);
    m_label->setForegroundRole(QPalette::Text);
    m_label->setTextFormat(Qt::PlainText); // names and servers' words are no markup
    m_label->setWordWrap(true);
    m_label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_label->setFocusPolicy(Qt::ClickFocus);
    for (QPushButton *const button : {m_button, m_offer})
        button->setAutoDefault(false);
    m_offer->hide();
    auto *const buttons = new WrapLayout(kSpacing);
    buttons->addWidget(m_offer);
    buttons->addWidget(m_button);
    auto *const column = new QVBoxLayout(this);
    column->addWidget(m_label);
    column->addLayout(buttons);
    column->addStretch(1);
    connect(m_button, &QPushButton::clicked, this, [this] {
        if (m_onButton)
            m_onButton();
    });
    connect(m_offer, &QPushButton::clicked, this, [this] {
        if (m_onOffer)
            m_onOffer();
    });
    setTabOrder(&list, m_offer); // as they lie there, also backwards
    setTabOrder(m_offer, m_button);
    list.viewport()->installEventFilter(this);
    hide();
}

void PlaceNotice::Show(DString const &words, DString const &button, int top) {
    if (words.empty()) {
        // What goes with the focus would leave it to any button of the window.
        if (isVisible() && isAncestorOf(window()->focusWidget()))
            m_list.setFocus();
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

void PlaceNotice::Offer(DString const &text) {
    QString const shown = platform::ToQString(text);
    if (m_offer->isHidden() != shown.isEmpty() || m_offer->text() != shown) {
        m_offer->setText(shown);
        if (shown.isEmpty() && window()->focusWidget() == m_offer)
            m_button->setFocus();
        m_offer->setVisible(!shown.isEmpty());
        layout()->activate();
    }
}

QPushButton *PlaceNotice::NextButton(QWidget const *focus) const {
    if (!isVisible() || focus == m_button)
        return nullptr;
    return m_offer->isHidden() || focus == m_offer ? m_button : m_offer;
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
