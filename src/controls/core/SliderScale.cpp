#include "zelvar/controls/core/SliderScale.h"

#include "zelvar/controls/core/NumberText.h"

#include <algorithm>
#include <cmath>

namespace zelvar {

namespace {

constexpr int kFreePositions = 1000; // of a scale without steps
constexpr double kMostPositions = 1e6;
constexpr int kMostTicks = 200;
constexpr double kLogLines = 100;

} // namespace

SliderScale::SliderScale(double first, double last, double step, bool logarithmic)
    : m_first(std::isfinite(first) ? first : 0), m_last(std::isfinite(last) ? last : m_first),
      m_step(step > 0 && std::isfinite(step) ? step : 0),
      m_logarithmic(logarithmic && m_first != m_last && m_first * (m_last < 0 ? -1 : 1) > 0 && m_last != 0) {
    double const steps = m_step > 0 ? std::ceil(std::abs(m_last / m_step - m_first / m_step) - 1e-9) : 0;
    m_stepped = m_step > 0 && !m_logarithmic && steps <= kMostPositions;
    if (m_first == m_last)
        m_positions = 0;
    else
        m_positions = m_stepped ? std::max(1, static_cast<int>(steps)) : kFreePositions;
}

double SliderScale::ShareOf(double value) const {
    if (m_first == m_last)
        return 0;
    double share = 0;
    if (!m_logarithmic)
        share = (value / 2 - m_first / 2) / (m_last / 2 - m_first / 2); // halves do not overflow
    else if (value * (m_first < 0 ? -1 : 1) > 0)
        share = (std::log(std::abs(value)) - std::log(std::abs(m_first))) /
                (std::log(std::abs(m_last)) - std::log(std::abs(m_first)));
    else
        share = std::abs(m_first) < std::abs(m_last) ? 0 : 1; // beyond the end that is nearer to zero
    return std::clamp(share, 0.0, 1.0);
}

int SliderScale::PositionOf(double value) const {
    double const share = ShareOf(value);
    if (share <= 0 || share >= 1)
        return share <= 0 ? 0 : m_positions;
    double const steps = m_stepped ? std::abs(value / m_step - m_first / m_step) : share * m_positions;
    return std::min(static_cast<int>(std::lround(steps)), m_positions);
}

double SliderScale::ValueAt(int position) const {
    if (position <= 0)
        return m_first;
    if (position >= m_positions)
        return m_last;
    double const share = static_cast<double>(position) / m_positions;
    if (m_logarithmic) {
        double const power = std::log(std::abs(m_first)) * (1 - share) + std::log(std::abs(m_last)) * share;
        return Snapped(Tidy(std::copysign(std::exp(power), m_first)));
    }
    if (m_stepped)
        return StepNumber(m_first, m_last < m_first ? -m_step : m_step, position);
    return Snapped(Tidy(m_first * (1 - share) + m_last * share));
}

double SliderScale::Snapped(double value) const {
    auto const [least, greatest] = std::minmax(m_first, m_last);
    double const within = std::clamp(std::isnan(value) ? m_first : value, least, greatest);
    if (m_step == 0 || within == m_last)
        return within;
    double const steps = std::round(std::abs(within / m_step - m_first / m_step));
    double const snapped = StepNumber(m_first, m_last < m_first ? -m_step : m_step, steps);
    // The last value may lie less than a step behind the one before.
    bool const lastIsNearer = std::abs(within - m_last) < std::abs(within - snapped);
    return lastIsNearer ? m_last : std::clamp(snapped, least, greatest);
}

double SliderScale::Moved(double value, double line, int lines) const {
    double const direction = m_last < m_first ? -1 : 1;
    double moved = StepNumber(value, line * direction, lines);
    if (m_logarithmic) {
        double const ratio = (std::log(std::abs(m_last)) - std::log(std::abs(m_first))) / kLogLines;
        moved = Tidy(value * std::exp(ratio * lines));
    }
    double const snapped = Snapped(moved);
    if (snapped != value || m_step == 0)
        return snapped;
    auto const [least, greatest] = std::minmax(m_first, m_last);
    return std::clamp(StepNumber(value, m_step * direction, lines < 0 ? -1 : 1), least, greatest);
}

std::vector<double> SliderScale::Ticks(double distance) const {
    std::vector<double> ticks{m_first};
    auto const [least, greatest] = std::minmax(m_first, m_last);
    if (m_logarithmic) {
        double const low = std::min(std::abs(m_first), std::abs(m_last));
        double const high = std::max(std::abs(m_first), std::abs(m_last));
        for (int power = static_cast<int>(std::floor(std::log10(low))) + 1; power < std::log10(high); ++power)
            if (double const tick = std::copysign(std::pow(10, power), m_first); std::abs(tick) > low)
                ticks.push_back(tick);
    } else if (distance > 0 && (greatest / 2 - least / 2) / distance * 2 <= kMostTicks) {
        for (int i = 1; i < std::ceil((greatest - least) / distance - 1e-9); ++i)
            ticks.push_back(StepNumber(m_first, m_last < m_first ? -distance : distance, i));
    }
    if (m_first != m_last)
        ticks.push_back(m_last);
    return ticks;
}

double SliderScale::Tidy(double value) const {
    // As many digits as positions can be told apart by, and one more.
    double const apart =
        m_logarithmic ? std::abs(value) / 1000 : std::abs(m_last / m_positions - m_first / m_positions);
    int const decimals = static_cast<int>(std::ceil(-std::log10(apart))) + (m_logarithmic ? 0 : 1);
    constexpr int mostDecimals = 15;
    return decimals > mostDecimals ? value : RoundNumber(value, std::max(decimals, 0));
}

} // namespace zelvar
