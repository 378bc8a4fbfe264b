#include "zelvar/data/HistogramReader.h"

#include "support/ImageFiles.h"
#include "support/RealDriversTest.h"
#include "support/Test.h"
#include "zelvar/data/tables/ADIFile.h"

namespace zelvar {
namespace {

struct HistogramReading : test::RealDriversTest {
    DHstg Of(DString const &path, int channel = 0, int slots = 16, DError *error = nullptr) {
        DHstg histogram;
        m_isRead = ReadHistogram({path, nullptr}, "", channel, slots, nullptr, histogram, error);
        return histogram;
    }
    bool m_isRead = false;
};

std::vector<int> CountsOf(DHstg const &histogram) {
    std::vector<int> counts;
    for (int i = 0; i < histogram.m_numSlot; ++i)
        counts.push_back(histogram.GetSlotVal(i));
    return counts;
}

TEST_F(HistogramReading, CountsEverySampleOfEachType) {
    for (GDALDataType const type : {GDT_Byte, GDT_UInt16, GDT_Int16, GDT_UInt32, GDT_Int32, GDT_Float32, GDT_Float64}) {
        SCOPED_TRACE(GDALGetDataTypeName(type));
        DString const path = m_folder / GDALGetDataTypeName(type) + DString(".tif");
        bool const isFloat = type == GDT_Float32 || type == GDT_Float64;
        auto const sample = [&](int channel, int x, int y) {
            if (isFloat && x == 3 && y < 5)
                return y == 0 ? HUGE_VAL : std::nan("");
            return (x * 7 + y * 3 + channel * 11) % 120 + (isFloat ? 0.25 : 0);
        };
        test::WriteImage(path, {.width = 70, .height = 50, .channels = 2, .type = type, .sample = sample}, {2});
        std::vector<double> values;
        for (int y = 0; y < 50; ++y)
            for (int x = 0; x < 70; ++x)
                if (double const value = sample(1, x, y); std::isfinite(value))
                    values.push_back(value);
        DHstg const histogram = Of(path, 1, 17);
        ASSERT_TRUE(m_isRead);
        EXPECT_EQ(histogram.m_numSlot, isFloat ? 17 : 15); // 120 whole numbers, 8 a slot
        EXPECT_EQ(histogram.m_minimum, *std::min_element(values.begin(), values.end()));
        EXPECT_EQ(histogram.m_maximum, isFloat ? *std::max_element(values.begin(), values.end()) : 120);
        DHstg expected(histogram.m_numSlot, histogram.m_minimum, histogram.m_maximum);
        for (double const value : values)
            expected.AddValue(value);
        EXPECT_EQ(CountsOf(histogram), CountsOf(expected));
    }
}

TEST_F(HistogramReading, LeavesOutNodataAndNothingElse) {
    DString const path = m_folder / "grid.nc";
    test::WriteNetCdfVariable(path, {{.name = "y", .length = 10}, {.name = "x", .length = 20}}, 7.0);
    DHstg const histogram = Of(path);
    ASSERT_TRUE(m_isRead);
    EXPECT_EQ(histogram.GetHstgSum(), 199); // 0 to 199 without 7; a 0 is a value like others
    EXPECT_EQ(histogram.m_minimum, 0);
    EXPECT_EQ(histogram.m_maximum, 208); // 16 slots of 13
}

TEST_F(HistogramReading, AnImageLargerThanAStripIsReadWhole) {
    DString const path = m_folder / "large.tif";
    test::WriteImage(path,
                     {.width = 2500, .height = 1700, .type = GDT_UInt16, .sample = [](int, int x, int) { return x; }});
    DHstg const histogram = Of(path, 0, 2500);
    ASSERT_TRUE(m_isRead);
    EXPECT_EQ(histogram.GetHstgSum(), 2500 * 1700);
    EXPECT_EQ(histogram.GetMaxVal(), 1700); // each value in a slot of its own
    EXPECT_EQ(histogram.GetSlotVal(0), 1700);
}

TEST_F(HistogramReading, TellsWhyThereIsNone) {
    DString const path = m_folder / "a.tif";
    test::WriteImage(path);
    DError error;
    EXPECT_EQ(Of(path, 1, 4, &error).m_numSlot, 0);
    EXPECT_FALSE(m_isRead);
    EXPECT_EQ(error.Text(), "there is no channel 2");
    static_cast<void>(Of(path, -1));
    EXPECT_FALSE(m_isRead);
    DError missing;
    static_cast<void>(Of(m_folder / "none.tif", 0, 4, &missing));
    EXPECT_FALSE(m_isRead);
    EXPECT_TRUE(missing.IsSet());
    DHstg histogram(3, 0, 1);
    StopSignal const stop(true);
    EXPECT_FALSE(ReadHistogram({path, nullptr}, "", 0, 4, &stop, histogram, nullptr));
    EXPECT_EQ(histogram.m_numSlot, 0);
}

TEST_F(HistogramReading, CountsTheNumbersOfAColumn) {
    DString const path = m_folder.Write("t.csv", "name,size\r\na,1\r\nb,2.5\r\nc,\r\nd,none\r\ne,10\r\nf,nan\r\n");
    ADIFile table(DFile(path), "", tdFormatAccess_Read, nullptr, nullptr);
    DHstg histogram;
    ASSERT_TRUE(ReadHistogram(table, 1, 3, nullptr, histogram));
    EXPECT_EQ(CountsOf(histogram), (std::vector<int>{2, 0, 1}));
    EXPECT_EQ(histogram.m_maximum, 10);
    ASSERT_TRUE(ReadHistogram(table, 0, 3, nullptr, histogram));
    EXPECT_EQ(histogram.m_numSlot, 0);
    EXPECT_FALSE(ReadHistogram(table, 2, 3, nullptr, histogram));
}

TEST(NumberOf, IsAllOfTheText) {
    EXPECT_EQ(NumberOf(" 12.5 "), 12.5);
    EXPECT_EQ(NumberOf("+3"), 3);
    EXPECT_EQ(NumberOf("-1e3"), -1000);
    for (char const *none : {"", " ", "1x", "x", "+-1", "nan", "inf", "1e999", "1 2"})
        EXPECT_EQ(NumberOf(none), std::nullopt) << none;
}

} // namespace
} // namespace zelvar
