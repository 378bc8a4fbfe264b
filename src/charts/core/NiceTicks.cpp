#include "zelvar/charts/core/NiceTicks.h"

#include <algorithm>
#include <cmath>

namespace zelvar {

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
    return std::isfinite(axis.minimum) && std::isfinite(axis.maximum) ? axis : NiceAxis{minimum, maximum, step};
}

} // namespace zelvar
