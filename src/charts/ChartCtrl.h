#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/Geometry.h"
#include "zelvar/drawing/OffscreenSurface.h"
#include "zelvar/platform/ui/WindowMessage.h"

#include <QtWidgets/QWidget>

namespace zelvar {

struct ChartColors;

/// Posted by a chart to its parent when the user has picked something: by `CPlotCtrl` with a pointer to the point, by
/// `CHstgCtrl` without parameters. The number is the applications'.
ZELVAR_API extern const platform::MessageId WM_CHART_SELECTED;

/// What is measured at the selection, 0 without one, and where its axis begins and ends.
struct ChartValue {
    double value = 0;
    double least = 0;
    double most = 0;
};

/// A chart's window: a picture that is rendered when something has changed and otherwise only copied.
class ZELVAR_API ChartCtrl : public QWidget {
    Q_OBJECT
public:
    explicit ChartCtrl(QWidget *parent = nullptr);
    ~ChartCtrl() override;

    /// What is selected, in words, for screen readers; empty for nothing.
    [[nodiscard]] virtual DString SelectionText() const = 0;
    [[nodiscard]] virtual ChartValue SelectionValue() const { return {}; }
    /// What the chart shows, in words.
    [[nodiscard]] virtual DString DescriptionText() const = 0;

protected:
    /// Draws all of the picture on a surface of the client's size that shows the colour of the ground.
    virtual void Render(OffscreenSurface &surface, ChartColors const &colors) = 0;

    /// The picture must be rendered again.
    void MarkDirty();

    [[nodiscard]] Size ClientSize() const { return {width(), height()}; }
    void NotifyParent(platform::MessageParam first);
    /// Tells screen readers that the selection is another.
    void AnnounceSelection();

    void changeEvent(QEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    OffscreenSurface m_surface;
    bool m_dirty = true;
    bool m_showsFocus = false; ///< the focus came by key
};

/// A rectangle around the client area in the colour of lines, one pixel wide.
void DrawChartFrame(QPainter &painter, Size client, ChartColors const &colors);

} // namespace zelvar
