// The operations whose formats come from plug-ins and from the workspace's custom imports.
#include "support/FileRequests.h"
#include "support/RequestProbe.h"
#include "support/ScriptedDriver.h"
#include "zelvar/data/CustImport.h"
#include "zelvar/filedlg/BuiltInFormats.h"
#include "zelvar/store/DCnfg.h"

namespace zelvar::test {
namespace {

struct NoPng : ICheck<DString> {
    [[nodiscard]] bool Check(DString const &id) const override { return id != "PNG"; }
};

struct DataOperations : testing::Test {
    DataOperations() {
        Forget();
        DIOPluginMngr::Instance()->Reset();
        SetDriverProvider({});
        ScriptedPlugin::asked.clear();
        Add("Images", {{"PNG", "Pictures", "*.png"},
                       {"TIF", "Big images", "*.tif;*.tiff"},
                       {"ASC", "Grids", "*.asc"},
                       {"IMG", "Erdas", "*.img"},
                       {"RAW", "Raw data", "RSTR_FRMT"}});
        Add("Tables", {{"INI", "Settings", "*.ini"}, {"CSV", "Comma", "*.csv;*.tsv"}});
    }
    ~DataOperations() override {
        DIOPluginMngr::Instance()->Reset();
        Wksp::Instance()->GetDataSchm()->Clear();
        Forget();
    }
    bool LoadRaster(ICheck<DString> const *check = nullptr, int mode = 0) {
        return request.OpenRasterData(Plugins(), mode, false, true, check);
    }
    static void Add(char const *name, std::vector<ScriptedPlugin::Offer> const &offers) {
        DIOPluginMngr::Instance()->Add(std::make_unique<ScriptedPlugin>(name, offers));
    }
    static DString Setting(char const *key) { return Profile::GetString("Settings", key, "none"); }
    static void Set(char const *key, char const *value) { Profile::WriteString("Settings", key, value); }
    static DIOPluginMngr *Plugins() { return DIOPluginMngr::Instance(); }

    ScriptedDrivers drivers;
    TempFolder folder;
    AskedRequest request;

private:
    static void Forget() {
        for (std::string_view const key : {"Raster Files", "Raster File Type", "Projects", "Labeled Raster File Type",
                                           "ThematicFolders", "Labeled Attribute File Type", "MetaData File Type"})
            Set(key.data(), key.ends_with("Type") ? "" : ".");
    }
};

TEST_F(DataOperations, RasterDataIsLoadedInTheFormatUsedLastByItsName) {
    Set("Raster File Type", "Pictures");
    request.answer = {folder.Write("a.tif")};
    request.chosen = "TIF";
    EXPECT_TRUE(LoadRaster());
    EXPECT_EQ(request.Offered(), "All Files, Big images, Comma, Erdas, Grids, Pictures, Raw data, Settings");
    EXPECT_EQ(request.key, "ImageFolders");
    EXPECT_EQ(ScriptedPlugin::asked, "0:4294967295 0:4294967295");
    EXPECT_EQ(Setting("Raster File Type"), "Big images");
    EXPECT_EQ(Setting("Raster Files"), folder.Path() + "/");
    request.answer.clear();
    request.chosen = nullptr;
    request.SetDataType(BDINode_Raster);
    NoPng const noPng;
    EXPECT_FALSE(LoadRaster(&noPng)) << "and cancelled";
    EXPECT_EQ(request.Offered(), "All Files, Big images, Comma, Erdas, Grids, Raw data, Settings");
    EXPECT_EQ(request.Current(), "Big images");
    EXPECT_TRUE(ScriptedPlugin::asked.ends_with("0:2 0:2"));
}

TEST_F(DataOperations, ARasterIsNotSavedAsAGridNorAsRawData) {
    request.answer = {folder / "new.png"};
    EXPECT_TRUE(request.OpenRasterData(Plugins(), 1, false, false, nullptr));
    EXPECT_EQ(request.Offered(), "Big images, Comma, Erdas, Pictures, Settings");
    EXPECT_EQ(Setting("Raster Files"), ".") << "it is not to be remembered";
}

TEST_F(DataOperations, TheFormatToBeginWithIsTheWantedTheStandardTheFilesOrTheUsualOne) {
    Set("Raster File Type", "Vanished");
    Add("More", {{"AB", "ABC before all", "*.ab"}, {"JP", "JPEG", "*.jpg;*.jpeg"}});
    auto const current = [](int mode, char const *file, char const *id = "") {
        AskedRequest asked;
        asked.SetInitFile(file);
        asked.SetInitFrmtId(id);
        EXPECT_FALSE(asked.OpenRasterData(Plugins(), mode, false, false, nullptr));
        return asked.Current();
    };
    using Names = std::map<char const *, char const *>;
    for (auto const &[mode, begin] : Rows<int, Names>{
             {0, {{"", "All Files"}, {"x.png", "Pictures"}, {"x.jpeg", "All Files"}, {"x.ab", "ABC before all"}}},
             {1, {{"", "Big images"}, {"x.jpeg", "JPEG"}, {"x.what", "Big images"}}}})
        for (auto const &[file, format] : begin)
            EXPECT_EQ(current(mode, file), format) << mode << file;
    EXPECT_EQ(current(0, "x.png", "ASC"), "Grids");
    Add("Plain", {{"COG", "A variant", "*.tif"}, {"GTiff", "GeoTIFF", "*.tif;*.tiff"}});
    for (char const *file : {"", "x.tif", "x.what"})
        EXPECT_EQ(current(1, file), "GeoTIFF") << file;
    Add("Standard", {{"X", "STD_TIF", "*.tif"}});
    EXPECT_EQ(current(0, "x.png"), "STD_TIF");
}

TEST_F(DataOperations, CaptionsTellOneFromSeveralAndKeepTheCallers) {
    auto const raster = [](FileDlg &r, int mode) { return r.OpenRasterData(Plugins(), mode, false, true, nullptr); };
    auto const thematic = [](FileDlg &r, int mode) { return r.OpenGisObjects(Plugins(), mode, true); };
    auto const attributes = [](FileDlg &r, int mode) { return r.OpenAttrData(Plugins(), mode, "Points"); };
    auto const metadata = [](FileDlg &r, int) { return r.OpenMetaData(Plugins(), nullptr, nullptr, nullptr); };
    Rows<bool (*)(FileDlg &, int), bool, char const *, char const *> const cases = {
        {raster, false, "Import Image Layer...", "Export Image Layer..."},
        {raster, true, "Import Image Layers...", "Export Image Layer..."},
        {thematic, false, "Import Thematic Layer...", "Export Thematic Layer..."},
        {thematic, true, "Add Thematic Layers...", "Export Thematic Layer..."},
        {attributes, false, "Load Points...", "Save Points..."},
        {metadata, false, "Import MetaData...", "Import MetaData..."}};
    Application const application;
    for (auto const &[open, isMultiple, load, save] : cases)
        for (int const mode : {0, 1})
            for (DString const own : {"", "Mine"}) {
                FileDlg asking(own.c_str());
                if (isMultiple)
                    asking.SetMultipleFiles();
                bool const isKept = !own.empty() && !DString(load).starts_with("Load");
                DString const caption = isKept ? own : mode == 0 ? load : save;
                EXPECT_EQ(Answer([&, run = open] { return run(asking, mode); }, "").caption, caption);
            }
}

TEST_F(DataOperations, ThematicDataIsRememberedByTheIdOfItsFormat) {
    Set("Labeled Raster File Type", "PNG");
    request.answer = {folder.Write("a.shp")};
    EXPECT_TRUE(request.OpenGisObjects(Plugins(), 0, true));
    EXPECT_TRUE(request.Offered().ends_with("Raw data, Settings, Shape files, Aperio annotation files"));
    EXPECT_EQ(request.Current(), "Pictures");
    EXPECT_EQ(request.key, "ThematicFolders");
    EXPECT_EQ(Setting("Projects"), folder.Path() + "/");
    request.chosen = "TIF";
    EXPECT_TRUE(request.OpenGisObjects(Plugins(), 0, true));
    request.chosen = ""; // all files, which are no type
    EXPECT_TRUE(request.OpenGisObjects(Plugins(), 0, false));
    EXPECT_EQ(Setting("Labeled Raster File Type"), "TIF");
    ScriptedDrivers::AddTree("DAS");
    EXPECT_TRUE(request.OpenGisObjects(Plugins(), 1, true));
    EXPECT_TRUE(request.Offered().ends_with("Aperio annotation files, ArcSDE connection files"));
}

TEST_F(DataOperations, AttributesAreNoImages) {
    Set("Labeled Attribute File Type", "CSV");
    request.answer = {folder.Write("a.csv")};
    EXPECT_TRUE(request.OpenAttrData(Plugins(), 0, "Points"));
    EXPECT_EQ(request.Offered(), "All Files, Big images, Comma, Grids, Pictures, Raw data, Settings, Ascii text files");
    EXPECT_EQ(request.Current(), "Comma");
    EXPECT_EQ(Setting("ThematicFolders"), folder.Path() + "/");
    request.chosen = "INI";
    EXPECT_TRUE(request.OpenAttrData(Plugins(), 1, "Points"));
    EXPECT_EQ(Setting("Labeled Attribute File Type"), "INI");
    EXPECT_EQ(request.Offered(), "Big images, Comma, Grids, Pictures, Settings");
}

TEST_F(DataOperations, MetadataBeginsWithWhatThePluginReads) {
    Rows<char const *, char const *, char const *, char const *> const cases = {
        {nullptr, nullptr, "PNG", "Pictures"},  {"", "ini", "CSV", "Comma"},
        {"Tables", nullptr, "PNG", "Settings"}, {"Tables", "csv", "PNG", "Comma"},
        {"Tables", "tsv", "PNG", "Comma"},      {"Tables", "none", "PNG", "Settings"},
        {"Nobody", "csv", "PNG", "Pictures"},   {nullptr, nullptr, "GONE", "Big images"}};
    for (auto const &[plugin, extension, stored, current] : cases) {
        Set("MetaData File Type", stored);
        AskedRequest reading;
        reading.answer = {folder.Write("a.csv")};
        EXPECT_TRUE(reading.OpenMetaData(Plugins(), nullptr, plugin, extension));
        EXPECT_EQ(reading.Current(), current) << stored;
        EXPECT_EQ(Setting("MetaData File Type"), reading.GetFormat()->GetID());
    }
}

TEST_F(DataOperations, WithoutFormatsTheUserIsToldOnce) {
    DIOPluginMngr::Instance()->Reset();
    Told told;
    EXPECT_FALSE(FileDlg().OpenRasterData(Plugins(), 1, false, false, nullptr));
    EXPECT_FALSE(FileDlg().OpenGisObjects(Plugins(), 1, false));
    EXPECT_FALSE(FileDlg().OpenAttrData(Plugins(), 1, ""));
    EXPECT_FALSE(FileDlg().OpenMetaData(nullptr, nullptr, "Tables", "csv"));
    EXPECT_EQ(told.Take(), std::vector<std::string>(4, "FileDlg::ShowFileDlg: no file types available"));
}

TEST_F(DataOperations, WithoutPluginsTheCustomImportsAreOffered) {
    DataSchm &scheme = *Wksp::Instance()->GetDataSchm();
    auto const add = [&scheme](CustImportDefinition definition) {
        scheme.Add(std::make_unique<CustImport>(std::move(definition)));
    };
    scheme.Add(std::make_unique<CustImport>());
    scheme.Add(nullptr);
    add({.name = "Plates", .driver = "TIF", .images = {"/x/{well}_1.tif**"}, .layers = {"L1"}, .singleFile = true});
    add({.name = "Agreed", .driver = "", .images = {"{a}.{b}"}, .layers = {"", "PNG", "", "PNG"}});
    add({.name = "Mixed", .driver = "", .images = {}, .layers = {"PNG", "TIF"}});
    request.answer = {folder.Write("a.tif")};
    EXPECT_TRUE(request.OpenRasterData(nullptr, 0, false, false, nullptr));
    EXPECT_EQ(request.filter, "Agreed|*.*|All Files|*.*|Mixed|*.|Plates|*.tif||");
    Rows<char const *, char const *, char const *, bool> const cases = {{"Plates", "TIF", "L1", true},
                                                                        {"Agreed", "PNG", "", false},
                                                                        {"Mixed", "", "PNG", false},
                                                                        {"All Files", "", "", true}};
    for (auto const &[name, driverText, imageDriver, isSingle] : cases) {
        request.SetFormat(request.GetFormatByName(name));
        EXPECT_EQ(request.GetFormat()->GetDriverText(), driverText);
        EXPECT_EQ(request.GetFormat()->IsSingleFileConnector(), isSingle);
        EXPECT_EQ(request.GetImgDrvrID(), imageDriver) << name;
    }
    request.SetFormat(nullptr);
    EXPECT_EQ(request.GetImgDrvrID(), "");
}

} // namespace
} // namespace zelvar::test
