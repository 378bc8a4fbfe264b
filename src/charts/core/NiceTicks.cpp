#include "zelvar/charts/core/NiceTicks.h"

#include <algorithm>
#include <cmath>

namespace zelvar {

namespace {

/// Sums of a step may pass the maximum by their roundings; the last mark stands on it all the same.
NiceAxis Reached(NiceAxis axis) {
    constexpr int mostMarks = 1000;
    double at = axis.minimum;
    for (int i = 0; i < mostMarks && at < axis.maximum - axis.step / 2; ++i)
        at += axis.step;
    if (at - axis.maximum < axis.step / 2)
        axis.maximum = std::max(axis.maximum, at);
    return axis;
}

bool AreMarksClear(NiceAxis const &axis, DString (*write)(double)) {
    constexpr int mostMarks = 1000;
    constexpr std::size_t longest = 9; // letters that have room beside the axis
    DString former;
    double at = axis.minimum;
    for (int i = 0; i < mostMarks && at <= axis.maximum; ++i, at += axis.step) {
        DString label = write(at);
        if (label == former || label.size() > longest)
            return false;
        former = std::move(label);
    }
    return true;
}

double PowerOfTenBelow(double number) { return number > 0 ? std::pow(10.0, std::floor(std::log10(number))) : 1; }

} // namespace

NiceAxis NiceAxisOver(double minimum, double maximum, int ticks) {
    if (!std::isfinite(minimum) || !std::isfinite(maximum) || maximum < minimum)
        return {};
    double const widest = std::max(std::abs(minimum), std::abs(maximum));
    constexpr double finest = 1e-12; // of the numbers themselves
    if (maximum - minimum <= widest * finest) {
        double const half = widest > 0 ? widest * 0.5 : 0.5;
        minimum -= half;
        maximum += half;
    }
    double const wanted = (maximum / 2 - minimum / 2) / std::max(1, ticks) * 2;
    double const power = std::pow(10.0, std::floor(std::log10(wanted)));
    double step = power * 10;
    for (double const factor : {1.0, 2.0, 5.0})
        if (factor * power >= wanted) {
            step = factor * power;
            break;
        }
    NiceAxis const axis{std::floor(minimum / step) * step, std::ceil(maximum / step) * step, step};
    return std::isfinite(axis.minimum) && std::isfinite(axis.maximum) ? Reached(axis)
                                                                      : NiceAxis{minimum, maximum, step};
}

NiceAxis AxisScale::Of(NiceAxis const &axis) const {
    return Reached({Of(axis.minimum), Of(axis.maximum), axis.step / factor});
}

DString AxisScale::Caption(DString const &text) const {
    DString shown = text;
    if (offset != 0)
        shown = Format(offset < 0 ? "(%s + %.12g)" : "(%s - %.12g)", text.c_str(), std::abs(offset));
    return factor == 1 ? shown : Format("%s / %g", shown.c_str(), factor);
}

AxisScale ScaleFor(NiceAxis const &axis, DString (*write)(double)) {
    double const largest = PowerOfTenBelow(std::max(std::abs(axis.minimum), std::abs(axis.maximum)));
    AxisScale const last{axis.minimum, PowerOfTenBelow(axis.step)};
    for (AxisScale const &scale : {AxisScale{}, {0, largest}, {axis.minimum, 1}})
        if (AreMarksClear(scale.Of(axis), write))
            return scale;
    return last;
}

} // namespace zelvar
