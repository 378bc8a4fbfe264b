#pragma once

#include <vector>

namespace zelvar {

/// The values along a slider: whole positions from 0 to `Positions()` on one side, values from `First()` to `Last()`,
/// which may be the smaller one, on the other. Both ends are exact.
class SliderScale {
public:
    SliderScale() = default;
    /// A `step` above 0 allows only values that many steps from the first one, and the last; 0 allows all. A
    /// logarithmic scale gives each tenfold the same room; it stays linear if it cannot be had, where an end is 0 or
    /// the ends differ in sign.
    SliderScale(double first, double last, double step, bool logarithmic);

    [[nodiscard]] double First() const { return m_first; }
    [[nodiscard]] double Last() const { return m_last; }
    [[nodiscard]] bool IsLogarithmic() const { return m_logarithmic; }
    /// The last position; 0 if both ends are the same.
    [[nodiscard]] int Positions() const { return m_positions; }
    /// Where a value stands, from 0 to 1.
    [[nodiscard]] double ShareOf(double value) const;
    [[nodiscard]] int PositionOf(double value) const;
    [[nodiscard]] double ValueAt(int position) const;
    /// The nearest value that is allowed.
    [[nodiscard]] double Snapped(double value) const;
    /// `lines` of size `line` nearer to the last value (to the first for a negative number); a logarithmic scale has a
    /// hundred lines, whatever their size. Moves by a step at least and stops at the ends.
    [[nodiscard]] double Moved(double value, double line, int lines) const;
    /// Both ends and what lies `distance` apart between them, or the powers of ten of a logarithmic scale; the ends
    /// alone if that is more than can be told apart.
    [[nodiscard]] std::vector<double> Ticks(double distance) const;

private:
    [[nodiscard]] double Tidy(double value) const;

    double m_first = 0;
    double m_last = 100;
    double m_step = 1;
    bool m_logarithmic = false;
    bool m_stepped = true; ///< a position a step
    int m_positions = 100;
};

} // namespace zelvar
