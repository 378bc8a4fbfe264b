// The operations of a request: on documents and built-in formats, then on data.
#include "support/FileRequests.h"
#include "support/RequestProbe.h"
#include "support/ScriptedDriver.h"
#include "zelvar/data/CustImport.h"
#include "zelvar/filedlg/BuiltInFormats.h"
#include "zelvar/settings/DfltFldrs.h"
#include "zelvar/store/DCnfg.h"
#include "zelvar/store/SettingsStore.h"

namespace zelvar::test {
namespace {

using F = FileDlg;
using Names = std::vector<std::string>;
using Formats = std::vector<DFileFrmt *>;

struct FileOperations : FileDialogTest {
    FileOperations() { SettingsStore::Instance().RemoveTree("Profile"); }
    static DString Setting(char const *key) { return Profile::GetString("Settings", key, "."); }
    static void Set(char const *key, DString const &value) { Profile::WriteString("Settings", key, value); }

    ScriptedDrivers drivers;
};

struct TypedOperations : FileOperations {
    static DString NewestOf(char const *historyKey) {
        DVectorSafe<DString> folders;
        DfltFldrs::Instance()->GetDirHist(historyKey, folders, false, true);
        return folders[0];
    }

    Application application;
    Documents documents;
};

struct Operation {
    bool (*open)(FileDlg &, int);
    Formats formats;
    char const *what;
    char const *folderKey;  ///< null for none
    char const *historyKey; ///< as this
    bool isOpened = false;  ///< "Open ...", unless the caller has set a caption; otherwise "Load ..." in any case
    int dlgTemplate = 0;
    char const *as = ""; ///< behind what is saved
    Formats onlyTo = {}; ///< save
    std::vector<int> modes = {0, 1};
};

template <bool (FileDlg::*operation)(int)>
bool Call(FileDlg &request, int mode) {
    return (request.*operation)(mode);
}
template <bool (FileDlg::*operation)(int, DString const &)>
bool CallNamed(FileDlg &request, int mode) {
    return (request.*operation)(mode, "Cells");
}

std::vector<Operation> Operations() {
    BuiltInFormats &known = BuiltInFormats::Instance();
    char const *const works = "WorkspaceFolders", *const rules = "RulesetFolders", *const images = "ImageFolders";
    DFileFrmt *const dose = F::pFrmt_dosedilutionsec;
    auto const paramSet = [](FileDlg &request, int mode) { return request.OpenParamSet(mode, nullptr); };
    auto const wizard = [](FileDlg &request, int) { return request.OpenWzrd(); };
    auto const csv = [](FileDlg &request, int) { return request.OpenSaveCSV("Save contents..."); };
    auto const html = [](FileDlg &request, int) { return request.OpenSaveHTML("Save contents..."); };
    Formats const texts{&known.frmt_txt, &known.frmt_dbf, &known.frmt_csv, &known.frmt_all};
    Formats const lists{&known.frmt_csv, &known.frmt_txt, &known.frmt_tcsv};
    return {
        {&Call<&F::OpenWorkspace>, {F::pFrmt_workspace}, "Workspace", "Workspace", works, true, 2, " as"},
        {&Call<&F::OpenDMDatabase>, {F::pFrmt_dm_dbfile}, "DM Database", "DMDatabase", works, true, 0, " as"},
        {&Call<&F::OpenTMAMatch>, {F::pFrmt_TMAmatch}, "TMA matching", "TMAMatching", works, true},
        {&Call<&F::OpenTMAGridLayt>, {F::pFrmt_TMAlayout}, "TMA Grid Layouts", "TMAGridLayouts", works, true},
        {&Call<&F::OpenPltLayt>, {F::pFrmt_platelayout}, "Plate Layout", "PlateLayout", works, true},
        {&Call<&F::OpenTextSttng>, {F::pFrmt_textsttng}, "Text Rendering Settings", "TextRenderSettings", works, true},
        {&Call<&F::OpenDoseDilutionSec>, {dose}, "Dilution Sequence", "DoseDilutionSequence", works, true},
        {&Call<&F::OpenPrjct>, {F::pFrmt_prjct}, "Project", "Project", "ProjectFolders", true, 3, " as"},
        {&Call<&F::OpenClssHrchy>, {F::pFrmt_clss_hrchy}, "Class Hierarchy", "RuleBase", rules},
        {&Call<&F::OpenClssHrchyUser>, {F::pFrmt_clss_hrchy_user}, "Class Hierarchy", "RuleBase", rules},
        {&Call<&F::OpenPrtcl>, {F::pFrmt_prtcl}, "Protocol", nullptr, rules},
        {&Call<&F::OpenUserProps>, {F::pFrmt_user_prop}, "Customized Features", nullptr, rules},
        {&Call<&F::OpenProcess>, {F::pFrmt_proc}, "Process", "Process", rules, false, 4},
        {&Call<&F::OpenProcessVersion>, {F::pFrmt_proc_ver}, "Process version", "Process", rules, false, 4},
        {&Call<&F::OpenJobSqnce>, {F::pFrmt_jobsqnce}, "Job Sequence", "Job_Sequence", rules},
        {&Call<&F::OpenAnlySltn>, {F::pFrmt_anly}, "Analysis Solution", "AnlySltnDir", "SolutionFolders", false, 5},
        {paramSet, {F::pFrmt_paramset}, "Parameter Set", "ParamSetDir", rules},
        {wizard, {F::pFrmt_wzrd}, "Wizard Definition ", "WizardCurrentDir", rules, false, 0, "", {}, {0}},
        {&Call<&F::OpenAll>, {&known.frmt_all}, "Data", nullptr, nullptr},
        {&CallNamed<&F::OpenTableData>, texts, "Cells", nullptr, images, false, 0, "", {texts[0], texts[1]}},
        {&CallNamed<&F::OpenTiffData>, {&known.frmt_tif}, "Cells", nullptr, images},
        {&CallNamed<&F::OpenXMLData>, {&known.frmt_xml}, "Cells", nullptr, nullptr},
        {&CallNamed<&F::OpenArcSDEConnFile>, {&known.frmt_das}, "Cells", nullptr, "ThematicFolders"},
        {csv, lists, "contents", nullptr, images, false, 0, "", {}, {1}},
        {html, {&known.frmt_html}, "contents", nullptr, nullptr, false, 0, "", {}, {1}}};
}

TEST_F(TypedOperations, EachOffersItsFormatsUnderItsCaptionAndRemembersItsFolder) {
    for (Operation const &row : Operations())
        for (int const mode : row.modes) {
            DString const verb = mode == 1 ? "Save " : row.isOpened ? "Open " : "Load ";
            DString const caption = verb + row.what + (mode == 1 ? row.as : "") + "...";
            SCOPED_TRACE(caption);
            Formats const &formats = mode == 1 && !row.onlyTo.empty() ? row.onlyTo : row.formats;
            // Names that taken apart lead to other files, and these files.
            TempFolder const top;
            DString const extension = formats.front()->GetExtn().substr(1);
            DString const name = "Run \"12:30\" a}b?c=d" + (extension == ".*" ? ".txt" : extension);
            for (char const *neighbour : {"run", "run?n=2/Run", "run?n=2/Run \"12", "run?n=2/Run \"12:30\" a}b"})
                top.Write(neighbour);
            DString const place = top / "run?n=2";
            DString const file = top.Write("run?n=2/" + name);
            DUserCnfg filters("FileFilter");
            filters.RemoveKey(std::to_string(row.dlgTemplate));

            FileDlg request("Mine");
            request.ShowOverwritePrompt(false);
            if (row.folderKey == nullptr)
                request.SetInitFile(place + "/");
            else
                Set(row.folderKey, place);
            Shown const shown = Answer([&] { return row.open(request, mode); }, name);
            EXPECT_TRUE(shown.opened);
            EXPECT_EQ(shown.isOwn, mode == 0);
            Names types;
            for (DFileFrmt const *format : formats)
                types.push_back(mode == 0 ? format->GetName() : OnPlatform(*format));
            EXPECT_EQ(shown.types, types);
            EXPECT_EQ(shown.caption, row.isOpened ? "Mine" : caption);
            ASSERT_EQ(request.GetNumSlctFiles(), 1);
            EXPECT_EQ(request.GetPhysFile(), file);
            EXPECT_EQ(request.GetFormat(), formats.front());
            EXPECT_TRUE(row.folderKey == nullptr || Setting(row.folderKey) == place + "/");
            EXPECT_TRUE(row.historyKey == nullptr || NewestOf(row.historyKey) == place + "/");
            // The library's dialog keeps its filter by the kind of what is picked.
            EXPECT_EQ(filters.HasKey(std::to_string(row.dlgTemplate)), mode == 0);
            if (row.isOpened) {
                FileDlg bare;
                Set(row.folderKey, top.Path());
                Shown const cancelled = Answer([&] { return row.open(bare, mode); }, "");
                EXPECT_EQ(cancelled.caption, caption);
                EXPECT_TRUE(!cancelled.opened && bare.GetNumSlctFiles() == 0 && bare.GetPhysFile() == ".");
                EXPECT_TRUE(Setting(row.folderKey) == top.Path() && NewestOf(row.historyKey) == place + "/");
            }
        }
}

TEST_F(TypedOperations, WithoutItsFormatADocumentsOperationIsDisabled) {
    std::vector<Operation> rows = Operations();
    std::erase_if(rows, [](Operation const &row) { return !row.formats.front()->GetID().starts_with("DOC"); });
    ASSERT_EQ(rows.size(), 18U);
    Documents::Clear();
    FileDlg request;
    for (Operation const &row : rows)
        EXPECT_FALSE(row.open(request, 0) || row.open(request, 1)) << row.what;
    DFileFrmt process("PROC", "Processes", "*.dcp");
    FileDlg::pFrmt_proc = &process;
    EXPECT_FALSE(FileDlg().OpenProcessVersion(0)) << "the one is tested, the other offered";
    EXPECT_EQ(told.Take(), Names{"FileDlg::ShowFileDlg: no file types available"});
}

TEST_F(TypedOperations, AWorkspaceIsLoadedWithCheckBoxesInThePlatformsDialogToo) {
    UseStandardDialog("true");
    folder.Write("a.d0");
    for (int const mode : {0, 1}) {
        FileDlg request;
        request.SetInitFile(folder.Path() + "/");
        request.ShowOverwritePrompt(false);
        Shown const shown = Answer([&] { return request.OpenWorkspace(mode); }, "a.d0",
                                   [](QWidget &dialog) {
                                       if (auto *const box = FileDialogHand(dialog).Control<QAbstractButton>(6011))
                                           Click(box);
                                   });
        EXPECT_TRUE(shown.opened && !shown.isOwn);
        EXPECT_EQ(shown.hasCheckBoxes, mode == 0);
        EXPECT_EQ(request.GetChckReadOnly(), mode == 0);
        EXPECT_FALSE(request.GetChckEditOnly());
    }
    UseStandardDialog("");
}

TEST_F(TypedOperations, AParameterSetKeepsItsNameAndGetsItsFolder) {
    Set("ParamSetDir", folder.Path());
    FileDlg request;
    request.SetInitFile("best.d9");
    Shown const shown = Answer([&] { return request.OpenParamSet(1, "Keep it"); }, "other.d9");
    EXPECT_EQ(shown.caption, "Keep it");
    EXPECT_EQ(shown.name, "best.d9");
    EXPECT_EQ(request.GetPhysFile(), folder / "other.d9");
}

TEST_F(TypedOperations, AWizardBeginsInItsDefaultFolderUntilOneWasUsed) {
    folder.Write("steps.d8");
    Set("WizardCurrentDir", ".");
    Set("WizardDefaultDir", folder.Path());
    EXPECT_TRUE(Answer([] { return FileDlg().OpenWzrd(); }, "steps.d8").opened);
    EXPECT_EQ(Setting("WizardDefaultDir"), folder.Path());
    EXPECT_EQ(Setting("WizardCurrentDir"), folder.Path() + "/");
}

TEST_F(TypedOperations, AllRuleSetsStandFirstAndSayNothingOfTheChoice) {
    DString const file = folder.Write("a.d11");
    FileDlg request;
    request.SetInitFile(folder.Path());
    Shown shown = Answer([&] { return request.OpenAllRuleset(0, true); }, "a.d11");
    EXPECT_EQ(shown.types, (Names{"All rule sets", "Documents 7", "Documents 5", "Documents 10", "Documents 11"}));
    EXPECT_EQ(shown.type, "All rule sets");
    EXPECT_EQ(shown.caption, "Load Rule Set...");
    EXPECT_EQ(request.GetPhysFile(), file);
    EXPECT_EQ(request.GetFormat(), nullptr);
    EXPECT_EQ(Setting("Ruleset"), folder.Path() + "/");
    shown = Answer([] { return FileDlg().OpenAllRuleset(1, false); }, "");
    EXPECT_EQ(shown.types.front(), "All rule sets (*.d7;*.d5;*.d10)");
    EXPECT_EQ(shown.caption, "Save Rule Set...");
    FileDlg::pFrmt_proc = FileDlg::pFrmt_prtcl = FileDlg::pFrmt_anly = FileDlg::pFrmt_jobsqnce = nullptr;
    EXPECT_EQ(Answer([] { return FileDlg().OpenAllRuleset(0, true); }, "").types, Names{"All rule sets"});
}

// ------------------------------------------------- formats of plug-ins and of the workspace's custom imports

struct NoPng : ICheck<DString> {
    [[nodiscard]] bool Check(DString const &id) const override { return id != "PNG"; }
};

struct DataOperations : FileOperations {
    DataOperations() {
        DIOPluginMngr::Instance()->Reset();
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
    }
    static void Add(char const *name, std::vector<ScriptedPlugin::Offer> const &offers) {
        DIOPluginMngr::Instance()->Add(std::make_unique<ScriptedPlugin>(name, offers));
    }
    static DIOPluginMngr *Plugins() { return DIOPluginMngr::Instance(); }

    AskedRequest request;
};

TEST_F(DataOperations, RasterDataIsLoadedInTheFormatUsedLastByItsName) {
    AskedRequest saving;
    saving.answer = {folder / "new.png"};
    EXPECT_TRUE(saving.OpenRasterData(Plugins(), 1, false, false, nullptr));
    EXPECT_EQ(saving.Offered(), "Big images, Comma, Erdas, Pictures, Settings") << "no grid nor raw data is saved";
    EXPECT_EQ(Setting("Raster Files"), ".") << "it is not to be remembered";
    ScriptedPlugin::asked.clear();
    Set("Raster File Type", "Pictures");
    request.answer = {folder.Write("a.tif")};
    request.chosen = "TIF";
    EXPECT_TRUE(request.OpenRasterData(Plugins(), 0, false, true, nullptr));
    EXPECT_EQ(request.Offered(), "All Files, Big images, Comma, Erdas, Grids, Pictures, Raw data, Settings");
    EXPECT_EQ(request.key, "ImageFolders");
    EXPECT_EQ(ScriptedPlugin::asked, "0:4294967295 0:4294967295");
    EXPECT_EQ(Setting("Raster File Type"), "Big images");
    EXPECT_EQ(Setting("Raster Files"), folder.Path() + "/");
    request.answer.clear();
    request.chosen = nullptr;
    request.SetDataType(BDINode_Raster);
    NoPng const noPng;
    EXPECT_FALSE(request.OpenRasterData(Plugins(), 0, false, true, &noPng)) << "and cancelled";
    EXPECT_EQ(request.Offered(), "All Files, Big images, Comma, Erdas, Grids, Raw data, Settings");
    EXPECT_EQ(request.Current(), "Big images");
    EXPECT_TRUE(ScriptedPlugin::asked.ends_with("0:2 0:2"));
}

TEST_F(DataOperations, ABasketKeepsTheOrderThatItsUserGaveIt) {
    Application const application;
    FileDlg load;
    load.SetInitFile(folder.Path());
    for (char const *name : {"a.tif", "b.tif"})
        folder.Write(name, "x");
    std::ignore = OnNextDialog([](QWidget &window) {
        auto &dialog = dynamic_cast<DlgOpenDS &>(window);
        DSListCtrl &list = *dialog.MainList();
        dialog.ApplyFileFilter("*.*", nullptr);
        list.setFocus();
        for (char const *name : {"b.tif", "a.tif"}) {
            ASSERT_TRUE(Eventually([&] { return RowOf(list, name) >= 0; }));
            list.ClearSelection();
            list.SetSlct(RowOf(list, name), true);
            QTest::keyClick(&list, Qt::Key_Insert);
        }
        PressOk(dialog);
    });
    EXPECT_TRUE(load.OpenRasterData(Plugins(), 0, true, true, nullptr));
    ASSERT_EQ(load.GetNumSlctFiles(), 2);
    EXPECT_TRUE(load.GetFile(0)->GetText().ends_with("b.tif"));
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
    for (auto const &[mode, begin] : Rows<int, std::map<char const *, char const *>>{
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
    EXPECT_FALSE(FileDlg().OpenRasterData(Plugins(), 1, false, false, nullptr));
    EXPECT_FALSE(FileDlg().OpenGisObjects(Plugins(), 1, false) || FileDlg().OpenAttrData(Plugins(), 1, ""));
    EXPECT_FALSE(FileDlg().OpenMetaData(nullptr, nullptr, "Tables", "csv"));
    EXPECT_EQ(told.Take(), Names(4, "FileDlg::ShowFileDlg: no file types available"));
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
