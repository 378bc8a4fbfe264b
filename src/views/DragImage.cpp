#include "zelvar/views/DragImage.h"

#include <QtGui/QPainter>

namespace zelvar {

namespace {

class PictureOverlay : public QWidget {
public:
    PictureOverlay(QWidget &window, QPixmap const &picture) : QWidget(&window), m_picture(picture) {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setFocusPolicy(Qt::NoFocus);
        resize((QSizeF(picture.size()) / picture.devicePixelRatio()).toSize());
    }

protected:
    void paintEvent(QPaintEvent *) override {
        constexpr double shineThrough = 0.7;
        QPainter painter(this);
        painter.setOpacity(shineThrough);
        painter.drawPixmap(0, 0, m_picture);
    }

private:
    QPixmap m_picture;
};

} // namespace

void DragImage::DragEnter(QWidget &window, Point point) {
    if (m_overlay.isNull() || m_overlay->parentWidget() != &window) {
        delete m_overlay;
        m_overlay = new PictureOverlay(window, m_picture);
    }
    DragMove(point);
    m_overlay->show();
    m_overlay->raise();
}

void DragImage::DragMove(Point point) {
    if (!m_overlay.isNull())
        m_overlay->move(point.x - m_hotSpot.x, point.y - m_hotSpot.y);
}

void DragImage::DragLeave() {
    if (!m_overlay.isNull())
        m_overlay->hide();
}

void DragImage::EndDrag() { delete m_overlay; }

} // namespace zelvar
