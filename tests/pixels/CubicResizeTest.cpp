#include "zelvar/pixels/CubicResize.h"

#include "support/Test.h"

#include <random>

namespace zelvar {
namespace {

DCanvas Canvas(int width, int height, std::function<ColorRef(unsigned, unsigned)> const &color) {
    DCanvas canvas;
    canvas.SetSize(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            canvas.SetPixel(x, y, color(static_cast<unsigned>(x), static_cast<unsigned>(y)));
    return canvas;
}
DCanvas Ramp(int width, int height) {
    return Canvas(width, height, [](unsigned x, unsigned y) { return Rgb(x, y, 77); });
}

TEST(CubicResize, ARampStaysARampWhenShrunkAndWhenEnlarged) {
    DCanvas const source = Ramp(200, 100);
    for (int const width : {50, 133, 400}) {
        DCanvas target;
        ResizeCubic(source, width, width / 2, target);
        ASSERT_EQ(target.GetWidth(), width);
        ASSERT_EQ(target.GetHeight(), width / 2);
        for (int x = width / 10; x < width * 9 / 10; ++x) {
            double const expected = (x + 0.5) * 200.0 / width - 0.5;
            EXPECT_NEAR(RedOf(target.GetPixel(x, width / 4)), expected, 1.0) << width << ' ' << x;
        }
        EXPECT_EQ(BlueOf(target.GetPixel(width / 2, width / 4)), 77U);
    }
}

TEST(CubicResize, NoSourcePixelIsPassedOverWhenShrinking) {
    DCanvas const source = Canvas(100, 100, [](unsigned x, unsigned y) { return (x + y) % 2 == 0 ? 0xFFFFFFU : 0U; });
    DCanvas target;
    ResizeCubic(source, 10, 10, target);
    EXPECT_NEAR(RedOf(target.GetPixel(5, 5)), 127.0, 3.0) << "the mean of a chequerboard";
}

TEST(CubicResize, EveryInstructionSetGivesTheSameBytes) {
    std::mt19937 random(9);
    auto const side = [&](unsigned most) { return 1 + static_cast<int>(random() % most); };
    for (int i = 0; i < 60; ++i) {
        DCanvas const source = Canvas(side(300), side(300), [&](unsigned, unsigned) { return random() & 0xFFFFFFU; });
        int const width = side(500);
        int const height = side(500);
        DCanvas plain;
        ResizeCubic(source, width, height, plain, Isa::Plain);
        for (Isa const isa : {Isa::Avx2, Isa::Avx512}) {
            DCanvas target;
            ResizeCubic(source, width, height, target, IsSupported(isa) ? isa : Isa::Plain);
            ASSERT_EQ(std::memcmp(target.Row(0), plain.Row(0), static_cast<std::size_t>(width * height) * 3), 0)
                << static_cast<int>(isa) << ": " << source.GetWidth() << " x " << source.GetHeight() << " to " << width
                << " x " << height;
        }
    }
}

TEST(CubicResize, OnePixelAndNothingAreNoSpecialCases) {
    DCanvas source = Ramp(1, 1);
    DCanvas target;
    ResizeCubic(source, 7, 3, target);
    EXPECT_EQ(target.GetPixel(6, 2), source.GetPixel(0, 0));
    ResizeCubic(source, 0, 3, target);
    EXPECT_FALSE(target.HasData());
    source.Clear();
    ResizeCubic(source, 5, 5, target);
    EXPECT_FALSE(target.HasData());
}

} // namespace
} // namespace zelvar
