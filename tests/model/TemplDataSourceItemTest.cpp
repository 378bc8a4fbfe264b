#include "zelvar/model/TemplDataSourceItem.h"

#include "support/ScriptedDriver.h"
#include "support/Test.h"
#include "zelvar/base/DFile.h"
#include "zelvar/base/Directories.h"
#include "zelvar/base/Report.h"
#include "zelvar/data/DriverProvider.h"
#include "zelvar/model/ChildWalker.h"
#include "zelvar/xml/XMLNode.h"

#include <filesystem>

namespace zelvar {
namespace {

/// Keeps what the log was told.
class LogKeeper : test::Pinned {
public:
    LogKeeper() : m_former(Report::SetTraceHandler([this](int, DString const &line) { m_lines.push_back(line); })) {}
    ~LogKeeper() { Report::SetTraceHandler(m_former); }
    [[nodiscard]] DString Last() const { return m_lines.empty() ? DString() : m_lines.back(); }

private:
    std::vector<DString> m_lines;
    Report::TraceHandler m_former;
};

class CountingCancel : public DataSourceItem::ICancel {
public:
    explicit CountingCancel(int allowed) : m_allowed(allowed) {}
    bool IsCanceled() override { return m_allowed-- <= 0; }

private:
    int m_allowed;
};

RefItemPtr<TemplDataSourceItem> FromXml(char const *text) {
    XMLNode node;
    EXPECT_TRUE(node.LoadText(text)) << text;
    return TemplDataSourceItem::CreateItem(&node);
}

constexpr char const *kDefinition = "<DataSource name='Maps' url='http://localhost/${layer}'>"
                                    "<Parameters>layer=roads</Parameters><BDIDriver id='fake'/>"
                                    "<RDIDriver id='rdi'/></DataSource>";

std::vector<DString> Names(DataSourceItem &folder, int mask = 0, DataSourceItem::ICancel *cancel = nullptr) {
    std::vector<DString> names;
    ForEachChild(folder, cancel, nullptr, nullptr, mask, DT_DATA, [&](RefItemPtr<DataSourceItem> const &child) {
        names.push_back(child->GetName());
        return true;
    });
    return names;
}

struct TemplDataSourceItemTest : testing::Test {
    test::ScriptedDrivers m_drivers;
};

TEST_F(TemplDataSourceItemTest, AConnectionOpensWhenItIsPreparedAndNotBefore) {
    test::AnyUrlDriver const &driver =
        m_drivers.AddAnyUrl("fake", "", [](auto &fake) { fake.Add("root", "roads", BDINode_Raster, "Roads"); });
    LogKeeper const log;
    {
        RefItemPtr<TemplDataSourceItem> const item = FromXml(kDefinition);
        ASSERT_NE(item, nullptr);
        EXPECT_EQ(item->GetName(), "Maps");
        EXPECT_EQ(item->GetRDIDriverId(), "rdi");
        EXPECT_EQ(item->GetBDIDriverId(), "fake");
        EXPECT_EQ(item->GetPath(), "");
        EXPECT_FALSE(item->IsFolder());
        EXPECT_EQ(item->CreateIterator(nullptr, nullptr, nullptr, 0, DT_DATA), nullptr);
        EXPECT_EQ(driver.tries, 0);
        item->Prepare();
        item->Prepare();
        EXPECT_EQ(driver.tries, 1);
        EXPECT_EQ(log.Last(), "Repository by URL \"http://localhost/roads\" was created? YES (driver id: \"fake\", "
                              "info: scripted fake)");
        EXPECT_TRUE(item->IsFolder());
        EXPECT_THAT(Names(*item, BDINode_Raster), ElementsAre("Roads"));
    }
    EXPECT_EQ(driver.OpenTrees(), 0);
    EXPECT_EQ(driver.OpenNodes(), 0);
    EXPECT_EQ(driver.OpenFinds(), 0);
}

TEST_F(TemplDataSourceItemTest, ADefinitionWaitsForNoDriver) {
    int asked = 0;
    BDIDrvrMngr::Instance()->Reset();
    SetDriverProvider([&] { ++asked; }, true);
    {
        RefItemPtr<TemplDataSourceItem> const item = FromXml(kDefinition);
        EXPECT_EQ(item->GetName(), "Maps");
        EXPECT_FALSE(item->IsFolder());
        EXPECT_FALSE(item->IsFilterSupported());
        RefItemPtr<DataSourceItem> const copy = item->Clone();
    }
    EXPECT_EQ(asked, 0);
    FromXml(kDefinition)->Prepare();
    EXPECT_EQ(asked, 1);
    SetDriverProvider({});
}

TEST_F(TemplDataSourceItemTest, AConnectionThatDoesNotOpenIsAnEmptyPaneAndALineInTheLog) {
    m_drivers.AddAnyUrl("fake", "", [](auto &fake) { fake.isUrl = [](DString const &) { return false; }; });
    LogKeeper const log;
    RefItemPtr<TemplDataSourceItem> const item = FromXml(kDefinition);
    item->Prepare();
    EXPECT_THAT(log.Last(), HasSubstr("was created? NO"));
    EXPECT_EQ(item->CreateIterator(nullptr, nullptr, nullptr, 0, DT_DATA), nullptr);
    EXPECT_FALSE(item->IsFilterSupported());
    EXPECT_EQ(item->GetFilterConf(), "");
}

TEST_F(TemplDataSourceItemTest, WithAnUnknownDriverTheManagerChooses) {
    m_drivers.AddAnyUrl("other", "");
    LogKeeper const log;
    RefItemPtr<TemplDataSourceItem> const item =
        FromXml("<DataSource name='x' url='u'><Parameters/><BDIDriver id='missing'/></DataSource>");
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->GetBDIDriverId(), "");
    EXPECT_EQ(log.Last(), "BDI driver with ID \"missing\" was created? NO");
    item->Prepare();
    EXPECT_EQ(item->GetBDIDriverId(), "other");
}

TEST_F(TemplDataSourceItemTest, ADefinitionWithoutAUrlIsNoItem) {
    EXPECT_EQ(FromXml("<DataSource name='x' url='http://localhost/'/>"), nullptr);
    EXPECT_EQ(FromXml("<DataSource name='x' url='${missing}'><Parameters>a=b</Parameters></DataSource>"), nullptr);
    EXPECT_EQ(TemplDataSourceItem::CreateItem(nullptr), nullptr);
}

TEST_F(TemplDataSourceItemTest, ANodesBitsTellFolderAndFile) {
    using Case = std::tuple<unsigned, bool, bool, bool>; // type; folder, file with any mask, raster
    Case const cases[] = {{BDINode_Container, true, false, false},
                          {BDINode_Folder, true, true, false},
                          {BDINode_Raster, false, true, true},
                          {BDINode_Table, false, true, false},
                          {BDINode_Container | BDINode_Raster, true, true, true},
                          {0, false, false, false}};
    test::AnyUrlDriver &driver = m_drivers.AddAnyUrl("fake", "");
    for (auto const &[type, isFolder, isFileWithAnyMask, isRaster] : cases)
        driver.Add("root", "node " + std::to_string(type), type, "n");
    RefItemPtr<TemplDataSourceItem> const root(TemplDataSourceItem::CreateItem(&driver, "x", nullptr));
    for (auto const &[type, isFolder, isFileWithAnyMask, isRaster] : cases) {
        SCOPED_TRACE(type);
        RefItemPtr<TemplDataSourceItem> const item(
            TemplDataSourceItem::CreateNodeItem(root, ("node " + std::to_string(type)).c_str()));
        ASSERT_NE(item, nullptr);
        EXPECT_EQ(item->IsFolder(), isFolder);
        EXPECT_EQ(item->IsFile(0), isFileWithAnyMask);
        EXPECT_EQ(item->IsFile(BDINode_Raster), isRaster);
    }
    EXPECT_EQ(TemplDataSourceItem::CreateNodeItem(root, "no such node"), nullptr);
}

TEST_F(TemplDataSourceItemTest, ListsFoldersAndWhatTheMaskNames) {
    test::AnyUrlDriver &driver = m_drivers.AddAnyUrl("fake", "");
    driver.Add("root", "c", BDINode_Container, "container");
    driver.Add("root", "f", BDINode_Folder, "folder");
    driver.Add("root", "r", BDINode_Raster, "raster");
    driver.Add("root", "t", BDINode_Table, "table");
    RefItemPtr<TemplDataSourceItem> const root(TemplDataSourceItem::CreateItem(&driver, "x", nullptr));
    EXPECT_EQ(root->GetName(), "Root");
    EXPECT_THAT(Names(*root), ElementsAre("container", "folder"));
    EXPECT_THAT(Names(*root, BDINode_Raster), ElementsAre("container", "folder", "raster"));
    driver.Break("r");
    EXPECT_THAT(Names(*root, BDINode_Raster | BDINode_Table), ElementsAre("container", "folder", "table"));
    CountingCancel afterTwo(2);
    EXPECT_THAT(Names(*root, BDINode_Table, &afterTwo), ElementsAre("container", "folder"));
}

TEST_F(TemplDataSourceItemTest, AChildHoldsItsBranchAndTheTreeStaysOpenForIt) {
    test::AnyUrlDriver &driver = m_drivers.AddAnyUrl("fake", "");
    driver.Add("root", "f", BDINode_Folder, "folder");
    driver.Add("f", "r", BDINode_Raster, "raster");
    RefItemPtr<DataSourceItem> leaf;
    {
        RefItemPtr<DataSourceItem> const root(TemplDataSourceItem::CreateItem(&driver, "x", nullptr));
        ForEachChild(*root, nullptr, nullptr, nullptr, 0, DT_DATA, [&](RefItemPtr<DataSourceItem> const &folder) {
            ForEachChild(*folder, nullptr, nullptr, nullptr, BDINode_Raster, DT_DATA,
                         [&](RefItemPtr<DataSourceItem> const &child) {
                             leaf = child;
                             return false;
                         });
            return false;
        });
    }
    ASSERT_NE(leaf, nullptr);
    EXPECT_EQ(leaf->GetParent()->GetPath(), "f");
    EXPECT_EQ(leaf->GetParent()->GetParent()->GetPath(), "root");
    EXPECT_EQ(driver.OpenTrees(), 1);
    leaf.reset();
    EXPECT_EQ(driver.OpenTrees(), 0);
    EXPECT_EQ(driver.OpenNodes(), 0);
}

TEST_F(TemplDataSourceItemTest, ACloneOwnsANodeOfItsOwn) {
    test::AnyUrlDriver &driver = m_drivers.AddAnyUrl("fake", "");
    RefItemPtr<DataSourceItem> root(TemplDataSourceItem::CreateItem(&driver, "x", nullptr));
    RefItemPtr<DataSourceItem> const copy = root->Clone();
    root.reset();
    EXPECT_EQ(copy->GetPath(), "root");
    EXPECT_EQ(copy->GetParent(), nullptr);
    EXPECT_EQ(driver.OpenNodes(), 1);
}

TEST_F(TemplDataSourceItemTest, AnItemOfAFilePreparesNothingAndTellsThatItIsOpen) {
    test::AnyUrlDriver &driver = m_drivers.AddAnyUrl("fake", "");
    LogKeeper const log;
    RefItemPtr<DataSourceItem> const item(TemplDataSourceItem::CreateItem(&driver, "x", nullptr));
    item->Prepare();
    EXPECT_EQ(driver.tries, 1);
    EXPECT_THAT(log.Last(), HasSubstr("by URL \"\" was created? YES"));
    EXPECT_EQ(TemplDataSourceItem::CreateItem(&driver, nullptr, nullptr), nullptr);
}

TEST_F(TemplDataSourceItemTest, AFilterOpensTheTreeAnewAndFailureKeepsTheOldOne) {
    bool opens = true;
    test::AnyUrlDriver &driver = m_drivers.AddAnyUrl("fake", "", [&](auto &fake) {
        fake.attributes["BDI_Filtering"] = 1;
        fake.isUrl = [&opens](DString const &) { return opens; };
        fake.Add("root", "f", BDINode_Folder, "folder");
    });
    RefItemPtr<TemplDataSourceItem> item = FromXml(kDefinition);
    EXPECT_FALSE(item->ResetFilter("x")); // not open yet
    item->Prepare();
    EXPECT_TRUE(item->IsFilterSupported());
    EXPECT_TRUE(item->ResetFilter("only these"));
    EXPECT_EQ(driver.lastFilter, "only these");
    EXPECT_THAT(Names(*item), ElementsAre("folder"));
    opens = false;
    EXPECT_FALSE(item->ResetFilter("broken"));
    EXPECT_THAT(Names(*item), ElementsAre("folder"));
    item.reset();
    EXPECT_EQ(driver.OpenTrees(), 0);
    EXPECT_EQ(driver.OpenNodes(), 0);
}

TEST_F(TemplDataSourceItemTest, FilterConfigurationsStandOneALine) {
    for (bool const nested : {false, true}) {
        test::AnyUrlDriver &driver = m_drivers.AddAnyUrl(nested ? "nested" : "direct", "", [&](auto &fake) {
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
    test::AnyUrlDriver &driver = m_drivers.AddAnyUrl("fake", "");
    driver.Add("root", "f", BDINode_Folder, "folder");
    driver.Add("root", "d", kDirectoryNode, "directory");
    driver.Add("root", "t", BDINode_Table, "table");
    driver.Add("root", "r", BDINode_Raster, "raster");
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
    ForEachChild(*item, nullptr, nullptr, nullptr, 0xFE, DT_DATA, [&](RefItemPtr<DataSourceItem> const &child) {
        pictures.push_back(pictureOf(*child));
        return true;
    });
    EXPECT_THAT(pictures,
                ElementsAre("image.png", "folder.png", "folder.png", "image.png")); // a folder bit counts as data here
    RefItemPtr<TemplDataSourceItem> const plain = FromXml(kDefinition);
    EXPECT_EQ(plain->GetIconIndex(), -1);
    EXPECT_EQ(plain->GetImageList(), nullptr);
}

TEST_F(TemplDataSourceItemTest, AWalkerCanGoBelowChildren) {
    test::AnyUrlDriver &driver = m_drivers.AddAnyUrl("fake", "");
    driver.Add("root", "a", BDINode_Container, "a");
    driver.Add("a", "a1", BDINode_Raster, "a1");
    driver.Add("root", "b", BDINode_Raster, "b");
    BDINode top;
    top.path = "root";
    std::vector<DString> seen;
    {
        ChildWalker walker(driver, nullptr, top, BDINode_Raster, ChildWalker::Depth::Descendants);
        for (walker.Start(); walker.Current() != nullptr; walker.Next())
            seen.push_back(walker.Current()->name);
    }
    EXPECT_THAT(seen, ElementsAre("a", "a1", "b"));
    ChildWalker unfinished(driver, nullptr, top, BDINode_Raster | BDINode_Container);
    unfinished.Start();
    EXPECT_EQ(driver.OpenFinds(), 1);
}

} // namespace
} // namespace zelvar
