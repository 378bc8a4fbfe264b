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
    struct Case {
        char const *id;
        char const *mask;
        unsigned reads;
        unsigned writes;
    };
    constexpr unsigned raster = BDINode_Raster;
    constexpr unsigned layers = BDINode_Thematic | BDINode_Table;
    constexpr unsigned table = BDINode_Table;
    for (Case const &c : {Case{"PNG", "*.png", raster, raster}, Case{"COG", "*.tif;*.tiff", 0, raster},
                          Case{"GPKG", "*.gpkg", raster | layers, raster | layers},
                          Case{"ESRI Shapefile", "*.shp;*.dbf;*.shz;*.shp.zip", layers, layers},
                          Case{"XLSX", "*.xlsx;*.xlsm", table, table}, Case{"XLS", "*.xls", table, 0},
                          Case{"CSV", "*.csv", table, table}, Case{"ELAS", "*.*", raster, raster},
                          Case{"MEM", "*.*", 0, 0}, Case{"PostgreSQL", "*.*", 0, 0}, Case{"WMS", "*.*", 0, 0}})
        for (unsigned const type : {raster, unsigned{BDINode_Thematic}, table}) {
            SCOPED_TRACE(DString(c.id) + " " + std::to_string(type));
            auto const read = Offered(kReading, type);
            auto const written = Offered(kWriting, type);
            EXPECT_EQ(read.contains(c.id), (c.reads & type) != 0);
            EXPECT_EQ(written.contains(c.id), (c.writes & type) != 0);
            if (read.contains(c.id)) {
                EXPECT_EQ(read.at(c.id), c.mask);
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
