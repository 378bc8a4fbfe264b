#pragma once

#include <QtWidgets/QSlider>

namespace zelvar {

class ZelSliderCtrl;

/// The groove and the thumb of a `ZelSliderCtrl`, with the ticks below them; to screen readers a slider with the
/// control's own values instead of positions.
class SliderTrack : public QSlider {
    Q_OBJECT

public:
    explicit SliderTrack(ZelSliderCtrl &control);

    [[nodiscard]] ZelSliderCtrl &Control() const { return m_control; }
    /// Column of the thumb's middle at a position.
    [[nodiscard]] int CenterOf(int position) const;
    [[nodiscard]] int TicksHeight() const; ///< 0 without ticks

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void initStyleOption(QStyleOptionSlider *option) const override;
    void paintEvent(QPaintEvent *event) override;

private:
    ZelSliderCtrl &m_control;
};

} // namespace zelvar
