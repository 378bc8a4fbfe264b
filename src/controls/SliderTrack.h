#pragma once

#include <QtWidgets/QSlider>

namespace zelvar {

class ZelSliderCtrl;

/// The groove and the thumb of a `ZelSliderCtrl`, with the ticks below or beside them; to screen readers a slider with
/// the control's own values instead of positions.
class SliderTrack : public QSlider {
    Q_OBJECT

public:
    explicit SliderTrack(ZelSliderCtrl &control);

    [[nodiscard]] ZelSliderCtrl &Control() const { return m_control; }
    /// Column of the thumb's middle at a position; its row where the slider stands upright.
    [[nodiscard]] int CenterOf(int position) const;
    [[nodiscard]] int TicksHeight() const; ///< across the groove; 0 without ticks

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void initStyleOption(QStyleOptionSlider *option) const override;
    void paintEvent(QPaintEvent *event) override;

private:
    [[nodiscard]] bool IsUpright() const { return orientation() == Qt::Vertical; }
    [[nodiscard]] QSize TicksSize() const;

    ZelSliderCtrl &m_control;
};

} // namespace zelvar
