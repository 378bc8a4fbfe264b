#include "support/FileRequests.h"
#include "support/RequestProbe.h"
#include "support/ScriptedDriver.h"
#include "zelvar/filedlg/BuiltInFormats.h"
#include "zelvar/settings/DfltFldrs.h"
#include "zelvar/store/DCnfg.h"

namespace zelvar::test {
namespace {

using F = FileDlg;
using Names = std::vector<std::string>;
using Formats = std::vector<DFileFrmt *>;

struct TypedOperations : testing::Test {
    ~TypedOperations() override { EXPECT_EQ(told.Take(), Names{}); }

    static DString Remembered(char const *key) { return Profile::GetString("Settings", key, "."); }
    static DString NewestOf(char const *historyKey) {
        DVectorSafe<DString> folders;
        DfltFldrs::Instance()->GetDirHist(historyKey, folders, false, true);
        return folders[0];
    }

    ScriptedDrivers drivers;
    Application application;
    Documents documents;
    TempFolder folder;
    Told told;
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
                Profile::WriteString("Settings", row.folderKey, place);
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
            EXPECT_TRUE(row.folderKey == nullptr || Remembered(row.folderKey) == place + "/");
            EXPECT_TRUE(row.historyKey == nullptr || NewestOf(row.historyKey) == place + "/");
            // The library's dialog keeps its filter by the kind of what is picked.
            EXPECT_EQ(filters.HasKey(std::to_string(row.dlgTemplate)), mode == 0);
            if (row.isOpened) {
                FileDlg bare;
                EXPECT_EQ(Answer([&] { return row.open(bare, mode); }, "").caption, caption);
            }
        }
}

TEST_F(TypedOperations, WithoutItsFormatADocumentsOperationIsDisabled) {
    std::vector<Operation> rows = Operations();
    std::erase_if(rows, [](Operation const &row) { return !row.formats.front()->GetID().starts_with("DOC"); });
    ASSERT_EQ(rows.size(), 18U);
    Documents::Clear();
    for (Operation const &row : rows)
        for (int const mode : {0, 1}) {
            FileDlg request;
            EXPECT_FALSE(row.open(request, mode)) << row.what;
        }
}

TEST_F(TypedOperations, TheFormatOfAProcessVersionIsOfferedWhereThatOfAProcessIsSet) {
    FileDlg::pFrmt_proc = nullptr;
    EXPECT_FALSE(FileDlg().OpenProcessVersion(0)) << "the one is tested, the other offered";
    DFileFrmt process("PROC", "Processes", "*.dcp");
    FileDlg::pFrmt_proc = &process;
    FileDlg::pFrmt_proc_ver = nullptr;
    EXPECT_FALSE(FileDlg().OpenProcessVersion(0));
    EXPECT_EQ(told.Take(), Names{"FileDlg::ShowFileDlg: no file types available"});
}

TEST_F(TypedOperations, AWorkspaceIsLoadedWithCheckBoxesInThePlatformsDialogToo) {
    DUserCnfg options("Options");
    options.WriteString("General_Use standard windows file selection dialog", "true");
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
    shown = Answer([] { return FileDlg().OpenAllRuleset(1, false); }, "");
    EXPECT_EQ(shown.types.front(), "All rule sets (*.d7;*.d5;*.d10)");
    EXPECT_EQ(shown.caption, "Save Rule Set...");
    FileDlg::pFrmt_proc = FileDlg::pFrmt_prtcl = FileDlg::pFrmt_anly = FileDlg::pFrmt_jobsqnce = nullptr;
    EXPECT_EQ(Answer([] { return FileDlg().OpenAllRuleset(0, true); }, "").types, Names{"All rule sets"});
}

TEST_F(TypedOperations, ACancelledRequestRemembersNothing) {
    Profile::WriteString("Settings", "Project", folder.Path());
    DString const newest = NewestOf("ProjectFolders");
    for (int const mode : {0, 1}) {
        FileDlg request;
        EXPECT_FALSE(Answer([&] { return request.OpenPrjct(mode); }, "").opened);
        EXPECT_EQ(request.GetNumSlctFiles(), 0);
        EXPECT_EQ(request.GetPhysFile(), ".");
        EXPECT_EQ(Remembered("Project"), folder.Path());
        EXPECT_EQ(NewestOf("ProjectFolders"), newest);
    }
}

} // namespace
} // namespace zelvar::test
