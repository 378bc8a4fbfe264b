#include "zelvar/settings/DfltFldrs.h"

#include "zelvar/base/Directories.h"
#include "zelvar/base/Redaction.h"
#include "zelvar/platform/os/ShellNamespace.h"
#include "zelvar/settings/CnfgLdr.h"
#include "zelvar/settings/Project.h"
#include "zelvar/store/DCnfg.h"
#include "zelvar/store/SettingsStore.h"
#include "zelvar/xml/XMLNode.h"

#include <algorithm>
#include <optional>

namespace zelvar {

namespace {

constexpr char const *kSection = "DefaultFolders";
constexpr char kListSeparator = ';';
constexpr std::size_t kMostEntries = 10; // of history and defaults together
constexpr std::string_view kInstallDir = "InstallDir";

struct KnownKey {
    char const *key = nullptr;
    char const *folders = nullptr; ///< "\" stands for the separator
};
constexpr KnownKey kKnownKeys[] = {
    {"ImageFolders", "My Documents;Desktop"},   {"ThematicFolders", "My Documents;Desktop;InstallDir\\Examples"},
    {"ProjectFolders", "My Documents;Desktop"}, {"WorkspaceFolders", "My Documents;Desktop"},
    {"RulesetFolders", "My Documents;Desktop"}, {"SolutionFolders", "My Documents;Desktop"},
};

DString WithSeparator(DString path, char from, PathStyle style) {
    std::replace(path.begin(), path.end(), from, style.separator);
    return path;
}

std::optional<platform::ShellFolderOf> FolderOf(unsigned csidl) {
    switch (csidl) {
    case DfltFldrs::CSIDL_PERSONAL:
        return platform::ShellFolderOf::Documents;
    case DfltFldrs::CSIDL_DESKTOPDIRECTORY:
        return platform::ShellFolderOf::Desktop;
    case DfltFldrs::CSIDL_MYPICTURES:
        return platform::ShellFolderOf::Pictures;
    case DfltFldrs::CSIDL_COMMON_DOCUMENTS:
        return platform::ShellFolderOf::CommonDocuments;
    default:
        return std::nullopt;
    }
}

bool Holds(DVectorSafe<DString> const &folders, DString const &folder) {
    return std::any_of(folders.begin(), folders.end(), [&](DString const &held) { return EqualNoCase(held, folder); });
}

} // namespace

DfltFldrs *DfltFldrs::m_pSingleInstance = nullptr;
DfltFldrs::CAutoDel DfltFldrs::m_autoDelete;

DfltFldrs *DfltFldrs::Instance() {
    if (m_pSingleInstance == nullptr)
        m_pSingleInstance = std::make_unique<DfltFldrs>().release(); // until `DeleteInstance`
    return m_pSingleInstance;
}

bool DfltFldrs::HasInstance() { return m_pSingleInstance != nullptr; }

void DfltFldrs::DeleteInstance() {
    delete m_pSingleInstance;
    m_pSingleInstance = nullptr;
}

DfltFldrs::DfltFldrs(PathStyle style) : m_style(style) {
    for (KnownKey const &known : kKnownKeys)
        m_folders[known.key] =
            CnfgLdr::Instance()->GetDfltFldr(known.key, WithSeparator(known.folders, '\\', style).c_str());
}

DfltFldrs::~DfltFldrs() = default;

bool DfltFldrs::GetSpecialFolder(unsigned int csidl, DString &path, PathStyle style) {
    auto const which = FolderOf(csidl);
    auto folder = which ? platform::ShellNamespace::Current().SpecialFolder(*which) : std::nullopt;
    if (!folder)
        return false;
    if (!folder->ends_with(style.separator))
        *folder += style.separator;
    path = *folder;
    return true;
}

DString DfltFldrs::TranslateSpecialPath(DString path, PathStyle style) {
    // Only the first ten characters are looked at, so that "InstallDirs" is the directory with an "s" behind it.
    if (EqualNoCase(std::string_view(path).substr(0, kInstallDir.size()), kInstallDir)) {
        DString directory = GetInstallDir();
        while (!directory.empty() && style.IsSeparator(directory.back()))
            directory.pop_back();
        return directory + path.substr(kInstallDir.size());
    }
    // A failed look-up leaves the word as it is.
    if (EqualNoCase(path, "Desktop"))
        GetSpecialFolder(CSIDL_DESKTOPDIRECTORY, path, style);
    else if (EqualNoCase(path, "My Documents") && !GetSpecialFolder(CSIDL_PERSONAL, path, style))
        GetSpecialFolder(CSIDL_COMMON_DOCUMENTS, path, style);
    return path;
}

bool DfltFldrs::Load(DFile const &file) {
    XMLNode root;
    if (file.GetMoniker().empty() || !root.Load(file))
        return false;
    for (XMLNode const *child = root.GetFirstChild(); child != nullptr; child = child->GetNext())
        m_folders[child->GetName()] = WithSeparator(child->GetAttrStr("path"), '/', m_style);
    return true;
}

void DfltFldrs::SetDfltFldrs(char const *key, char const *folders) {
    m_folders[key == nullptr ? "" : key] = folders == nullptr ? "" : folders;
}

void DfltFldrs::GetDirHist(char const *key, DVectorSafe<DString> &out, bool withDefaults, bool withHistory) const {
    out.clear();
    if (key == nullptr || *key == '\0')
        return;
    if (withHistory) {
        for (DString const &folder : HistoryOf(KeyOfProject(key)))
            out.push_back(folder);
        for (DString const &folder : HistoryOf(key))
            if (GetProject().empty() || !Holds(out, folder)) // without one it is as it is stored
                out.push_back(folder);
    }
    if (withDefaults)
        AddDefaults(key, out);
}

void DfltFldrs::SaveDirHist(char const *key, DString const &folder) const {
    if (key == nullptr || *key == '\0' || folder.empty())
        return;
    // One transaction: another process may be remembering a folder, too. A failed one goes unnoticed: the folder is
    // just not remembered.
    SettingsStore::Instance().TransactSoon([folders = *this, name = DString(key), ofProject = KeyOfProject(key),
                                            folder] {
        DUserCnfg settings(kSection, true, DCnfg::SttngType_User);
        DString const place = Redacted(folder);
        return (ofProject.empty() || settings.WriteString(ofProject, folders.HistoryWith(ofProject, name, place))) &&
               settings.WriteString(name, folders.HistoryWith(name, name, place));
    });
}

DVectorSafe<DString> DfltFldrs::HistoryOf(DString const &key) const {
    DUserCnfg const settings(kSection, true, DCnfg::SttngType_User);
    DVectorSafe<DString> folders;
    if (key.empty() || !settings.HasKey(key))
        return folders;
    for (DString const &piece : Split(settings.ReadString(key, "", true), kListSeparator))
        if (!piece.empty())
            folders.push_back(TranslateSpecialPath(piece, m_style));
    return folders;
}

void DfltFldrs::AddDefaults(DString const &key, DVectorSafe<DString> &folders) const {
    auto const defaults = m_folders.find(key);
    if (defaults == m_folders.end())
        return;
    for (DString const &piece : Split(defaults->second, kListSeparator)) {
        DString const folder = TranslateSpecialPath(piece, m_style);
        if (!folder.empty() && !Holds(folders, folder))
            folders.push_back(folder);
    }
}

DString DfltFldrs::HistoryWith(DString const &key, DString const &defaultsKey, DString const &folder) const {
    DVectorSafe<DString> history = HistoryOf(key);
    DVectorSafe<DString> all = history;
    AddDefaults(defaultsKey, all);
    // The limit is on history and defaults together, and the oldest goes even if `folder` is in the list already.
    if (all.size() >= kMostEntries && !history.empty())
        history.pop_back();
    auto const same =
        std::find_if(history.begin(), history.end(), [&](DString const &held) { return EqualNoCase(held, folder); });
    if (same != history.end())
        history.erase(same);
    history.insert(history.begin(), folder);
    return JoinNotEmpty({history.begin(), history.end()}, kListSeparator);
}

} // namespace zelvar
