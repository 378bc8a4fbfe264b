#include "support/ImageFiles.h"
#include "support/OpenedImage.h"
#include "support/RealDriversTest.h"
#include "support/Test.h"
#include "zelvar/data/ImageReader.h"
#include "zelvar/data/RDIDriverMngr.h"

#include <thread>

namespace zelvar {
namespace {

using test::OpenedImage;

using RasterDriver = test::RealDriversTest;

TEST_F(RasterDriver, TellsWhatTheFileHolds) {
    DString const path = m_folder / "a b \xC3\xA4.tif";
    test::WriteImage(path, {.width = 60, .height = 40, .channels = 3, .type = GDT_UInt16, .options = {"COMPRESS=LZW"}});
    OpenedImage const image(path);
    ASSERT_TRUE(image) << image.error.Text();
    EXPECT_EQ(image.driver->GetId(), "GTiff");
    EXPECT_EQ(image.driver->GetNumChnl(image.handle), 3);
    EXPECT_EQ(image.driver->GetChnlSizeX(image.handle, 0), 60);
    EXPECT_EQ(image.driver->GetChnlSizeY(image.handle, 2), 40);
    EXPECT_EQ(image.driver->GetChnlSizeY(image.handle, 3), 0);
    EXPECT_EQ(image.driver->GetChnlSizeX(image.handle, -1), 0);
    EXPECT_EQ(image.driver->GetChnlDataType(image.handle, 1), RDI_UInt16);
    EXPECT_EQ(image.driver->GetAttrString("RDI_Drvr_Info", image.handle, 0), "GeoTIFF, LZW");
    EXPECT_EQ(image.driver->GetAttrInt("RDI_Drvr_Sppt_Intrnl_RslPrmd", image.handle, 0), 0);
    EXPECT_EQ(image.driver->GetAttrInt("RDI_Drvr_Palette", image.handle, 0), 0);
}

TEST_F(RasterDriver, SeveralMayReadAFileAndItsMonikerNamesOne) {
    DString const path = m_folder / "both.tif";
    test::WriteImage(path, {.width = 60, .height = 40});
    m_folder.Write("both.hdr", "ENVI\nsamples = 10\nlines = 20\nbands = 1\ndata type = 1\ninterleave = bsq\n");
    EXPECT_THAT(RDIDriverMngr::Instance()->FindDrivers(path), ElementsAre("GTiff", "ENVI"));
    EXPECT_THAT(RDIDriverMngr::Instance()->FindDrivers(m_folder / "both.hdr"), IsEmpty());
    test::Rows<char const *, char const *, int> const rows = {{"", "GTiff", 60},
                                                              {"?DRIVER=ENVI", "ENVI", 10},
                                                              {"?DRIVER=envi&RASTER=1", "ENVI", 10},
                                                              {"?DRIVER=GTiff", "GTiff", 60},
                                                              {"?DRIVER=none", "GTiff", 60},
                                                              {"?DRIVER=", "GTiff", 60}};
    for (auto const &[options, driver, width] : rows) {
        OpenedImage const image(path + options);
        ASSERT_TRUE(image) << options << image.error.Text();
        EXPECT_EQ(image.driver->GetId(), driver) << options;
        EXPECT_EQ(image.driver->GetChnlSizeX(image.handle, 0), width) << options;
    }
    EXPECT_FALSE(OpenedImage(path + "?DRIVER=PNG")) << "who names a driver does not want what another makes of it";
}

TEST_F(RasterDriver, EveryTypeArrivesAsOneOfOurs) {
    test::Rows<GDALDataType, int, double, double> const cases = {
        {GDT_Byte, RDI_UInt8, 200, 200},          {GDT_UInt16, RDI_UInt16, 60000, 60000},
        {GDT_Int16, RDI_Int16, -300, -300},       {GDT_UInt32, RDI_UInt32, 4e9, 4e9},
        {GDT_Int32, RDI_Int32, -2e9, -2e9},       {GDT_Float32, RDI_Float32, 0.5, 0.5},
        {GDT_Float64, RDI_Float32, -2.25, -2.25}, {GDT_CFloat32, RDI_Float32, -3, 3},
        {GDT_CInt16, RDI_Float32, -4, 4},         {GDT_Float32, RDI_Float32, std::nan(""), 0},
        {GDT_Float64, RDI_Float32, HUGE_VAL, 0}};
    for (auto const &[gdalType, delivered, value, arrives] : cases) {
        SCOPED_TRACE(GDALGetDataTypeName(gdalType));
        DString const path = m_folder / "type.tif";
        test::WriteImage(
            path, {.width = 4, .height = 4, .type = gdalType, .sample = [v = value](int, int, int) { return v; }});
        OpenedImage const image(path);
        ASSERT_TRUE(image);
        ASSERT_EQ(image.driver->GetChnlDataType(image.handle, 0), delivered);
        auto const check = [&image, told = delivered, expected = arrives](int type, auto sample) {
            for (int const resampling : {RDIDriver::Nearest, RDIDriver::Cubic})
                if (type == told) {
                    auto const samples = image.Read<decltype(sample)>(0, 0, 4, 4, 4, 4, resampling);
                    ASSERT_FALSE(samples.empty());
                    EXPECT_EQ(static_cast<double>(samples[5]), expected);
                }
        };
        check(RDI_UInt8, std::uint8_t{});
        check(RDI_UInt16, std::uint16_t{});
        check(RDI_Int16, std::int16_t{});
        check(RDI_UInt32, std::uint32_t{});
        check(RDI_Int32, std::int32_t{});
        check(RDI_Float32, float{});
    }
}

TEST_F(RasterDriver, SignedBytesKeepTheirSign) {
    DString const path = m_folder / "s.tif";
    test::WriteImage(path,
                     {.options = {"PIXELTYPE=SIGNEDBYTE"}, .sample = [](int, int x, int) { return x < 2 ? 251 : 5; }});
    OpenedImage const image(path);
    ASSERT_EQ(image.driver->GetChnlDataType(image.handle, 0), RDI_Float32);
    auto const samples = image.Read<float>(0, 0, 4, 1, 4, 1, RDIDriver::Nearest);
    EXPECT_EQ(samples, (std::vector<float>{-5, -5, 5, 5}));
}

TEST_F(RasterDriver, NodataBecomesZero) {
    DString const path = m_folder / "n.tif";
    auto const sample = [](int, int x, int) { return x < 32 ? -9999 : 7; };
    test::WriteImage(path, {.type = GDT_Float32, .sample = sample, .nodata = -9999});
    OpenedImage const image(path);
    for (int const resampling : {RDIDriver::Nearest, RDIDriver::Average, RDIDriver::Cubic}) {
        auto const samples = image.Read<float>(0, 0, 64, 48, 16, 12, resampling);
        ASSERT_EQ(samples.size(), 192U);
        EXPECT_EQ(samples[0], 0);
        EXPECT_NEAR(samples[15], 7, 1e-4);
    }
}

TEST_F(RasterDriver, AWindowThatLeavesTheImageIsFilledWithZerosIfClipped) {
    DString const path = m_folder / "w.tif";
    test::WriteImage(path, {.width = 10, .height = 10, .sample = [](int, int, int) { return 9; }});
    OpenedImage const image(path);
    auto const samples = image.Read<std::uint8_t>(-5, -5, 10, 10, 10, 10, RDIDriver::Nearest);
    ASSERT_EQ(samples.size(), 100U);
    for (std::size_t i = 0; i < 100; ++i)
        EXPECT_EQ(samples[i], i % 10 >= 5 && i / 10 >= 5 ? 9 : 0) << i;
    EXPECT_EQ(image.Read<std::uint8_t>(50, 50, 5, 5, 2, 2, RDIDriver::Cubic), (std::vector<std::uint8_t>(4, 0)));
    std::uint8_t byte = 0;
    EXPECT_FALSE(image.driver->ReadBlockRsmpl(image.handle, 0, -5, 0, 10, 10, &byte, 1, 1, 0, true, false));
    EXPECT_FALSE(image.driver->ReadBlockRsmpl(image.handle, 0, 0, 0, 10, 10, &byte, 0, 1, 0, true, true));
    EXPECT_FALSE(image.driver->ReadBlockRsmpl(image.handle, 0, 0, 0, std::nan(""), 10, &byte, 1, 1, 0, true, true));
    EXPECT_FALSE(image.driver->ReadBlockRsmpl(image.handle, 1, 0, 0, 10, 10, &byte, 1, 1, 0, true, true));
}

TEST_F(RasterDriver, ReductionAgreesWithAndWithoutAPyramid) {
    auto const smooth = [](int, int x, int y) { return 100 + 80 * std::sin(x / 60.0) * std::cos(y / 70.0); };
    DString const with = m_folder / "with.tif";
    DString const without = m_folder / "without.tif";
    test::WriteImage(with, {.width = 1000, .height = 800, .type = GDT_UInt16, .sample = smooth}, {2, 4, 8});
    test::WriteImage(without, {.width = 1000, .height = 800, .type = GDT_UInt16, .sample = smooth});
    OpenedImage const a(with);
    OpenedImage const b(without);
    EXPECT_EQ(a.driver->GetAttrInt("RDI_Drvr_Sppt_Intrnl_RslPrmd", a.handle, 0), 1);
    for (auto const &[width, height] :
         {std::pair(90, 72), std::pair(333, 266), std::pair(999, 799), std::pair(1500, 1200)}) {
        auto const first = a.Read<std::uint16_t>(0, 0, 1000, 800, width, height, RDIDriver::Cubic);
        auto const second = b.Read<std::uint16_t>(0, 0, 1000, 800, width, height, RDIDriver::Cubic);
        ASSERT_EQ(first.size(), second.size());
        ASSERT_FALSE(first.empty());
        for (int y = 1; y < height - 1; ++y)
            for (int x = 1; x < width - 1; ++x) {
                auto const at =
                    static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
                double const told =
                    smooth(0, static_cast<int>((x + 0.5) * 1000 / width), static_cast<int>((y + 0.5) * 800 / height));
                ASSERT_NEAR(first[at], told, 6) << width << ": " << x << ", " << y;
                ASSERT_NEAR(second[at], told, 6) << width << ": " << x << ", " << y;
            }
    }
}

TEST_F(RasterDriver, ChannelsReadTogetherAreWhatEachIsAlone) {
    test::Rows<char const *, std::vector<char const *>, int, std::vector<int>> const cases = {
        {"GTiff", {"INTERLEAVE=PIXEL"}, 700, {}},
        {"GTiff", {"INTERLEAVE=BAND", "TILED=YES"}, 700, {}},
        {"GTiff", {"INTERLEAVE=PIXEL", "COMPRESS=LZW"}, 700, {2, 4}},
        {"PNG", {}, 300, {}},
        {"GTiff", {"TILED=YES", "INTERLEAVE=PIXEL", "COMPRESS=DEFLATE"}, 2010, {}}}; // on threads
    for (auto const &[format, options, side, overviews] : cases) {
        DString const path = m_folder / "together";
        SCOPED_TRACE(testing::Message() << format << ' ' << testing::PrintToString(options) << side);
        test::WriteImage(path,
                         {.width = side,
                          .height = side,
                          .channels = 3,
                          .type = GDT_UInt16,
                          .format = format,
                          .options = options,
                          .sample = [](int channel, int x, int y) { return (x * y + 7000 * channel) % 60'000; }},
                         overviews);
        OpenedImage const image(path);
        ASSERT_TRUE(image) << image.error.Text();
        for (int const resampling : {RDIDriver::Average, RDIDriver::Bilinear, RDIDriver::Cubic})
            for (double const left : {0.0, -20.0}) {
                std::vector<std::uint16_t> planes(2 * 100 * 80);
                ASSERT_TRUE(image.driver->ReadChannelsRsmpl(image.handle, 1, 2, left, 0, side, side, planes.data(), 100,
                                                            80, resampling, true, true));
                auto const second = planes.begin() + 100 * 80;
                EXPECT_EQ(std::vector(planes.begin(), second),
                          image.Read<std::uint16_t>(left, 0, side, side, 100, 80, resampling, 1));
                EXPECT_EQ(std::vector(second, planes.end()),
                          image.Read<std::uint16_t>(left, 0, side, side, 100, 80, resampling, 2));
            }
        EXPECT_FALSE(image.driver->ReadChannelsRsmpl(image.handle, 2, 2, 0, 0, 9, 9, nullptr, 9, 9, 3, true, true));
    }
    // The last one again, with a block that cannot be decoded.
    DString bytes = test::ReadFile(m_folder / "together");
    bytes.replace(bytes.size() / 2, 2000, DString(2000, '?'));
    OpenedImage const damaged(m_folder.Write("damaged.tif", bytes));
    ASSERT_TRUE(damaged);
    std::vector<std::uint16_t> planes(3 * 100 * 80);
    EXPECT_FALSE(damaged.driver->ReadChannelsRsmpl(damaged.handle, 0, 3, 0, 0, 2010, 2010, planes.data(), 100, 80,
                                                   RDIDriver::Cubic, true, true));
}

TEST_F(RasterDriver, OverviewsBesideTheFileAreFound) {
    DString const path = m_folder / "a.png";
    test::WriteImage(path, {.width = 200, .height = 200, .format = "PNG"});
    test::WriteImage(m_folder / "a.png.ovr", {.width = 100, .height = 100});
    OpenedImage const image(path);
    ASSERT_TRUE(image);
    EXPECT_EQ(image.driver->GetId(), "PNG");
    EXPECT_EQ(image.driver->GetAttrInt("RDI_Drvr_Sppt_Intrnl_RslPrmd", image.handle, 0), 1);
}

TEST_F(RasterDriver, OnlyTheNamedDriverIsTried) {
    DString const path = m_folder / "x.tif";
    test::WriteImage(path);
    EXPECT_FALSE(OpenedImage(path, "PNG"));
    EXPECT_TRUE(OpenedImage(path, "gtiff"));
    EXPECT_TRUE(OpenedImage(path, "no such driver"));
    RDIDriver const *tiff = RDIDriverMngr::Instance()->GetDriver("GTiff");
    RDIDriver const *png = RDIDriverMngr::Instance()->GetDriver("PNG");
    EXPECT_EQ(tiff->IsMyFile(path.c_str()), 1);
    EXPECT_EQ(png->IsMyFile(path.c_str()), 0);
    EXPECT_EQ(tiff->IsMyFile(""), 0);
    EXPECT_EQ(tiff->IsMyFile(nullptr), 0);
    EXPECT_EQ(tiff->IsMyFile(m_folder.Path().c_str()), 0);
}

TEST_F(RasterDriver, WhatGdalComplainsOfGoesToTheLogAndTheError) {
    DString const path = m_folder / "broken.tif";
    test::WriteImage(m_folder / "whole.tif", {.options = {"COMPRESS=LZW"}});
    m_folder.Write("broken.tif", test::ReadFile(m_folder / "whole.tif").substr(0, 60));
    std::vector<DString> lines;
    auto former = Report::SetTraceHandler([&](int level, DString const &text) {
        if (level == Report::kTraceDriver)
            lines.push_back(text);
    });
    testing::internal::CaptureStderr();
    OpenedImage const image(path);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    Report::SetTraceHandler(std::move(former));
    EXPECT_FALSE(image);
    EXPECT_TRUE(image.error.IsSet());
    EXPECT_TRUE(
        std::any_of(lines.begin(), lines.end(), [](DString const &line) { return line.starts_with("GDAL error"); }));
}

TEST_F(RasterDriver, AStopEndsALongRead) {
    DString const path = m_folder / "long.tif";
    test::WriteImage(path, {.width = 6000, .height = 5000, .sample = [](int, int x, int y) { return (x * y) & 255; }});
    StopSignal stop{false};
    OpenedImage const image(path, "", &stop);
    ASSERT_TRUE(image);
    std::thread stopper([&] { stop = true; });
    stopper.join();
    EXPECT_TRUE(image.Read<std::uint8_t>(0, 0, 6000, 5000, 1000, 800, RDIDriver::Cubic).empty());
    EXPECT_TRUE(image.Read<std::uint8_t>(0, 0, 6000, 5000, 6000, 5000, RDIDriver::Nearest).empty());
}

} // namespace
} // namespace zelvar
