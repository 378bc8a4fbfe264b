#include "zelvar/layout/cdxCSizeIconCtrl.h"

#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/Pictures.h"

#include <QtGui/QMouseEvent>
#include <QtGui/QPainter>

namespace zelvar {

cdxCSizeIconCtrl::AutoOEMImageList const cdxCSizeIconCtrl::M_ilImage;
Qt::CursorShape const cdxCSizeIconCtrl::M_hcSize = Qt::SizeFDiagCursor;

void cdxCSizeIconCtrl::AutoOEMImageList::Draw(QPainter &painter, Point corner) const {
    painter.drawPixmap(corner.x - m_size.cx, corner.y - m_size.cy,
                       platform::ResourcePicture("size-grip", painter.device()->devicePixelRatioF(), m_size.cx));
}

cdxCSizeIconCtrl::cdxCSizeIconCtrl(bool hideIfZoomed) : QSizeGrip(nullptr), m_bHideIfZoomed(hideIfZoomed) {
    std::ignore = m_bCaptured;
}

bool cdxCSizeIconCtrl::Create(QWidget *parent, int id) {
    if (parent == nullptr)
        return false;
    hide();
    setParent(parent);
    window()->installEventFilter(this); // the base watches the window that it had when it was made: none
    platform::SetDlgCtrlID(*this, id);
    QSize const size = sizeHint();
    setGeometry(parent->width() - size.width(), parent->height() - size.height(), size.width(), size.height());
    return true;
}

QSize cdxCSizeIconCtrl::sizeHint() const { return {M_ilImage.GetSize().cx, M_ilImage.GetSize().cy}; }

bool cdxCSizeIconCtrl::IsShown() const {
    return parentWidget() != nullptr && !(m_bHideIfZoomed && window()->isMaximized());
}

void cdxCSizeIconCtrl::UpdateCursor() {
    if (IsShown())
        setCursor(M_hcSize);
    else
        unsetCursor();
}

void cdxCSizeIconCtrl::paintEvent(QPaintEvent * /*event*/) {
    if (!IsShown())
        return;
    QPainter painter(this);
    M_ilImage.Draw(painter, {width(), height()});
}

void cdxCSizeIconCtrl::mousePressEvent(QMouseEvent *event) {
    if (IsShown())
        QSizeGrip::mousePressEvent(event);
}

void cdxCSizeIconCtrl::mouseDoubleClickEvent(QMouseEvent *event) { event->accept(); }

void cdxCSizeIconCtrl::moveEvent(QMoveEvent *event) {
    QSizeGrip::moveEvent(event); // finds out the window's corner, and gives the cursor of any corner
    UpdateCursor();
}

bool cdxCSizeIconCtrl::eventFilter(QObject *watched, QEvent *event) {
    // The base would hide the grip of a maximised window altogether.
    if (watched == window() && event->type() == QEvent::WindowStateChange) {
        UpdateCursor();
        update();
    }
    return false;
}

} // namespace zelvar
