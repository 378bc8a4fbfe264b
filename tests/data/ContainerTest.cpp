#include "support/ImageFiles.h"
#include "support/OpenedTree.h"
#include "support/RealDriversTest.h"
#include "support/Test.h"
#include "zelvar/data/ImageReader.h"

#include <sys/stat.h>

namespace zelvar {
namespace {

using testing::UnorderedElementsAre;
using OpenTree = test::OpenedTree;

bool IsContainer(DString const &path) {
    auto const &candidates = BDIDrvrMngr::Instance()->CandidatesFor(path);
    return std::any_of(candidates.begin(), candidates.end(), [&](BDIDrvr const *driver) {
        return driver->GetAttrInt("BDI_Multiple_Images") == 1 && driver->CanReadPath(path);
    });
}

/// The first sample of what a node's path opens; -1 if it does not open.
int FirstSample(DString const &moniker) {
    DCanvas picture;
    if (!ReadPreview({moniker, nullptr}, "", nullptr, picture))
        return -1;
    return static_cast<int>(RedOf(picture.GetPixel(0, 0)));
}

using Container = test::RealDriversTest;

TEST_F(Container, PagesOfATiffAreItsChildren) {
    DString const path = m_folder / "pa ges?.tif";
    test::WritePages(path, 3);
    OpenTree const tree(path);
    ASSERT_TRUE(tree);
    EXPECT_EQ(tree.driver->GetId(), "GTiff");
    EXPECT_EQ(tree.root->type, BDINode_Container | BDINode_Raster);
    EXPECT_EQ(tree.root->name, "pa ges?.tif");
    std::vector<BDINode> const pages = tree.Children(*tree.root);
    ASSERT_EQ(pages.size(), 3U);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(pages[i].type, static_cast<std::uint32_t>(BDINode_Raster));
        EXPECT_EQ(FirstSample(pages[i].path), static_cast<int>(10 * (i + 1))) << pages[i].path;
        EXPECT_EQ(tree.Node(pages[i].path).value_or(BDINode()).name, pages[i].name);
    }
    EXPECT_FALSE(tree.Node("/no/such"));
    EXPECT_TRUE(tree.Children(*tree.root, BDINode_Thematic).empty());
    EXPECT_TRUE(tree.Children(pages[0]).empty());
}

TEST_F(Container, OnlyFilesThatHoldSeveralThingsAreContainers) {
    auto const at = [&](char const *name) { return m_folder / name; };
    test::WriteImage(at("single.tif"));
    test::WriteImage(at("pyramid.tif"), {.width = 300, .height = 300}, {2, 4});
    test::WriteImage(at("big.tif"), {.options = {"BIGTIFF=YES"}});
    test::WriteImage(at("motorola.tif"), {.options = {"ENDIANNESS=BIG"}}, {2});
    test::WritePages(at("pages.tiff"), 2);
    test::WriteNetCdf(at("one.nc"), 1);
    test::WriteNetCdf(at("two.nc"), 2);
    test::WriteGeoPackage(at("one.gpkg"), 1, 0, 0);
    test::WriteGeoPackage(at("mixed.gpkg"), 1, 1, 1);
    test::WriteGeoPackage(at("pictures.gpkg"), 0, 0, 2);
    test::WriteZip(at("images.zip"), {{"a.tif", at("single.tif")}});
    m_folder.Write("text.txt", "text");
    test::WriteZip(at("texts.zip"), {{"a.txt", at("text.txt")}});
    m_folder.Write("garbage.tif", "II*");
    m_folder.Write("empty.zip");
    m_folder.Write("lies.tif", "PK\x03\x04 not a picture at all");
    for (char const *several : {"pages.tiff", "two.nc", "mixed.gpkg", "pictures.gpkg", "images.zip"})
        EXPECT_TRUE(IsContainer(at(several))) << several;
    for (char const *plain : {"single.tif", "pyramid.tif", "big.tif", "motorola.tif", "one.nc", "one.gpkg", "texts.zip",
                              "garbage.tif", "empty.zip", "lies.tif", "missing.tif"})
        EXPECT_FALSE(IsContainer(at(plain))) << plain;
}

TEST_F(Container, GroupsAreContainersAndTreesOfTheirOwn) {
    for (auto const &[file, driver] : {std::pair{"gr oups.nc", "netCDF"}, {"gr oups.h5", "HDF5"}}) {
        SCOPED_TRACE(file);
        DString const path = m_folder / file;
        test::WriteGroups(path);
        EXPECT_TRUE(IsContainer(path));
        OpenTree const tree(path);
        ASSERT_TRUE(tree);
        EXPECT_EQ(tree.driver->GetId(), driver);
        auto const only = [](std::vector<BDINode> const &nodes) { return nodes.size() == 1 ? nodes[0] : BDINode(); };
        BDINode const outer = only(tree.Children(*tree.root, BDINode_Container));
        EXPECT_EQ(outer.name, "outer");
        EXPECT_EQ(tree.Children(*tree.root, BDINode_Raster).size(), 1U); // "top"
        EXPECT_EQ(tree.Children(outer, BDINode_Raster).size(), 2U);
        BDINode const inner = only(tree.Children(outer, BDINode_Container));
        EXPECT_EQ(inner.name, "inner");
        BDINode const deep = only(tree.Children(inner));
        EXPECT_NE(deep.name.find("deep"), DString::npos);
        EXPECT_GE(FirstSample(deep.path), 0); // what lies in a group opens by its own name

        EXPECT_EQ(tree.Node(inner.path).value_or(BDINode()).name, "inner");
        OpenTree const alone(outer.path);
        ASSERT_TRUE(alone);
        EXPECT_EQ(alone.root->name, "outer");
        EXPECT_EQ(alone.root->path, outer.path);
        EXPECT_EQ(alone.Children(*alone.root).size(), 3U);
        EXPECT_FALSE(OpenTree(path + "?GROUP=nowhere"));
    }
}

TEST_F(Container, AnAnswerHoldsUntilTheFileChanges) {
    DString const path = m_folder / "grows.tif";
    test::WritePages(path, 1);
    EXPECT_FALSE(IsContainer(path));
    EXPECT_FALSE(IsContainer(path));
    test::WritePages(path, 2);
    EXPECT_TRUE(IsContainer(path));
}

TEST_F(Container, ATiffWhoseDirectoriesLeadInCirclesIsAPlainFile) {
    test::WriteImage(m_folder / "a.tif", {.width = 300, .height = 300}, {2});
    DString bytes = test::ReadFile(m_folder / "a.tif");
    // The second directory holds a smaller version; let its link lead back to itself.
    auto const number = [&](std::size_t at, std::size_t size) {
        std::size_t value = 0;
        for (std::size_t i = 0; i < size; ++i)
            value |= static_cast<std::size_t>(static_cast<unsigned char>(bytes[at + i])) << (8 * i);
        return value;
    };
    std::size_t const first = number(4, 4);
    std::size_t const second = number(first + 2 + 12 * number(first, 2), 4);
    ASSERT_NE(second, 0U);
    std::size_t const link = second + 2 + 12 * number(second, 2);
    for (std::size_t i = 0; i < 4; ++i)
        bytes[link + i] = static_cast<char>(second >> (8 * i) & 0xFFU);
    EXPECT_FALSE(IsContainer(m_folder.Write("circle.tif", bytes)));
}

TEST_F(Container, LayersTablesAndPicturesOfADatabaseAreToldApart) {
    DString const path = m_folder / "a b.gpkg";
    test::WriteGeoPackage(path, 1, 1, 1);
    OpenTree const tree(path, "GPKG");
    ASSERT_TRUE(tree);
    auto const names = tree.Names(*tree.root);
    EXPECT_EQ(names.at("layer 1"), static_cast<std::uint32_t>(BDINode_Thematic));
    EXPECT_EQ(names.at("table 1"), static_cast<std::uint32_t>(BDINode_Table));
    std::vector<BDINode> const pictures = tree.Children(*tree.root, BDINode_Raster);
    ASSERT_EQ(pictures.size(), 1U);
    EXPECT_EQ(names.count("picture 1 - picture 1"), 0U);
    EXPECT_GE(FirstSample(pictures[0].path), 0) << pictures[0].path;
    std::vector<BDINode> const layers = tree.Children(*tree.root, BDINode_Thematic);
    EXPECT_EQ(layers.at(0).path, path + "?LAYER=layer%201");
    EXPECT_EQ(FirstSample(layers.at(0).path), -1);
}

TEST_F(Container, AHierarchicalFileOpensByItsNodesWithTheDriverOfTheFile) {
    test::WriteNetCdf(m_folder / "two.nc", 2); // the same format under another name
    DString const path = m_folder / "two.h5";
    ASSERT_EQ(rename((m_folder / "two.nc").c_str(), path.c_str()), 0);
    EXPECT_TRUE(IsContainer(path));
    OpenTree const tree(path, "HDF5");
    ASSERT_TRUE(tree);
    std::vector<BDINode> const sets = tree.Children(*tree.root, BDINode_Raster);
    ASSERT_EQ(sets.size(), 2U);
    ImageInfo info;
    EXPECT_TRUE(ReadImageInfo({sets[0].path, nullptr}, "HDF5", nullptr, info)) << sets[0].path;
    EXPECT_EQ(info.width, 10);
    EXPECT_TRUE(ReadImageInfo({sets[1].path, nullptr}, "", nullptr, info));
}

TEST_F(Container, APlainImageOpensAsATreeWithoutChildren) {
    DString const path = m_folder / "single.tif";
    test::WriteImage(path);
    OpenTree const tree(path);
    ASSERT_TRUE(tree);
    EXPECT_EQ(tree.root->type, static_cast<std::uint32_t>(BDINode_Raster));
    EXPECT_EQ(tree.root->path, path);
    EXPECT_TRUE(tree.Children(*tree.root).empty());
    EXPECT_FALSE(OpenTree(path, "netCDF"));
    EXPECT_FALSE(OpenTree(m_folder.Write("text.txt", "text")));
    EXPECT_FALSE(OpenTree(""));
}

TEST_F(Container, AnArchiveShowsItsFoldersAndTheDataInThem) {
    test::WriteImage(m_folder / "a.tif", {.sample = [](int, int, int) { return 77; }});
    test::WritePages(m_folder / "p.tif", 2);
    test::WriteNetCdf(m_folder / "n.nc", 2);
    m_folder.Write("t.txt", "text");
    for (char const *name : {"box.zip", "odd.zip.name.zip", "wei?rd {x}.zip", "cl}osed.ZIP"}) {
        SCOPED_TRACE(name);
        DString const path = m_folder / name;
        test::WriteZip(m_folder / "source.zip", {{"a.tif", m_folder / "a.tif"},
                                                 {"in ner/d\xC3\xA4\x65p/b?.tif", m_folder / "a.tif"},
                                                 {"in ner/n.nc", m_folder / "n.nc"},
                                                 {"t.txt", m_folder / "t.txt"}});
        ASSERT_EQ(rename((m_folder / "source.zip").c_str(), path.c_str()), 0);
        OpenTree const tree(path);
        ASSERT_TRUE(tree);
        EXPECT_EQ(tree.driver->GetId(), "ZIP");
        auto const top = tree.Names(*tree.root);
        EXPECT_EQ(top, (std::map<DString, std::uint32_t>{{"a.tif", BDINode_Raster}, {"in ner", kDirectoryNode}}));
        EXPECT_EQ(FirstSample(tree.Children(*tree.root, BDINode_Raster).at(0).path), 77);
        BDINode const inner = tree.Children(*tree.root, BDINode_Directory).at(0);
        EXPECT_EQ(tree.Names(inner).size(), 2U);
        BDINode const deep = tree.Children(inner, BDINode_Directory).at(0);
        EXPECT_EQ(deep.name, "d\xC3\xA4\x65p");
        EXPECT_EQ(FirstSample(tree.Children(deep).at(0).path), 77) << tree.Children(deep).at(0).path;
        BDINode const file = tree.Children(inner, BDINode_Container).at(1);
        std::vector<BDINode> const variables = tree.Children(file);
        ASSERT_EQ(variables.size(), 2U);
        EXPECT_THAT(variables[1].name, HasSubstr("var2"));
        EXPECT_EQ(FirstSample(variables[1].path), 255) << variables[1].path;
        EXPECT_TRUE(tree.Node(variables[0].path));
    }
}

TEST_F(Container, AFolderIsATreeOfItsData) {
    test::WriteImage(m_folder / "a10.tif");
    test::WriteImage(m_folder / "a9.png", {.format = "PNG"});
    test::WritePages(m_folder / "p.tif", 2);
    m_folder.Write("t.txt", "text");
    m_folder.Write(".hidden.tif");
    m_folder.Write("sub folder/b.tif");
    ASSERT_EQ(mkfifo((m_folder / "pipe.tif").c_str(), 0600), 0);
    for (DString const &url : {m_folder.Path(), m_folder.Path() + "/", "file://" + m_folder.Path()}) {
        SCOPED_TRACE(url);
        OpenTree const tree(url);
        ASSERT_TRUE(tree);
        EXPECT_EQ(tree.driver->GetId(), "Directory");
        std::vector<DString> names;
        for (BDINode const &child : tree.Children(*tree.root))
            names.push_back(child.name);
        EXPECT_THAT(names, ElementsAre("a9.png", "a10.tif", "p.tif", "sub folder"));
        BDINode const folder = tree.Children(*tree.root, BDINode_Directory).at(0);
        EXPECT_EQ(tree.Children(folder).at(0).path, m_folder / "sub folder/b.tif");
        EXPECT_EQ(tree.Children(tree.Children(*tree.root, BDINode_Container).at(0)).size(), 2U);
        EXPECT_EQ(tree.Children(*tree.root, BDINode_Raster).at(0).path, m_folder / "a9.png");
    }
    EXPECT_FALSE(OpenTree(m_folder / "missing", "Directory"));
    EXPECT_FALSE(OpenTree(m_folder / "a10.tif", "Directory"));
}

TEST_F(Container, NamesOfAnyBytesAreKeptThroughAllNodes) {
    m_folder.Folder("\xFF\xFEs");
    DString const path = m_folder / "\xFF\xFEs/\xE4?\n.tif";
    test::WritePages(path, 2);
    OpenTree const folder(m_folder.Path(), "Directory");
    std::vector<BDINode> const inner = folder.Children(*folder.root);
    ASSERT_EQ(inner.size(), 1U);
    EXPECT_EQ(inner[0].name, "\xFF\xFEs");
    std::vector<BDINode> const files = folder.Children(inner[0]);
    ASSERT_EQ(files.size(), 1U);
    EXPECT_EQ(files[0].name, "\xE4?\n.tif");
    OpenTree const file(path);
    ASSERT_TRUE(file);
    EXPECT_EQ(file.root->name, "\xE4?\n.tif");
    for (BDINode const &page : file.Children(*file.root))
        EXPECT_GE(FirstSample(page.path), 10) << page.path;
}

TEST_F(Container, AFolderIsFilteredByAMaskAndTellsWhichItKnows) {
    test::WriteImage(m_folder / "a.tif");
    test::WriteImage(m_folder / "b.png", {.format = "PNG"});
    m_folder.Folder("sub");
    OpenTree const filtered(m_folder.Path(), "Directory", "*.PNG;*.bmp");
    EXPECT_THAT(filtered.Names(*filtered.root), UnorderedElementsAre(testing::Key("b.png"), testing::Key("sub")));
    EXPECT_EQ(filtered.driver->GetAttrInt("BDI_Filtering"), 1);

    std::vector<BDINode> const top = filtered.Children(filtered.Node(m_folder.Path()).value(), BDINode_Table);
    ASSERT_EQ(top.size(), 1U);
    EXPECT_EQ(top[0].name, "Filters");
    std::vector<DString> masks;
    for (BDINode const &filter : filtered.Children(filtered.Node(top[0].path).value(), BDINode_Table)) {
        EXPECT_EQ(filter.name, "Filter");
        masks.push_back(filter.value);
    }
    EXPECT_THAT(masks, testing::Contains("*.png"));
    EXPECT_EQ(filtered.Names(*filtered.root, 0x1F).count("Filters"), 0U); // never among the data
}

} // namespace
} // namespace zelvar
