#include "support/ImageFiles.h"
#include "support/OpenedImage.h"
#include "support/OpenedTree.h"
#include "support/TablesTest.h"
#include "zelvar/base/PathStyle.h"
#include "zelvar/data/ImageReader.h"

#include <bit>
#include <filesystem>

#include <sys/stat.h>
#include <unistd.h>

namespace zelvar {
namespace {

using testing::ElementsAre;

/// The numbers one after the other, as eight or as four bytes, the highest first.
template <class Number>
DString Bytes(std::initializer_list<Number> numbers) {
    DString bytes;
    for (Number const number : numbers)
        for (std::size_t i = sizeof(Number); i-- > 0;)
            bytes += std::bit_cast<std::array<char, sizeof(Number)>>(number)[i];
    return bytes;
}

struct DataFolders : test::TablesTest {
    /// A grid of 4 * 4 floats, all of one tile of `tile` pixels a side as its header says.
    void WriteGrid(float value, int tile = 4) const {
        DString const start = "GRID1.2" + DString(9, '\0') + Bytes({2, 1}) + DString(232, '\0');
        m_folder.Write("grid/hdr.adf", start + Bytes({1.0, 1.0, 0.0, 0.0}) + Bytes({1, 1, tile, 1, tile}));
        m_folder.Write("grid/sta.adf", Bytes({1.0, 9.0, 5.0, 1.0}));
        m_folder.Write("grid/dblbnd.adf", Bytes({0.0, 0.0, 4.0, 4.0}));
        DString const magic("\0\0\x27\x0A\xFF\xFF\xFC\x14", 8);
        m_folder.Write("grid/w001001x.adf",
                       magic + DString(16, '\0') + Bytes({54}) + DString(72, '\0') + Bytes({50, 32}));
        DString data = magic + DString(93, '\0') + ' ';
        for (int i = 0; i < 16; ++i)
            data += Bytes({value});
        m_folder.Write("grid/w001001.adf", data);
    }
    static ImageInfo InfoOf(DString const &moniker) {
        ImageInfo info;
        return ReadImageInfo({moniker, nullptr}, "", nullptr, info) ? info : ImageInfo{};
    }
    static bool IsContainer(DString const &path) {
        return BDIDrvrMngr::Instance()->FindContainerDriver(path) != nullptr;
    }
};

TEST_F(DataFolders, APictureOpensByItsFolder) {
    test::WriteImage(m_folder / "o ne?.zarr", {.width = 30, .height = 20, .format = "Zarr"});
    m_folder.Folder("dimap");
    test::WriteImage(m_folder / "dimap/a.tif", {.width = 30, .height = 20});
    m_folder.Write("dimap/METADATA.DIM",
                   "<Dimap_Document><Raster_Dimensions><NCOLS>30</NCOLS><NROWS>20</NROWS><NBANDS>1"
                   "</NBANDS></Raster_Dimensions><Data_Access><Data_File><DATA_FILE_PATH "
                   "href=\"a.tif\"/></Data_File></Data_Access></Dimap_Document>");
    WriteGrid(7);
    using Case = std::tuple<char const *, char const *, int>;
    for (auto const &[name, driver, width] :
         {Case{"o ne?.zarr", "Zarr", 30}, Case{"dimap", "DIMAP", 30}, Case{"grid", "AIG", 4}}) {
        SCOPED_TRACE(name);
        test::OpenedImage const image(m_folder / name);
        ASSERT_TRUE(image) << image.error.Text();
        EXPECT_EQ(image.driver->GetId(), driver);
        EXPECT_EQ(image.driver->IsMyFile((m_folder / name).c_str()), 1);
        EXPECT_EQ(InfoOf(m_folder / name).width, width);
        EXPECT_FALSE(IsContainer(m_folder / name)) << "holds one picture";
        EXPECT_FALSE(test::OpenedImage(m_folder / name, "ENVI"));
    }
    test::OpenedImage const grid(m_folder / "grid");
    EXPECT_THAT(grid.Read<float>(0, 0, 2, 1, 2, 1, 0), ElementsAre(7, 7));
}

TEST_F(DataFolders, OneOfSeveralIsATreeWhoseNodesOpen) {
    test::WriteImage(m_folder / "t wo.zarr", {.width = 30, .height = 20, .channels = 2, .format = "Zarr"});
    test::WriteLayers(m_folder / "base.gdb", "OpenFileGDB", {"first", "se cond"});
    test::WriteLayers(m_folder / "map", "MapInfo File", {"first", "se cond"});
    using Case = std::pair<char const *, int>;
    for (auto const &[name, kind] :
         {Case{"t wo.zarr", BDINode_Raster}, Case{"base.gdb", BDINode_Thematic}, Case{"map", BDINode_Table}}) {
        SCOPED_TRACE(name);
        DString const path = m_folder / name;
        EXPECT_TRUE(IsContainer(path));
        test::OpenedTree const tree(path);
        ASSERT_TRUE(tree);
        EXPECT_EQ(tree.root->name, name);
        std::vector<BDINode> const nodes = tree.Children(*tree.root, kind);
        ASSERT_EQ(nodes.size(), 2U);
        for (BDINode const &node : nodes) {
            EXPECT_EQ(BDIMoniker(node.path, nullptr).FindFile(), path) << node.path;
            if (kind == BDINode_Raster)
                EXPECT_EQ(InfoOf(node.path).width, 30) << node.path;
            else
                EXPECT_THAT(Read(node.path), ElementsAre(testing::HasSubstr("value:"), testing::HasSubstr("7")));
        }
        EXPECT_TRUE(tree.Node(nodes[1].path));
        EXPECT_TRUE(test::OpenedTree(path, "Directory")) << "a folder for who asks for one";
    }
}

TEST_F(DataFolders, BandsOfAScenePutTogether) {
    DString const path = m_folder.Folder("scene");
    DString text = "GROUP = PRODUCT\n    FILE_NAME_BAND_3 = \"../../a.TIF\"\n";
    for (int band : {1, 2, 8}) {
        DString const name = "LC08_B" + std::to_string(band) + ".TIF";
        auto const sample = [&](int, int, int) { return 100 * band; };
        test::WriteImage(AppendPath(path, name), {.width = band == 8 ? 40 : 20, .type = GDT_UInt16, .sample = sample});
        text += "    FILE_NAME_BAND_" + std::to_string(band) + " = \"" + name + "\"\n";
    }
    m_folder.Write("scene/LC08_MTL.txt", text + "END\n");
    ImageInfo const info = InfoOf(path);
    EXPECT_EQ(std::pair(info.width, info.channels), std::pair(20, 2));
    test::OpenedImage const image(path);
    ASSERT_TRUE(image) << image.error.Text();
    EXPECT_THAT(image.Read<std::uint16_t>(0, 0, 1, 1, 1, 1, 0, 1), ElementsAre(200));
    EXPECT_TRUE(IsContainer(path));
    test::OpenedTree const tree(path);
    ASSERT_TRUE(tree);
    std::vector<BDINode> const nodes = tree.Children(*tree.root);
    ASSERT_EQ(nodes.size(), 2U);
    EXPECT_EQ(InfoOf(nodes[0].path).channels, 2);
    EXPECT_EQ(InfoOf(nodes[1].path).width, 40);
}

TEST_F(DataFolders, AFolderThatIsNoneStaysOne) {
    test::WriteLayers(m_folder / "shapes", "ESRI Shapefile", {"a", "b"}); // GDAL would open it
    EXPECT_FALSE(IsContainer(m_folder / "shapes"));
    EXPECT_THAT(test::OpenedImage(m_folder / "shapes").error.Text(), HasSubstr("is no plain file"));
    EXPECT_THAT(Read(m_folder / "shapes"), ElementsAre("closed"));
    // What it was is known no longer than the folder stays as it was.
    test::WriteImage(m_folder / "a.zarr", {.channels = 2, .format = "Zarr"});
    EXPECT_TRUE(IsContainer(m_folder / "a.zarr"));
    std::filesystem::remove_all(m_folder / "a.zarr/Band2");
    for (char const *name : {".zmetadata", ".zgroup"})
        std::filesystem::remove(m_folder / DString("a.zarr/").append(name));
    EXPECT_FALSE(IsContainer(m_folder / "a.zarr"));
}

TEST_F(DataFolders, HostileOnesEndWithAnError) {
    std::size_t const before = test::PeakBytesOfDrivers();
    auto const array = [](char const *shape, char const *chunks) {
        return DString(R"({"zarr_format":2,"dtype":"<f8","order":"C","fill_value":0,"filters":null,"compressor":null,)")
            .append(R"("shape":)" + DString(shape) + R"(,"chunks":)" + chunks + "}");
    };
    m_folder.Write("huge.zarr/.zarray", array("[2000000000,2000000000]", "[2000000000,2000000000]"));
    m_folder.Write("wide.zarr/.zarray", array("[9223372036854775807,3]", "[1,3]"));
    m_folder.Write("deep.zarr/.zgroup", DString(200'000, '['));
    DString longName = R"({"zarr_consolidated_format":1,"metadata":{")";
    for (int i = 0; i < 100'000; ++i)
        longName += "a/";
    m_folder.Write("names.zarr/.zmetadata", longName + R"(.zgroup":{"zarr_format":2}}})");
    std::filesystem::resize_file(m_folder.Write("endless.zarr/.zmetadata", "{"), std::uintmax_t{4} << 30U);
    m_folder.Folder("pipe.zarr");
    ASSERT_EQ(mkfifo((m_folder / "pipe.zarr/.zgroup").c_str(), 0600), 0);
    WriteGrid(7, 0x7FFFFFFF);
    test::WriteLayers(m_folder / "cut.gdb", "OpenFileGDB", {"a", "b"});
    for (auto const &file : std::filesystem::directory_iterator(m_folder / "cut.gdb"))
        if (file.file_size() > 100)
            std::filesystem::resize_file(file.path(), file.file_size() / 3);
    for (char const *name :
         {"huge.zarr", "wide.zarr", "deep.zarr", "names.zarr", "endless.zarr", "pipe.zarr", "grid", "cut.gdb"}) {
        SCOPED_TRACE(name);
        DCanvas picture;
        EXPECT_FALSE(ReadPreview({m_folder / name, nullptr}, "", nullptr, picture));
        std::ignore = IsContainer(m_folder / name);
        std::ignore = test::OpenedTree(m_folder / name);
        std::ignore = Read(m_folder / name);
    }
    EXPECT_LT(test::PeakBytesOfDrivers() - before, std::size_t{250} << 20U);
}

} // namespace
} // namespace zelvar
