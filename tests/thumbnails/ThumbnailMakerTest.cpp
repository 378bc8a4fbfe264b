#include "zelvar/thumbnails/ThumbnailMaker.h"

#include "support/ImageFiles.h"
#include "support/RealDriversTest.h"
#include "zelvar/data/ImageReader.h"

namespace zelvar {
namespace {

using test::ImageSpec;
using test::WriteImage;
using enum ThumbnailOutcome;

struct ThumbnailMaking : test::RealDriversTest {
    DCanvas Make(DString const &moniker, int side = 128, ThumbnailOutcome expected = Made) {
        DCanvas picture;
        auto const paint = [this](TableGlimpse const &glimpse, int size) {
            m_glimpse = glimpse;
            DCanvas painted;
            painted.SetSize(size, size);
            return painted;
        };
        EXPECT_EQ(MakeThumbnail(moniker, "", side, nullptr, paint, picture), expected) << moniker;
        EXPECT_EQ(picture.HasData(), expected == Made) << moniker;
        return picture;
    }
    TableGlimpse m_glimpse;
};

TEST_F(ThumbnailMaking, ASmallImageIsThePreviewItselfWhateverItsSamples) {
    double const nan = std::numeric_limits<double>::quiet_NaN();
    auto const twelveBits = [](int, int x, int y) { return 16.0 * (x + y); };
    test::Rows<char const *, ImageSpec> const images = {
        {"bytes.tif", {}},
        {"rgb.tif", {.channels = 3}},
        {"12 bits.tif", {.type = GDT_UInt16, .sample = twelveBits}},
        {"signed.tif", {.type = GDT_Int16, .sample = [](int, int x, int y) { return x * 30.0 - y * 40.0; }}},
        {"float nan.tif", {.type = GDT_Float32, .sample = [=](int, int x, int) { return x < 9 ? nan : x / 100.0; }}},
        {"int.png", {.type = GDT_UInt16, .format = "PNG", .sample = twelveBits}}};
    for (auto const &[name, spec] : images) {
        DString const file = m_folder / name;
        WriteImage(file, spec);
        DCanvas const made = Make(file);
        DCanvas preview;
        ASSERT_TRUE(ReadPreview({file, nullptr}, "", nullptr, preview, Enlarge::No));
        ASSERT_EQ(std::pair(made.GetWidth(), made.GetHeight()), std::pair(64, 48)) << "never enlarged";
        EXPECT_TRUE(std::equal(made.Row(0), made.Row(0) + 64 * 48 * 3, preview.Row(0))) << name;
        unsigned brightest = 0;
        for (int x = 0; x < 64; ++x)
            brightest = std::max(brightest, static_cast<unsigned>(RedOf(made.GetPixel(x, 40))));
        EXPECT_GT(brightest, 100U) << name << " is nearly black";
    }
}

TEST_F(ThumbnailMaking, TheLongerSideIsAsAsked) {
    WriteImage(m_folder / "wide.tif", {.width = 1000, .height = 400});
    WriteImage(m_folder / "high.tif", {.width = 400, .height = 1000});
    WriteImage(m_folder / "line.tif", {.width = 3000, .height = 2});
    test::Rows<char const *, int, int, int> const cases = {
        {"wide.tif", 100, 100, 40}, {"high.tif", 96, 38, 96}, {"line.tif", 256, 256, 1}, {"wide.tif", 1024, 1000, 400}};
    for (auto const &[name, side, width, height] : cases) {
        DCanvas const made = Make(m_folder / name, side);
        EXPECT_EQ(std::pair(made.GetWidth(), made.GetHeight()), std::pair(width, height)) << name << " " << side;
    }
}

TEST_F(ThumbnailMaking, ALargeImageWithoutAPyramidHasOneThoughItHasNoPreview) {
    DString const file = m_folder / "large.tif";
    WriteImage(file, {.width = 33'600,
                      .height = 1'000,
                      .options = {"COMPRESS=LZW", "TILED=YES"},
                      .sample = [](int, int x, int) { return x < 16'800 ? 50.0 : 200.0; }});
    DCanvas preview;
    EXPECT_FALSE(ReadPreview({file, nullptr}, "", nullptr, preview));
    DCanvas const made = Make(file, 336);
    ASSERT_EQ(made.GetWidth(), 336);
    EXPECT_EQ(made.GetPixel(10, 5), Rgb(50, 50, 50));
    EXPECT_EQ(made.GetPixel(330, 5), Rgb(200, 200, 200));
}

TEST_F(ThumbnailMaking, AContainerShowsItsFirstImageAndATableItsFirstCells) {
    test::WritePages(m_folder / "pages.tif", 3);
    EXPECT_EQ(Make(m_folder / "pages.tif").GetPixel(1, 1), Rgb(10, 10, 10)) << "the first page";
    test::WriteNetCdf(m_folder / "two.nc", 2);
    EXPECT_EQ(Make(m_folder / "two.nc").GetHeight(), 20);
    WriteImage(m_folder / "a.tif");
    test::WriteZip(m_folder / "deep.zip", {{"one/two/a.tif", m_folder / "a.tif"}});
    EXPECT_EQ(Make(m_folder / "deep.zip").GetWidth(), 64) << "two folders down";
    EXPECT_TRUE(m_glimpse.names.empty());

    test::WriteGeoPackage(m_folder / "layers.gpkg", 1, 0, 0);
    EXPECT_EQ(Make(m_folder / "layers.gpkg", 100).GetWidth(), 100);
    EXPECT_FALSE(m_glimpse.names.empty()) << "of a layer";
    DString const longest(100, 'x');
    DString table = "name;value;c;d;e;f;g\n";
    for (int row = 0; row < 40; ++row)
        table += "r" + std::to_string(row) + ";" + longest + "\n";
    Make(m_folder.Write("t.csv", table));
    ASSERT_EQ(m_glimpse.rows.size(), static_cast<std::size_t>(TableGlimpse::kMostRows));
    EXPECT_EQ(m_glimpse.names.size(), static_cast<std::size_t>(TableGlimpse::kMostColumns));
    EXPECT_EQ(m_glimpse.rows[1][0], "r1");
    EXPECT_EQ(m_glimpse.rows[1][1], DString(TableGlimpse::kLongest, 'x'));
    Make(m_folder.Write("numbers.csv", "a,b,c\n1,2,3\n4,7,6\n5,1,2\n"));
    EXPECT_EQ(m_glimpse.names, (std::vector<DString>{"a", "b", "c"})) << "numbers alone are no image";
}

TEST_F(ThumbnailMaking, WhatIsNoDataHasNoneForGoodAndAStopIsNoAnswer) {
    Make(m_folder.Write("no.tif", "this is no image"), 128, None);
    Make(m_folder / "none.tif", 128, None);
    WriteImage(m_folder / "yes.tif");
    DCanvas picture;
    StopSignal const stop{true};
    EXPECT_EQ(MakeThumbnail(m_folder / "yes.tif", "", 128, &stop, {}, picture), NotNow);
    EXPECT_EQ(MakeThumbnail(m_folder.Write("t.csv", "a;b\n1;2\n"), "", 128, nullptr, {}, picture), None)
        << "nobody draws tables";
}

} // namespace
} // namespace zelvar
