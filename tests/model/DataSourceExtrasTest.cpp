#include "zelvar/model/DataSourceExtras.h"

#include "support/ScriptedDriver.h"
#include "support/Test.h"
#include "zelvar/base/PathStyle.h"
#include "zelvar/data/DriverProvider.h"
#include "zelvar/model/NtwDataSourceItem.h"

namespace zelvar {
namespace {

/// Owns the files whose path ends with its suffix.
class SuffixDriver : public test::ScriptedRasterDriver {
public:
    SuffixDriver(DString id, DString suffix) : ScriptedRasterDriver(std::move(id)), m_suffix(std::move(suffix)) {}
    [[nodiscard]] int IsMyFile(char const *path) const override { return DString(path).ends_with(m_suffix) ? 1 : 0; }

private:
    DString m_suffix;
};

struct DataSourceExtrasTest : testing::Test {
    DataSourceExtrasTest() {
        RDIDriverMngr::Instance()->Reset();
        SetDriverProvider([] {});
        RDIDriverMngr::Instance()->Add(std::make_unique<SuffixDriver>("tif", ".tif"));
        RDIDriverMngr::Instance()->Add(std::make_unique<SuffixDriver>("all", ""));
    }
    ~DataSourceExtrasTest() override { RDIDriverMngr::Instance()->Reset(); }
    [[nodiscard]] RefItemPtr<DataSourceItem> File(char const *name) const {
        return NtwDataSourceItem::CreateItem(m_folder.Write(name).c_str(), nullptr, nullptr);
    }

    test::TempFolder m_folder;
    test::Environment m_environment{{{"ZELVAR_TEMPLATES_DIR", m_folder.Path()}}};
};

TEST_F(DataSourceExtrasTest, TheFirstEntryWhoseDriverOwnsTheFileApplies) {
    m_folder.Write("a.xml",
                   "<DataSourceExtras><DataSourceOptions datasource='only'/><DataSourceOptions/>"
                   "<DataSourceOptions driver='missing' template='m.html'/>"
                   "<Other driver='all' template='o.html'/>"
                   "<DataSourceOptions driver='tif' template='tif.html'><Option value='7'/></DataSourceOptions>"
                   "</DataSourceExtras>");
    m_folder.Write("b.xml", "<DataSourceExtras><DataSourceOptions driver='all' template='all.html'/>"
                            "</DataSourceExtras>");
    m_folder.Write("c.xml", "<DataSources><DataSourceOptions driver='all'/></DataSources>");
    m_folder.Write("d.xml", "<DataSourceExtras><DataSourceOptions");
    DataSourceExtras extras;
    EXPECT_TRUE(extras.Load());
    EXPECT_EQ(extras.GetItems().size(), 4U);
    DataSourceExtras::Item const *const tif = extras.GetDSOptions(File("x.tif"));
    ASSERT_NE(tif, nullptr);
    EXPECT_EQ(tif->ItemTemplatePath, m_folder / "tif.html");
    EXPECT_EQ(tif->ItemOptions->GetChldNode("Option")->GetAttrInt("value"), 7);
    EXPECT_EQ(extras.GetDSOptions(File("x.png"))->ItemTemplatePath, m_folder / "all.html");
    EXPECT_EQ(extras.GetDSOptions(nullptr), nullptr);
    StopSignal stop{false};
    EXPECT_EQ(extras.FindFirstOptions({File("x.png"), nullptr, File("x.tif")}, stop), extras.GetItems().back());
    EXPECT_EQ(extras.FindFirstOptions({nullptr, File("x.tif"), File("x.png")}, stop).get(), tif) << "the earlier entry";
    stop = true;
    EXPECT_EQ(extras.FindFirstOptions({File("x.tif")}, stop), nullptr);
    DataSourceExtras const copy = extras;
    EXPECT_EQ(copy.GetItems().front(), extras.GetItems().front());
}

TEST_F(DataSourceExtrasTest, WithoutFilesNothingApplies) {
    DataSourceExtras extras;
    for (DString const &folder : {DString(), m_folder / "missing"}) {
        setenv("ZELVAR_TEMPLATES_DIR", folder.c_str(), 1);
        EXPECT_TRUE(extras.Load());
    }
    EXPECT_EQ(extras.GetDSOptions(File("x.tif")), nullptr);
}

} // namespace
} // namespace zelvar
