#include "zelvar/opends/CImgPreviewStatic.h"

#include "zelvar/drawing/DrawImgToDC.h"
#include "zelvar/platform/ui/SystemColor.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QEvent>
#include <QtGui/QPainter>

namespace zelvar {

CImgPreviewStatic::CImgPreviewStatic(QWidget *parent) : QLabel(parent) {
    setAccessibleName(platform::Shown("Preview"));
    setMinimumSize(1, 1);
}

QSize CImgPreviewStatic::sizeHint() const {
    constexpr int chars = 24;
    int const side = fontMetrics().averageCharWidth() * chars;
    return {side, side};
}

void CImgPreviewStatic::SetImgFile(char const *file) {
    m_imgFile = file == nullptr ? "" : file;
    m_isDrawn = false;
    setAccessibleDescription(platform::ToQString(m_imgFile));
    update();
}

void CImgPreviewStatic::DrawItem(QPainter &painter) {
    QImage const &shown = m_surface.GetImage();
    bool const isFitting = m_surface.GetWidth() == width() && m_surface.GetHeight() == height() &&
                           shown.devicePixelRatio() == painter.device()->devicePixelRatioF();
    m_surface.Resize(&painter, width(), height());
    if (QPainter *const dc = m_isDrawn && isFitting ? nullptr : m_surface.GetDC(); dc != nullptr) {
        dc->fillRect(rect(), platform::ToQColor(platform::SystemColor(COLOR_BTNFACE)));
        if (!m_imgFile.empty())
            DrawImgToDC(m_imgFile.c_str(), dc, {1, 1, width() - 1, height() - 1});
        m_isDrawn = true;
    }
    m_surface.CopyTo(&painter, 0, 0);
}

void CImgPreviewStatic::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    DrawItem(painter);
}

void CImgPreviewStatic::changeEvent(QEvent *event) {
    QLabel::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        m_isDrawn = false;
        update();
    }
}

} // namespace zelvar
