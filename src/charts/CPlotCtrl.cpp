#include "zelvar/charts/CPlotCtrl.h"

#include "zelvar/base/Translation.h"
#include "zelvar/charts/ChartColors.h"
#include "zelvar/charts/PlotPainter.h"
#include "zelvar/charts/core/PlotSelection.h"

#include <QtGui/QKeyEvent>
#include <QtGui/QMouseEvent>
#include <QtGui/QPainter>

#include <algorithm>

namespace zelvar {

CPlotCtrl::CPlotCtrl(QWidget *parent) : ChartCtrl(parent) {}
CPlotCtrl::~CPlotCtrl() = default;

void CPlotCtrl::AddData(double x, double y, char const *label, char const *info) {
    auto const isText = [](char const *text) { return text != nullptr && *text != '\0'; };
    if (isText(label) || isText(info))
        m_texts.push_back({m_points.size(), label == nullptr ? "" : label, info == nullptr ? "" : info});
    m_points.push_back({x, y});
    m_range.maxX = x > m_range.maxX ? x : m_range.maxX;
    m_range.maxY = y > m_range.maxY ? y : m_range.maxY;
    MarkDirty();
}

void CPlotCtrl::Clear() {
    m_numCleared += m_points.size();
    m_points = {};
    m_texts.clear();
    m_handed.clear();
    MarkDirty();
}

void CPlotCtrl::DrawTitle(bool on) {
    constexpr int room = 10;
    m_margins.top += on ? room : -room;
    MarkDirty();
}

std::optional<std::size_t> CPlotCtrl::SelectedIndex() const {
    if (!m_selection || *m_selection < m_numCleared || *m_selection - m_numCleared >= m_points.size())
        return std::nullopt;
    return *m_selection - m_numCleared;
}

CPlotCtrl::DataPoint const *CPlotCtrl::GetSlctData() const {
    std::optional<std::size_t> const index = SelectedIndex();
    if (!index)
        return nullptr;
    auto const [at, isNew] = m_handed.try_emplace(*index);
    if (isNew) {
        PointTexts const *const texts = TextsOf(*index);
        at->second = {m_points[*index].x, m_points[*index].y, texts == nullptr ? "" : texts->label,
                      texts == nullptr ? "" : texts->info};
    }
    return &at->second;
}

CPlotCtrl::PointTexts const *CPlotCtrl::TextsOf(std::size_t index) const {
    auto const at = std::lower_bound(m_texts.begin(), m_texts.end(), index,
                                     [](PointTexts const &texts, std::size_t wanted) { return texts.index < wanted; });
    return at == m_texts.end() || at->index != index ? nullptr : &*at;
}

void CPlotCtrl::Select(std::optional<std::size_t> index) {
    m_selection = index ? std::optional<std::uint64_t>(m_numCleared + *index) : std::nullopt;
    MarkDirty();
    AnnounceSelection();
}

CPlotCtrl::DataPoint const *CPlotCtrl::SlctData(double x) {
    Select(PickPoint(Geometry(), m_points, x, SelectedIndex()));
    return GetSlctData();
}

void CPlotCtrl::SlctData(double x, double y) {
    static_cast<void>(y); // plays no part
    SlctData(x);
}

void CPlotCtrl::NotifyOf(DataPoint const *point) {
    if (point != nullptr)
        NotifyParent(reinterpret_cast<platform::MessageParam>(point));
}

void CPlotCtrl::mousePressEvent(QMouseEvent *event) {
    Point const place{event->pos().x(), event->pos().y()};
    PlotGeometry const geometry = Geometry();
    if (event->button() != Qt::LeftButton || !geometry.IsInPlot(place)) {
        ChartCtrl::mousePressEvent(event);
        return;
    }
    NotifyOf(SlctData(geometry.WndToDataX(place.x)));
}

void CPlotCtrl::keyPressEvent(QKeyEvent *event) {
    PlotStep step = PlotStep::Next;
    switch (event->key()) {
    case Qt::Key_Left:
        step = PlotStep::Previous;
        break;
    case Qt::Key_Right:
        break;
    case Qt::Key_Home:
        step = PlotStep::First;
        break;
    case Qt::Key_End:
        step = PlotStep::Last;
        break;
    default:
        ChartCtrl::keyPressEvent(event);
        return;
    }
    std::optional<std::size_t> const former = SelectedIndex();
    std::optional<std::size_t> const next = StepToPoint(m_points, step, former);
    if (!next || next == former)
        return;
    Select(next);
    NotifyOf(GetSlctData());
}

void CPlotCtrl::Render(OffscreenSurface &surface, ChartColors const &colors) {
    PlotGeometry const geometry = Geometry();
    QPainter &painter = *surface.GetDC();
    DrawChartFrame(painter, ClientSize(), colors);
    DrawPlotAxes(painter, geometry, colors);
    PlotTexts texts{m_title,
                    m_captionX,
                    m_captionY,
                    {},
                    geometry.TickMarksY(),
                    m_drawEveryXTick ? static_cast<int>(std::min<std::size_t>(m_points.size(), 1'000'000))
                                     : geometry.NumberOfXLabels(),
                    m_drawGrid};
    if (m_drawEveryXTick) {
        static DString const &none = *new DString;
        std::vector<DString const *> labels(m_points.size(), &none);
        for (PointTexts const &point : m_texts)
            labels[point.index] = &point.label;
        texts.ticksX = geometry.TickMarksAt(m_points, labels);
    } else {
        texts.ticksX = geometry.TickMarksX();
    }
    DrawPlotTickMarks(painter, geometry, texts, colors);
    DrawPlotData(surface, geometry, m_points, m_drawLine, SelectedIndex(), colors);
}

DString CPlotCtrl::SelectionText() const {
    DataPoint const *const point = GetSlctData();
    if (point == nullptr)
        return {};
    DString const place = Format(Translated("x %g, y %g"), point->x, point->y);
    return point->label.empty() ? place : point->label + ": " + place;
}

ChartValue CPlotCtrl::SelectionValue() const {
    DataPoint const *const point = GetSlctData();
    return {.value = point == nullptr ? 0 : point->y, .least = m_range.minY, .most = m_range.maxY};
}

DString CPlotCtrl::DescriptionText() const {
    DString const shown = Format(Translated("%zu points, x %g to %g, y %g to %g"), m_points.size(), m_range.minX,
                                 m_range.maxX, m_range.minY, m_range.maxY);
    return m_title.empty() ? shown : m_title + ": " + shown;
}

} // namespace zelvar
