#include "zelvar/pixels/MixKernels.h"

#include "support/Test.h"

#include <random>

namespace zelvar::mix {
namespace {

struct EachIsa : testing::TestWithParam<Isa> {
    void SetUp() override {
        if (!IsSupported(GetParam()))
            GTEST_SKIP() << "not on this processor";
    }
    template <class Sample>
    std::vector<Sample> Samples(std::size_t count) {
        std::vector<Sample> samples(count);
        for (Sample &sample : samples)
            sample = static_cast<Sample>(static_cast<Sample>(m_random()) / (std::is_floating_point_v<Sample> ? 7 : 1));
        return samples;
    }
    template <class Sample>
    void CompareRows() {
        auto const &plain = std::get<RowKernels<Sample>>(KernelsOf(Isa::Plain));
        auto const &kernels = std::get<RowKernels<Sample>>(KernelsOf(GetParam()));
        for (std::size_t length = 0; length < 130; length += 1 + length / 20) {
            auto const samples = Samples<Sample>(length);
            std::vector<MixedAs<Sample>> expected(length);
            std::vector<MixedAs<Sample>> sums(length);
            plain.set(samples.data(), length, expected.data()), plain.add(samples.data(), length, expected.data());
            kernels.set(samples.data(), length, sums.data()), kernels.add(samples.data(), length, sums.data());
            EXPECT_EQ(sums, expected) << length;
        }
    }
    template <class Real>
    void CompareMixing() {
        auto const &plain = std::get<Kernels<Real>>(KernelsOf(Isa::Plain));
        auto const &kernels = std::get<Kernels<Real>>(KernelsOf(GetParam()));
        for (std::size_t length = 6; length < 150; length += 6) {
            RowBuffer<Real> rows(2 * kRows, length);
            std::vector<Real const *> from;
            std::vector<Real *> to;
            for (std::size_t row = 0; row < kRows; ++row) {
                std::ranges::copy(Samples<Real>(length), rows.Row(row));
                from.push_back(rows.Row(row)), to.push_back(rows.Row(kRows + row));
            }
            std::vector<Real> block(length * kRows);
            kernels.toBlock(from.data(), length, block.data());
            EXPECT_EQ(block[(length - 1) * kRows + 5], from[5][length - 1]);
            kernels.fromBlock(block.data(), length, to.data());
            for (std::size_t row = 0; row < kRows; ++row)
                EXPECT_TRUE(std::equal(to[row], to[row] + length, from[row])) << length;

            std::vector<Real> const weights = Samples<Real>(kRows);
            std::vector<Real> expected(length);
            std::vector<Real> sums(length);
            plain.mixRows(from.data(), weights.data(), kRows, expected.data(), length);
            kernels.mixRows(from.data(), weights.data(), kRows, sums.data(), length);
            EXPECT_EQ(sums, expected) << length;

            for (std::size_t const channels : {1U, 2U, 3U}) {
                Taps<Real> const taps{
                    .first = {4, 5}, .begin = {0, 1, length / channels - 1}, .weights = Samples<Real>(length)};
                std::vector<Real> expectedColumns(2 * channels * kRows);
                std::vector<Real> columns(2 * channels * kRows);
                plain.mixColumns(block.data(), 4, taps, 0, 2, channels, expectedColumns.data());
                kernels.mixColumns(block.data(), 4, taps, 0, 2, channels, columns.data());
                EXPECT_EQ(columns, expectedColumns) << length << ' ' << channels;
            }
        }
    }
    std::mt19937 m_random{4};
};

TEST_P(EachIsa, GivesTheBitsOfThePlainOne) {
    CompareRows<std::uint8_t>(), CompareRows<std::uint16_t>(), CompareRows<std::int16_t>();
    CompareRows<std::uint32_t>(), CompareRows<std::int32_t>(), CompareRows<float>();
    CompareMixing<float>(), CompareMixing<double>();
    auto const &bytes = std::get<ByteKernels>(KernelsOf(GetParam()));
    for (std::size_t const length : {1U, 15U, 16U, 67U}) {
        std::vector<std::uint8_t> const samples = Samples<std::uint8_t>(length + kRows);
        std::vector<std::uint8_t const *> from;
        for (std::size_t row = 0; row < kRows; ++row)
            from.push_back(samples.data() + row);
        std::vector<float> block(length * kRows);
        bytes.toBlock(from.data(), length, block.data());
        for (std::size_t i = 0; i < block.size(); ++i)
            ASSERT_EQ(block[i], samples[i / kRows + i % kRows]) << length << ' ' << i;
        std::vector<std::uint8_t> back(length);
        std::vector<float> values(length);
        for (std::size_t i = 0; i < length; ++i)
            values[i] = static_cast<float>(i) * 5 - 30.5F;
        bytes.toBytes(values.data(), length, back.data());
        for (std::size_t i = 0; i < length; ++i)
            ASSERT_EQ(back[i], std::clamp(static_cast<int>(i) * 5 - 30, 0, 255));
    }
}
INSTANTIATE_TEST_SUITE_P(Mix, EachIsa, testing::Values(Isa::Plain, Isa::Avx2, Isa::Avx512));

} // namespace
} // namespace zelvar::mix
