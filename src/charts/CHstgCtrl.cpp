#include "zelvar/charts/CHstgCtrl.h"

#include "zelvar/base/Translation.h"
#include "zelvar/charts/ChartColors.h"
#include "zelvar/charts/ChartText.h"

#include <QtGui/QKeyEvent>
#include <QtGui/QMouseEvent>
#include <QtGui/QPainter>

#include <algorithm>

namespace zelvar {

namespace {

constexpr int kFont = 70; // tenths of a point

} // namespace

CHstgCtrl::CHstgCtrl(QWidget *parent) : ChartCtrl(parent) {}
CHstgCtrl::~CHstgCtrl() = default;

void CHstgCtrl::SetHstg(DHstg const *histogram) {
    m_histogram = histogram;
    MarkDirty();
}

void CHstgCtrl::SetMaxPerc(double share) {
    m_maxPerc = share;
    MarkDirty();
}

void CHstgCtrl::Select(int slot) {
    m_slctSlot = slot;
    NotifyParent(0);
    MarkDirty();
    AnnounceSelection();
}

void CHstgCtrl::mousePressEvent(QMouseEvent *event) {
    if (event->button() != Qt::LeftButton) {
        ChartCtrl::mousePressEvent(event);
        return;
    }
    int const slot = Geometry().SlotAt(event->pos().x());
    Select(slot == m_slctSlot ? -1 : slot);
}

void CHstgCtrl::keyPressEvent(QKeyEvent *event) {
    int const last = Geometry().NumSlots() - 1;
    int slot = m_slctSlot + 1;
    switch (event->key()) {
    case Qt::Key_Left:
        slot = m_slctSlot < 0 ? last : std::min(m_slctSlot - 1, last);
        break;
    case Qt::Key_Right:
        break;
    case Qt::Key_Home:
        slot = 0;
        break;
    case Qt::Key_End:
        slot = last;
        break;
    default:
        ChartCtrl::keyPressEvent(event);
        return;
    }
    if (last >= 0 && std::clamp(slot, 0, last) != m_slctSlot)
        Select(std::clamp(slot, 0, last));
}

void CHstgCtrl::Render(OffscreenSurface &surface, ChartColors const &colors) {
    if (m_autoScale)
        m_maxPerc = AutomaticShare(m_histogram);
    HistogramGeometry const geometry = Geometry();
    QPainter &painter = *surface.GetDC();
    painter.setFont(ChartFont("Arial", kFont));
    DrawChartFrame(painter, ClientSize(), colors);
    DrawAxes(painter, geometry, colors);
    DrawData(painter, geometry, colors);
}

void CHstgCtrl::DrawAxes(QPainter &painter, HistogramGeometry const &geometry, ChartColors const &colors) const {
    QPen pen(colors.ink, 2);
    pen.setCapStyle(Qt::SquareCap);
    pen.setJoinStyle(Qt::MiterJoin);
    painter.setPen(pen);
    int const left = geometry.GetHstgMinX();
    int const bottom = geometry.GetHstgMaxY();
    QPoint const path[] = {{left, geometry.GetHstgMinY() - 5}, {left, bottom}, {geometry.GetHstgMaxX(), bottom}};
    painter.drawPolyline(path, 3);

    painter.setPen(QPen(colors.ink, 1));
    for (TickMark const &mark : geometry.TickMarksY()) {
        painter.drawLine(left, mark.pixel, left - 5, mark.pixel);
        DrawLabel(painter, mark.label, mark.labelRect, LabelAlign::Center);
    }
    std::vector<std::pair<DString, Rect>> labels;
    for (TickMark const &mark : geometry.TickMarksX(m_drawText)) {
        painter.drawLine(mark.pixel, bottom, mark.pixel, bottom + 5);
        if (!mark.label.empty())
            labels.emplace_back(mark.label, mark.labelRect);
    }
    DrawLabelRow(painter, labels);
}

void CHstgCtrl::DrawData(QPainter &painter, HistogramGeometry const &geometry, ChartColors const &colors) const {
    if (m_histogram == nullptr)
        return;
    std::vector<std::pair<DString, Rect>> counts;
    for (int slot = 0; slot < geometry.NumSlots(); ++slot) {
        Rect const bar = geometry.BarRect(slot);
        painter.setPen(QPen(colors.ink, 1));
        painter.setBrush(colors.bar);
        painter.drawRect(bar.left, bar.top, std::max(0, bar.Width() - 1), std::max(0, bar.Height() - 1));
        if (slot == m_slctSlot)
            painter.fillRect(bar.left, bar.top, bar.Width(), bar.Height(), colors.selectedBar);
        if (m_drawFreq)
            counts.emplace_back(Format("%d", m_histogram->GetSlotVal(slot)), geometry.CountRect(slot));
    }
    painter.setPen(QPen(colors.ink, 1));
    DrawLabelRow(painter, counts);
    DrawLabel(painter, Format(Translated("Sum: %d"), m_histogram->GetHstgSum()), geometry.SumRect(), LabelAlign::Right);
}

DString CHstgCtrl::SelectionText() const {
    if (m_histogram == nullptr || m_slctSlot < 0 || m_slctSlot >= m_histogram->m_numSlot)
        return {};
    return Format(Translated("%g to %g: %d"), m_histogram->GetSlotClss(m_slctSlot),
                  m_histogram->GetSlotClss(m_slctSlot + 1), m_histogram->GetSlotVal(m_slctSlot));
}

ChartValue CHstgCtrl::SelectionValue() const {
    if (m_histogram == nullptr)
        return {};
    bool const isSlot = m_slctSlot >= 0 && m_slctSlot < m_histogram->m_numSlot;
    return {.value = isSlot ? static_cast<double>(m_histogram->GetSlotVal(m_slctSlot)) : 0.0,
            .most = static_cast<double>(m_histogram->GetHstgSum())};
}

DString CHstgCtrl::DescriptionText() const {
    if (m_histogram == nullptr)
        return Translated("no data");
    return Format(Translated("%d slots from %g to %g, %d values"), m_histogram->m_numSlot, m_histogram->m_minimum,
                  m_histogram->m_maximum, m_histogram->GetHstgSum());
}

} // namespace zelvar
