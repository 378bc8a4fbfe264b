#include "zelvar/model/DataSourceExtras.h"

#include "support/TestFiles.h"
#include "zelvar/base/Directories.h"
#include "zelvar/base/PathStyle.h"
#include "zelvar/data/DriverProvider.h"
#include "zelvar/data/RDIDriverMngr.h"
#include "zelvar/model/NtwDataSourceItem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

namespace zelvar {
namespace {

/// Owns the files whose path ends with its suffix.
class SuffixDriver : public RDIDriver {
public:
    SuffixDriver(DString id, DString suffix) : m_id(std::move(id)), m_suffix(std::move(suffix)) {}
    [[nodiscard]] DString GetId() const override { return m_id; }
    [[nodiscard]] DString GetInfo() const override { return {}; }
    [[nodiscard]] int IsMyFile(char const *path) const override { return DString(path).ends_with(m_suffix) ? 1 : 0; }
    void *OpenFile(BDIMoniker const &, StopSignal const *, DError *) override { return nullptr; }
    void CloseFile(void *, bool) override {}
    [[nodiscard]] int GetNumChnl(void *) const override { return 0; }
    [[nodiscard]] int GetChnlSizeX(void *, int) const override { return 0; }
    [[nodiscard]] int GetChnlSizeY(void *, int) const override { return 0; }
    [[nodiscard]] int GetChnlDataType(void *, int) const override { return 0; }
    [[nodiscard]] RDIGeoCoo GetChnlGeoCode(void *, int) const override { return {}; }
    [[nodiscard]] DString GetAttrString(char const *, void *, int) const override { return {}; }
    [[nodiscard]] int GetAttrInt(char const *, void *, int) const override { return 0; }
    bool ReadBlockRsmpl(void *, int, double, double, double, double, void *, int, int, int, bool, bool) override {
        return false;
    }

private:
    DString m_id;
    DString m_suffix;
};

class DataSourceExtrasTest : public testing::Test {
protected:
    DataSourceExtrasTest() : m_former(GetDataSourceTemplatesDir()) {
        setenv("ZELVAR_TEMPLATES_DIR", m_folder.Path().c_str(), 1);
        RDIDriverMngr::Instance()->Reset();
        SetDriverProvider([] {});
        RDIDriverMngr::Instance()->Add(std::make_unique<SuffixDriver>("tif", ".tif"));
        RDIDriverMngr::Instance()->Add(std::make_unique<SuffixDriver>("all", ""));
    }
    ~DataSourceExtrasTest() override {
        RDIDriverMngr::Instance()->Reset();
        setenv("ZELVAR_TEMPLATES_DIR", m_former.c_str(), 1);
    }
    [[nodiscard]] RefItemPtr<DataSourceItem> File(char const *name) const {
        return NtwDataSourceItem::CreateItem(m_folder.Write(name).c_str(), nullptr, nullptr);
    }

    test::TempFolder m_folder;

private:
    DString m_former;
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
    DataSourceExtras const copy = extras;
    EXPECT_EQ(copy.GetItems().front(), extras.GetItems().front());
}

TEST_F(DataSourceExtrasTest, WithoutFilesNothingApplies) {
    DataSourceExtras extras;
    setenv("ZELVAR_TEMPLATES_DIR", "", 1);
    EXPECT_TRUE(extras.Load());
    setenv("ZELVAR_TEMPLATES_DIR", (m_folder / "missing").c_str(), 1);
    EXPECT_TRUE(extras.Load());
    EXPECT_EQ(extras.GetDSOptions(File("x.tif")), nullptr);
}

} // namespace
} // namespace zelvar
