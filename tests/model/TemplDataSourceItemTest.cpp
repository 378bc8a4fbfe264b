#include "zelvar/model/TemplDataSourceItem.h"

#include "support/ListedChildren.h"
#include "support/ScriptedDriver.h"
#include "support/Test.h"
#include "support/Told.h"
#include "zelvar/base/DFile.h"
#include "zelvar/base/Directories.h"
#include "zelvar/data/DriverProvider.h"
#include "zelvar/model/ChildWalker.h"
#include "zelvar/xml/XMLNode.h"

namespace zelvar::test {
namespace {

RefItemPtr<TemplDataSourceItem> FromXml(char const *text) {
    XMLNode node;
    EXPECT_TRUE(node.LoadText(text)) << text;
    return TemplDataSourceItem::CreateItem(&node);
}

constexpr char const *kDefinition = "<DataSource name='Maps' url='http://localhost/${layer}'>"
                                    "<Parameters>layer=roads</Parameters><BDIDriver id='fake'/>"
                                    "<RDIDriver id='rdi'/></DataSource>";

struct TemplDataSourceItemTest : testing::Test {
    ~TemplDataSourceItemTest() override {
        EXPECT_EQ(m_driver.OpenTrees(), 0);
        EXPECT_EQ(m_driver.OpenNodes(), 0);
        EXPECT_EQ(m_driver.OpenFinds(), 0);
    }
    [[nodiscard]] RefItemPtr<TemplDataSourceItem> Root() const {
        return RefItemPtr<TemplDataSourceItem>(TemplDataSourceItem::CreateItem(&m_driver, "x", nullptr));
    }

    ScriptedDrivers m_drivers;
    AnyUrlDriver &m_driver = m_drivers.AddAnyUrl("fake", "", [](auto &fake) { fake.attributes["BDI_Filtering"] = 1; });
};

TEST_F(TemplDataSourceItemTest, AConnectionOpensWhenItIsPreparedAndNotBefore) {
    m_driver.Add("root", "roads", BDINode_Raster, "Roads");
    Traced const log;
    RefItemPtr<TemplDataSourceItem> const item = FromXml(kDefinition);
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->GetName(), "Maps");
    item->SetName("");
    EXPECT_EQ(item->GetName(), "") << "there is no node to ask";
    item->SetName("Maps");
    EXPECT_EQ(item->GetRDIDriverId(), "rdi");
    EXPECT_EQ(item->GetBDIDriverId(), "fake");
    EXPECT_EQ(item->GetPath(), "");
    EXPECT_FALSE(item->IsFolder());
    EXPECT_EQ(item->CreateIterator(nullptr, nullptr, nullptr, 0, DT_DATA), nullptr);
    EXPECT_EQ(m_driver.tries, 0);
    item->Prepare();
    item->Prepare();
    EXPECT_EQ(m_driver.tries, 1);
    EXPECT_EQ(log.Last(), "Repository by URL \"http://localhost/roads\" was created? YES (driver id: \"fake\", "
                          "info: scripted fake)");
    EXPECT_TRUE(item->IsFolder());
    EXPECT_THAT(Names(*item, nullptr, BDINode_Raster), ElementsAre("Roads"));
}

TEST_F(TemplDataSourceItemTest, ADefinitionWaitsForNoDriver) {
    int asked = 0;
    SetDriverProvider([&] { ++asked; }, true);
    RefItemPtr<TemplDataSourceItem> const item = FromXml(kDefinition);
    EXPECT_EQ(item->GetName(), "Maps");
    EXPECT_FALSE(item->IsFolder());
    EXPECT_FALSE(item->IsFilterSupported());
    RefItemPtr<DataSourceItem> const copy = item->Clone();
    EXPECT_EQ(asked, 0);
    item->Prepare();
    EXPECT_EQ(asked, 1);
    SetDriverProvider({});
}

TEST_F(TemplDataSourceItemTest, AConnectionThatDoesNotOpenIsAnEmptyPaneAndALineInTheLog) {
    m_driver.isUrl = [](DString const &) { return false; };
    Traced const log;
    RefItemPtr<TemplDataSourceItem> const item = FromXml(kDefinition);
    item->Prepare();
    EXPECT_THAT(log.Last(), HasSubstr("was created? NO"));
    EXPECT_EQ(item->CreateIterator(nullptr, nullptr, nullptr, 0, DT_DATA), nullptr);
    EXPECT_FALSE(item->IsFilterSupported());
    EXPECT_EQ(item->GetFilterConf(), "");
}

TEST_F(TemplDataSourceItemTest, WithAnUnknownDriverTheManagerChooses) {
    Traced const log;
    RefItemPtr<TemplDataSourceItem> const item =
        FromXml("<DataSource name='x' url='u'><Parameters/><BDIDriver id='missing'/></DataSource>");
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->GetBDIDriverId(), "");
    EXPECT_EQ(log.Last(), "BDI driver with ID \"missing\" was created? NO");
    item->Prepare();
    EXPECT_EQ(item->GetBDIDriverId(), "fake");
}

TEST_F(TemplDataSourceItemTest, ADefinitionWithoutAUrlIsNoItem) {
    EXPECT_EQ(FromXml("<DataSource name='x' url='http://localhost/'/>"), nullptr);
    EXPECT_EQ(FromXml("<DataSource name='x' url='${missing}'><Parameters>a=b</Parameters></DataSource>"), nullptr);
    EXPECT_EQ(TemplDataSourceItem::CreateItem(nullptr), nullptr);
}

TEST_F(TemplDataSourceItemTest, ANodesBitsTellFolderAndFile) {
    Rows<unsigned, bool, bool, bool> const cases = {
        {BDINode_Container, true, false, false}, {BDINode_Folder, true, true, false},
        {BDINode_Raster, false, true, true},     {BDINode_Container | BDINode_Raster, true, true, true},
        {BDINode_Table, false, true, false},     {0, false, false, false}};
    RefItemPtr<TemplDataSourceItem> const root = Root();
    for (auto const &[type, isFolder, isFileWithAnyMask, isRaster] : cases) {
        DString const path = "node " + std::to_string(type);
        SCOPED_TRACE(path);
        m_driver.Add("root", path, type, "n");
        RefItemPtr<TemplDataSourceItem> const item(TemplDataSourceItem::CreateNodeItem(root, path.c_str()));
        ASSERT_NE(item, nullptr);
        EXPECT_EQ(item->IsFolder(), isFolder);
        EXPECT_EQ(item->IsFile(0), isFileWithAnyMask);
        EXPECT_EQ(item->IsFile(BDINode_Raster), isRaster);
    }
    EXPECT_EQ(TemplDataSourceItem::CreateNodeItem(root, "no such node"), nullptr);
}

TEST_F(TemplDataSourceItemTest, ListsFoldersAndWhatTheMaskNames) {
    for (auto const &[path, type] : Rows<DString, unsigned>{{"container", BDINode_Container},
                                                            {"folder", BDINode_Folder},
                                                            {"raster", BDINode_Raster},
                                                            {"table", BDINode_Table}})
        m_driver.Add("root", path, type, path);
    RefItemPtr<TemplDataSourceItem> const root = Root();
    EXPECT_EQ(root->GetName(), "Root");
    EXPECT_THAT(Names(*root), ElementsAre("container", "folder"));
    EXPECT_THAT(Names(*root, nullptr, BDINode_Raster), ElementsAre("container", "folder", "raster"));
    m_driver.Break("raster");
    EXPECT_THAT(Names(*root, nullptr, BDINode_Raster | BDINode_Table), ElementsAre("container", "folder", "table"));
    CountingCancel afterTwo(2);
    EXPECT_THAT(Names(*root, nullptr, BDINode_Table, &afterTwo), ElementsAre("container", "folder"));
}

TEST_F(TemplDataSourceItemTest, AChildHoldsItsBranchAndTheTreeStaysOpenForIt) {
    m_driver.Add("root", "f", BDINode_Folder, "folder");
    m_driver.Add("f", "r", BDINode_Raster, "raster");
    RefItemPtr<DataSourceItem> const leaf = Children(*Children(*Root()).at(0), nullptr, BDINode_Raster).at(0);
    EXPECT_EQ(leaf->GetParent()->GetPath(), "f");
    EXPECT_EQ(leaf->GetParent()->GetParent()->GetPath(), "root");
    EXPECT_EQ(m_driver.OpenTrees(), 1);
}

TEST_F(TemplDataSourceItemTest, ACloneOwnsANodeOfItsOwn) {
    RefItemPtr<DataSourceItem> const copy = Root()->Clone();
    EXPECT_EQ(copy->GetPath(), "root");
    EXPECT_EQ(copy->GetParent(), nullptr);
    EXPECT_EQ(m_driver.OpenNodes(), 1);
}

TEST_F(TemplDataSourceItemTest, AnItemOfAFilePreparesNothingAndTellsThatItIsOpen) {
    Traced const log;
    Root()->Prepare();
    EXPECT_EQ(m_driver.tries, 1);
    EXPECT_THAT(log.Last(), HasSubstr("by URL \"\" was created? YES"));
    EXPECT_EQ(TemplDataSourceItem::CreateItem(&m_driver, nullptr, nullptr), nullptr);
}

TEST_F(TemplDataSourceItemTest, AFilterOpensTheTreeAnewAndFailureKeepsTheOldOne) {
    bool opens = true;
    m_driver.isUrl = [&opens](DString const &) { return opens; };
    m_driver.Add("root", "f", BDINode_Folder, "folder");
    RefItemPtr<TemplDataSourceItem> const item = FromXml(kDefinition);
    EXPECT_FALSE(item->ResetFilter("x")); // not open yet
    item->Prepare();
    EXPECT_TRUE(item->IsFilterSupported());
    EXPECT_TRUE(item->ResetFilter("only these"));
    EXPECT_EQ(m_driver.lastFilter, "only these");
    EXPECT_THAT(Names(*item), ElementsAre("folder"));
    opens = false;
    EXPECT_FALSE(item->ResetFilter("broken"));
    EXPECT_THAT(Names(*item), ElementsAre("folder"));
}

TEST_F(TemplDataSourceItemTest, FilterConfigurationsStandOneALine) {
    for (bool const nested : {false, true}) {
        AnyUrlDriver &driver = m_drivers.AddAnyUrl(nested ? "nested" : "direct", "", [&](auto &fake) {
            fake.attributes["BDI_Filtering"] = 1;
            DString const url = nested ? "nested url" : "direct url";
            fake.Add("root", url, BDINode_Container, "top");
            fake.Add(url, url + "/meta", BDINode_Table, "MetaData");
            DString const above = nested ? url + "/meta" : url;
            fake.Add(above, url + "/filters", BDINode_Table, "Filters");
            fake.Add(url + "/filters", url + "/1", BDINode_Table, "Filter", "name=one");
            fake.Add(url + "/filters", url + "/2", BDINode_Table, "filter", "not this");
            fake.Add(url + "/filters", url + "/3", BDINode_Table, "Filter", "name=two");
        });
        RefItemPtr<TemplDataSourceItem> item = FromXml(
            nested ? "<DataSource name='n' url='nested url'><Parameters/><BDIDriver id='nested'/></DataSource>"
                   : "<DataSource name='d' url='direct url'><Parameters/><BDIDriver id='direct'/></DataSource>");
        item->Prepare();
        EXPECT_EQ(item->GetFilterConf(), "name=one\nname=two");
        item.reset();
        EXPECT_EQ(driver.OpenNodes(), 0);
        EXPECT_EQ(driver.OpenFinds(), 0);
    }
}

TEST_F(TemplDataSourceItemTest, IconsOfTheDefinitionTellRootFolderAndImageApart) {
    DString const directory = GetDataSourceTemplatesDir();
    for (char const *name : {"root.png", "folder.png", "image.png"})
        ASSERT_TRUE(DFile(AppendPath(directory, name)).WriteAtomically("x"));
    for (unsigned const type :
         {unsigned{BDINode_Folder}, unsigned{kDirectoryNode}, unsigned{BDINode_Table}, unsigned{BDINode_Raster}})
        m_driver.Add("root", std::to_string(type), type, "n");
    RefItemPtr<TemplDataSourceItem> const item =
        FromXml("<DataSource name='x' url='u'><Parameters/><BDIDriver id='fake'/><Icons>"
                "<Icon type='DataSource' path='root.png'/><Icon type='Folder' path='folder.png'/>"
                "<Icon type='Image' path='image.png'/><Icon type='Image' path='missing.png'/><Icon type='Image'/>"
                "</Icons></DataSource>");
    item->Prepare();
    auto const pictureOf = [](DataSourceItem const &source) {
        return DString(FileNameOf(source.GetImageList()->Get(source.GetIconIndex()).name));
    };
    EXPECT_EQ(pictureOf(*item), "root.png");
    std::vector<DString> pictures;
    for (auto const &child : Children(*item, nullptr, 0xFE))
        pictures.push_back(pictureOf(*child));
    EXPECT_THAT(pictures,
                ElementsAre("image.png", "folder.png", "folder.png", "image.png")); // a folder bit counts as data here
    RefItemPtr<TemplDataSourceItem> const plain = FromXml(kDefinition);
    EXPECT_EQ(plain->GetIconIndex(), -1);
    EXPECT_EQ(plain->GetImageList(), nullptr);
}

TEST_F(TemplDataSourceItemTest, AWalkerCanGoBelowChildren) {
    m_driver.Add("root", "a", BDINode_Container, "a");
    m_driver.Add("a", "a1", BDINode_Raster, "a1");
    m_driver.Add("root", "b", BDINode_Raster, "b");
    BDINode top;
    top.path = "root";
    std::vector<DString> seen;
    {
        ChildWalker walker(m_driver, nullptr, top, BDINode_Raster, ChildWalker::Depth::Descendants);
        for (walker.Start(); walker.Current() != nullptr; walker.Next())
            seen.push_back(walker.Current()->name);
    }
    EXPECT_THAT(seen, ElementsAre("a", "a1", "b"));
    ChildWalker unfinished(m_driver, nullptr, top, BDINode_Raster | BDINode_Container);
    unfinished.Start();
    EXPECT_EQ(m_driver.OpenFinds(), 1);
}

} // namespace
} // namespace zelvar::test
