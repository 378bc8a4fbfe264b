#include "Patterns.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace sample {

namespace {

std::uint8_t ToByte(double value) { return static_cast<std::uint8_t>(std::clamp(value, 0.0, 255.0)); }

Color Mix(Color const &a, Color const &b, double share) {
    auto const part = [share](std::uint8_t x, std::uint8_t y) { return ToByte(x + (y - x) * share); };
    return {part(a.red, b.red), part(a.green, b.green), part(a.blue, b.blue)};
}

Color Shaded(Color const &color, double factor) {
    return {ToByte(color.red * factor), ToByte(color.green * factor), ToByte(color.blue * factor)};
}

} // namespace

double Terrain::Corner(int x, int y, int octave) const {
    std::uint32_t hash = m_seed * 0x9E3779B9U + static_cast<std::uint32_t>(x) * 0x85EBCA6BU +
                         static_cast<std::uint32_t>(y) * 0xC2B2AE35U + static_cast<std::uint32_t>(octave) * 0x27D4EB2FU;
    hash ^= hash >> 15U;
    hash *= 0x2C1B3C6DU;
    hash ^= hash >> 12U;
    hash *= 0x297A2D39U;
    hash ^= hash >> 15U;
    return hash / 4294967295.0;
}

double Terrain::At(double x, double y) const {
    double sum = 0;
    double total = 0;
    double weight = 1;
    double size = m_cell;
    for (int octave = 0; octave < m_octaves; ++octave, weight /= 2, size /= 2) {
        double const cellX = std::floor(x / size);
        double const cellY = std::floor(y / size);
        auto const smooth = [](double t) { return t * t * (3 - 2 * t); };
        double const shareX = smooth(x / size - cellX);
        double const shareY = smooth(y / size - cellY);
        int const left = static_cast<int>(cellX);
        int const top = static_cast<int>(cellY);
        double const upper = std::lerp(Corner(left, top, octave), Corner(left + 1, top, octave), shareX);
        double const lower = std::lerp(Corner(left, top + 1, octave), Corner(left + 1, top + 1, octave), shareX);
        sum += weight * std::lerp(upper, lower, shareY);
        total += weight;
    }
    return sum / total;
}

std::vector<std::uint16_t> MakeCells(int width, int height, int cells, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> share(0, 1);
    std::normal_distribution<double> noise(0, 25);
    Terrain const background(seed, 300, 2);
    std::vector<double> light(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            light[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)] =
                300 + 250 * background.At(x, y);
    for (int cell = 0; cell < cells; ++cell) {
        double const centreX = share(random) * width;
        double const centreY = share(random) * height;
        double const radius = 8 + 22 * share(random);
        double const squeeze = 0.7 + 0.6 * share(random);
        double const strength = 1500 + 9000 * share(random);
        int const reach = static_cast<int>(3 * radius);
        for (int y = std::max(0, static_cast<int>(centreY) - reach);
             y < std::min(height, static_cast<int>(centreY) + reach); ++y)
            for (int x = std::max(0, static_cast<int>(centreX) - reach);
                 x < std::min(width, static_cast<int>(centreX) + reach); ++x) {
                double const dx = (x - centreX) / radius / squeeze;
                double const dy = (y - centreY) / radius * squeeze;
                double const distance = dx * dx + dy * dy;
                double const nucleus = 0.6 * std::exp(-distance * 6);
                light[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)] +=
                    strength * (std::exp(-distance * distance * 1.5) * 0.6 + nucleus);
            }
    }
    std::vector<std::uint16_t> samples(light.size());
    std::transform(light.begin(), light.end(), samples.begin(), [&](double value) {
        return static_cast<std::uint16_t>(std::clamp(value + noise(random) * std::sqrt(value / 400), 0.0, 65535.0));
    });
    return samples;
}

std::vector<Color> MakeAerialView(int width, int height, unsigned seed) {
    Terrain const hills(seed, 260, 5);
    Terrain const woods(seed + 1, 120, 4);
    Terrain const grain(seed + 2, 5, 2);
    constexpr Color kFields[] = {{171, 166, 96}, {134, 158, 82}, {196, 178, 120}, {112, 139, 70}, {158, 132, 88}};
    std::vector<Color> pixels;
    pixels.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            double const bend = 60 * (woods.At(x * 0.4, y * 0.4) - 0.5);
            int const plotX = static_cast<int>(std::floor((x * 0.94 + y * 0.34 + bend) / 90));
            int const plotY = static_cast<int>(std::floor((y * 0.94 - x * 0.34 - bend) / 60));
            Color color = kFields[static_cast<std::size_t>((plotX * 7 + plotY * 13) % 5 + 5) % 5];
            double const shade = 0.8 + 0.35 * grain.At(x, y);
            if (woods.At(x, y) > 0.56)
                color = Mix(color, {46, 82, 44}, std::min((woods.At(x, y) - 0.56) * 18, 1.0));
            if (hills.At(x, y) < 0.34)
                color = {58, 92, 118};
            double const road = std::abs(y - height * 0.55 - 60 * std::sin(x / 170.0));
            if (road < 5)
                color = {176, 172, 166};
            pixels.push_back(Shaded(color, shade));
        }
    return pixels;
}

std::vector<Color> MakeEvening(int width, int height, unsigned seed) {
    Terrain const ridge(seed, width / 3.0, 6);
    Terrain const clouds(seed + 1, width / 4.0, 4);
    std::vector<Color> pixels;
    pixels.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            double const down = static_cast<double>(y) / height;
            Color color = Mix({46, 62, 110}, {250, 170, 96}, down * 1.4 > 1 ? 1 : down * 1.4);
            color = Mix(color, {255, 214, 180}, std::max(0.0, clouds.At(x, y * 3.0) - 0.5) * 1.2);
            for (int layer = 0; layer < 3; ++layer) {
                double const edge = 0.5 + 0.13 * layer + 0.22 * (ridge.At(x + 1000.0 * layer, 0) - 0.5);
                if (down > edge)
                    color = Mix({92, 74, 98}, {20, 22, 34}, layer / 2.0);
            }
            pixels.push_back(color);
        }
    return pixels;
}

std::uint8_t LandCoverOf(double height) {
    constexpr double kBorders[] = {0.40, 0.43, 0.54, 0.66, 0.76};
    return static_cast<std::uint8_t>(std::lower_bound(std::begin(kBorders), std::end(kBorders), height) -
                                     std::begin(kBorders));
}

} // namespace sample
