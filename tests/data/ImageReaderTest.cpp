#include "zelvar/data/ImageReader.h"

#include "support/ScriptedDriver.h"
#include "support/Test.h"

namespace zelvar {
namespace {

using test::ScriptedDrivers;
using test::ScriptedImage;
using test::ScriptedRasterDriver;

struct ImageReader : testing::Test {
    bool Preview(ScriptedImage image) {
        m_driver.SetImage("/image", std::move(image));
        bool const read = ReadPreview({"/image", nullptr}, "", &m_stop, m_picture);
        EXPECT_EQ(m_driver.opens, m_driver.closes);
        EXPECT_EQ(m_picture.HasData(), read);
        return read;
    }
    ScriptedDrivers m_drivers;
    ScriptedRasterDriver &m_driver = ScriptedDrivers::AddRaster("Scripted");
    StopSignal m_stop{false};
    DCanvas m_picture;
};

TEST_F(ImageReader, TellsTheSizeOfOneSliceAtOneTime) {
    m_driver.SetImage(
        "/image",
        {.width = 100, .height = 61, .channels = 2, .type = RDI_Int16, .geo = {.numSlices = 3, .numTimeFrames = 7}});
    ImageInfo info;
    ASSERT_TRUE(ReadImageInfo({"/image", nullptr}, "", nullptr, info));
    EXPECT_EQ(info.width, 14);
    EXPECT_EQ(info.height, 20);
    EXPECT_EQ(info.channels, 2);
    EXPECT_EQ(info.slices, 3);
    EXPECT_EQ(info.timeFrames, 7);
    EXPECT_EQ(info.dataType, RDI_Int16);
    EXPECT_EQ(info.driver, "Scripted"); // without a description its id
    m_driver.SetImage("/image", {.geo = {.numSlices = 0, .numTimeFrames = 0}, .info = "told"});
    ASSERT_TRUE(ReadImageInfo({"/image", nullptr}, "", nullptr, info));
    EXPECT_EQ(info.width, 4);
    EXPECT_EQ(info.driver, "told");
    EXPECT_FALSE(ReadImageInfo({"/other", nullptr}, "", nullptr, info));
    EXPECT_EQ(m_driver.opens, m_driver.closes);
}

TEST_F(ImageReader, TheLongerSideBecomes1024Pixels) {
    test::Rows<int, int, int, int> const cases = {{1000, 500, 1024, 512}, {500, 1000, 512, 1024}, {10, 10, 1024, 1024},
                                                  {4097, 3, 0, 0},        {3000, 3, 1024, 1},     {0, 5, 0, 0},
                                                  {0, 0, 0, 0},           {1, 1, 1024, 1024}};
    for (auto const &[width, height, outWidth, outHeight] : cases) {
        SCOPED_TRACE(width);
        EXPECT_EQ(Preview({.width = width, .height = height}), outWidth > 0);
        EXPECT_EQ(m_picture.GetWidth(), outWidth);
        EXPECT_EQ(m_picture.GetHeight(), outHeight);
    }
}

TEST_F(ImageReader, ThreeChannelsAreColoursAndFewerAreGrey) {
    auto const byChannel = [](int channel, int, int) { return 10 * (channel + 1); };
    ASSERT_TRUE(Preview({.channels = 4, .sample = byChannel}));
    EXPECT_EQ(m_picture.GetPixel(3, 1000), Rgb(10, 20, 30));
    ASSERT_TRUE(Preview({.channels = 2, .sample = byChannel}));
    EXPECT_EQ(m_picture.GetPixel(1023, 5), Rgb(10, 10, 10));
}

TEST_F(ImageReader, WideSamplesAreSpreadOverTheBytesAndBytesStay) {
    auto const ramp = [](int, int x, int) { return 100 + 50 * x; };
    ASSERT_TRUE(Preview({.type = RDI_UInt16, .sample = ramp}));
    EXPECT_EQ(m_picture.GetPixel(0, 0), Rgb(0, 0, 0));
    EXPECT_EQ(m_picture.GetPixel(1023, 1023), Rgb(255, 255, 255));
    ASSERT_TRUE(Preview({.type = RDI_UInt8, .sample = [](int, int x, int) { return 100 + x; }}));
    EXPECT_EQ(m_picture.GetPixel(1023, 0), Rgb(103, 103, 103));
}

TEST_F(ImageReader, APaletteGivesItsColours) {
    ASSERT_TRUE(Preview({.palette = true}));
    EXPECT_EQ(m_picture.GetPixel(9, 9), Rgb(200, 100, 50));
}

TEST_F(ImageReader, ALargeImageNeedsAPyramid) {
    EXPECT_FALSE(Preview({.width = 6000, .height = 6000}));
    EXPECT_EQ(m_driver.reads, 0);
    EXPECT_TRUE(Preview({.width = 6000, .height = 6000, .pyramid = true}));
    // 33,587,208 pixels are the first number that is too large.
    EXPECT_TRUE(Preview({.width = 4097, .height = 8198}));
    EXPECT_FALSE(Preview({.width = 4098, .height = 8196}));
    // What counts is the size of one slice.
    EXPECT_TRUE(Preview({.width = 6000, .height = 6000, .geo = {.numSlices = 2, .numTimeFrames = 1}}));
}

TEST_F(ImageReader, AFailedReadAndAnUnknownTypeGiveNoPicture) {
    EXPECT_FALSE(Preview({.readFails = true}));
    EXPECT_FALSE(Preview({.type = 3}));
    EXPECT_FALSE(Preview({.channels = 0}));
}

TEST_F(ImageReader, AStopGivesNoPicture) {
    m_stop = true;
    EXPECT_FALSE(Preview({}));
    EXPECT_EQ(m_driver.reads, 0);
}

} // namespace
} // namespace zelvar
