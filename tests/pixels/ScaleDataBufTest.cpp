#include "zelvar/pixels/ScaleDataBuf.h"

#include "support/Test.h"
#include "zelvar/pixels/ScaleKernels.h"

#include <random>

namespace zelvar {
namespace {

template <class Sample>
std::vector<unsigned char> BytesOf(std::vector<Sample> const &samples) {
    std::vector<unsigned char> bytes(samples.size() * sizeof(Sample));
    if (!bytes.empty())
        std::memcpy(bytes.data(), samples.data(), bytes.size());
    return bytes;
}

/// The reduction by its formula, one sample after the other, every value a double.
template <class Sample>
std::vector<unsigned char> Reference(std::vector<Sample> const &samples) {
    std::vector<unsigned char> out = BytesOf(samples);
    double min = 1e32;
    double max = -1e32;
    double sum = 0;
    double sumSq = 0;
    double zeros = 0;
    for (Sample const sample : samples) {
        auto const v = static_cast<double>(sample);
        min = v < min ? v : min;
        max = v > max ? v : max;
        if (v == 0)
            ++zeros;
        else
            sum += v, sumSq += v * v;
    }
    double const count = static_cast<double>(samples.size()) - (min == 0 ? zeros : 0);
    if (count == 0)
        return out;
    double const mean = sum / count;
    double const spread = 3 * std::sqrt((sumSq - sum * sum / count) / count);
    if (mean - spread > min)
        min = mean - spread;
    if (max > mean + spread)
        max = mean + spread;
    double const scale = 255.0 / (max - min);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        auto const v = static_cast<double>(samples[i]);
        if (!(max - min > 0.000001)) {
            if (v != 0)
                out[i] = 255;
        } else {
            out[i] = v < min ? 0 : v > max ? 255 : static_cast<unsigned char>((v - min) * scale);
        }
    }
    return out;
}

template <class Sample>
constexpr int kTypeOf = std::is_floating_point_v<Sample> ? 32
                                                         : (sizeof(Sample) == 1   ? 1
                                                            : sizeof(Sample) == 2 ? 2
                                                                                  : 8)
                                                               << (std::is_signed_v<Sample> ? 1 : 0);

template <class Sample>
std::vector<unsigned char> Scaled(std::vector<Sample> const &samples) {
    std::vector<unsigned char> bytes = BytesOf(samples);
    ScaleDataBuf(kTypeOf<Sample>, bytes.data(), static_cast<int>(samples.size()), 1);
    return bytes;
}

template <class Sample>
class ScaleDataBufOf : public testing::Test {};
using SampleTypes = testing::Types<std::uint8_t, std::uint16_t, std::int16_t, std::uint32_t, std::int32_t, float>;
TYPED_TEST_SUITE(ScaleDataBufOf, SampleTypes);

TYPED_TEST(ScaleDataBufOf, GivesWhatThePlainLoopGives) {
    std::mt19937 random(7);
    constexpr bool kSigned = std::numeric_limits<TypeParam>::is_signed;
    auto const max = static_cast<double>(std::min<double>(std::numeric_limits<TypeParam>::max(), 2e9));
    std::uniform_real_distribution<double> flat(kSigned ? -max : 0, max);
    std::uniform_real_distribution<double> share(0, 1);
    std::normal_distribution<double> bell(max / 3, max / 20);
    std::pair<char const *, std::function<double()>> const cases[] = {
        {"flat over the whole type", [&] { return flat(random); }},
        {"a bell with far outliers", [&] { return share(random) < 0.001 ? max : std::clamp(bell(random), 0.0, max); }},
        {"mostly no data", [&] { return share(random) < 0.9 ? 0 : std::clamp(bell(random), 0.0, max); }},
        {"two values", [&] { return share(random) < 0.5 ? 3 : 4; }},
        {"zeros and one value", [&] { return share(random) < 0.5 ? 0 : 77; }},
        {"extremes and the middle",
         [&] { return share(random) < 0.5   ? (kSigned ? -max : 0)
                      : share(random) < 0.5 ? 1e2
                                            : max; }},
        {"small negatives", [&] { return kSigned ? share(random) * 20 - 10 : share(random) * 20; }},
    };
    for (auto const &[name, next] : cases)
        for (std::size_t const size : {1U, 5U, 31U, 64U, 1000U, 70'001U, 1'300'003U}) {
            if (size > 100'000 && name != cases[0].first)
                continue; // large enough for threads
            SCOPED_TRACE(std::string(name) + ", " + std::to_string(size));
            std::vector<TypeParam> samples(size);
            for (TypeParam &sample : samples)
                sample = static_cast<TypeParam>(next());
            std::vector<unsigned char> const scaled = Scaled(samples);
            std::vector<unsigned char> const told = Reference(samples);
            if (sizeof(TypeParam) <= 2) {
                EXPECT_EQ(scaled, told);
                continue;
            }
            // The last digit of a sum may move what lies on a step; nothing else may differ.
            for (std::size_t i = 0; i < size; ++i)
                ASSERT_LE(std::abs(scaled[i] - told[i]), 1) << i;
        }
}

TYPED_TEST(ScaleDataBufOf, EveryInstructionSetGivesTheSameBytes) {
    std::mt19937 random(3);
    std::vector<TypeParam> samples(4099);
    for (TypeParam &sample : samples)
        sample = static_cast<TypeParam>(random() % 251);
    scale::Range const range{10.25, 200.75, 255.0 / (200.75 - 10.25)};
    auto const plain = scale::KernelFor<TypeParam>(Isa::Plain);
    scale::Statistics const expected = plain.gather(samples.data(), samples.size());
    std::vector<std::uint8_t> bytes(samples.size());
    plain.map(samples.data(), bytes.data(), samples.size(), range);
    for (Isa const isa : {Isa::Avx2, Isa::Avx512}) {
        if (!IsSupported(isa))
            continue;
        SCOPED_TRACE(static_cast<int>(isa));
        auto const kernel = scale::KernelFor<TypeParam>(isa);
        scale::Statistics const found = kernel.gather(samples.data(), samples.size());
        EXPECT_EQ(found.min, expected.min);
        EXPECT_EQ(found.max, expected.max);
        EXPECT_EQ(found.sum, expected.sum);
        EXPECT_EQ(found.sumSq, expected.sumSq);
        EXPECT_EQ(found.zeros, expected.zeros);
        std::vector<std::uint8_t> mapped(samples.size());
        kernel.map(samples.data(), mapped.data(), samples.size(), range);
        EXPECT_EQ(mapped, bytes);
    }
}

TYPED_TEST(ScaleDataBufOf, ZerosStayAsTheyAreAndAnotherConstantBecomes255) {
    std::vector<TypeParam> const zeros(1000);
    EXPECT_EQ(Scaled(zeros), BytesOf(zeros));
    auto bytes = Scaled(std::vector<TypeParam>(1000, TypeParam{42}));
    bytes.resize(1000);
    EXPECT_EQ(bytes, std::vector<unsigned char>(1000, 255));
}

TEST(ScaleDataBuf, ZerosKeepTheirBytesWhereOneValueIsLeft) {
    // 0x0102 lies as the bytes 2, 1: byte 1 belongs to the first sample and is the answer's place of the second.
    EXPECT_EQ(Scaled<std::uint16_t>({0x0102, 0, 0x0102}), (std::vector<unsigned char>{255, 1, 255, 0, 2, 1}));
    EXPECT_EQ(Scaled<std::uint8_t>({9, 0, 9}), (std::vector<unsigned char>{255, 0, 255}));
    // Where something lies below them zeros count as data.
    EXPECT_EQ(Scaled<std::int16_t>({-10, 0, 10}), (std::vector<unsigned char>{0, 127, 255, 0, 10, 0}));
}

TYPED_TEST(ScaleDataBufOf, AGivenRangeIsSpreadAndAnEmptyOneIsWhite) {
    std::vector<TypeParam> const samples{0, 10, 20, 29, 30, 99};
    for (double const max : {30.0, 10.0}) {
        std::vector<unsigned char> bytes = BytesOf(samples);
        ScaleDataBufTo(kTypeOf<TypeParam>, bytes.data(), 6, 1, 10, max);
        bytes.resize(6);
        EXPECT_EQ(bytes, max == 30 ? (std::vector<unsigned char>{0, 0, 127, 242, 255, 255})
                                   : std::vector<unsigned char>(6, 255));
    }
}

TEST(ScaleDataBuf, WhatIsNotANumberNeverEscapesTheBytes) {
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    constexpr float kInf = std::numeric_limits<float>::infinity();
    for (std::size_t const size : {3U, 64U, 100U}) {
        std::vector<float> samples(size, 5.0F);
        samples[0] = kNan, samples[1] = 1.0F, samples[2] = kInf;
        EXPECT_EQ(Scaled(samples)[0], 0);
        samples[2] = 9.0F;
        EXPECT_EQ(Scaled(samples)[0], 0) << size;
        EXPECT_EQ(Scaled(samples)[2], 255) << size;
    }
}

TEST(ScaleDataBuf, UnknownTypesAndEmptySizesTouchNothing) {
    std::vector<unsigned char> bytes{1, 2, 3, 4};
    std::vector<unsigned char> const before = bytes;
    for (int const type : {0, 3, 64, -1})
        ScaleDataBuf(type, bytes.data(), 4, 1);
    ScaleDataBuf(1, bytes.data(), 0, 4);
    ScaleDataBuf(1, bytes.data(), 4, -1);
    ScaleDataBuf(1, nullptr, 4, 1);
    EXPECT_EQ(bytes, before);
}

} // namespace
} // namespace zelvar
