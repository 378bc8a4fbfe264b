#include "support/ImageFiles.h"
#include "support/OpenedImage.h"
#include "support/RealDriversTest.h"
#include "support/ScriptedDriver.h"
#include "support/Test.h"
#include "zelvar/base/PathStyle.h"
#include "zelvar/data/HistogramReader.h"
#include "zelvar/data/SeriesCheck.h"
#include "zelvar/data/stack/SeriesDriver.h"
#include "zelvar/model/ItemProperties.h"
#include "zelvar/model/PlaceResolver.h"
#include "zelvar/model/SeriesItem.h"

#include <sys/stat.h>

namespace zelvar {
namespace {

using test::OpenedImage;
using Samples = std::vector<std::uint8_t>;

constexpr int kWidth = 6;
constexpr int kHeight = 4;

struct SeriesImages : test::RealDriversTest {
    /// Members of one value each, that of the number in `values`.
    void Write(int digits, std::vector<int> const &values,
               test::ImageSpec spec = {.width = kWidth, .height = kHeight}) {
        for (int const value : values) {
            spec.sample = [value](int channel, int, int) { return value + 100 * channel; };
            test::WriteImage(m_folder / Format("s%0*d.tif", digits, value), spec);
        }
    }
    static Samples ReadAll(OpenedImage const &image, int channel = 0) {
        int const width = image.driver->GetChnlSizeX(image.handle, channel);
        int const height = image.driver->GetChnlSizeY(image.handle, channel);
        return image.Read<std::uint8_t>(0, 0, width, height, width, height, RDIDriver::Nearest, channel);
    }
    /// The sample at the middle of a cell.
    static int At(Samples const &all, int frames, int slice, int frame) {
        return all.at(static_cast<std::size_t>((slice * kHeight + 2) * frames * kWidth + frame * kWidth + 3));
    }
    static PropertyMap PropertiesOf(DString const &moniker) {
        PropertyMap props;
        ReadItemProperties(moniker, "", "", DT_DATA, nullptr, props);
        return props;
    }
    static DString DifferencesIn(DString const &moniker) {
        return DifferencesOf(*SeriesOf({moniker, nullptr}), CheckSeries({moniker, nullptr}, std::chrono::minutes(1)));
    }
};

TEST_F(SeriesImages, MembersAreSlicesOrFramesAndMissingOnesAreZeros) {
    Write(2, {1, 2, 3, 5});
    DString const path = m_folder / "s[01-05].tif";
    for (bool const areFrames : {false, true}) {
        SCOPED_TRACE(areFrames);
        OpenedImage const image(areFrames ? path + "?SERIES=frames" : path + "?SERIES=slices&NUM_THREADS=1");
        ASSERT_TRUE(image) << image.error.Text();
        RDIGeoCoo const geo = image.driver->GetChnlGeoCode(image.handle, 0);
        EXPECT_EQ(std::pair(geo.numSlices, geo.numTimeFrames), areFrames ? std::pair(1, 5) : std::pair(5, 1));
        Samples const all = ReadAll(image);
        ASSERT_EQ(all.size(), 5U * kWidth * kHeight);
        for (int i = 0; i < 5; ++i)
            EXPECT_EQ(At(all, geo.numTimeFrames, areFrames ? 0 : i, areFrames ? i : 0), i == 3 ? 0 : i + 1);
        EXPECT_NE(image.driver->GetAttrString("RDI_Drvr_Info", image.handle, 0).find("TIFF, series of 4 files"),
                  DString::npos);
        // A window over cells and beyond them, brought to half its size.
        Samples const part = image.Read<std::uint8_t>(-6, -4, 24, 16, 12, 8, RDIDriver::Average);
        EXPECT_EQ(part.at(0), 0);
        EXPECT_EQ(part.at(2 * 12 + 3), 1);
        EXPECT_EQ(part.at(areFrames ? 2 * 12 + 6 : 4 * 12 + 3), 2);
    }
    EXPECT_FALSE(OpenedImage(path + "?SERIES=depth"));
    DHstg histogram;
    ASSERT_TRUE(ReadHistogram({path + "?SERIES=frames", nullptr}, "", 0, 6, nullptr, histogram, nullptr));
    for (int slot = 0; slot < 6; ++slot)
        EXPECT_EQ(histogram.GetSlotVal(slot), slot == 4 ? 0 : kWidth * kHeight) << slot;
    DCanvas canvas;
    ASSERT_TRUE(ReadItemPreview(path, "", "", nullptr, canvas, Enlarge::No));
    EXPECT_EQ(std::pair(canvas.GetWidth(), canvas.GetHeight()), std::pair(kWidth, kHeight));
    // The first one is damaged.
    test::WriteImage(m_folder / "s01.tif", {.width = kWidth, .height = kHeight, .options = {"BLOCKYSIZE=1"}});
    auto const size = static_cast<off_t>(test::ReadFile(m_folder / "s01.tif").size());
    ASSERT_EQ(truncate((m_folder / "s01.tif").c_str(), size - kWidth), 0);
    DError error;
    RDIRowsRead read;
    EXPECT_TRUE(ReadItemPreview(path, "", "", nullptr, canvas, Enlarge::No, &error, &read)) << error.Text();
    EXPECT_EQ(std::pair(read.rows, read.all), std::pair(kHeight - 1, kHeight));
}

TEST(SeriesPreview, OpensTheMemberThatIsShownAndTheOneThatTheFiguresComeFrom) {
    test::ScriptedDrivers const drivers;
    test::TempFolder folder;
    test::ScriptedRasterDriver &files = test::ScriptedDrivers::AddRaster("SCRIPTED");
    RegisterSeriesDriver();
    auto const member = [&](int number) { return folder / Format("s%02d.img", number); };
    for (int number = 1; number <= 30; ++number)
        files.SetImage(folder.Write(Format("s%02d.img", number), "x"),
                       {.type = RDI_UInt16, .sample = [number](int, int x, int) { return 100 * number + x; }});
    for (char const *axis : {"slices", "frames"})
        for (int const shown : {0, 19}) {
            PreviewChoice choice{.stretch = PreviewChoice::Stretch::Full};
            (DString(axis) == "slices" ? choice.slice : choice.frame) = shown;
            DString const path = folder / "s[01-30].img";
            DString const options = DString("SERIES=") + axis;
            std::vector<DString> expected{member(1)};
            if (shown > 0)
                expected.push_back(member(shown + 1));
            files.opened.clear();
            DCanvas canvas;
            ASSERT_TRUE(ReadItemPreview(path, "", options, nullptr, canvas, Enlarge::No, nullptr, nullptr, choice));
            EXPECT_EQ(files.opened, expected) << axis;
            EXPECT_EQ(canvas.GetPixel(3, 0), Rgb(255, 255, 255));
            files.opened.clear();
            PreviewValues values;
            ASSERT_TRUE(ReadItemValues(path, "", options, nullptr, choice, values));
            EXPECT_EQ(files.opened, expected) << axis;
            EXPECT_EQ(values.planes.at(0).At(2), 100 * (shown + 1) + 2);
        }
    EXPECT_EQ(files.opens, files.closes);
}

TEST_F(SeriesImages, NumbersAndMembersGiveChannels) {
    for (int const t : {1, 2})
        for (int const c : {1, 2, 3})
            if (t * c != 4) // t2_c2 is missing
                test::WriteImage(m_folder / Format("t%d_c%d.tif", t, c),
                                 {.width = kWidth, .height = kHeight, .channels = 2, .sample = [t, c](int k, int, int) {
                                      return 100 * k + 10 * t + c;
                                  }});
    OpenedImage const image(m_folder / "t[1-2]_c[1-3].tif");
    ASSERT_TRUE(image) << image.error.Text();
    ASSERT_EQ(image.driver->GetNumChnl(image.handle), 6);
    Samples all(std::size_t{6} * 2 * kWidth * kHeight); // read at once, though they lie in different files
    ASSERT_TRUE(image.driver->ReadChannelsRsmpl(image.handle, 0, 6, 0, 0, 2 * kWidth, kHeight, all.data(), 2 * kWidth,
                                                kHeight, RDIDriver::Nearest, true, false));
    for (int channel = 0; channel < 6; ++channel)
        for (int frame = 0; frame < 2; ++frame) {
            int const c = channel / 2 + 1;
            EXPECT_EQ(At(all, 2, channel, frame), frame == 1 && c == 2 ? 0 : 100 * (channel % 2) + 10 * (frame + 1) + c)
                << channel << ", " << frame;
        }
}

TEST_F(SeriesImages, WhatDiffersIsToldAndFailsWhenItIsRead) {
    Write(2, {1, 2, 3, 4, 5, 6, 9});
    DString const path = m_folder / "s[01-12].tif";
    EXPECT_EQ(DifferencesIn(path), "");
    Write(2, {7}, {.width = 512, .height = 512});
    Write(2, {8}, {.width = kWidth, .height = kHeight, .type = GDT_UInt16});
    m_folder.Write("s10.tif", "damaged");
    ASSERT_EQ(mkfifo((m_folder / "s11.tif").c_str(), 0600), 0); // is none of them
    ASSERT_EQ(symlink((m_folder / "s11.tif").c_str(), (m_folder / "s12.tif").c_str()), 0);
    DString const differences = PropertiesOf(path)[5113];
    EXPECT_EQ(differences, DifferencesIn(path));
    for (char const *part : {"s07.tif is 512 x 512, the others are 6 x 4",
                             "s08.tif is 16 bit unsigned, the others are 8 bit unsigned", "s10.tif cannot be read"})
        EXPECT_NE(differences.find(part), DString::npos) << part << " in " << differences;
    EXPECT_EQ(PropertiesOf(path)[5112], "10 of 12, missing 11, 12");

    OpenedImage const image(path);
    ASSERT_TRUE(image) << image.error.Text();
    for (int const number : {7, 8, 10}) {
        int const top = (number - 1) * kHeight;
        EXPECT_EQ(image.Read<std::uint8_t>(0, top, kWidth, kHeight, kWidth, kHeight, RDIDriver::Nearest), Samples());
        EXPECT_NE(image.driver->GetReadError(image.handle).Text().find(Format("s%02d.tif", number)), DString::npos);
    }
    EXPECT_EQ(image.Read<std::uint8_t>(0, 8 * kHeight, 1, 1, 1, 1, RDIDriver::Nearest), Samples{9});
    // One that goes while the series is open is no gap in it.
    ASSERT_EQ(unlink((m_folder / "s02.tif").c_str()), 0);
    EXPECT_EQ(image.Read<std::uint8_t>(0, kHeight, 1, 1, 1, 1, RDIDriver::Nearest), Samples());
}

TEST_F(SeriesImages, NamesThatPromiseTooMuchAreRefused) {
    Write(18, {1, 2, 3, 4, 5, 6, 7, 8, 9});
    test::WriteImage(m_folder / "s999999999999999999.tif");
    test::WriteImage(m_folder / "a1b1.tif");
    EXPECT_TRUE(OpenedImage(m_folder / "s[000000000000000001-000000000000000009].tif"));
    for (char const *name : {"s[000000000000000001-999999999999999999].tif",
                             "a[0-999999999999999999]b[0-999999999999999999].tif", "none[1-9].tif", "s[1-9].tif"}) {
        OpenedImage const image(m_folder / name);
        EXPECT_FALSE(image) << name;
        EXPECT_NE(image.error.Text().find(name), DString::npos) << image.error.Text();
        EXPECT_EQ(ReasonAgainst(m_folder / name), image.error.Text());
    }
    EXPECT_FALSE(OpenedImage(m_folder / "gone/s[1-9].tif"));
}

TEST_F(SeriesImages, NamesOfAllKindsAreFoundAndAFileOfTheVeryNameStaysOne) {
    for (DString const prefix : {R"(a: ?"}%5B&)", "\xFF\xE9", "x?y=1&", "s"}) {
        SCOPED_TRACE(prefix);
        for (int const number : {1, 2, 3})
            test::WriteImage(m_folder / (prefix + std::to_string(number) + "?.tif"), {.width = 5, .height = 7});
        DString const path = m_folder / (prefix + "[1-3]?.tif");
        for (DString const options : {"", "?SERIES=frames"}) {
            OpenedImage const image(path + options);
            ASSERT_TRUE(image) << image.error.Text();
            EXPECT_EQ(image.driver->GetChnlSizeX(image.handle, 0), options.empty() ? 5 : 15);
            BDIMoniker const moniker(path + options, nullptr);
            EXPECT_EQ(moniker.GetSource(), path);
            EXPECT_EQ(moniker.GetDisplayName(), prefix + "[1-3]?.tif");
            EXPECT_EQ(moniker.GetOptions().size(), options.empty() ? 0U : 1U);
        }
        RefItemPtr<DataSourceItem> const found = ItemFromPlace(path);
        auto const *const item = dynamic_cast<SeriesItem const *>(found.get());
        ASSERT_NE(item, nullptr);
        EXPECT_EQ(item->GetPath(), path);
        EXPECT_EQ(found->GetParent()->GetPath(), m_folder.Path());
        EXPECT_EQ(item->GetFileSize(),
                  3 * static_cast<std::int64_t>(test::ReadFile(m_folder / (prefix + "1?.tif")).size()));
        std::vector<DString> members;
        for (std::size_t i = 0; i < item->MemberCount(); ++i)
            members.emplace_back(FileNameOf(item->MemberPath(i)));
        EXPECT_EQ(members, (std::vector<DString>{prefix + "1?.tif", prefix + "2?.tif", prefix + "3?.tif"}));
    }
    test::WriteImage(m_folder / "s[1-3]?.tif", {.width = 9, .height = 9});
    OpenedImage const image(m_folder / "s[1-3]?.tif");
    ASSERT_TRUE(image) << image.error.Text();
    EXPECT_EQ(image.driver->GetChnlSizeX(image.handle, 0), 9);
    EXPECT_EQ(dynamic_cast<SeriesItem *>(ItemFromPlace(m_folder / "s[1-3]?.tif").get()), nullptr);
}

} // namespace
} // namespace zelvar
