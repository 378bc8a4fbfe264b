#include "zelvar/charts/ChartCtrl.h"

#include "zelvar/charts/ChartAccessible.h"
#include "zelvar/charts/ChartColors.h"
#include "zelvar/platform/ui/Announce.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QFile>
#include <QtGui/QCursor>
#include <QtGui/QFocusEvent>
#include <QtGui/QImageReader>
#include <QtGui/QMouseEvent>
#include <QtGui/QPainter>
#include <QtGui/QPixmap>

#include <optional>

namespace zelvar {

namespace {

constexpr int kSelectedNumber = 0x8065;

/// The cursor of the application's own file in the working directory, if it has one.
std::optional<QCursor> CursorFromFile() {
    QString const name = "arrow_r.cur";
    if (!QFile::exists(name))
        return std::nullopt;
    QPixmap const picture = QPixmap::fromImageReader(&*std::make_unique<QImageReader>(name));
    QFile file(name);
    constexpr qint64 hotSpotAt = 10;
    constexpr qint64 hotSpotSize = 4;
    if (picture.isNull() || !file.open(QIODevice::ReadOnly) || !file.seek(hotSpotAt))
        return std::nullopt;
    QByteArray const bytes = file.read(hotSpotSize);
    if (bytes.size() != hotSpotSize)
        return std::nullopt;
    auto const number = [&](int at) {
        return static_cast<int>(static_cast<unsigned char>(bytes[at])) |
               static_cast<int>(static_cast<unsigned char>(bytes[at + 1])) << 8;
    };
    return QCursor(picture, number(0), number(2));
}

} // namespace

platform::MessageId const WM_CHART_SELECTED = platform::RegisterMessage(kSelectedNumber);

ChartCtrl::ChartCtrl(QWidget *parent) : QWidget(parent) {
    ChartAccessible::Install();
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::StrongFocus);
    static std::optional<QCursor> const cursor = CursorFromFile();
    if (cursor)
        setCursor(*cursor);
}

ChartCtrl::~ChartCtrl() = default;

void ChartCtrl::MarkDirty() {
    m_dirty = true;
    update();
}

void ChartCtrl::NotifyParent(platform::MessageParam first) {
    platform::PostMessage(parentWidget(), WM_CHART_SELECTED, first);
}

void ChartCtrl::AnnounceSelection() {
    QAccessibleValueChangeEvent value(this, SelectionValue().value);
    platform::Announce(value);
    QAccessibleEvent words(this, QAccessible::DescriptionChanged);
    platform::Announce(words);
}

void ChartCtrl::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    bool const isOtherScreen = !m_surface.GetImage().isNull() &&
                               m_surface.GetImage().devicePixelRatio() != painter.device()->devicePixelRatioF();
    if (m_dirty || isOtherScreen) {
        m_surface.Resize(&painter, width(), height());
        if (QPainter *const surface = m_surface.GetDC(); surface != nullptr) {
            ChartColors const colors = ChartColors::Current();
            surface->fillRect(rect(), colors.ground);
            Render(m_surface, colors);
        }
        m_dirty = false;
    }
    m_surface.CopyTo(&painter, 0, 0);
    if (m_showsFocus) {
        painter.setPen(palette().color(QPalette::Highlight));
        painter.drawRect(rect().adjusted(1, 1, -2, -2));
    }
}

void ChartCtrl::changeEvent(QEvent *event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        MarkDirty();
}

// The first press of two quick ones has picked; the second would let go of it.
void ChartCtrl::mouseDoubleClickEvent(QMouseEvent *event) { event->setAccepted(event->button() == Qt::LeftButton); }

void ChartCtrl::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    MarkDirty();
}

void ChartCtrl::focusInEvent(QFocusEvent *event) {
    m_showsFocus = event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason ||
                   event->reason() == Qt::ShortcutFocusReason;
    update();
}

void ChartCtrl::focusOutEvent(QFocusEvent *) {
    m_showsFocus = false;
    update();
}

void DrawChartFrame(QPainter &painter, Size client, ChartColors const &colors) {
    painter.setPen(QPen(colors.ink, 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(0, 0, client.cx - 1, client.cy - 1);
}

} // namespace zelvar
