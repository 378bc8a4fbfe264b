#include "zelvar/platform/ui/EllipsisLabel.h"

#include "zelvar/platform/ui/Reading.h"
#include "zelvar/platform/ui/Text.h"

#include <QtGui/QHelpEvent>
#include <QtGui/QPainter>
#include <QtWidgets/QToolTip>

namespace zelvar::platform {

namespace {
constexpr int kLeastWidth = 12; // characters
}

EllipsisLabel::EllipsisLabel(QWidget *parent) : QFrame(parent) {}

void EllipsisLabel::SetText(QString const &text) {
    if (text == m_text)
        return;
    // A name that was given stays, and the text says what is there.
    if (accessibleName() == m_text)
        setAccessibleName(text);
    else
        setAccessibleDescription(text);
    m_text = text;
    updateGeometry();
    update();
}

QString EllipsisLabel::ShownText() const {
    return fontMetrics().elidedText(QString(m_text).replace(u'\n', u' '), Qt::ElideRight, contentsRect().width());
}

QSize EllipsisLabel::sizeHint() const { return {fontMetrics().horizontalAdvance(m_text), fontMetrics().height()}; }

QSize EllipsisLabel::minimumSizeHint() const {
    return {fontMetrics().averageCharWidth() * kLeastWidth, fontMetrics().height()};
}

void EllipsisLabel::paintEvent(QPaintEvent *event) {
    QFrame::paintEvent(event);
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    int const flags = ReadingFlags(m_text, Qt::AlignLeft | Qt::AlignVCenter, layoutDirection());
    painter.drawText(contentsRect(), flags | Qt::TextSingleLine, ShownText());
}

bool EllipsisLabel::event(QEvent *event) {
    if (event->type() == QEvent::ToolTip && toolTip().isEmpty() && ShownText() != m_text) {
        QToolTip::showText(static_cast<QHelpEvent const *>(event)->globalPos(), ToToolTip(m_text), this);
        return true;
    }
    return QFrame::event(event);
}

} // namespace zelvar::platform
