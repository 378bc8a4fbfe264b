// The operations whose formats come from plug-ins and from the workspace's custom imports.
#include "support/FileRequests.h"
#include "support/ScriptedDriver.h"
#include "zelvar/base/DCnfg.h"
#include "zelvar/base/Report.h"
#include "zelvar/data/CustImport.h"
#include "zelvar/data/DIOPluginMngr.h"
#include "zelvar/filedlg/BuiltInFormats.h"

namespace zelvar {
namespace {

using Names = std::vector<std::string>;

#pragma GCC diagnostic ignored "-Wnon-virtual-dtor" // as the class under test

/// A plug-in that offers formats written down by a test.
class ScriptedPlugin : public DIOPlugin {
public:
    struct Offer {
        char const *id, *name, *extensions;
    };
    explicit ScriptedPlugin(DString name, std::vector<Offer> offers)
        : m_name(std::move(name)), m_offers(std::move(offers)) {}
    [[nodiscard]] DString GetId() const override { return m_name; }
    [[nodiscard]] DString GetInfo() const override { return m_name; }
    void BuildFrmtList(int mode, unsigned dataType, ICheck<DString> const *check,
                       DList<DFileFrmt *> &formats) override {
        asked += (asked.empty() ? "" : " ") + std::to_string(mode) + ":" + std::to_string(dataType);
        formats.push_back(nullptr);
        for (Offer const &offer : m_offers)
            if (check == nullptr || check->Check(offer.id))
                formats.push_back(new DFileFrmt(offer.id, offer.name, offer.extensions));
    }
    static inline DString asked;

private:
    DString m_name;
    std::vector<Offer> m_offers;
};

class NoPng : public ICheck<DString> {
public:
    [[nodiscard]] bool Check(DString const &id) const override { return id != "PNG"; }
};

/// Writes down what an operation asks for, and answers with a file and a format.
class Asked final : public FileDlg {
public:
    using FileDlg::FileDlg;
    DString answer;
    char const *chosen = nullptr; ///< id of the format
    DString caption;
    DString offered;
    DString current;
    DString key;
    DString start;

protected:
    bool OpenMFCFileDlg(int, char const *filter, int index, char const *, char const *key_, DLGTemplate) override {
        offered.clear();
        std::vector<DString> const fields = Split(filter, '|');
        for (std::size_t i = 0; i + 2 < fields.size(); i += 2)
            offered += (offered.empty() ? "" : ", ") + fields[i];
        current = fields[2 * static_cast<std::size_t>(index)];
        key = key_;
        if (answer.empty())
            return false;
        m_files.push_back(new BDIMoniker(answer, nullptr));
        if (chosen != nullptr)
            SetFormat(GetFormat(chosen));
        return true;
    }
};

class DataOperations : public testing::Test {
protected:
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
        Add("Tables", {{"INI", "Settings", "*.ini"}, {"CSV", "Comma", "*.csv;*.tsv"}, {"LOG", "Logs", "*.log"}});
    }
    ~DataOperations() override {
        DIOPluginMngr::Instance()->Reset();
        Wksp::Instance()->GetDataSchm()->Clear();
        Forget();
    }
    static void Add(char const *name, std::vector<ScriptedPlugin::Offer> const &offers) {
        DIOPluginMngr::Instance()->Add(std::make_unique<ScriptedPlugin>(name, offers));
    }
    static DString Setting(char const *key) { return Profile::GetString("Settings", key, "none"); }
    static void Set(char const *key, char const *value) { Profile::WriteString("Settings", key, value); }
    static DIOPluginMngr *Plugins() { return DIOPluginMngr::Instance(); }

    test::ScriptedDrivers drivers;
    test::TempFolder folder;
    NoPng noPng;

private:
    static void Forget() {
        for (char const *key : {"Raster Files", "Raster File Type", "Projects", "Labeled Raster File Type",
                                "ThematicFolders", "Labeled Attribute File Type", "MetaData File Type"})
            Profile::WriteString("Settings", key, Default(key));
    }
    static char const *Default(std::string_view key) { return key.ends_with("Type") ? "" : "."; }
};

TEST_F(DataOperations, RasterDataIsLoadedInTheFormatUsedLastByItsName) {
    Set("Raster File Type", "Pictures");
    Asked request;
    request.answer = folder.Write("a.tif");
    request.chosen = "TIF";
    EXPECT_TRUE(request.OpenRasterData(Plugins(), 0, false, true, nullptr));
    EXPECT_EQ(request.offered, "All Files, Big images, Comma, Erdas, Grids, Logs, Pictures, Raw data, Settings");
    EXPECT_EQ(request.current, "Pictures");
    EXPECT_EQ(request.key, "ImageFolders");
    EXPECT_EQ(ScriptedPlugin::asked, "0:4294967295 0:4294967295");
    EXPECT_EQ(Setting("Raster File Type"), "Big images");
    EXPECT_EQ(Setting("Raster Files"), folder.Path() + "/");
    request.answer.clear();
    request.SetDataType(BDINode_Raster);
    EXPECT_FALSE(request.OpenRasterData(Plugins(), 0, false, true, &noPng)) << "and cancelled";
    EXPECT_EQ(request.offered, "All Files, Big images, Comma, Erdas, Grids, Logs, Raw data, Settings");
    EXPECT_EQ(request.current, "Big images");
    EXPECT_TRUE(ScriptedPlugin::asked.ends_with("0:2 0:2"));
}

TEST_F(DataOperations, ARastersFormatFallsBackToTheStandardTiffAndThenToTheFile) {
    Set("Raster File Type", "Vanished");
    Asked request;
    request.SetInitFile("x.png");
    EXPECT_FALSE(request.OpenRasterData(Plugins(), 0, false, false, nullptr));
    EXPECT_EQ(request.current, "Pictures");
    Add("More", {{"X", "STD_TIF", "*.tif"}});
    EXPECT_FALSE(request.OpenRasterData(Plugins(), 0, false, false, nullptr));
    EXPECT_EQ(request.current, "STD_TIF");
    request.SetInitFrmtId("ASC");
    EXPECT_FALSE(request.OpenRasterData(Plugins(), 0, false, false, nullptr));
    EXPECT_EQ(request.current, "Grids");
}

TEST_F(DataOperations, WithoutAWordOfTheUserLoadingBeginsWithAllFilesAndSavingWithTiff) {
    Add("More", {{"AB", "ABC before all", "*.ab"}, {"JP", "JPEG", "*.jpg;*.jpeg"}});
    struct Case {
        int mode;
        char const *file, *current;
    };
    Case const cases[] = {{0, "", "All Files"},       {0, "x.jpeg", "All Files"}, {0, "x.ab", "ABC before all"},
                          {1, "", "Big images"},      {1, "x.jpeg", "JPEG"},      {1, "x.png", "Pictures"},
                          {1, "x.what", "Big images"}};
    for (Case const &c : cases) {
        Asked request;
        request.SetInitFile(c.file);
        EXPECT_FALSE(request.OpenRasterData(Plugins(), c.mode, false, false, nullptr));
        EXPECT_EQ(request.current, c.current) << c.mode << c.file;
    }
}

TEST_F(DataOperations, ARasterIsNotSavedAsAGridNorAsRawData) {
    Asked request;
    request.answer = folder / "new.png";
    request.chosen = "PNG";
    EXPECT_TRUE(request.OpenRasterData(Plugins(), 1, false, false, nullptr));
    EXPECT_EQ(request.offered, "Big images, Comma, Erdas, Logs, Pictures, Settings");
    EXPECT_EQ(Setting("Raster Files"), ".") << "it is not to be remembered";
}

TEST_F(DataOperations, CaptionsTellOneFromSeveralAndKeepTheCallers) {
    struct Case {
        bool (*open)(FileDlg &, int mode);
        bool multiple;
        char const *load, *save;
    };
    Case const cases[] = {
        {[](FileDlg &r, int mode) { return r.OpenRasterData(Plugins(), mode, false, true, nullptr); }, false,
         "Import Image Layer...", "Export Image Layer..."},
        {[](FileDlg &r, int mode) { return r.OpenRasterData(Plugins(), mode, true, true, nullptr); }, true,
         "Import Image Layers...", "Export Image Layer..."},
        {[](FileDlg &r, int mode) { return r.OpenGisObjects(Plugins(), mode, true); }, false,
         "Import Thematic Layer...", "Export Thematic Layer..."},
        {[](FileDlg &r, int mode) { return r.OpenGisObjects(Plugins(), mode, true); }, true, "Add Thematic Layers...",
         "Export Thematic Layer..."},
        {[](FileDlg &r, int mode) { return r.OpenAttrData(Plugins(), mode, "Points"); }, false, "Load Points...",
         "Save Points..."},
        {[](FileDlg &r, int) { return r.OpenMetaData(Plugins(), nullptr, nullptr, nullptr); }, false,
         "Import MetaData...", "Import MetaData..."},
    };
    test::Application const application;
    for (Case const &c : cases)
        for (int const mode : {0, 1})
            for (char const *own : {"", "Mine"}) {
                FileDlg request(own);
                if (c.multiple)
                    request.SetMultipleFiles();
                bool const isAttributes = DString(c.load).starts_with("Load");
                EXPECT_EQ(test::Answer([&] { return c.open(request, mode); }, "").caption, *own != '\0' && !isAttributes
                                                                                               ? own
                                                                                           : mode == 0 ? c.load
                                                                                                       : c.save);
            }
}

TEST_F(DataOperations, ThematicDataIsRememberedByTheIdOfItsFormat) {
    Set("Labeled Raster File Type", "PNG");
    Asked request;
    request.answer = folder.Write("a.shp");
    request.chosen = "TIF";
    EXPECT_TRUE(request.OpenGisObjects(Plugins(), 0, true));
    EXPECT_EQ(request.offered, "All Files, Big images, Comma, Erdas, Grids, Logs, Pictures, Raw data, Settings, Shape "
                               "files, Aperio annotation files");
    EXPECT_EQ(request.current, "Pictures");
    EXPECT_EQ(request.key, "ThematicFolders");
    EXPECT_EQ(Setting("Labeled Raster File Type"), "TIF");
    EXPECT_EQ(Setting("Projects"), folder.Path() + "/");
    request.chosen = "";
    EXPECT_TRUE(request.OpenGisObjects(Plugins(), 0, false));
    EXPECT_EQ(request.GetFormat(), &BuiltInFormats::Instance().frmt_all);
    EXPECT_EQ(Setting("Labeled Raster File Type"), "TIF") << "all files are no type";
    test::ScriptedDrivers::AddTree("DAS");
    EXPECT_TRUE(request.OpenGisObjects(Plugins(), 1, true));
    EXPECT_TRUE(request.offered.ends_with("Shape files, Aperio annotation files, ArcSDE connection files"));
}

TEST_F(DataOperations, AttributesAreNoImages) {
    Asked request;
    request.answer = folder.Write("a.csv");
    request.chosen = "CSV";
    EXPECT_TRUE(request.OpenAttrData(Plugins(), 0, "Points"));
    EXPECT_EQ(request.offered, "All Files, Big images, Comma, Grids, Logs, Pictures, Raw data, Settings, Ascii text "
                               "files");
    EXPECT_EQ(request.key, "ThematicFolders");
    EXPECT_EQ(Setting("Labeled Attribute File Type"), "CSV");
    EXPECT_EQ(Setting("ThematicFolders"), folder.Path() + "/");
    request.answer.clear();
    EXPECT_FALSE(request.OpenAttrData(Plugins(), 1, "Points"));
    EXPECT_EQ(request.offered, "Big images, Comma, Grids, Logs, Pictures, Settings");
    EXPECT_EQ(request.current, "Comma");
}

TEST_F(DataOperations, MetadataBeginsWithWhatThePluginReads) {
    struct Case {
        char const *plugin, *extension, *stored, *current;
    };
    Case const cases[] = {{nullptr, nullptr, "LOG", "Logs"},      {"", "log", "CSV", "Comma"},
                          {"Tables", nullptr, "LOG", "Settings"}, {"Tables", "csv", "LOG", "Comma"},
                          {"Tables", "tsv", "LOG", "Comma"},      {"Tables", "none", "LOG", "Settings"},
                          {"Nobody", "csv", "LOG", "Logs"},       {nullptr, nullptr, "GONE", "Big images"}};
    for (Case const &c : cases) {
        Set("MetaData File Type", c.stored);
        Asked request;
        EXPECT_FALSE(request.OpenMetaData(Plugins(), nullptr, c.plugin, c.extension));
        EXPECT_EQ(request.current, c.current) << c.stored;
        EXPECT_EQ(request.key, "ImageFolders");
    }
    Asked request;
    request.SetInitFrmtId("CSV");
    request.answer = folder.Write("a.csv");
    EXPECT_TRUE(request.OpenMetaData(Plugins(), nullptr, nullptr, nullptr));
    EXPECT_EQ(Setting("MetaData File Type"), "CSV");
}

TEST_F(DataOperations, WithoutFormatsTheUserIsToldOnce) {
    DIOPluginMngr::Instance()->Reset();
    Names told;
    auto const former = Report::SetUserHandler([&](Report::Severity, DString const &text) { told.push_back(text); });
    EXPECT_FALSE(FileDlg().OpenRasterData(Plugins(), 1, false, false, nullptr));
    EXPECT_FALSE(FileDlg().OpenGisObjects(Plugins(), 1, false));
    EXPECT_FALSE(FileDlg().OpenAttrData(Plugins(), 1, ""));
    EXPECT_FALSE(FileDlg().OpenMetaData(Plugins(), nullptr, "Tables", "csv"));
    Report::SetUserHandler(former);
    EXPECT_EQ(told, Names(4, "FileDlg::ShowFileDlg: no file types available"));
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
    Asked request;
    request.answer = folder.Write("a.tif");
    request.chosen = "TIF";
    EXPECT_TRUE(request.OpenRasterData(nullptr, 0, false, false, nullptr));
    EXPECT_EQ(request.offered, "Agreed, All Files, Mixed, Plates") << request.offered;
    EXPECT_EQ(request.GetFormat()->GetExtn(), "*.tif");
    EXPECT_EQ(request.GetFormat()->GetDriverText(), "TIF");
    EXPECT_TRUE(request.GetFormat()->IsSingleFileConnector());
    EXPECT_EQ(request.GetImgDrvrID(), "L1");
    struct Case {
        char const *name, *extension, *driverText, *imageDriver;
    };
    Case const cases[] = {{"Agreed", "*.*", "PNG", ""}, {"Mixed", "*.", "", "PNG"}, {"All Files", "*.*", "", ""}};
    for (Case const &c : cases) {
        DFileFrmt *const format = request.GetFormatByName(c.name);
        ASSERT_NE(format, nullptr);
        request.SetFormat(format);
        EXPECT_EQ(format->GetExtn(), c.extension);
        EXPECT_EQ(format->GetDriverText(), c.driverText);
        EXPECT_EQ(request.GetImgDrvrID(), c.imageDriver) << c.name;
    }
    request.SetFormat(nullptr);
    EXPECT_EQ(request.GetImgDrvrID(), "");
}

} // namespace
} // namespace zelvar
