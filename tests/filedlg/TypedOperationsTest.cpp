#include "support/FileRequests.h"
#include "support/RequestProbe.h"
#include "support/ScriptedDriver.h"
#include "zelvar/filedlg/BuiltInFormats.h"
#include "zelvar/settings/DfltFldrs.h"
#include "zelvar/store/DCnfg.h"

namespace zelvar {
namespace {

using test::Answer;
using test::Documents;
using test::Shown;
using test::TempFolder;
using Names = std::vector<std::string>;

struct TypedOperations : testing::Test {
    ~TypedOperations() override { EXPECT_EQ(told.Take(), Names{}); }

    static DString Remembered(char const *key) { return Profile::GetString("Settings", key, "."); }
    static Names History(char const *key) {
        DVectorSafe<DString> folders;
        DfltFldrs::Instance()->GetDirHist(key, folders, false, true);
        return {folders.begin(), folders.end()};
    }
    static Names ShownIn(bool isOwn, std::vector<DFileFrmt *> const &formats) {
        Names names;
        for (DFileFrmt const *format : formats)
            names.push_back(isOwn ? format->GetName() : test::OnPlatform(*format));
        return names;
    }

    test::ScriptedDrivers drivers;
    test::Application application;
    Documents documents;
    TempFolder folder;
    test::Told told;
};

using Operation = bool (*)(FileDlg &, int);

struct Row {
    char const *name;
    Operation open;
    std::vector<DFileFrmt *> load;
    std::vector<DFileFrmt *> save;
    char const *loadCaption;
    char const *saveCaption;
    char const *folderKey; ///< null for none
    char const *historyKey;
    int dlgTemplate;
    bool keepsCaption; ///< that the caller has set
};

BuiltInFormats &Known() { return BuiltInFormats::Instance(); }

template <bool (FileDlg::*operation)(int)>
bool Call(FileDlg &request, int mode) {
    return (request.*operation)(mode);
}
template <bool (FileDlg::*operation)(int, DString const &)>
bool CallNamed(FileDlg &request, int mode) {
    return (request.*operation)(mode, "Cells");
}
template <bool (FileDlg::*operation)(char const *)>
bool CallCaptioned(FileDlg &request, int) {
    return (request.*operation)("Save contents");
}

// clang-format off
std::vector<Row> Rows() {
    BuiltInFormats &known = Known();
    using Formats = std::vector<DFileFrmt *>;
    Formats const workspace{FileDlg::pFrmt_workspace}, database{FileDlg::pFrmt_dm_dbfile}, project{FileDlg::pFrmt_prjct},
        hierarchy{FileDlg::pFrmt_clss_hrchy}, userHierarchy{FileDlg::pFrmt_clss_hrchy_user}, protocol{FileDlg::pFrmt_prtcl},
        properties{FileDlg::pFrmt_user_prop}, process{FileDlg::pFrmt_proc}, version{FileDlg::pFrmt_proc_ver},
        wizard{FileDlg::pFrmt_wzrd}, parameters{FileDlg::pFrmt_paramset}, solution{FileDlg::pFrmt_anly},
        jobs{FileDlg::pFrmt_jobsqnce}, plates{FileDlg::pFrmt_platelayout}, layout{FileDlg::pFrmt_TMAlayout},
        match{FileDlg::pFrmt_TMAmatch}, dilution{FileDlg::pFrmt_dosedilutionsec}, text{FileDlg::pFrmt_textsttng};
    char const *const works = "WorkspaceFolders", *const rules = "RulesetFolders", *const images = "ImageFolders";
    return {
        {"Workspace", &Call<&FileDlg::OpenWorkspace>, workspace, workspace, "Open Workspace...", "Save Workspace as...", "Workspace", works, 2, true},
        {"DMDatabase", &Call<&FileDlg::OpenDMDatabase>, database, database, "Open DM Database...", "Save DM Database as...", "DMDatabase", works, 0, true},
        {"TMAMatch", &Call<&FileDlg::OpenTMAMatch>, match, match, "Open TMA matching...", "Save TMA matching...", "TMAMatching", works, 0, true},
        {"TMAGridLayt", &Call<&FileDlg::OpenTMAGridLayt>, layout, layout, "Open TMA Grid Layouts...", "Save TMA Grid Layouts...", "TMAGridLayouts", works, 0, true},
        {"PltLayt", &Call<&FileDlg::OpenPltLayt>, plates, plates, "Open Plate Layout...", "Save Plate Layout...", "PlateLayout", works, 0, true},
        {"TextSttng", &Call<&FileDlg::OpenTextSttng>, text, text, "Open Text Rendering Settings...", "Save Text Rendering Settings...", "TextRenderSettings", works, 0, true},
        {"DoseDilutionSec", &Call<&FileDlg::OpenDoseDilutionSec>, dilution, dilution, "Open Dilution Sequence...", "Save Dilution Sequence...", "DoseDilutionSequence", works, 0, true},
        {"Prjct", &Call<&FileDlg::OpenPrjct>, project, project, "Open Project...", "Save Project as...", "Project", "ProjectFolders", 3, true},
        {"ClssHrchy", &Call<&FileDlg::OpenClssHrchy>, hierarchy, hierarchy, "Load Class Hierarchy...", "Save Class Hierarchy...", "RuleBase", rules, 0, false},
        {"ClssHrchyUser", &Call<&FileDlg::OpenClssHrchyUser>, userHierarchy, userHierarchy, "Load Class Hierarchy...", "Save Class Hierarchy...", "RuleBase", rules, 0, false},
        {"Prtcl", &Call<&FileDlg::OpenPrtcl>, protocol, protocol, "Load Protocol...", "Save Protocol...", nullptr, rules, 0, false},
        {"UserProps", &Call<&FileDlg::OpenUserProps>, properties, properties, "Load Customized Features...", "Save Customized Features...", nullptr, rules, 0, false},
        {"Process", &Call<&FileDlg::OpenProcess>, process, process, "Load Process...", "Save Process...", "Process", rules, 4, false},
        {"ProcessVersion", &Call<&FileDlg::OpenProcessVersion>, version, version, "Load Process version...", "Save Process version...", "Process", rules, 4, false},
        {"JobSqnce", &Call<&FileDlg::OpenJobSqnce>, jobs, jobs, "Load Job Sequence...", "Save Job Sequence...", "Job_Sequence", rules, 0, false},
        {"AnlySltn", &Call<&FileDlg::OpenAnlySltn>, solution, solution, "Load Analysis Solution...", "Save Analysis Solution...", "AnlySltnDir", "SolutionFolders", 5, false},
        {"ParamSet", [](FileDlg &request, int mode) { return request.OpenParamSet(mode, nullptr); }, parameters, parameters, "Load Parameter Set...", "Save Parameter Set...", "ParamSetDir", rules, 0, false},
        {"Wzrd", [](FileDlg &request, int) { return request.OpenWzrd(); }, wizard, {}, "Load Wizard Definition ...", "", "WizardCurrentDir", rules, 0, false},
        {"All", &Call<&FileDlg::OpenAll>, {&known.frmt_all}, {&known.frmt_all}, "Load Data...", "Save Data...", nullptr, "", 0, false},
        {"TableData", &CallNamed<&FileDlg::OpenTableData>, {&known.frmt_txt, &known.frmt_dbf, &known.frmt_csv, &known.frmt_all}, {&known.frmt_txt, &known.frmt_dbf}, "Load Cells...", "Save Cells...", nullptr, images, 0, false},
        {"TiffData", &CallNamed<&FileDlg::OpenTiffData>, {&known.frmt_tif}, {&known.frmt_tif}, "Load Cells...", "Save Cells...", nullptr, images, 0, false},
        {"XMLData", &CallNamed<&FileDlg::OpenXMLData>, {&known.frmt_xml}, {&known.frmt_xml}, "Load Cells...", "Save Cells...", nullptr, "", 0, false},
        {"ArcSDEConnFile", &CallNamed<&FileDlg::OpenArcSDEConnFile>, {&known.frmt_das}, {&known.frmt_das}, "Load Cells...", "Save Cells...", nullptr, "ThematicFolders", 0, false},
        {"SaveCSV", &CallCaptioned<&FileDlg::OpenSaveCSV>, {}, {&known.frmt_csv, &known.frmt_txt, &known.frmt_tcsv}, "", "Save contents", nullptr, images, 0, false},
        {"SaveHTML", &CallCaptioned<&FileDlg::OpenSaveHTML>, {}, {&known.frmt_html}, "", "Save contents", nullptr, "", 0, false},
    };
}
// clang-format on

TEST_F(TypedOperations, EachOffersItsFormatsUnderItsCaptionAndRemembersItsFolder) {
    for (Row const &row : Rows())
        for (int const mode : {0, 1}) {
            std::vector<DFileFrmt *> const &formats = mode == 0 ? row.load : row.save;
            if (formats.empty())
                continue;
            SCOPED_TRACE(testing::Message() << row.name << (mode == 0 ? " loads" : " saves"));
            // Names that taken apart lead to other files, and these files.
            TempFolder const top;
            DString const extension = formats.front()->GetExtn().substr(1);
            DString const name = "Run \"12:30\" a}b?c=d" + (extension == ".*" ? ".txt" : extension);
            for (char const *neighbour : {"run", "run?n=2/Run", "run?n=2/Run \"12", "run?n=2/Run \"12:30\" a}b"})
                top.Write(neighbour);
            DString const place = top / "run?n=2";
            DString const file = top.Write("run?n=2/" + name);
            if (row.folderKey != nullptr)
                Profile::WriteString("Settings", row.folderKey, place);
            DUserCnfg(DString("FileFilter")).RemoveKey(std::to_string(row.dlgTemplate));

            FileDlg request("Mine");
            request.ShowOverwritePrompt(false);
            if (row.folderKey == nullptr)
                request.SetInitFile(place + "/");
            Shown const shown = Answer([&] { return row.open(request, mode); }, name);
            EXPECT_TRUE(shown.opened);
            EXPECT_EQ(shown.isOwn, mode == 0);
            EXPECT_EQ(shown.types, ShownIn(mode == 0, formats));
            EXPECT_EQ(shown.caption, row.keepsCaption ? "Mine" : mode == 0 ? row.loadCaption : row.saveCaption);
            ASSERT_EQ(request.GetNumSlctFiles(), 1);
            EXPECT_EQ(request.GetPhysFile(), file);
            EXPECT_EQ(request.GetFormat(), formats.front());
            if (row.folderKey != nullptr) {
                EXPECT_EQ(Remembered(row.folderKey), place + "/");
            }
            if (*row.historyKey != '\0') {
                EXPECT_EQ(History(row.historyKey).front(), place + "/");
            }
            // The library's dialog keeps its filter by the kind of what is picked.
            if (mode == 0) {
                EXPECT_TRUE(DUserCnfg(DString("FileFilter")).HasKey(std::to_string(row.dlgTemplate)));
            }
            if (row.keepsCaption) {
                FileDlg bare;
                EXPECT_EQ(Answer([&] { return row.open(bare, mode); }, "").caption,
                          mode == 0 ? row.loadCaption : row.saveCaption);
            }
        }
}

TEST_F(TypedOperations, WithoutItsFormatADocumentsOperationIsDisabled) {
    std::vector<Row> rows = Rows();
    std::erase_if(rows,
                  [](Row const &row) { return row.load.empty() || !row.load.front()->GetID().starts_with("DOC"); });
    ASSERT_EQ(rows.size(), 18U);
    Documents::Clear();
    for (Row const &row : rows)
        for (int const mode : {0, 1}) {
            FileDlg request;
            EXPECT_FALSE(row.open(request, mode)) << row.name;
        }
}

TEST_F(TypedOperations, TheFormatOfAProcessVersionIsOfferedWhereThatOfAProcessIsSet) {
    FileDlg::pFrmt_proc = nullptr;
    EXPECT_FALSE(FileDlg().OpenProcessVersion(0)) << "the one is tested, the other offered";
    DFileFrmt process("PROC", "Processes", "*.dcp");
    FileDlg::pFrmt_proc = &process;
    FileDlg::pFrmt_proc_ver = nullptr;
    EXPECT_FALSE(FileDlg().OpenProcessVersion(0));
    EXPECT_FALSE(FileDlg().OpenProcessVersion(1));
    EXPECT_EQ(told.Take(), Names(2, "FileDlg::ShowFileDlg: no file types available"));
}

TEST_F(TypedOperations, AWorkspaceIsLoadedWithCheckBoxesInThePlatformsDialogToo) {
    platform::SetMainWindow(nullptr);
    application.Window().hide();
    DUserCnfg options("Options");
    options.WriteString("General_Use standard windows file selection dialog", "true");
    folder.Write("a.d0");
    for (int const mode : {0, 1}) {
        FileDlg request;
        request.SetInitFile(folder.Path() + "/");
        request.ShowOverwritePrompt(false);
        Shown const shown =
            Answer([&] { return request.OpenWorkspace(mode); }, "a.d0",
                   [](QWidget &dialog) {
                       if (auto *const box = test::FileDialogHand(dialog).Control<QAbstractButton>(6011))
                           test::Click(box);
                   });
        EXPECT_TRUE(shown.opened && !shown.isOwn);
        EXPECT_EQ(shown.hasCheckBoxes, mode == 0);
        EXPECT_EQ(request.GetChckReadOnly(), mode == 0);
        EXPECT_FALSE(request.GetChckEditOnly());
    }
    options.RemoveKey("General_Use standard windows file selection dialog");
}

TEST_F(TypedOperations, AParameterSetKeepsItsNameAndGetsItsFolder) {
    Profile::WriteString("Settings", "ParamSetDir", folder.Path());
    FileDlg request;
    request.SetInitFile("best.d9");
    Shown const shown = Answer([&] { return request.OpenParamSet(1, "Keep it"); }, "other.d9");
    EXPECT_EQ(shown.caption, "Keep it");
    EXPECT_EQ(shown.name, "best.d9");
    EXPECT_EQ(request.GetPhysFile(), folder / "other.d9");
}

TEST_F(TypedOperations, AWizardBeginsInItsDefaultFolderUntilOneWasUsed) {
    folder.Write("steps.d8");
    Profile::WriteString("Settings", "WizardCurrentDir", ".");
    Profile::WriteString("Settings", "WizardDefaultDir", folder.Path());
    FileDlg request;
    EXPECT_TRUE(Answer([&] { return request.OpenWzrd(); }, "steps.d8").opened);
    EXPECT_EQ(Remembered("WizardDefaultDir"), folder.Path());
    EXPECT_EQ(Remembered("WizardCurrentDir"), folder.Path() + "/");
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
    EXPECT_EQ(Remembered("Ruleset"), folder.Path() + "/");

    FileDlg saving;
    shown = Answer([&] { return saving.OpenAllRuleset(1, false); }, "");
    EXPECT_EQ(shown.types.front(), "All rule sets (*.d7;*.d5;*.d10)");
    EXPECT_EQ(shown.caption, "Save Rule Set...");
    FileDlg::pFrmt_proc = FileDlg::pFrmt_prtcl = FileDlg::pFrmt_anly = FileDlg::pFrmt_jobsqnce = nullptr;
    FileDlg none;
    shown = Answer([&] { return none.OpenAllRuleset(0, true); }, "");
    EXPECT_EQ(shown.types, Names{"All rule sets"});
}

TEST_F(TypedOperations, ACancelledRequestRemembersNothing) {
    Profile::WriteString("Settings", "Project", folder.Path());
    Names const history = History("ProjectFolders");
    for (int const mode : {0, 1}) {
        FileDlg request;
        EXPECT_FALSE(Answer([&] { return request.OpenPrjct(mode); }, "").opened);
        EXPECT_EQ(request.GetNumSlctFiles(), 0);
        EXPECT_EQ(request.GetPhysFile(), ".");
        EXPECT_EQ(Remembered("Project"), folder.Path());
        EXPECT_EQ(History("ProjectFolders"), history);
    }
}

} // namespace
} // namespace zelvar
