#include "zelvar/data/FormatPlugin.h"

#include "support/RealDriversTest.h"
#include "support/Test.h"
#include "zelvar/data/BDINode.h"
#include "zelvar/data/DIOPluginMngr.h"

namespace zelvar {
namespace {

constexpr int kReading = 0;
constexpr int kWriting = 1;

struct FormatPlugins : test::RealDriversTest {
    /// Masks by id.
    static std::map<DString, DString> Offered(int mode, unsigned types, ICheck<DString> const *check = nullptr) {
        DList<DFileFrmt *> formats;
        DIOPluginMngr::Instance()->BuildFrmtList(mode, types, check, formats);
        std::map<DString, DString> masks;
        for (DFileFrmt *format : formats) {
            std::unique_ptr<DFileFrmt> const owned(format);
            EXPECT_TRUE(masks.emplace(owned->GetID(), owned->GetExtn()).second) << owned->GetID();
            EXPECT_FALSE(owned->GetName().empty()) << owned->GetID();
            EXPECT_FALSE(owned->GetExtn().empty()) << owned->GetID();
        }
        return masks;
    }
};

TEST_F(FormatPlugins, AreOfferedForWhatTheyReadAndWrite) {
    constexpr unsigned raster = BDINode_Raster;
    constexpr unsigned layers = BDINode_Thematic | BDINode_Table;
    constexpr unsigned table = BDINode_Table;
    test::Rows<char const *, char const *, unsigned, unsigned> const formats = {
        {"PNG", "*.png", raster, raster},
        {"COG", "*.tif;*.tiff", 0, raster},
        {"GPKG", "*.gpkg", raster | layers, raster | layers},
        {"ESRI Shapefile", "*.shp;*.dbf;*.shz;*.shp.zip", layers, layers},
        {"XLSX", "*.xlsx;*.xlsm", table, table},
        {"XLS", "*.xls", table, 0},
        {"CSV", "*.csv", table, table},
        {"ELAS", "*.*", raster, raster},
        {"MEM", "*.*", 0, 0},
        {"PostgreSQL", "*.*", 0, 0},
        {"WMS", "*.*", 0, 0}};
    for (auto const &[id, mask, reads, writes] : formats)
        for (unsigned const type : {raster, unsigned{BDINode_Thematic}, table}) {
            SCOPED_TRACE(DString(id) + " " + std::to_string(type));
            auto const read = Offered(kReading, type);
            auto const written = Offered(kWriting, type);
            EXPECT_EQ(read.contains(id), (reads & type) != 0);
            EXPECT_EQ(written.contains(id), (writes & type) != 0);
            if (read.contains(id)) {
                EXPECT_EQ(read.at(id), mask);
            }
        }
    EXPECT_TRUE(Offered(kReading, 0).empty());
    EXPECT_TRUE(Offered(2, ~0U).empty());
    EXPECT_GT(Offered(kReading, ~0U).size(), 100U);
}

TEST_F(FormatPlugins, ACheckLeavesFormatsOutByTheirIds) {
    class OnlyTiff : public ICheck<DString> {
        [[nodiscard]] bool Check(DString const &id) const override { return id == "GTiff"; }
    };
    OnlyTiff const only;
    EXPECT_EQ(Offered(kReading, ~0U, &only),
              (std::map<DString, DString>{{"GTiff", "*.tif;*.tiff;*.gtiff;*.btf;*.tf8;*.lsm;*.svs"}}));
}

TEST_F(FormatPlugins, AreThereOnceWhicheverManagerForgets) {
    std::size_t const count = DIOPluginMngr::Instance()->Plugins().size();
    BDIDrvrMngr::Instance()->Reset();
    RDIDriverMngr::Instance()->Reset();
    EXPECT_EQ(DIOPluginMngr::Instance()->Plugins().size(), count);
}

} // namespace
} // namespace zelvar
