#include "zelvar/model/PlaceResolver.h"

#include "support/ScriptedDriver.h"
#include "support/Test.h"
#include "zelvar/base/DFile.h"
#include "zelvar/base/Directories.h"
#include "zelvar/data/PlaceCheck.h"

namespace zelvar {
namespace {

struct PlaceResolverTest : testing::Test {
    test::ScriptedDrivers m_drivers;
    test::TempFolder m_folder;
};

TEST_F(PlaceResolverTest, FindsPathsAndFileAddresses) {
    DString const path = m_folder.Write("a b%.txt");
    RefItemPtr<DataSourceItem> const item = ItemFromPlace(path);
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->GetPath(), path);
    EXPECT_EQ(item->GetParent()->GetPath(), m_folder.Path());
    EXPECT_EQ(ItemFromPlace("file://" + m_folder.Path() + "/a%20b%25.txt")->GetPath(), path);
    EXPECT_EQ(ItemFromPlace(m_folder / "missing"), nullptr);
    EXPECT_EQ(ItemFromPlace("file://" + (m_folder / "missing")), nullptr);
    EXPECT_EQ(ItemFromPlace(""), nullptr);
}

TEST_F(PlaceResolverTest, FindsANodeInsideAContainer) {
    DString const path = m_folder.Write("x.tif");
    DString const node = "PAGE:2:" + path;
    m_drivers.AddAnyUrl("pages", "*.tif", [&](auto &pages) { pages.Add("root", node, BDINode_Raster, "Page 2"); });
    RefItemPtr<DataSourceItem> const item = ItemFromPlace(node);
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->GetName(), "Page 2");
    EXPECT_EQ(item->GetParent()->GetParent()->GetPath(), path);
    EXPECT_EQ(ItemFromPlace("PAGE:3:" + path), nullptr);
}

TEST_F(PlaceResolverTest, FindsAndOpensConnectionsByName) {
    test::AnyUrlDriver const &driver = m_drivers.AddAnyUrl("fake", "");
    DFile const file(AppendPath(GetDataSourceDefinitionsDir(), "place.xml"));
    ASSERT_TRUE(file.WriteAtomically("<DataSources><DataSource name='Maps' url='u'><Parameters/>"
                                     "<BDIDriver id='fake'/></DataSource></DataSources>"));
    RefItemPtr<DataSourceItem> const item = ItemFromPlace("source:Maps");
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->GetPath(), "root");
    EXPECT_EQ(driver.tries, 1);
    EXPECT_EQ(ItemFromPlace("source:maps"), nullptr);
}

TEST_F(PlaceResolverTest, AnAddressGoesToTheDrivers) {
    m_drivers.AddAnyUrl(
        "web", "", [](auto &web) { web.isUrl = [](DString const &url) { return url == "http://localhost/x.tif"; }; });
    EXPECT_NE(ItemFromPlace("http://localhost/x.tif"), nullptr);
    EXPECT_EQ(ItemFromPlace("http://localhost/y.tif"), nullptr);
    EXPECT_EQ(ItemFromPlace("smb://"), nullptr);
}

TEST_F(PlaceResolverTest, SaysWhatKeepsAPlaceFromBeingFound) {
    SetPlaceCheck([](DString const &path) { return path.find("dead") == DString::npos; });
    test::Rows<DString, char const *> const cases = {{"source:none", "there is no such definition"},
                                                     {"http://localhost/x", ""},
                                                     {m_folder / "gone", "No such file or directory"},
                                                     {"/dead/x", "its place does not answer"},
                                                     {"smb://dead/x", "its server does not answer"}};
    for (auto const &[place, reason] : cases)
        EXPECT_EQ(ReasonAgainst(place), reason) << place;
    SetPlaceCheck(nullptr);
}

} // namespace
} // namespace zelvar
