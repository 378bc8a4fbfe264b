#include "zelvar/layout/cdxCSizeIconCtrl.h"

#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/Pictures.h"

#include <QtGui/QMouseEvent>
#include <QtGui/QPainter>

namespace zelvar {

namespace {

constexpr int kSide = 16; // pixels

} // namespace

cdxCSizeIconCtrl::cdxCSizeIconCtrl(bool hideIfZoomed) : QSizeGrip(nullptr), m_bHideIfZoomed(hideIfZoomed) { hide(); }

bool cdxCSizeIconCtrl::Create(QWidget *parent, unsigned id) {
    if (parent == nullptr)
        return false;
    setParent(parent);
    platform::SetDlgCtrlID(*this, static_cast<int>(id));
    setGeometry(parent->width() - kSide, parent->height() - kSide, kSide, kSide);
    parent->window()->installEventFilter(this);
    return true;
}

bool cdxCSizeIconCtrl::IsActive() const {
    return parentWidget() != nullptr && !(m_bHideIfZoomed && window()->isMaximized());
}

void cdxCSizeIconCtrl::ShowCursor() {
    if (IsActive())
        setCursor(Qt::SizeFDiagCursor);
    else
        unsetCursor();
}

void cdxCSizeIconCtrl::showEvent(QShowEvent *event) {
    QSizeGrip::showEvent(event);
    ShowCursor();
}

bool cdxCSizeIconCtrl::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() == QEvent::WindowStateChange) {
        ShowCursor();
        update();
    }
    return QSizeGrip::eventFilter(watched, event);
}

void cdxCSizeIconCtrl::paintEvent(QPaintEvent *) {
    if (!IsActive())
        return;
    QPainter painter(this);
    painter.drawPixmap(width() - kSide, height() - kSide,
                       platform::ResourcePicture("size-grip", devicePixelRatioF(), kSide));
}

void cdxCSizeIconCtrl::mousePressEvent(QMouseEvent *event) {
    if (IsActive())
        QSizeGrip::mousePressEvent(event);
}

void cdxCSizeIconCtrl::mouseDoubleClickEvent(QMouseEvent *event) { event->accept(); }

} // namespace zelvar
