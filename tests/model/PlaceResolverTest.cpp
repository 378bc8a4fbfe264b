#include "zelvar/model/PlaceResolver.h"

#include "support/FakeBDIDrvr.h"
#include "support/TestFiles.h"
#include "zelvar/base/DFile.h"
#include "zelvar/base/Directories.h"

#include <gtest/gtest.h>

namespace zelvar {
namespace {

class PlaceResolverTest : public testing::Test {
protected:
    test::FakeDrivers m_drivers;
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
    m_drivers.Add("pages", "*.tif", [&](auto &pages) { pages.Add("root", node, BDINode_Raster, "Page 2"); });
    RefItemPtr<DataSourceItem> const item = ItemFromPlace(node);
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->GetName(), "Page 2");
    EXPECT_EQ(item->GetParent()->GetParent()->GetPath(), path);
    EXPECT_EQ(ItemFromPlace("PAGE:3:" + path), nullptr);
}

TEST_F(PlaceResolverTest, FindsAndOpensConnectionsByName) {
    test::FakeBDIDrvr const &driver = m_drivers.Add("fake", "");
    DFile const file(AppendPath(GetDataSourceDefinitionsDir(), "place.xml"));
    ASSERT_TRUE(file.WriteAtomically("<DataSources><DataSource name='Maps' url='u'><Parameters/>"
                                     "<BDIDriver id='fake'/></DataSource></DataSources>"));
    RefItemPtr<DataSourceItem> const item = ItemFromPlace("source:Maps");
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->GetPath(), "root");
    EXPECT_EQ(driver.Counted().opened, 1);
    EXPECT_EQ(ItemFromPlace("source:maps"), nullptr);
}

TEST_F(PlaceResolverTest, AnAddressGoesToTheDrivers) {
    m_drivers.Add("web", "",
                  [](auto &web) { web.SetOpens([](DString const &url) { return url == "http://localhost/x.tif"; }); });
    EXPECT_NE(ItemFromPlace("http://localhost/x.tif"), nullptr);
    EXPECT_EQ(ItemFromPlace("http://localhost/y.tif"), nullptr);
    EXPECT_EQ(ItemFromPlace("smb://"), nullptr);
}

} // namespace
} // namespace zelvar
