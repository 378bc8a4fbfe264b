#include "zelvar/data/gdal/SliceGrid.h"

#include "support/ImageFiles.h"
#include "support/OpenedImage.h"
#include "support/RealDriversTest.h"
#include "support/Test.h"

namespace zelvar {
namespace {

using test::NetCdfDimension;
using test::OpenedImage;
using Samples = std::vector<std::int16_t>;

constexpr int kWidth = 7; // of one slice at one time, odd on purpose
constexpr int kHeight = 5;
constexpr NetCdfDimension kY{.name = "y", .length = kHeight};
constexpr NetCdfDimension kX{.name = "x", .length = kWidth};
constexpr NetCdfDimension kTime{.name = "time", .length = 4};
constexpr NetCdfDimension kRun{.name = "run", .length = 2};
constexpr NetCdfDimension kLevel{.name = "level", .length = 3};

struct SliceGrid : test::RealDriversTest {
    /// A variable with these dimensions before y and x.
    DString Write(std::vector<NetCdfDimension> dimensions, std::optional<double> nodata = {}) {
        dimensions.insert(dimensions.end(), {kY, kX});
        DString path = m_folder / "v.nc";
        test::WriteNetCdfVariable(path, dimensions, nodata);
        return path;
    }
    /// The bands as GDAL itself reads them.
    static std::vector<Samples> RawBands(DString const &path) {
        CPLPushErrorHandler(&CPLQuietErrorHandler);
        GDALDatasetH dataset = GDALOpen(path.c_str(), GA_ReadOnly);
        CPLPopErrorHandler();
        std::vector<Samples> bands(static_cast<std::size_t>(GDALGetRasterCount(dataset)),
                                   Samples(static_cast<std::size_t>(kWidth) * kHeight));
        for (std::size_t i = 0; i < bands.size(); ++i)
            EXPECT_EQ(GDALRasterIO(GDALGetRasterBand(dataset, static_cast<int>(i + 1)), GF_Read, 0, 0, kWidth, kHeight,
                                   bands[i].data(), kWidth, kHeight, GDT_Int16, 0, 0),
                      CE_None);
        GDALClose(dataset);
        return bands;
    }
    static Samples ReadCell(OpenedImage const &image, int slice, int frame, int channel = 0) {
        return image.Read<std::int16_t>(frame * kWidth, slice * kHeight, kWidth, kHeight, kWidth, kHeight,
                                        RDIDriver::Nearest, channel);
    }
};

TEST_F(SliceGrid, DimensionsBecomeFramesSlicesAndChannels) {
    struct Case {
        char const *name;
        std::vector<NetCdfDimension> dimensions;
        int channels;
        int slices;
        int frames;
        /// The band at a place, from 0 on.
        int (*band)(int channel, int slice, int frame);
    };
    auto const frames = [](int, int s, int f) { return f * 3 + s; }; // of three slices each
    Case const cases[] = {
        {"time outside", {kTime, kLevel}, 1, 3, 4, frames},
        {"time inside", {kLevel, kTime}, 1, 3, 4, [](int, int s, int f) { return s * 4 + f; }},
        {"time between", {kRun, kTime, kLevel}, 1, 6, 4, [](int, int s, int f) { return s / 3 * 12 + f * 3 + s % 3; }},
        {"time alone", {kTime}, 1, 1, 4, [](int, int, int f) { return f; }},
        {"height alone", {kLevel}, 1, 3, 1, [](int, int s, int) { return s; }},
        {"no values", {{"T", 2, "", "", false}, {"z", 3, "", "", false}}, 1, 3, 2, frames},
        {"a unit", {{"when", 2, "days since 2000-01-01"}, kLevel}, 1, 3, 2, frames},
        {"an axis", {{"when", 2, "", "T"}, kLevel}, 1, 3, 2, frames},
        {"a name before a unit",
         {{"run", 2, "days since 2000-01-01"}, kTime},
         1,
         2,
         4,
         [](int, int s, int f) { return s * 4 + f; }},
        {"an axis before a name", {kTime, {"run", 2, "", "T"}}, 1, 4, 2, [](int, int s, int f) { return s * 2 + f; }},
        {"bands stay channels", {{"band", 3}}, 3, 1, 1, [](int c, int, int) { return c; }},
        {"bands over time", {kTime, {"band", 3}}, 3, 1, 4, [](int c, int, int f) { return f * 3 + c; }},
        {"one moment", {{"time", 1}}, 1, 1, 1, [](int, int, int) { return 0; }},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(c.name);
        DString const path = Write(c.dimensions);
        OpenedImage const image(path);
        ASSERT_TRUE(image) << image.error.Text();
        std::vector<Samples> const raw = RawBands(path);
        ASSERT_EQ(image.driver->GetNumChnl(image.handle), c.channels);
        RDIGeoCoo const geo = image.driver->GetChnlGeoCode(image.handle, 0);
        ASSERT_EQ(geo.numSlices, c.slices);
        ASSERT_EQ(geo.numTimeFrames, c.frames);
        EXPECT_EQ(image.driver->GetChnlSizeX(image.handle, c.channels - 1), kWidth * c.frames);
        EXPECT_EQ(image.driver->GetChnlSizeY(image.handle, c.channels - 1), kHeight * c.slices);
        EXPECT_EQ(image.driver->GetChnlSizeX(image.handle, c.channels), 0);
        for (int channel = 0; channel < c.channels; ++channel)
            for (int slice = 0; slice < c.slices; ++slice)
                for (int frame = 0; frame < c.frames; ++frame)
                    EXPECT_EQ(ReadCell(image, slice, frame, channel),
                              raw.at(static_cast<std::size_t>(c.band(channel, slice, frame))))
                        << channel << ", " << slice << ", " << frame;
    }
}

TEST_F(SliceGrid, ABlockOverSeveralCellsIsMadeOfTheirBands) {
    DString const path = Write({kTime, kLevel});
    OpenedImage const image(path);
    std::vector<Samples> const raw = RawBands(path);
    auto const told = [&](int x, int y) -> std::int16_t {
        if (x < 0 || y < 0 || x >= 4 * kWidth || y >= 3 * kHeight)
            return 0;
        auto const band = static_cast<std::size_t>(x / kWidth * 3 + y / kHeight);
        return raw.at(band)[static_cast<std::size_t>(y % kHeight * kWidth + x % kWidth)];
    };
    test::Rows<int, int, int, int> const blocks = {{0, 0, 4 * kWidth, 3 * kHeight},
                                                   {5, 3, 11, 9},
                                                   {6, 4, 2, 2},
                                                   {8, 0, 3, 15},
                                                   {-3, -2, 14, 9},
                                                   {20, 12, 20, 6},
                                                   {30, 2, 4, 9}};
    for (auto const &[left, top, width, height] : blocks) {
        SCOPED_TRACE(testing::Message() << left << ", " << top);
        for (int const resampling : {RDIDriver::Nearest, RDIDriver::Average, RDIDriver::Cubic}) {
            Samples const samples = image.Read<std::int16_t>(left, top, width, height, width, height, resampling);
            ASSERT_FALSE(samples.empty());
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x)
                    ASSERT_EQ(samples[static_cast<std::size_t>(y * width + x)], told(left + x, top + y))
                        << x << ", " << y;
        }
    }
}

TEST_F(SliceGrid, SamplesOfDifferentCellsAreNotMixed) {
    // The bands lie far apart in value: 35 samples each.
    OpenedImage const image(Write({kTime, kLevel}));
    int const outWidth = 4 * 3 * kWidth;
    int const outHeight = 3 * 2 * kHeight;
    for (int const resampling : {RDIDriver::Nearest, RDIDriver::Average, RDIDriver::Bilinear, RDIDriver::Cubic}) {
        Samples const samples =
            image.Read<std::int16_t>(0, 0, 4 * kWidth, 3 * kHeight, outWidth, outHeight, resampling);
        ASSERT_FALSE(samples.empty());
        for (int y = 0; y < outHeight; ++y)
            for (int x = 0; x < outWidth; ++x) {
                int const first = (x / (3 * kWidth) * 3 + y / (2 * kHeight)) * kWidth * kHeight;
                int const sample = samples[static_cast<std::size_t>(y * outWidth + x)];
                ASSERT_NEAR(sample, first + 17, 19) << resampling << ": " << x << ", " << y;
            }
    }
    // One result for each cell, and fewer results than cells.
    for (int const size : {4, 2}) {
        Samples const samples = image.Read<std::int16_t>(0, 0, 4 * kWidth, 3 * kHeight, size, 3, RDIDriver::Average);
        ASSERT_EQ(samples.size(), static_cast<std::size_t>(size) * 3);
        for (int i = 0; i < size * 3; ++i) {
            int const frame = size == 4 ? i % 4 : i % 2 * 2 + 1;
            EXPECT_EQ(samples[static_cast<std::size_t>(i)] / 35, frame * 3 + i / size) << i;
        }
    }
}

TEST_F(SliceGrid, NodataStopAndRefusalHoldOverCells) {
    StopSignal stop{false};
    OpenedImage const image(Write({kTime, kLevel}, 63.0), "", &stop);
    ASSERT_TRUE(image);
    // GDAL turns such a file upside down: 63 is the first sample of the second band, the second slice.
    EXPECT_EQ(ReadCell(image, 1, 0)[0], 0);
    EXPECT_EQ(image.Read<std::int16_t>(0, 4, 2, 2, 2, 2, RDIDriver::Nearest), (Samples{0, 1, 0, 64}));
    Samples samples(100);
    auto const readUnclipped = [&](double x, double y, int size) {
        return image.driver->ReadBlockRsmpl(image.handle, 0, x, y, size, size, samples.data(), size, size,
                                            RDIDriver::Nearest, true, false);
    };
    EXPECT_TRUE(readUnclipped(18, 5, 10));
    EXPECT_FALSE(readUnclipped(19, 5, 10));
    EXPECT_FALSE(readUnclipped(18, -1, 10));
    stop = true;
    EXPECT_FALSE(readUnclipped(0, 0, 10));
    EXPECT_TRUE(ReadCell(image, 2, 3).empty());
}

/// A data set in memory with metadata that need not be true.
class ClaimingDataset : test::Pinned {
public:
    ClaimingDataset(int width, int bands, std::vector<std::pair<DString, DString>> const &claims) {
        GDALAllRegister();
        m_dataset = GDALCreate(GDALGetDriverByName("MEM"), "", width, 1, 0, GDT_Byte, nullptr);
        for (int i = 0; i < bands; ++i)
            GDALAddBand(m_dataset, i == 6 ? GDT_Int16 : GDT_Byte, nullptr);
        for (auto const &[key, value] : claims)
            GDALSetMetadataItem(m_dataset, key.c_str(), value.c_str(), nullptr);
    }
    ~ClaimingDataset() { GDALClose(m_dataset); }
    [[nodiscard]] GDALDatasetH Get() const { return m_dataset; }

private:
    GDALDatasetH m_dataset = nullptr;
};

TEST_F(SliceGrid, BandsStayChannelsWhereTheMetadataContradictThem) {
    test::Rows<char const *, int, char const *, char const *, char const *, bool> const cases = {
        {"true", 6, "{time,level}", "{2,6}", "{3,6}", true},
        {"nothing told", 6, "", "{2,6}", "{3,6}", false},
        {"too many", 6, "{time,level}", "{2,6}", "{4,6}", false},
        {"too few", 6, "{time,level}", "{2,6}", "{2,6}", false},
        {"not all named", 6, "{time}", "{2,6}", "{3,6}", false},
        {"one too many named", 6, "{time,level,}", "{2,6}", "{3,6}", false},
        {"no braces", 6, "time,level", "{2,6}", "{3,6}", false},
        {"empty braces", 6, "{}", "{2,6}", "{3,6}", false},
        {"no length", 6, "{time,level}", "{2,6}", "", false},
        {"no number", 6, "{time,level}", "{2,6}", "{x,6}", false},
        {"zero", 6, "{time,level}", "{2,6}", "{0,6}", false},
        {"below zero", 6, "{time,level}", "{-2,6}", "{-3,6}", false},
        {"beyond an int", 6, "{time,level}", "{2,6}", "{99999999999,6}", false},
        {"a product beyond an int", 6, "{time,level,time,level}", "{2000000000,6}", "{2000000000,6}", false},
        {"bands of two types", 8, "{time,level}", "{2,6}", "{4,6}", false},
    };
    for (auto const &[name, bands, extra, time, level, believed] : cases) {
        SCOPED_TRACE(name);
        ClaimingDataset const dataset(
            10, bands, {{"NETCDF_DIM_EXTRA", extra}, {"NETCDF_DIM_time_DEF", time}, {"NETCDF_DIM_level_DEF", level}});
        auto const grid = gdal::SliceGrid::OfNetCdf(dataset.Get());
        EXPECT_EQ(grid.Channels(), believed ? 1 : bands);
        EXPECT_EQ(grid.Frames(), believed ? 2 : 1);
        EXPECT_EQ(grid.Slices(), believed ? 3 : 1);
        EXPECT_EQ(grid.BandOf(0, grid.Slices() - 1, grid.Frames() - 1), believed ? 6 : 1);
    }
}

TEST_F(SliceGrid, AChannelWiderThanAnIntHoldsIsNotMade) {
    for (auto const &[width, channels] : {std::pair(1'073'741'823, 1), std::pair(1'073'741'824, 2)}) {
        // Two bands of one row without samples: both point to the same byte.
        DString const bytes = "DATAPOINTER=" + std::to_string(reinterpret_cast<std::uintptr_t>(m_folder.Path().data()));
        std::vector<char const *> const options{bytes.c_str(), "PIXELOFFSET=0", nullptr};
        GDALAllRegister();
        GDALDatasetH dataset = GDALCreate(GDALGetDriverByName("MEM"), "", width, 1, 0, GDT_Byte, nullptr);
        for (int i = 0; i < 2; ++i)
            ASSERT_EQ(GDALAddBand(dataset, GDT_Byte, const_cast<char **>(options.data())), CE_None);
        GDALSetMetadataItem(dataset, "NETCDF_DIM_EXTRA", "{time}", nullptr);
        GDALSetMetadataItem(dataset, "NETCDF_DIM_time_DEF", "{2,6}", nullptr);
        EXPECT_EQ(gdal::SliceGrid::OfNetCdf(dataset).Channels(), channels) << width;
        GDALClose(dataset);
    }
}

} // namespace
} // namespace zelvar
