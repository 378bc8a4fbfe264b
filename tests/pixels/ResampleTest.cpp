#include "zelvar/pixels/Resample.h"

#include "support/Test.h"

#include <cstdint>

namespace zelvar {
namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

template <class Sample>
Plane<Sample> WholePlane(int width, int height, std::vector<Sample> samples) {
    return {std::move(samples), width, height, 0, 0, static_cast<double>(width), static_cast<double>(height)};
}

template <class Sample>
std::vector<Sample> Resampled(Plane<Sample> const &plane, MixingKernel kernel, double nodata, int width, int height) {
    std::vector<Sample> out(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    Resample(plane, kernel, nodata, out.data(), width, height);
    return out;
}

TEST(Resample, TheSameSizeGivesTheSameSamples) {
    std::vector<std::uint32_t> const samples{0, 4'294'967'295U, 4'294'967'294U, 7, 16'777'217U, 3'000'000'001U};
    for (MixingKernel const kernel : {MixingKernel::Bilinear, MixingKernel::Cubic})
        EXPECT_EQ(Resampled(WholePlane<std::uint32_t>(3, 2, samples), kernel, kNone, 3, 2), samples);
}

TEST(Resample, AConstantStaysAConstantAtAnySize) {
    Plane<std::uint8_t> const plane = WholePlane<std::uint8_t>(7, 5, std::vector<std::uint8_t>(35, 201));
    for (MixingKernel const kernel : {MixingKernel::Bilinear, MixingKernel::Cubic})
        for (int const size : {1, 2, 5, 7, 30})
            EXPECT_EQ(Resampled(plane, kernel, kNone, size, size),
                      std::vector<std::uint8_t>(static_cast<std::size_t>(size) * static_cast<std::size_t>(size), 201));
}

TEST(Resample, OvershootIsCutToTheType) {
    std::vector<std::uint8_t> const edge{0, 0, 0, 255, 255, 255};
    auto const cubic = Resampled(WholePlane<std::uint8_t>(6, 1, edge), MixingKernel::Cubic, kNone, 24, 1);
    EXPECT_EQ(cubic.front(), 0);
    EXPECT_EQ(cubic.back(), 255);
    EXPECT_TRUE(std::is_sorted(cubic.begin(), cubic.end()));
    auto const bilinear = Resampled(WholePlane<std::int16_t>(2, 1, {-100, 100}), MixingKernel::Bilinear, kNone, 4, 1);
    EXPECT_EQ(bilinear, (std::vector<std::int16_t>{-100, -50, 50, 100}));
}

TEST(Resample, ReducingIsTheMeanOfWhatIsUnderAResult) {
    std::vector<float> stripes;
    stripes.reserve(64);
    for (int i = 0; i < 64; ++i)
        stripes.push_back(i % 2 == 0 ? 0.0F : 10.0F);
    for (float const sample : Resampled(WholePlane<float>(64, 1, stripes), MixingKernel::Cubic, kNone, 16, 1))
        EXPECT_NEAR(sample, 5.0F, 0.6F);
}

TEST(Resample, NodataDoesNotBleedIntoItsNeighbours) {
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    for (float const none : {-9999.0F, kNan, kInfinity}) {
        std::vector<float> samples(100, 8.0F);
        for (std::size_t i = 0; i < 100; i += 10)
            std::fill_n(samples.begin() + static_cast<std::ptrdiff_t>(i), 3, none);
        auto const out = Resampled(WholePlane<float>(10, 10, samples), MixingKernel::Cubic, -9999, 20, 20);
        for (std::size_t i = 0; i < out.size(); ++i)
            EXPECT_NEAR(out[i], i % 20 < 6 ? 0.0F : 8.0F, 1e-4F) << i;
    }
    auto const bytes = Resampled(WholePlane<std::uint8_t>(4, 1, {255, 255, 40, 40}), MixingKernel::Cubic, 255, 8, 1);
    EXPECT_EQ(bytes, (std::vector<std::uint8_t>{0, 0, 0, 0, 40, 40, 40, 40}));
}

TEST(Resample, AWindowIsReadWhereItStands) {
    Plane<float> plane = WholePlane<float>(10, 1, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
    plane.windowX = 3.5;
    plane.windowWidth = 4;
    auto const out = Resampled(plane, MixingKernel::Bilinear, kNone, 4, 1);
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_NEAR(out[i], 3.5F + static_cast<float>(i), 1e-5F);
}

} // namespace
} // namespace zelvar
