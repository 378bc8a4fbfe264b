#include "support/ImageFiles.h"
#include "support/RealDriversTest.h"
#include "support/Test.h"
#include "zelvar/data/HistogramReader.h"
#include "zelvar/data/ImageReader.h"
#include "zelvar/data/tables/ADIFile.h"

#include <sys/stat.h>
#include <unistd.h>

namespace zelvar {
namespace {

using enum DError::Cause;

constexpr int kWidth = 50;
constexpr int kHeight = 120;

/// Files that do not open, or not to their end.
struct Causes : test::RealDriversTest {
    [[nodiscard]] static DError WhyNot(DString const &moniker) {
        ImageInfo info;
        DError error;
        EXPECT_FALSE(ReadImageInfo({moniker, nullptr}, "", nullptr, info, &error)) << moniker;
        return error;
    }
    DString Image(DString const &name, test::ImageSpec spec) {
        spec.width = kWidth;
        spec.height = kHeight;
        test::WriteImage(m_folder / name, spec);
        return m_folder / name;
    }
    DString Archive(DString const &name) {
        test::WriteZip(m_folder / name,
                       {{"in/a.png", Image("a.png", {.format = "PNG"})}, {"b.tif", Image("b.tif", {})}});
        return m_folder / name;
    }
    /// Says of members of an archive that they are encrypted: all, or those of that name.
    void Lock(DString const &archive, DString const &name) const {
        DString bytes = test::ReadFile(m_folder / archive);
        for (std::size_t at = 0; (at = bytes.find("PK\x01\x02", at)) != DString::npos; at += 46)
            if (name.empty() || bytes.compare(at + 46, name.size(), name) == 0) {
                bytes[at + 8] |= 1;
                std::size_t const data = bytes.find("PK\x03\x04", static_cast<unsigned char>(bytes[at + 42])) + 50;
                bytes.replace(data, 40, 40, 'x');
            }
        m_folder.Write(archive, bytes);
    }
    static DString Cut(DString const &path, std::size_t bytes) {
        EXPECT_EQ(truncate(path.c_str(), static_cast<off_t>(bytes)), 0);
        return path;
    }
    static DString Half(DString const &path) { return Cut(path, test::ReadFile(path).size() / 2); }
};

TEST_F(Causes, AreWhatTheFileAndItsLibrarySay) {
    constexpr std::int64_t kSome = 1; // place or more
    ASSERT_EQ(mkfifo((m_folder / "fifo.tif").c_str(), 0600), 0);
    test::WriteGeoPackage(m_folder / "layers.gpkg", 1, 1, 0);
    DString const locked = Archive("locked.zip");
    Lock("locked.zip", "");
    DString const mixed = Archive("mixed.zip");
    Lock("mixed.zip", "in/a.png");
    test::WriteZip(m_folder / "office.ods",
                   {{"META-INF/manifest.xml", m_folder.Write("m.xml", "<a><manifest:encryption-data/></a>")}});
    DString container = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1" + DString(4088, '\0');
    container[30] = 9; // sectors of 512 bytes, the directory in the second one
    container[48] = 1;
    container.replace(1024, 31, DString("E\0n\0c\0r\0y\0p\0t\0e\0d\0P\0a\0c\0k\0a\0g\0e", 31));
    m_folder.Write("broken.zarr/.zgroup", "{");
    struct Case {
        DString moniker;
        DError::Cause cause;
        std::int64_t detail = -1;
    };
    std::vector<Case> const cases = {
        {m_folder / "none.tif", Missing},
        {m_folder / "none/a.tif", Missing},
        {m_folder.Write("empty.tif", ""), Damaged},
        {m_folder.Write("text.tif", "a text of some length\n"), NotSupported},
        {m_folder.Write("points.csv", "x,y,z\n1,2,3\n4,7,6\n5,1,2\n"), NotSupported},
        {m_folder / "fifo.tif", NotSupported},
        {m_folder / "layers.gpkg", NotSupported},
        {m_folder / "layers.gpkg?LAYER=layer 1", NotSupported},
        {Half(Image("a.nc", {.format = "netCDF", .options = {"FORMAT=NC4"}})), Damaged},
        {Half(Image("at offset 7 password.img", {.format = "HFA"})), Damaged, kSome},
        {m_folder / "broken.zarr", Damaged, kSome},
        {m_folder.Write("page.hdr", "ENVI\nsamples = 1\nlines = 1\nbands = 1\ndata type = 1\n"), NotSupported},
        {locked, NeedsPassword},
        {"/vsizip/" + locked + "/in/a.png", NeedsPassword},
        {"/vsizip/{" + mixed + "}/in/a.png", NeedsPassword},
        {mixed, NotSupported},
        {m_folder / "office.ods", NeedsPassword},
        {m_folder.Write("office.xlsx", container), NeedsPassword},
        {m_folder.Write("a.vrt", "<VRTDataset rasterXSize='1' rasterYSize='1'><VRTRasterBand><SimpleSource>"
                                 "<SourceFilename>http://127.0.0.1:1/a.tif</SourceFilename></SimpleSource>"
                                 "</VRTRasterBand></VRTDataset>"),
         Refused},
    };
    for (auto const &[moniker, cause, detail] : cases) {
        DError const error = WhyNot(moniker);
        EXPECT_EQ(error.Why(), cause) << moniker << ": " << error.Text();
        EXPECT_TRUE(detail < 0 ? error.Detail() < 0 : error.Detail() >= detail) << moniker << ": " << error.Text();
        EXPECT_NE(error.Detail(), 7) << "a name is no place";
    }
    ImageInfo info;
    EXPECT_TRUE(ReadImageInfo({"/vsizip/" + mixed + "/b.tif", nullptr}, "", nullptr, info));
    for (auto const &[name, cause] :
         {std::pair{"none.csv", Missing}, {"text.tif", NotSupported}, {"a.png", NotSupported}})
        EXPECT_EQ(ADIFile(DFile(m_folder / name), "", tdFormatAccess_Read, nullptr, "").GetFailure().Why(), cause)
            << name;
}

TEST_F(Causes, WhatMustNotBeReadIsNotMissing) {
    DString const path = Image("a.tif", {});
    if (geteuid() == 0)
        return; // who sees everything
    for (auto const &[place, mode] : {std::pair{path, 0000}, {m_folder.Path(), 0600}}) {
        ASSERT_EQ(chmod(place.c_str(), static_cast<mode_t>(mode)), 0);
        EXPECT_EQ(WhyNot(path).Why(), NotPermitted) << place;
        ASSERT_EQ(chmod(place.c_str(), 0700), 0);
    }
}

TEST_F(Causes, ADamagedImageIsShownAsFarAsItGoes) {
    // `lost`: bytes at the end; from `least` to `most`: rows that came
    auto const noise = [](int channel, int x, int y) { return x * 7919 % 251 ^ y * 104729 % 241 ^ channel * 83; };
    test::Rows<char const *, test::ImageSpec, int, int, int> const cases = {
        {"rows.tif", {.options = {"BLOCKYSIZE=1"}, .sample = noise}, 83 * kWidth, 37, 37},
        {"last.tif", {.options = {"BLOCKYSIZE=1"}, .sample = noise}, 1, 119, 119},
        {"deep.tif", {.type = GDT_UInt16, .options = {"BLOCKYSIZE=1"}, .sample = noise}, 83 * kWidth * 2, 37, 37},
        {"strips.tif", {.channels = 3, .options = {"BLOCKYSIZE=16"}, .sample = noise}, kWidth * 3, 112, 112},
        {"planes.tif",
         {.channels = 3, .options = {"BLOCKYSIZE=1", "INTERLEAVE=BAND"}, .sample = noise},
         83 * kWidth,
         37,
         37},
        {"palette.tif", {.options = {"BLOCKYSIZE=1", "PHOTOMETRIC=PALETTE"}, .sample = noise}, 83 * kWidth, 37, 37},
        {"a.png", {.channels = 3, .format = "PNG", .sample = noise}, 4000, 20, 100},
        {"a.jpg", {.channels = 3, .format = "JPEG", .sample = noise}, 2000, 20, 110}};
    for (auto const &[name, spec, lost, least, most] : cases) {
        SCOPED_TRACE(name);
        DString const path = Image(name, spec);
        DError error;
        DCanvas whole;
        RDIRowsRead read{.rows = 1, .all = 1};
        ASSERT_TRUE(ReadPreview({path, nullptr}, "", nullptr, whole, Enlarge::No, &error, &read));
        EXPECT_FALSE(error.IsSet()) << error.Text();
        EXPECT_EQ(read.all, 0);
        Cut(path, test::ReadFile(path).size() - static_cast<std::size_t>(lost));
        ImageInfo info;
        EXPECT_TRUE(ReadImageInfo({path, nullptr}, "", nullptr, info));
        DCanvas damaged;
        ASSERT_TRUE(ReadPreview({path, nullptr}, "", nullptr, damaged, Enlarge::No, &error, &read)) << error.Text();
        EXPECT_EQ(error.Why(), Damaged);
        EXPECT_EQ(error.Text(), Format("damaged: %d of 120 rows read", read.rows));
        EXPECT_TRUE(read.rows >= least && read.rows <= most) << read.rows;
        constexpr std::size_t rowBytes = std::size_t{3} * kWidth;
        for (int row = 0; row < kHeight; ++row) {
            auto const bytes = [row](DCanvas &canvas) {
                return std::vector(canvas.Row(row), canvas.Row(row) + rowBytes);
            };
            ASSERT_EQ(bytes(damaged), row < read.rows ? bytes(whole) : std::vector<std::uint8_t>(rowBytes)) << row;
        }
        // Enlarged, and of an image that was read by others before, it counts the same rows.
        RDIRowsRead again;
        EXPECT_TRUE(ReadPreview({path, nullptr}, "", nullptr, damaged, Enlarge::Yes, nullptr, &again));
        EXPECT_EQ(again.rows, read.rows);
        DHstg histogram;
        EXPECT_FALSE(ReadHistogram({path, nullptr}, "", spec.channels - 1, 16, nullptr, histogram, &error));
        EXPECT_EQ(error.Why(), Damaged);
    }
}

TEST_F(Causes, WhatFollowsADamagedPartIsShownToo) {
    DString const path = Image("a.tif", {.options = {"BLOCKYSIZE=8", "COMPRESS=DEFLATE"}});
    DString bytes = test::ReadFile(path);
    std::size_t const middle = bytes.size() / 2;
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(middle), 8, '\xFF');
    m_folder.Write("a.tif", bytes);
    DCanvas picture;
    RDIRowsRead read;
    ASSERT_TRUE(ReadPreview({path, nullptr}, "", nullptr, picture, Enlarge::No, nullptr, &read));
    EXPECT_TRUE(read.rows == kHeight - 8 || read.rows == kHeight - 16) << read.rows;
    EXPECT_NE(picture.Row(kHeight - 1)[3], 0) << "a part that is whole";
    DError error; // and where all is one part nothing is left
    EXPECT_FALSE(ReadPreview({Half(Image("one.tif", {.options = {"BLOCKYSIZE=120"}})), nullptr}, "", nullptr, picture,
                             Enlarge::Yes, &error));
    EXPECT_EQ(error.Why(), Damaged);
}

} // namespace
} // namespace zelvar
