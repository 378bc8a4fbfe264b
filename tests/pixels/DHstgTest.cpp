#include "zelvar/pixels/DHstg.h"

#include "support/Test.h"

#include <random>

namespace zelvar {
namespace {

/// Counts by comparing each value with each edge.
std::vector<int> BruteForce(DHstg const &edges, std::vector<double> const &values) {
    std::vector<int> counts(static_cast<std::size_t>(edges.m_numSlot));
    for (double const value : values) {
        if (!(value >= edges.m_minimum && value <= edges.m_maximum))
            continue;
        int slot = edges.m_numSlot - 1;
        while (edges.GetSlotClss(slot) > value)
            --slot;
        ++counts[static_cast<std::size_t>(slot)];
    }
    return counts;
}

std::vector<int> CountsOf(DHstg const &histogram) {
    std::vector<int> counts;
    for (int i = 0; i < histogram.m_numSlot; ++i)
        counts.push_back(histogram.GetSlotVal(i));
    return counts;
}

template <class Sample>
class DHstgOf : public testing::Test {};
using Samples =
    testing::Types<std::uint8_t, std::int8_t, std::uint16_t, std::int16_t, std::uint32_t, std::int32_t, float, double>;
TYPED_TEST_SUITE(DHstgOf, Samples);

TYPED_TEST(DHstgOf, CountsAsComparingWithEveryEdgeDoes) {
    using Limits = std::numeric_limits<TypeParam>;
    std::mt19937_64 random(3);
    std::vector<TypeParam> samples;
    std::vector<double> values;
    TypeParam const none{7};
    double const nodata = 7;
    for (int i = 0; i < 20'000; ++i) {
        double const share = static_cast<double>(random() % 1'000'003) / 1'000'003;
        TypeParam sample = static_cast<TypeParam>(std::is_integral_v<TypeParam> && sizeof(TypeParam) < 4
                                                      ? static_cast<double>(Limits::min()) + share * 255
                                                      : std::floor(share * 1000) * 0.1);
        if (i % 100 == 0)
            sample = none;
        if (i % 1000 == 1)
            sample = Limits::has_quiet_NaN ? Limits::quiet_NaN() : sample;
        if (i % 1000 == 2)
            sample = Limits::has_infinity ? Limits::infinity() : sample;
        samples.push_back(sample);
        if (sample != none && std::isfinite(static_cast<double>(sample)))
            values.push_back(static_cast<double>(sample));
    }
    for (int const slots : {1, 3, 10, 1000}) {
        DHstg const histogram = DHstg::FromSamples<TypeParam>(samples, slots, &nodata);
        EXPECT_EQ(CountsOf(histogram), BruteForce(histogram, values)) << slots;
        EXPECT_EQ(histogram.GetHstgSum(), static_cast<int>(values.size()));
        EXPECT_EQ(histogram.m_minimum, *std::min_element(values.begin(), values.end()));
        double const most = *std::max_element(values.begin(), values.end());
        EXPECT_EQ(histogram.m_maximum > most, std::is_integral_v<TypeParam>);
        for (int i = 0; i < histogram.m_numSlot && std::is_integral_v<TypeParam>; ++i)
            EXPECT_EQ(histogram.GetSlotClss(i + 1) - histogram.GetSlotClss(i),
                      std::ceil((most - histogram.m_minimum + 1) / slots));
        DHstg part(slots, histogram.m_minimum, histogram.m_maximum / 2);
        part.AddSamples<TypeParam>(samples, &nodata);
        EXPECT_EQ(CountsOf(part), BruteForce(part, values)) << slots;
    }
    EXPECT_EQ((DHstg::FromSamples<TypeParam>({}, 4).m_numSlot), 0);
}

TEST(DHstg, SlotsOfWholeNumbersHoldAsManyOfThem) {
    std::vector<double> values;
    for (int i = 0; i < 2000; ++i)
        values.push_back(10 + i / 40);
    DHstg const whole = DHstg::FromSamples<double>(values, 32);
    EXPECT_EQ(CountsOf(whole), std::vector<int>(25, 80));
    EXPECT_EQ(whole.m_maximum, 60);
    values.push_back(10.5);
    EXPECT_EQ(DHstg::FromSamples<double>(values, 32).m_numSlot, 32);
    EXPECT_EQ(DHstg::FromSamples<float>(std::vector{3e38F, -3e38F, HUGE_VALF}, 7).m_numSlot, 7); // no longer told apart
    EXPECT_EQ(CountsOf(DHstg::FromSamples<std::uint32_t>(std::vector{0U, 4294967295U}, 2)), (std::vector{1, 1}));
}

TEST(DHstg, EveryEdgeBelongsToTheSlotThatItBegins) {
    for (auto const &[minimum, maximum] : {std::pair{0.0, 1.0},
                                           {0.1, 0.7},
                                           {-1e-300, 1e-300},
                                           {1e15, 1e15 + 10},
                                           {-1.7e308, 1.7e308},
                                           {0.0, 1e308},
                                           {3.0, 3.0}}) {
        DHstg const histogram(49, minimum, maximum);
        for (int i = 0; i < 49; ++i) {
            int const slot = histogram.GetSlotIndx(histogram.GetSlotClss(i));
            EXPECT_GE(slot, i);
            EXPECT_EQ(histogram.GetSlotClss(slot), histogram.GetSlotClss(i)) << i; // slots of no width are one
            EXPECT_TRUE(std::isfinite(histogram.GetSlotClss(i)));
            EXPECT_LE(histogram.GetSlotClss(i), histogram.GetSlotClss(i + 1));
        }
        EXPECT_EQ(histogram.GetSlotIndx(maximum), 48);
        EXPECT_EQ(histogram.GetSlotClss(49), maximum);
        EXPECT_EQ(histogram.GetSlotClss(50), maximum);
    }
}

TEST(DHstg, OddRangesHaveNoSlotsAndOddValuesNoPlace) {
    double const nan = std::nan("");
    for (DHstg const &odd :
         {DHstg(), DHstg(0, 0, 1), DHstg(-1, 0, 1), DHstg(3, 1, 0), DHstg(3, nan, 1), DHstg(3, 0, HUGE_VAL)}) {
        EXPECT_EQ(odd.m_numSlot, 0);
        EXPECT_EQ(odd.GetSlotIndx(0.5), -1);
        EXPECT_EQ(odd.GetSlotClss(0), 0);
        EXPECT_EQ(odd.GetMaxVal() + odd.GetHstgSum() + odd.GetSlotVal(0), 0);
    }
    DHstg const histogram(3, 0, 1);
    for (double const value : {nan, -0.1, 1.1, HUGE_VAL})
        EXPECT_EQ(histogram.GetSlotIndx(value), -1);
    EXPECT_EQ(histogram.GetSlotVal(-1) + histogram.GetSlotVal(3), 0);
}

} // namespace
} // namespace zelvar
