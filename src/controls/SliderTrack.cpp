#include "zelvar/controls/SliderTrack.h"

#include "zelvar/controls/ZelSliderCtrl.h"
#include "zelvar/platform/ui/Text.h"

#include <QtGui/QPainter>
#include <QtWidgets/QAccessibleWidget>
#include <QtWidgets/QStyle>
#include <QtWidgets/QStyleOptionSlider>

namespace zelvar {

namespace {

constexpr int kTick = 5; // pixels, high; those of the ends are higher
constexpr int kEndTick = 7;

class TrackAccessible final : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit TrackAccessible(SliderTrack &track) : QAccessibleWidget(&track, QAccessible::Slider) {}

    void *interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ValueInterface ? static_cast<QAccessibleValueInterface *>(this)
                                                   : QAccessibleWidget::interface_cast(type);
    }
    [[nodiscard]] QString text(QAccessible::Text kind) const override {
        if (kind == QAccessible::Value)
            return platform::ToQString(Control().GetPosText());
        QString const own = QAccessibleWidget::text(kind);
        return own.isEmpty() && kind == QAccessible::Name ? Control().accessibleName() : own;
    }
    [[nodiscard]] QVariant currentValue() const override { return Control().GetPos(); }
    void setCurrentValue(QVariant const &value) override { Control().SetPos(value.toDouble()); }
    [[nodiscard]] QVariant minimumValue() const override { return std::min(Control().GetFirst(), Control().GetLast()); }
    [[nodiscard]] QVariant maximumValue() const override { return std::max(Control().GetFirst(), Control().GetLast()); }
    [[nodiscard]] QVariant minimumStepSize() const override {
        return std::abs(Control().Scale().ValueAt(1) - Control().GetFirst());
    }

private:
    [[nodiscard]] ZelSliderCtrl &Control() const { return static_cast<SliderTrack *>(widget())->Control(); }
};

QAccessibleInterface *MakeInterface(QString const &, QObject *object) {
    auto *const track = qobject_cast<SliderTrack *>(object);
    return track == nullptr ? nullptr : new TrackAccessible(*track);
}

} // namespace

SliderTrack::SliderTrack(ZelSliderCtrl &control) : QSlider(Qt::Horizontal, &control), m_control(control) {
    static bool const installed = (QAccessible::installFactory(MakeInterface), true);
    static_cast<void>(installed);
}

int SliderTrack::CenterOf(int position) const {
    QStyleOptionSlider option;
    initStyleOption(&option);
    option.sliderPosition = position;
    QPoint const center = style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this).center();
    return IsUpright() ? center.y() : center.x();
}

int SliderTrack::TicksHeight() const { return m_control.Ticks().empty() ? 0 : kEndTick + 1; }

void SliderTrack::initStyleOption(QStyleOptionSlider *option) const {
    QSlider::initStyleOption(option);
    option->rect.setSize(option->rect.size() - TicksSize());
}

QSize SliderTrack::TicksSize() const { return IsUpright() ? QSize(TicksHeight(), 0) : QSize(0, TicksHeight()); }
QSize SliderTrack::sizeHint() const { return QSlider::sizeHint() + TicksSize(); }
QSize SliderTrack::minimumSizeHint() const { return QSlider::minimumSizeHint() + TicksSize(); }

void SliderTrack::paintEvent(QPaintEvent *event) {
    QPainter painter(this);
    painter.setPen(palette().color(isEnabled() ? QPalette::WindowText : QPalette::Mid));
    SliderScale const &scale = m_control.Scale();
    int const near = (IsUpright() ? width() : height()) - TicksHeight();
    for (double const tick : m_control.Ticks()) {
        int const at = CenterOf(scale.PositionOf(tick));
        bool const end = tick == scale.First() || tick == scale.Last();
        int const far = near + (end ? kEndTick : kTick) - 1;
        painter.drawLine(IsUpright() ? QLine(near, at, far, at) : QLine(at, near, at, far));
    }
    painter.end();
    QSlider::paintEvent(event);
}

} // namespace zelvar
