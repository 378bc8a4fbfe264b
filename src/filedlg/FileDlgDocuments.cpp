// The operations on the application's documents and on built-in formats.
#include "zelvar/base/DFileFind.h"
#include "zelvar/base/PathStyle.h"
#include "zelvar/base/Translation.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/filedlg/BuiltInFormats.h"
#include "zelvar/filedlg/CDlgSlctDir.h"
#include "zelvar/filedlg/FileDlg.h"
#include "zelvar/filedlg/RememberedFolders.h"
#include "zelvar/platform/ui/MainWindow.h"

namespace zelvar {

constinit DFileFrmt *FileDlg::pFrmt_workspace = nullptr;
constinit DFileFrmt *FileDlg::pFrmt_dm_dbfile = nullptr;
constinit DFileFrmt *FileDlg::pFrmt_prjct = nullptr;
constinit DFileFrmt *FileDlg::pFrmt_clss_hrchy = nullptr;
constinit DFileFrmt *FileDlg::pFrmt_clss_hrchy_user = nullptr;
constinit DFileFrmt *FileDlg::pFrmt_prtcl = nullptr;
constinit DFileFrmt *FileDlg::pFrmt_user_prop = nullptr;
constinit DFileFrmt *FileDlg::pFrmt_proc = nullptr;
constinit DFileFrmt *FileDlg::pFrmt_wzrd = nullptr;
constinit DFileFrmt *FileDlg::pFrmt_paramset = nullptr;
constinit DFileFrmt *FileDlg::pFrmt_anly = nullptr;
constinit DFileFrmt *FileDlg::pFrmt_jobsqnce = nullptr;
constinit DFileFrmt *FileDlg::pFrmt_platelayout = nullptr;
constinit DFileFrmt *FileDlg::pFrmt_TMAlayout = nullptr;
constinit DFileFrmt *FileDlg::pFrmt_TMAmatch = nullptr;
constinit DFileFrmt *FileDlg::pFrmt_dosedilutionsec = nullptr;
constinit DFileFrmt *FileDlg::pFrmt_actnlib = nullptr;
constinit DFileFrmt *FileDlg::pFrmt_snpts = nullptr;
constinit DFileFrmt *FileDlg::pFrmt_textsttng = nullptr;
constinit DFileFrmt *FileDlg::pFrmt_proc_ver = nullptr;

enum class CaptionRule {
    IfEmpty, ///< the caller's stays
    Always,
};

/// What makes the operation on one kind of document.
struct DocumentOperation {
    DFileFrmt *const *tested; ///< null: the operation is disabled
    DFileFrmt *const *offered;
    char const *load;
    char const *save;
    char const *folderKey; ///< of the profile; may be null
    char const *historyKey;
    DLGTemplate dlgTemplate;
    CaptionRule caption;
};

namespace {

constexpr int kLoad = 0;
constexpr int kSave = 1;
constexpr int kWorkspaceTemplate = 6103; ///< with the check boxes "Project-Edit" and "Read-Only"

constexpr char kWorkspaces[] = "WorkspaceFolders";
constexpr char kRulesets[] = "RulesetFolders";

// clang-format off
constexpr DocumentOperation kWorkspace{&FileDlg::pFrmt_workspace, &FileDlg::pFrmt_workspace,
    Mark("Open Workspace..."), Mark("Save Workspace as..."), "Workspace", kWorkspaces, DT_WORKSPACE, CaptionRule::IfEmpty};
constexpr DocumentOperation kDMDatabase{&FileDlg::pFrmt_dm_dbfile, &FileDlg::pFrmt_dm_dbfile,
    Mark("Open DM Database..."), Mark("Save DM Database as..."), "DMDatabase", kWorkspaces, DT_DATA, CaptionRule::IfEmpty};
constexpr DocumentOperation kTMAMatch{&FileDlg::pFrmt_TMAmatch, &FileDlg::pFrmt_TMAmatch,
    Mark("Open TMA matching..."), Mark("Save TMA matching..."), "TMAMatching", kWorkspaces, DT_DATA, CaptionRule::IfEmpty};
constexpr DocumentOperation kTMAGridLayt{&FileDlg::pFrmt_TMAlayout, &FileDlg::pFrmt_TMAlayout,
    Mark("Open TMA Grid Layouts..."), Mark("Save TMA Grid Layouts..."), "TMAGridLayouts", kWorkspaces, DT_DATA, CaptionRule::IfEmpty};
constexpr DocumentOperation kPltLayt{&FileDlg::pFrmt_platelayout, &FileDlg::pFrmt_platelayout,
    Mark("Open Plate Layout..."), Mark("Save Plate Layout..."), "PlateLayout", kWorkspaces, DT_DATA, CaptionRule::IfEmpty};
constexpr DocumentOperation kTextSttng{&FileDlg::pFrmt_textsttng, &FileDlg::pFrmt_textsttng,
    Mark("Open Text Rendering Settings..."), Mark("Save Text Rendering Settings..."), "TextRenderSettings", kWorkspaces, DT_DATA,
    CaptionRule::IfEmpty};
constexpr DocumentOperation kDoseDilutionSec{&FileDlg::pFrmt_dosedilutionsec, &FileDlg::pFrmt_dosedilutionsec,
    Mark("Open Dilution Sequence..."), Mark("Save Dilution Sequence..."), "DoseDilutionSequence", kWorkspaces, DT_DATA,
    CaptionRule::IfEmpty};
constexpr DocumentOperation kPrjct{&FileDlg::pFrmt_prjct, &FileDlg::pFrmt_prjct,
    Mark("Open Project..."), Mark("Save Project as..."), "Project", "ProjectFolders", DT_PROJECT, CaptionRule::IfEmpty};
constexpr DocumentOperation kClssHrchy{&FileDlg::pFrmt_clss_hrchy, &FileDlg::pFrmt_clss_hrchy,
    Mark("Load Class Hierarchy..."), Mark("Save Class Hierarchy..."), "RuleBase", kRulesets, DT_DATA, CaptionRule::Always};
constexpr DocumentOperation kClssHrchyUser{&FileDlg::pFrmt_clss_hrchy_user, &FileDlg::pFrmt_clss_hrchy_user,
    Mark("Load Class Hierarchy..."), Mark("Save Class Hierarchy..."), "RuleBase", kRulesets, DT_DATA, CaptionRule::Always};
constexpr DocumentOperation kPrtcl{&FileDlg::pFrmt_prtcl, &FileDlg::pFrmt_prtcl,
    Mark("Load Protocol..."), Mark("Save Protocol..."), nullptr, kRulesets, DT_DATA, CaptionRule::Always};
constexpr DocumentOperation kUserProps{&FileDlg::pFrmt_user_prop, &FileDlg::pFrmt_user_prop,
    Mark("Load Customized Features..."), Mark("Save Customized Features..."), nullptr, kRulesets, DT_DATA, CaptionRule::Always};
constexpr DocumentOperation kProcess{&FileDlg::pFrmt_proc, &FileDlg::pFrmt_proc,
    Mark("Load Process..."), Mark("Save Process..."), "Process", kRulesets, DT_RULESET, CaptionRule::Always};
// One format is tested and the other offered: an application sets both or none. Where the latter is null the list is an
// empty one.
constexpr DocumentOperation kProcessVersion{&FileDlg::pFrmt_proc, &FileDlg::pFrmt_proc_ver,
    Mark("Load Process version..."), Mark("Save Process version..."), "Process", kRulesets, DT_RULESET, CaptionRule::Always};
constexpr DocumentOperation kJobSqnce{&FileDlg::pFrmt_jobsqnce, &FileDlg::pFrmt_jobsqnce,
    Mark("Load Job Sequence..."), Mark("Save Job Sequence..."), "Job_Sequence", kRulesets, DT_DATA, CaptionRule::Always};
constexpr DocumentOperation kAnlySltn{&FileDlg::pFrmt_anly, &FileDlg::pFrmt_anly,
    Mark("Load Analysis Solution..."), Mark("Save Analysis Solution..."), "AnlySltnDir", "SolutionFolders", DT_SOLUTION,
    CaptionRule::Always};
constexpr DocumentOperation kParamSet{&FileDlg::pFrmt_paramset, &FileDlg::pFrmt_paramset,
    Mark("Load Parameter Set..."), Mark("Save Parameter Set..."), "ParamSetDir", kRulesets, DT_DATA, CaptionRule::Always};
constexpr DocumentOperation kWzrd{&FileDlg::pFrmt_wzrd, &FileDlg::pFrmt_wzrd,
    Mark("Load Wizard Definition ..."), "", "WizardCurrentDir", kRulesets, DT_DATA, CaptionRule::Always};
// clang-format on

} // namespace

DString FileDlg::LoadCaption(DString const &what) { return Format(Translated("Load %s..."), what.c_str()); }
DString FileDlg::SaveCaption(DString const &what) { return Format(Translated("Save %s..."), what.c_str()); }

void FileDlg::SetCaptionFor(int mode, DString const &load, DString const &save) {
    if (mode == kLoad)
        m_request.caption = load;
    else if (mode == kSave)
        m_request.caption = save;
}

bool FileDlg::OpenDocument(DocumentOperation const &operation, int mode) {
    if (*operation.tested == nullptr)
        return false;
    AddDscr(*operation.offered, false);
    ReadInitFile(operation.folderKey);
    if (operation.caption == CaptionRule::Always || m_request.caption.empty())
        SetCaptionFor(mode, Translated(operation.load), Translated(operation.save));
    if (!ShowFileDlg(mode, operation.historyKey, operation.dlgTemplate))
        return false;
    RememberFolder(operation.folderKey);
    return true;
}

bool FileDlg::OpenWorkspace(int mode) {
    if (mode == kLoad && pFrmt_workspace != nullptr)
        SetDlgTmplId(kWorkspaceTemplate);
    return OpenDocument(kWorkspace, mode);
}
bool FileDlg::OpenDMDatabase(int mode) { return OpenDocument(kDMDatabase, mode); }
bool FileDlg::OpenTMAMatch(int mode) { return OpenDocument(kTMAMatch, mode); }
bool FileDlg::OpenTMAGridLayt(int mode) { return OpenDocument(kTMAGridLayt, mode); }
bool FileDlg::OpenPltLayt(int mode) { return OpenDocument(kPltLayt, mode); }
bool FileDlg::OpenTextSttng(int mode) { return OpenDocument(kTextSttng, mode); }
bool FileDlg::OpenDoseDilutionSec(int mode) { return OpenDocument(kDoseDilutionSec, mode); }
bool FileDlg::OpenPrjct(int mode) { return OpenDocument(kPrjct, mode); }
bool FileDlg::OpenClssHrchy(int mode) { return OpenDocument(kClssHrchy, mode); }
bool FileDlg::OpenClssHrchyUser(int mode) { return OpenDocument(kClssHrchyUser, mode); }
bool FileDlg::OpenPrtcl(int mode) { return OpenDocument(kPrtcl, mode); }
bool FileDlg::OpenUserProps(int mode) { return OpenDocument(kUserProps, mode); }
bool FileDlg::OpenProcess(int mode) { return OpenDocument(kProcess, mode); }
bool FileDlg::OpenProcessVersion(int mode) { return OpenDocument(kProcessVersion, mode); }
bool FileDlg::OpenJobSqnce(int mode) { return OpenDocument(kJobSqnce, mode); }
bool FileDlg::OpenAnlySltn(int mode) { return OpenDocument(kAnlySltn, mode); }

bool FileDlg::OpenParamSet(int mode, char const *caption) {
    DocumentOperation operation = kParamSet;
    if (caption != nullptr)
        operation.load = operation.save = caption;
    // The name of the initial file stays, its folder is filled in.
    if (DFile file(m_request.initFile); pFrmt_paramset != nullptr && file.GetPhysFilePath().empty()) {
        file.ChngDir(ReadSetting(operation.folderKey, "."));
        m_request.initFile = file.GetMoniker();
    }
    return OpenDocument(operation, mode);
}

bool FileDlg::OpenWzrd() {
    if (pFrmt_wzrd != nullptr && m_request.initFile.empty() && ReadSetting(kWzrd.folderKey, ".") == ".")
        m_request.initFile = ReadSetting("WizardDefaultDir", ".");
    return OpenDocument(kWzrd, kLoad);
}

bool FileDlg::OpenActnLib(int mode) {
    if (mode != kLoad)
        return false;
    CDlgSlctDir browser(platform::MainWindow());
    browser.SetKey("ActnLibDir");
    browser.SetTitle(Translated("Load Action Library..."));
    browser.SetFilter("*.dlx");
    if (browser.DoBrowse() == 0)
        return false;
    DString folder = browser.GetPath();
    while (folder.ends_with('/') || folder.ends_with('\\'))
        folder.pop_back();
    DFileFind const libraries(folder.empty() ? "/" : folder, "*.dlx", true, false, false, true, 1);
    if (libraries.GetFiles().empty())
        return false;
    bool const hasDriver = m_request.format != nullptr && pFrmt_actnlib != nullptr;
    m_files.push_back(
        new BDIMoniker(libraries.GetFiles().front().GetMoniker(),
                       hasDriver ? BDIDrvrMngr::Instance()->GetDrvr(pFrmt_actnlib->GetID().c_str()) : nullptr));
    return true;
}

bool FileDlg::OpenAllRuleset(int mode, bool withJobs) {
    for (DFileFrmt *format : {pFrmt_proc, pFrmt_prtcl, pFrmt_anly, withJobs ? pFrmt_jobsqnce : nullptr})
        if (format != nullptr)
            AddDscr(format, false);
    std::vector<DString> extensions;
    for (DFileFrmt const *format : OfferedFormats())
        if (format->GetExtn() != "*.*")
            extensions.push_back(format->GetExtn());
    DFileFrmt all("RLST_ALL", Mark("All rule sets"), JoinNotEmpty(extensions, ';').c_str());
    m_request.offer.AddFirst(&all);
    if (m_request.caption.empty())
        SetCaptionFor(mode, Translated("Load Rule Set..."), Translated("Save Rule Set..."));
    ReadInitFile("Ruleset");
    bool const opened = ShowFileDlg(mode, kRulesets, DT_RULESET);
    // What was chosen is not told: the entry for all of them says nothing.
    RmvDscr(&all);
    m_request.format = nullptr;
    if (opened)
        RememberFolder("Ruleset");
    return opened;
}

// ------------------------------------------------------------------------------------------------- built-in formats

bool FileDlg::OpenBuiltIn(int mode, std::initializer_list<DFileFrmt *> formats, DString const &caption,
                          char const *historyKey) {
    for (DFileFrmt *format : formats)
        AddDscr(format, false);
    if (mode == kLoad || mode == kSave)
        m_request.caption = caption;
    return ShowFileDlg(mode, historyKey, DT_DATA);
}

bool FileDlg::OpenAll(int mode) {
    return OpenBuiltIn(mode, {&BuiltInFormats::Instance().frmt_all},
                       mode == kLoad ? Translated("Load Data...") : Translated("Save Data..."), "");
}

bool FileDlg::OpenTableData(int mode, DString const &what) {
    m_request.nodeMask = BDINode_Table;
    SetFormat(FRMT_TEXT, mode);
    return OpenBuiltIn(mode, {}, mode == kLoad ? LoadCaption(what) : SaveCaption(what), "ImageFolders");
}

bool FileDlg::OpenTiffData(int mode, DString const &what) {
    return OpenBuiltIn(mode, {&BuiltInFormats::Instance().frmt_tif},
                       mode == kLoad ? LoadCaption(what) : SaveCaption(what), "ImageFolders");
}

bool FileDlg::OpenXMLData(int mode, DString const &what) {
    return OpenBuiltIn(mode, {&BuiltInFormats::Instance().frmt_xml},
                       mode == kLoad ? LoadCaption(what) : SaveCaption(what), "");
}

bool FileDlg::OpenArcSDEConnFile(int mode, DString const &what) {
    return OpenBuiltIn(mode, {&BuiltInFormats::Instance().frmt_das},
                       mode == kLoad ? LoadCaption(what) : SaveCaption(what), "ThematicFolders");
}

bool FileDlg::OpenSaveCSV(char const *caption) {
    BuiltInFormats &known = BuiltInFormats::Instance();
    return OpenBuiltIn(kSave, {&known.frmt_csv, &known.frmt_txt, &known.frmt_tcsv}, caption == nullptr ? "" : caption,
                       "ImageFolders");
}

bool FileDlg::OpenSaveHTML(char const *caption) {
    return OpenBuiltIn(kSave, {&BuiltInFormats::Instance().frmt_html}, caption == nullptr ? "" : caption, "");
}

} // namespace zelvar
