#include "zelvar/data/RDIWindow.h"

#include <algorithm>
#include <cmath>

namespace zelvar {

bool RDIWindow::IsSensible() const {
    constexpr double kFarthest = 1e10;
    return outWidth > 0 && outHeight > 0 && width > 0 && height > 0 && width < kFarthest && height < kFarthest &&
           std::abs(x) < kFarthest && std::abs(y) < kFarthest;
}

RDISpan RDISamplesInside(double offset, double size, int outSize, double begin, double end) {
    double const step = size / outSize;
    auto const sampleAt = [&](double position) {
        return static_cast<int>(
            std::clamp(std::ceil((position - offset) / step - 0.5), 0.0, static_cast<double>(outSize)));
    };
    return {sampleAt(begin), sampleAt(end)};
}

RDISpan RDICellsOf(double offset, double length, int size, int count) {
    auto const clamped = [count](double cell) {
        return static_cast<int>(std::clamp(cell, 0.0, static_cast<double>(count)));
    };
    return {clamped(std::floor(offset / size)), clamped(std::ceil((offset + length) / size))};
}

} // namespace zelvar
