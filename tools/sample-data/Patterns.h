#pragma once

#include <cstdint>
#include <vector>

namespace sample {

/// Smooth noise from 0 to 1, the same for the same seed: hills of about `cell` pixels, with finer ones upon them.
class Terrain {
public:
    Terrain(unsigned seed, double cell, int octaves) : m_seed(seed), m_cell(cell), m_octaves(octaves) {}
    [[nodiscard]] double At(double x, double y) const;

private:
    [[nodiscard]] double Corner(int x, int y, int octave) const;
    unsigned m_seed;
    double m_cell; ///< pixels
    int m_octaves;
};

/// A picture of glowing cells as a microscope gives it: bright blobs with darker rims over an uneven background, and
/// the camera's noise. 16 bits.
[[nodiscard]] std::vector<std::uint16_t> MakeCells(int width, int height, int cells, unsigned seed);

struct Color {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
};
/// Fields, woods, water and a road from above.
[[nodiscard]] std::vector<Color> MakeAerialView(int width, int height, unsigned seed);
/// A sky with hills at evening.
[[nodiscard]] std::vector<Color> MakeEvening(int width, int height, unsigned seed);

/// Classes of land cover by height: 0 water, 1 sand, 2 meadow, 3 wood, 4 rock, 5 snow.
[[nodiscard]] std::uint8_t LandCoverOf(double height);
inline constexpr Color kLandCoverColors[] = {{52, 101, 164}, {233, 214, 152}, {138, 190, 92},
                                             {58, 118, 62},  {128, 116, 108}, {245, 245, 248}};

} // namespace sample
