#include "zelvar/opends/ImagePreviewWnd.h"

#include "zelvar/layout/cdxCDynamicDialog.h"
#include "zelvar/pixels/CubicResize.h"
#include "zelvar/platform/ui/PaletteColors.h"
#include "zelvar/platform/ui/Reading.h"
#include "zelvar/platform/ui/Text.h"

#include <QtGui/QCloseEvent>
#include <QtGui/QKeyEvent>
#include <QtGui/QMouseEvent>
#include <QtGui/QPainter>

#include <algorithm>
#include <cmath>

namespace zelvar {

namespace {

constexpr int kReparentTries = 4;

/// The nearest dialog above `widget`: the one that the picture is lifted over.
QWidget *HostDialog(QWidget *widget) {
    while (widget != nullptr && qobject_cast<cdxCDynamicDialog *>(widget) == nullptr)
        widget = widget->parentWidget();
    return widget;
}

QImage ToImage(DCanvas const &canvas) {
    if (!canvas.HasData())
        return {};
    return {canvas.Row(0), canvas.GetWidth(), canvas.GetHeight(), qsizetype{3} * canvas.GetWidth(),
            QImage::Format_RGB888};
}

} // namespace

ImagePreviewWnd::ImagePreviewWnd(QWidget *parent) : QWidget(parent) {
    setFocusPolicy(Qt::ClickFocus);
    setAccessibleName(platform::Shown("Preview"));
    CreateDefaultDC();
}

void ImagePreviewWnd::ShowCanvas() {
    m_mode = ModeCanvas;
    Redraw();
}

void ImagePreviewWnd::Clear(Mode mode) {
    m_mode = mode;
    CreateDefaultDC();
    update();
}

QRect ImagePreviewWnd::PictureRect() const {
    if (!m_memValid || m_mode != ModeCanvas)
        return {};
    return {(width() - m_memWidth) / 2, (height() - m_memHeight) / 2, m_memWidth, m_memHeight};
}

void ImagePreviewWnd::Redraw() {
    if (m_mode == ModeCanvas)
        CreateMemoryDC();
    else
        CreateDefaultDC();
    update();
}

void ImagePreviewWnd::CreateDefaultDC() {
    m_memValid = false;
    m_memWidth = width();
    m_memHeight = height();
    m_memBitmap = QPixmap(size() * devicePixelRatioF());
    m_memBitmap.setDevicePixelRatio(devicePixelRatioF());
    m_memBitmap.fill(platform::Themed(Qt::white));
    if (!m_memBitmap.isNull()) {
        QPainter painter(&m_memBitmap);
        QFont italic = font();
        italic.setItalic(true);
        painter.setFont(italic);
        painter.setPen(platform::Themed(Qt::black));
        QString const text =
            m_mode == ModeWaiting ? platform::Shown("Please wait...") : platform::Shown("Preview is not available");
        int const flags = platform::ReadingFlags(text, Qt::AlignCenter, layoutDirection());
        painter.drawText(rect(), flags | Qt::TextSingleLine, text);
        setAccessibleDescription(text);
    }
    m_memValid = true;
}

void ImagePreviewWnd::CreateMemoryDC() {
    if (!m_canvas.HasData() || width() < 1 || height() < 1)
        return;
    m_memValid = false;
    double const scale = std::min(static_cast<double>(width()) / m_canvas.GetWidth(),
                                  static_cast<double>(height()) / m_canvas.GetHeight());
    m_memWidth = static_cast<int>(m_canvas.GetWidth() * scale);
    m_memHeight = static_cast<int>(m_canvas.GetHeight() * scale);
    DCanvas target;
    ResizeCubic(m_canvas, static_cast<int>(std::lround(m_memWidth * devicePixelRatioF())),
                static_cast<int>(std::lround(m_memHeight * devicePixelRatioF())), target);
    m_memBitmap = QPixmap::fromImage(ToImage(target));
    m_memBitmap.setDevicePixelRatio(devicePixelRatioF());
    m_memValid = true;
    setAccessibleDescription(
        platform::Shown("Picture of %1 by %2 pixels").arg(m_canvas.GetWidth()).arg(m_canvas.GetHeight()));
}

void ImagePreviewWnd::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.fillRect(rect(), platform::Themed(Qt::white));
    if (m_memValid && m_memWidth >= 1 && m_memHeight >= 1)
        painter.drawPixmap((width() - m_memWidth) / 2, (height() - m_memHeight) / 2, m_memBitmap);
    if (IsLifted() && !m_note.isEmpty())
        PaintNote(painter);
}

void ImagePreviewWnd::PaintNote(QPainter &painter) const {
    constexpr int kMargin = 6; // pixels
    QRect box(QPoint(), fontMetrics().size(Qt::TextSingleLine, m_note) + QSize(2 * kMargin, kMargin));
    box.moveBottomLeft(rect().bottomLeft());
    painter.fillRect(box, palette().color(QPalette::ToolTipBase));
    painter.setPen(palette().color(QPalette::ToolTipText));
    painter.drawText(box, Qt::AlignCenter | Qt::TextSingleLine, m_note);
}

void ImagePreviewWnd::SetNote(QString const &note) {
    m_note = note;
    if (IsLifted())
        update();
}

void ImagePreviewWnd::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    Redraw();
}

void ImagePreviewWnd::mousePressEvent(QMouseEvent *event) {
    if (event->button() != Qt::LeftButton)
        return;
    if (m_floatParent.isNull())
        ShowPreview();
    else
        HidePreview();
}

void ImagePreviewWnd::mouseMoveEvent(QMouseEvent *event) {
    QRect const picture = PictureRect();
    if (picture.contains(event->position().toPoint()))
        Q_EMIT Pointed((event->position().x() - picture.x()) / picture.width(),
                       (event->position().y() - picture.y()) / picture.height());
    else
        Q_EMIT Pointed(-1, -1);
}

void ImagePreviewWnd::leaveEvent(QEvent *event) {
    QWidget::leaveEvent(event);
    Q_EMIT Pointed(-1, -1);
}

void ImagePreviewWnd::keyPressEvent(QKeyEvent *event) {
    if (IsLifted() && event->key() == Qt::Key_Escape)
        HidePreview();
    else
        QWidget::keyPressEvent(event);
}

void ImagePreviewWnd::closeEvent(QCloseEvent *event) {
    // The desktop may close a lifted picture like any window; it goes back to its place instead of being gone.
    if (!IsLifted())
        return QWidget::closeEvent(event);
    event->ignore();
    HidePreview();
}

void ImagePreviewWnd::focusOutEvent(QFocusEvent *event) {
    QWidget::focusOutEvent(event);
    if (!m_moving)
        HidePreview();
}

bool ImagePreviewWnd::event(QEvent *event) {
    bool const leaves = event->type() == QEvent::WindowDeactivate || event->type() == QEvent::ApplicationDeactivate;
    if (leaves && !m_moving)
        HidePreview();
    if (event->type() == QEvent::FontChange || event->type() == QEvent::PaletteChange)
        Redraw();
    return QWidget::event(event);
}

void ImagePreviewWnd::ShowPreview() {
    QWidget *const parent = parentWidget();
    QWidget *const host = HostDialog(parent);
    if (host == nullptr)
        return;
    m_moving = true;
    m_homeRect = geometry();
    m_floatParent = parent;
    QRect const place(host->mapToGlobal(QPoint(0, 0)), host->size());
    // A window of its own, yet the dialog's: a modal dialog would keep the input from any other.
    for (int i = 0; i < kReparentTries && parentWidget() != host; ++i)
        setParent(host, Qt::Window | Qt::FramelessWindowHint);
    setGeometry(place);
    show();
    raise();
    activateWindow();
    setFocus();
    grabMouse();
    m_moving = false;
}

void ImagePreviewWnd::HidePreview() {
    if (m_floatParent.isNull())
        return;
    m_moving = true;
    QWidget *const home = m_floatParent;
    releaseMouse();
    for (int i = 0; i < kReparentTries && (parentWidget() != home || isWindow()); ++i)
        setParent(home, Qt::Widget);
    m_floatParent.clear();
    setGeometry(m_homeRect);
    show();
    m_moving = false;
}

} // namespace zelvar
