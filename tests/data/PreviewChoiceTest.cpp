#include "support/ImageFiles.h"
#include "support/RealDriversTest.h"
#include "support/Test.h"
#include "zelvar/data/ImageReader.h"

namespace zelvar {
namespace {

using Range = ValuePlane::Range;
using enum PreviewChoice::Stretch;

struct PreviewChoices : test::RealDriversTest {
    DString Write(test::ImageSpec const &spec) {
        DString path = m_folder / "a.tif";
        test::WriteImage(path, spec);
        return path;
    }
    bool Read(DString const &path, PreviewChoice const &choice = {}) {
        bool const hasValues = ReadPreviewValues({path, nullptr}, "", nullptr, choice, m_values);
        bool const read = ReadPreview({path, nullptr}, "", nullptr, m_picture, Enlarge::No, &m_error, nullptr, choice);
        EXPECT_EQ(hasValues, read);
        return read;
    }
    std::optional<double> At(int x, int y, std::size_t plane = 0) {
        auto const index = m_values.IndexAt((x + 0.5) / m_picture.GetWidth(), (y + 0.5) / m_picture.GetHeight());
        return m_values.planes.at(plane).At(index.value());
    }
    int Grey(int x, int y) { return static_cast<int>(m_picture.GetPixel(x, y) & 0xFFU); }
    DCanvas m_picture;
    PreviewValues m_values;
    DError m_error;
};

TEST_F(PreviewChoices, EverySampleTypeGivesItsValuesAndNothingElse) {
    struct Case {
        char const *name;
        GDALDataType type;
        double first; ///< samples in the first column; those behind it are `at + x`
        double at;
        std::optional<double> nodata;
        std::optional<double> told; ///< in the first column
    };
    for (Case const &c :
         {Case{"bytes", GDT_Byte, 7, 20, {}, 7}, Case{"zeros that are none", GDT_Byte, 0, 20, 0, {}},
          Case{"zeros that are values", GDT_UInt16, 0, 2000, {}, 0}, Case{"a height", GDT_Int16, -9999, -20, -9999, {}},
          Case{"more than a float holds", GDT_UInt32, 16'777'217, 4'000'000'001, {}, 16'777'217},
          Case{"not a number", GDT_Float32, NAN, -1.5, {}, {}}, Case{"infinite", GDT_Float64, INFINITY, -1.5, {}, {}},
          Case{"no data of a float", GDT_Float32, -3.4e38, 0.25, -3.4e38, {}},
          Case{"complex", GDT_CFloat32, -3, 10, {}, 3}, Case{"complex whole", GDT_CInt16, -3, 10, {}, 3}}) {
        SCOPED_TRACE(c.name);
        DString const path = Write({.type = c.type,
                                    .sample = [&c](int, int x, int) { return x == 0 ? c.first : c.at + x; },
                                    .nodata = c.nodata});
        for (auto const stretch : {Usual, Full, Most}) {
            ASSERT_TRUE(Read(path, {.stretch = stretch}));
            EXPECT_EQ(std::pair(m_values.width, m_values.height), std::pair(64, 48));
            ASSERT_EQ(m_values.planes.size(), 1U);
            EXPECT_EQ(m_values.planes[0].Values(), (Range{std::min(c.told.value_or(c.at + 1), c.at + 1), c.at + 63}));
            EXPECT_EQ(At(0, 5), c.told);
            EXPECT_EQ(At(63, 47), c.at + 63);
            EXPECT_TRUE(stretch == Usual || c.told.has_value() || Grey(0, 5) == 0) << "no data is black";
            EXPECT_EQ(Grey(63, 9), stretch != Usual ? 255 : c.type == GDT_Byte ? int(c.at + 63) : Grey(63, 9));
        }
    }
    Write({.sample = [](int, int, int) { return 9; }, .nodata = 9});
    ASSERT_TRUE(Read(m_folder / "a.tif", {.stretch = Full})) << "all of it is no data";
    EXPECT_FALSE(m_values.planes[0].Values());
    EXPECT_EQ(Grey(3, 3), 0);
}

TEST_F(PreviewChoices, TwoPercentAtEitherEndAreCut) {
    // Of 1000 samples 10 lie far below and 10 far above: all of the rest is to be seen.
    auto const sample = [](int, int x, int y) {
        int const i = y * 40 + x;
        return i < 10 ? 0 : i >= 990 ? 60000 : 1000 + i;
    };
    DString const path = Write({.width = 40, .height = 25, .type = GDT_UInt16, .sample = sample});
    ASSERT_TRUE(Read(path, {.stretch = Most}));
    EXPECT_EQ(m_values.planes[0].Values(), (Range{0, 60000}));
    EXPECT_EQ(m_values.planes[0].Shown(), (Range{1019, 1980}));
    EXPECT_NEAR(Grey(20, 12), 127, 2);
    ASSERT_TRUE(Read(path, {.stretch = Full}));
    EXPECT_EQ(m_values.planes[0].Shown(), (Range{0, 60000}));
    EXPECT_EQ(Grey(20, 12), 1500 * 255 / 60000);
}

TEST_F(PreviewChoices, ChannelsAreShownAloneOrAsColours) {
    auto const sample = [](int channel, int, int) { return 40 * (channel + 1); };
    DString const path = Write({.channels = 5, .sample = sample});
    ASSERT_TRUE(Read(path));
    EXPECT_EQ(m_picture.GetPixel(3, 4), Rgb(40, 80, 120));
    ASSERT_EQ(m_values.planes.size(), 3U);
    EXPECT_EQ(At(3, 4, 2), 120);
    ASSERT_TRUE(Read(path, {.channel = 4}));
    EXPECT_EQ(m_picture.GetPixel(3, 4), Rgb(200, 200, 200));
    EXPECT_EQ(m_values.planes.at(0).Channel(), 4);
    for (PreviewChoice const &wrong :
         {PreviewChoice{.channel = 5}, PreviewChoice{.channel = -2}, PreviewChoice{.slice = 1},
          PreviewChoice{.slice = -1}, PreviewChoice{.frame = 1}, PreviewChoice{.frame = -1}}) {
        EXPECT_FALSE(Read(path, wrong));
        EXPECT_TRUE(m_error.IsSet());
    }
    EXPECT_EQ(m_error.Text(), "there is no time frame 0, the image has 1");
}

TEST_F(PreviewChoices, APaletteGivesIndexesAndAChannelOfItIsGrey) {
    DString const path = Write({.width = 2,
                                .height = 1,
                                .sample = [](int, int x, int) { return x; },
                                .palette = {{200, 10, 20, 255}, {30, 180, 40, 255}}});
    ASSERT_TRUE(Read(path, {.stretch = Full}));
    EXPECT_EQ(m_picture.GetPixel(0, 0), Rgb(200, 10, 20));
    EXPECT_EQ(m_picture.GetPixel(1, 0), Rgb(30, 180, 40)) << "colours are not stretched";
    ImageInfo info;
    EXPECT_TRUE(ReadImageInfo({path, nullptr}, "GTiff", nullptr, info) && info.channels == 1);
    EXPECT_TRUE(m_values.isPalette);
    EXPECT_EQ(At(1, 0), 1);
    ASSERT_TRUE(Read(path, {.channel = 0, .stretch = Full}));
    EXPECT_FALSE(m_values.isPalette);
    EXPECT_EQ(m_picture.GetPixel(1, 0), Rgb(255, 255, 255));
}

TEST_F(PreviewChoices, SlicesAndFramesAreCellsOfTheirOwn) {
    DString const path = m_folder / "v.nc";
    test::WriteNetCdfVariable(path, {{.name = "time", .length = 4},
                                     {.name = "level", .length = 3},
                                     {.name = "y", .length = 5},
                                     {.name = "x", .length = 7}});
    for (int frame = 0; frame < 4; ++frame)
        for (int slice = 0; slice < 3; ++slice) {
            ASSERT_TRUE(Read(path, {.slice = slice, .frame = frame, .stretch = Full}));
            double const first = (frame * 3 + slice) * 35;
            EXPECT_EQ(m_values.planes[0].Values(), (Range{first, first + 34})) << slice << ", " << frame;
            EXPECT_EQ(std::pair(m_picture.GetWidth(), m_picture.GetHeight()), std::pair(7, 5));
            std::pair const ends(Grey(0, 0) + Grey(6, 0), Grey(0, 4) + Grey(6, 4)); // whichever way up it lies
            EXPECT_TRUE(ends == std::pair(45, 465) || ends == std::pair(465, 45)) << ends.first << ", " << ends.second;
        }
}

TEST_F(PreviewChoices, ValuesOfALargePictureTakeFourMebibytesAtMost) {
    for (int const channels : {1, 3}) {
        DString const path = Write({.width = 1500, .height = 1400, .channels = channels, .type = GDT_Float32});
        ASSERT_TRUE(Read(path));
        std::size_t bytes = 0;
        for (ValuePlane const &plane : m_values.planes)
            bytes += plane.Bytes();
        EXPECT_LE(bytes, PreviewValues::kMostBytes);
        EXPECT_GT(bytes, PreviewValues::kMostBytes * 9 / 10);
        EXPECT_EQ(m_values.IndexAt(0.999999, 0.999999), m_values.planes[0].Bytes() / 4 - 1);
    }
    for (auto const &[x, y] : {std::pair(-0.01, 0.5), std::pair(0.5, 1.0), std::pair(double{NAN}, 0.5)})
        EXPECT_FALSE(m_values.IndexAt(x, y));
}

} // namespace
} // namespace zelvar
