#include "zelvar/pixels/RowResampler.h"

#include "support/Test.h"

#include <cstdint>
#include <random>

namespace zelvar {
namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

template <class Sample>
struct Plane {
    std::vector<Sample> samples;
    ResampleArea area;
    std::vector<std::uint8_t> mask = {};
};
template <class Sample>
Plane<Sample> WholePlane(int width, int height, std::vector<Sample> samples) {
    return {std::move(samples),
            {.width = width,
             .height = height,
             .windowWidth = static_cast<double>(width),
             .windowHeight = static_cast<double>(height)}};
}

template <class Sample>
std::vector<Sample> Resampled(Plane<Sample> plane, MixingKernel kernel, double nodata, int width, int height) {
    plane.area.outWidth = width;
    plane.area.outHeight = height;
    std::vector<Sample> out(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    out.resize(out.size() * static_cast<std::size_t>(plane.area.channels));
    RowResampler<Sample> resampler(plane.area, kernel, nodata, out.data());
    for (int y = 0; y < plane.area.height; ++y)
        resampler.AddRow(plane.samples.data() + y * plane.area.width * plane.area.channels,
                         plane.mask.empty() ? nullptr : plane.mask.data() + y * plane.area.width);
    return out;
}

TEST(RowResampler, TheSameSizeGivesTheSameSamples) {
    std::vector<std::uint32_t> const samples{0, 4'294'967'295U, 4'294'967'294U, 7, 16'777'217U, 3'000'000'001U};
    for (MixingKernel const kernel : {MixingKernel::Bilinear, MixingKernel::Cubic})
        EXPECT_EQ(Resampled(WholePlane<std::uint32_t>(3, 2, samples), kernel, kNone, 3, 2), samples);
}

TEST(RowResampler, AConstantStaysAConstantAtAnySize) {
    Plane<std::uint8_t> const plane = WholePlane<std::uint8_t>(7, 5, std::vector<std::uint8_t>(35, 201));
    for (MixingKernel const kernel : {MixingKernel::Bilinear, MixingKernel::Cubic})
        for (int const size : {1, 2, 5, 7, 30})
            EXPECT_EQ(Resampled(plane, kernel, kNone, size, size),
                      std::vector<std::uint8_t>(static_cast<std::size_t>(size) * static_cast<std::size_t>(size), 201));
}

TEST(RowResampler, OvershootIsCutToTheType) {
    std::vector<std::uint8_t> const edge{0, 0, 0, 255, 255, 255};
    auto const cubic = Resampled(WholePlane<std::uint8_t>(6, 1, edge), MixingKernel::Cubic, kNone, 24, 1);
    EXPECT_EQ(cubic.front(), 0);
    EXPECT_EQ(cubic.back(), 255);
    EXPECT_TRUE(std::is_sorted(cubic.begin(), cubic.end()));
    auto const bilinear = Resampled(WholePlane<std::int16_t>(2, 1, {-100, 100}), MixingKernel::Bilinear, kNone, 4, 1);
    EXPECT_EQ(bilinear, (std::vector<std::int16_t>{-100, -50, 50, 100}));
}

TEST(RowResampler, ReducingIsTheMeanOfWhatIsUnderAResult) {
    std::vector<float> stripes;
    stripes.reserve(64);
    for (int i = 0; i < 64; ++i)
        stripes.push_back(i % 2 == 0 ? 0.0F : 10.0F);
    for (float const sample : Resampled(WholePlane<float>(64, 1, stripes), MixingKernel::Cubic, kNone, 16, 1))
        EXPECT_NEAR(sample, 5.0F, 0.6F);
}

TEST(RowResampler, NodataDoesNotBleedIntoItsNeighbours) {
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

TEST(RowResampler, ReducingByFarAveragesAndLeavesOutWhatDoesNotCount) {
    std::mt19937 random(5);
    constexpr int kWidth = 1003; // the last column is an average of fewer
    for (bool const isMasked : {false, true})
        for (int const size : {11, 90, 300}) {
            Plane<std::uint16_t> plane = WholePlane<std::uint16_t>(kWidth, 900, {});
            for (int i = 0; i < kWidth * 900; ++i) {
                bool const isOut = i < kWidth * 450 || random() % 4 == 0;
                plane.samples.push_back(static_cast<std::uint16_t>(isOut && !isMasked ? 65535 : 100 + i % kWidth));
                plane.mask.push_back(i < kWidth * 450 ? 0 : 1);
            }
            if (!isMasked)
                plane.mask.clear();
            auto const out = Resampled(plane, MixingKernel::Cubic, 65535, size, size);
            for (int i = 0; i < size * size; ++i) {
                auto const sample = static_cast<double>(out[static_cast<std::size_t>(i)]);
                int const y = i / size - size / 2; // the edge of a mask is soft
                if (y < -2) {
                    ASSERT_EQ(sample, 0) << i;
                } else if (y > 2 && sample != 0) { // hardly reduced, the nearest one may be none
                    ASSERT_NEAR(sample, 100 + (i % size + 0.5) * kWidth / size, 14) << i;
                }
            }
        }
}

TEST(RowResampler, ChannelsSideBySideAreWhatEachIsAlone) {
    std::mt19937 random(6);
    for (int const width : {20, 130, 2000}) {
        Plane<float> all = WholePlane<float>(width, 60, {});
        all.area.channels = 3;
        Plane<float> each[] = {WholePlane<float>(width, 60, {}), WholePlane<float>(width, 60, {}),
                               WholePlane<float>(width, 60, {})};
        for (int i = 0; i < width * 60 * 3; ++i) {
            all.samples.push_back(static_cast<float>(i < width * 40 ? random() % 9 : random() % 8));
            each[i % 3].samples.push_back(all.samples.back());
        }
        auto const together = Resampled(all, MixingKernel::Cubic, 8, 70, 33);
        for (std::size_t channel = 0; channel < 3; ++channel)
            EXPECT_EQ(Resampled(each[channel], MixingKernel::Cubic, 8, 70, 33),
                      std::vector<float>(together.begin() + static_cast<std::ptrdiff_t>(channel * 70 * 33),
                                         together.begin() + static_cast<std::ptrdiff_t>((channel + 1) * 70 * 33)));
    }
}

TEST(RowResampler, AWindowIsReadWhereItStands) {
    Plane<float> plane = WholePlane<float>(10, 1, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
    plane.area.windowX = 3.5;
    plane.area.windowWidth = 4;
    auto const out = Resampled(plane, MixingKernel::Bilinear, kNone, 4, 1);
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_NEAR(out[i], 3.5F + static_cast<float>(i), 1e-5F);
}

} // namespace
} // namespace zelvar
