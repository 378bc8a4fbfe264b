#include "support/ImageFiles.h"
#include "support/OpenedImage.h"
#include "support/OpenedTree.h"
#include "support/RealDriversTest.h"
#include "support/Test.h"
#include "zelvar/data/ImageReader.h"

#include <filesystem>
#include <fstream>
#include <random>
#include <thread>

#include <sys/stat.h>
#include <unistd.h>

namespace zelvar {
namespace {

/// Everything that browsing and previewing do with a file. True if it was read as a picture.
bool LookAtAll(DString const &path) {
    for (BDIDrvr const *driver : BDIDrvrMngr::Instance()->CandidatesFor(path))
        std::ignore = driver->CanReadPath(path);
    ImageInfo info;
    DCanvas picture;
    std::ignore = ReadImageInfo({path, nullptr}, "", nullptr, info);
    bool const read = ReadPreview({path, nullptr}, "", nullptr, picture);
    test::OpenedTree const tree(path);
    if (!tree)
        return read;
    std::vector<BDINode> const children = tree.Children(*tree.root);
    for (std::size_t i = 0; i < std::min<std::size_t>(children.size(), 20); ++i)
        std::ignore = ReadPreview({children[i].path, nullptr}, "", nullptr, picture);
    return read;
}

struct BadInput : test::RealDriversTest {
    BadInput() { BDIDrvrMngr::Instance()->Drivers(); }
    /// Small files of many kinds.
    [[nodiscard]] std::vector<DString> WriteSamples() const {
        test::WriteImage(m_folder / "plain.tif", {.channels = 3, .type = GDT_UInt16}, {2});
        test::WriteImage(m_folder / "lzw.tif",
                         {.options = {"COMPRESS=LZW", "TILED=YES", "BLOCKXSIZE=16", "BLOCKYSIZE=16"}});
        test::WriteImage(m_folder / "big.tif", {.type = GDT_Float32, .options = {"BIGTIFF=YES"}});
        test::WriteImage(m_folder / "a.png", {.channels = 3, .format = "PNG"});
        test::WriteImage(m_folder / "a.jpg", {.format = "JPEG"});
        test::WriteImage(m_folder / "a.bmp", {.format = "BMP"});
        test::WritePages(m_folder / "pages.tif", 3);
        test::WriteNetCdf(m_folder / "a.nc", 2);
        test::WriteGeoPackage(m_folder / "a.gpkg", 1, 1, 1);
        test::WriteZip(m_folder / "a.zip", {{"in/a.png", m_folder / "a.png"}, {"b.tif", m_folder / "lzw.tif"}});
        m_folder.Write("a.csv", "name,value\na,1\nb,2\n");
        m_folder.Write("a.geojson", R"({"type":"FeatureCollection","features":[{"type":"Feature","properties":{"a":1},)"
                                    R"("geometry":{"type":"Point","coordinates":[1,2]}}]})");
        std::vector<DString> names;
        for (auto const &file : std::filesystem::directory_iterator(m_folder.Path()))
            names.push_back(file.path().filename());
        std::ranges::sort(names);
        return names;
    }
};

TEST_F(BadInput, DamagedFilesNeverHurt) {
    std::mt19937 random(11);
    test::TempFolder const damaged;
    for (DString const &name : WriteSamples()) {
        SCOPED_TRACE(name);
        DString const whole = test::ReadFile(m_folder / name);
        auto const place = [&](std::size_t from) { return from + random() % (whole.size() - from); };
        for (int round = 0; round < 21; ++round) {
            DString bytes = whole;
            switch (round % 3) {
            case 0:
                bytes.resize(place(1));
                break;
            case 1:
                for (int i = 0; i < 8; ++i)
                    bytes[place(0)] = static_cast<char>(random());
                break;
            default: // a number that says too much
                for (std::size_t i = 0, at = random() % std::min<std::size_t>(whole.size(), 400);
                     i < 4 && at + i < bytes.size(); ++i)
                    bytes[at + i] = '\xFF';
                break;
            }
            LookAtAll(damaged.Write(name, bytes));
        }
    }
    EXPECT_LT(test::PeakBytesOfDrivers(), std::size_t{1} << 30U);
}

/// A little-endian TIFF without data that claims a size, as its header tells it.
DString ClaimingTiff(std::uint32_t width, std::uint32_t height, std::uint16_t bits) {
    DString bytes("II*\0\x08\0\0\0", 8);
    auto const number = [&](std::uint64_t value, int size) {
        for (int i = 0; i < size; ++i)
            bytes += static_cast<char>(value >> (8 * i) & 0xFFU);
    };
    struct Tag {
        unsigned id;
        std::uint32_t value;
    };
    Tag const tags[] = {{256, width}, {257, height}, {258, bits},   {259, 1},  {262, 1},
                        {273, 200},   {277, 1},      {278, height}, {279, 100}};
    number(std::size(tags), 2);
    for (Tag const &tag : tags) {
        number(tag.id, 2);
        number(4, 2);
        number(1, 4);
        number(tag.value, 4);
    }
    number(0, 4);
    return bytes + DString(300, '\x01');
}

TEST_F(BadInput, ClaimedSizesAreNotBelieved) {
    std::size_t const before = test::PeakBytesOfDrivers();
    for (std::uint32_t const side : {0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU, 5000U}) {
        DString const path = m_folder.Write("claims.tif", ClaimingTiff(side, side, 32));
        EXPECT_FALSE(LookAtAll(path)) << side;
    }
    // The same without the guard of the preview: the driver itself must keep its memory.
    DString const path = m_folder.Write("claims.tif", ClaimingTiff(200'000, 200'000, 8));
    if (test::OpenedImage const image(path); image)
        std::ignore = image.Read<unsigned char>(0, 0, 200'000, 200'000, 100, 100, 3);
    m_folder.Write("rows.csv", "a\n1\n");
    m_folder.Write("grid.asc", "ncols 1000000000\nnrows 1000000000\nxllcorner 0\nyllcorner 0\ncellsize 1\n1 2 3\n");
    m_folder.Write("grid.pgm", "P5\n1000000000 1000000000\n255\nabc");
    DString dbf("\x03\x18\x01\x01\xFF\xFF\xFF\x7F\x41\0\xFF\xFF", 12); // two billion records
    dbf.resize(32);
    dbf += "VALUE" + DString(6, '\0') + "N" + DString(4, '\0') + "\x0A" + DString(15, '\0') + "\r";
    m_folder.Write("rows.dbf", dbf);
    for (char const *name : {"grid.asc", "grid.pgm", "rows.dbf"})
        EXPECT_FALSE(LookAtAll(m_folder / name)) << name;
    EXPECT_LT(test::PeakBytesOfDrivers() - before, std::size_t{250} << 20U);
}

TEST_F(BadInput, AFileThatShrinksWhileItIsReadFailsTheRead) {
    DString const path = m_folder / "shrinks.tif";
    test::WriteImage(path, {.width = 2000, .height = 2000});
    test::OpenedImage const image(path);
    ASSERT_TRUE(image);
    EXPECT_FALSE(image.Read<unsigned char>(0, 0, 500, 500, 500, 500, 0).empty());
    ASSERT_EQ(truncate(path.c_str(), 100'000), 0);
    EXPECT_TRUE(image.Read<unsigned char>(0, 1400, 500, 500, 500, 500, 0).empty());
}

TEST_F(BadInput, PipesAndDevicesAreNeverOpened) {
    ASSERT_EQ(mkfifo((m_folder / "pipe.tif").c_str(), 0600), 0);
    ASSERT_EQ(symlink("/dev/zero", (m_folder / "zero.tif").c_str()), 0);
    ASSERT_EQ(symlink((m_folder / "pipe.tif").c_str(), (m_folder / "link.zip").c_str()), 0);
    for (char const *name : {"pipe.tif", "zero.tif", "link.zip"})
        EXPECT_FALSE(LookAtAll(m_folder / name)) << name;
    EXPECT_THAT(test::OpenedImage(m_folder / "pipe.tif").error.Text(), HasSubstr("is no plain file"));
    for (char const *text : {"/vsistdin/", "/vsizip//vsistdin/", "GTIFF_DIR:1:/vsistdin/", "/dev/zero"})
        EXPECT_FALSE(LookAtAll(text)) << text;
    std::ignore = WriteSamples();
    for (char const *inside : {"/vsistdin/", "/vsimem/b.tif"})
        EXPECT_THAT(test::OpenedImage("/vsizip/" + (m_folder / "a.zip") + inside).error.Text(),
                    HasSubstr("is not there"));
    // A pipe beside an image, where GDAL would look for more of it.
    test::WriteImage(m_folder / "image.tif");
    EXPECT_TRUE(LookAtAll(m_folder / "image.tif"));
    ASSERT_EQ(mkfifo((m_folder / "image.tif.ovr").c_str(), 0600), 0);
    EXPECT_FALSE(LookAtAll(m_folder / "image.tif"));
    for (int i = 0; i < 1100; ++i) // now the folder is too large to be read whole
        m_folder.Write("filler" + std::to_string(i));
    EXPECT_FALSE(LookAtAll(m_folder / "image.tif"));
}

/// Size and time of each file.
auto TracesIn(DString const &folder) {
    std::map<DString, std::pair<std::uintmax_t, std::filesystem::file_time_type>> traces;
    for (auto const &entry : std::filesystem::directory_iterator(folder))
        if (entry.is_regular_file())
            traces[entry.path().filename()] = {entry.file_size(), entry.last_write_time()};
    return traces;
}

TEST_F(BadInput, LookingAtAFolderChangesNothingInIt) {
    m_folder.Write("a.gml", R"(<?xml version="1.0"?><gml:FeatureCollection xmlns:gml="http://www.opengis.net/gml">)"
                            R"(<gml:featureMember><a><v>1</v></a></gml:featureMember></gml:FeatureCollection>)");
    m_folder.Write("a.asc", "ncols 2\nnrows 2\nxllcorner 0\nyllcorner 0\ncellsize 1\n1 2\n3 4\n");
    std::vector<DString> const names = WriteSamples();
    auto const before = TracesIn(m_folder.Path());
    for (DString const &name : names)
        LookAtAll(m_folder / name);
    LookAtAll(m_folder.Path());
    EXPECT_EQ(TracesIn(m_folder.Path()), before);
}

TEST_F(BadInput, SeveralThreadsLookAtTheSameFiles) {
    std::vector<DString> const names = WriteSamples();
    auto const expected =
        std::count_if(names.begin(), names.end(), [&](DString const &name) { return LookAtAll(m_folder / name); });
    EXPECT_GE(expected, 7); // plain images and the first page of one with several
    testing::internal::CaptureStderr();
    std::atomic<int> pictures{0};
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (std::size_t i = 0; i < 4; ++i)
        threads.emplace_back([&, i] {
            for (std::size_t k = 0; k < names.size(); ++k)
                pictures += LookAtAll(m_folder / names[(i * 3 + k) % names.size()]) ? 1 : 0;
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(pictures, 4 * expected);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(BadInput, ADatabaseInUseKeepsItsFilesToItself) {
    DString const path = m_folder / "a.gpkg";
    test::WriteGeoPackage(path, 2, 0, 0);
    // Bytes 18 and 19 say that the database keeps its log beside itself.
    {
        std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(18);
        file.write("\x02\x02", 2);
    }
    ASSERT_EQ(link(path.c_str(), (m_folder / "b.sqlite").c_str()), 0);
    auto const before = TracesIn(m_folder.Path());
    LookAtAll(path);
    LookAtAll(m_folder / "b.sqlite");
    EXPECT_EQ(TracesIn(m_folder.Path()), before);
    BDIDrvr const *driver = BDIDrvrMngr::Instance()->GetDrvr("GPKG");
    EXPECT_TRUE(driver->CanReadPath(path));
}

} // namespace
} // namespace zelvar
