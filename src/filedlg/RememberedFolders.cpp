#include "zelvar/filedlg/RememberedFolders.h"

#include "zelvar/base/DFile.h"
#include "zelvar/base/Redaction.h"
#include "zelvar/data/PlaceCheck.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/settings/Project.h"
#include "zelvar/store/DCnfg.h"

#include <fcntl.h>
#include <unistd.h>

namespace zelvar {

namespace {

constexpr char kSection[] = "Settings";
constexpr std::chrono::milliseconds kPatience{100}; // a dialog is waited for

bool IsKey(char const *key) { return key != nullptr && *key != '\0'; }

} // namespace

DString ReadSetting(char const *key, DString const &fallback) {
    if (!IsKey(key))
        return fallback;
    DString const ofKind = Profile::GetString(kSection, key, fallback);
    DString const ofProject = KeyOfProject(key);
    return ofProject.empty() ? ofKind : Profile::GetString(kSection, ofProject, ofKind);
}

void WriteSetting(char const *key, DString const &value) {
    if (!IsKey(key))
        return;
    Profile::WriteString(kSection, key, value);
    if (DString const ofProject = KeyOfProject(key); !ofProject.empty())
        Profile::WriteString(kSection, ofProject, value);
}

void WriteFolder(char const *key, DString const &folder) {
    if (!folder.empty() && folder != ".")
        WriteSetting(key, Redacted(folder));
}

bool AnswersSoon(DString const &path) {
    RequestScope const scope(RequestKind::Probe, {}, kPatience);
    std::size_t const begin = IsUrl(path) ? DString::npos : path.find('/'); // behind what a driver puts before a path
    return begin == DString::npos || DoesPlaceAnswer(path.substr(begin));
}

bool CanBeginIn(DString const &folder, int mode) {
    return AnswersSoon(folder) && faccessat(AT_FDCWD, folder.c_str(), mode == 0 ? R_OK : W_OK, AT_EACCESS) == 0;
}

DVectorSafe<DString> FoldersAmong(DVectorSafe<DString> const &places) {
    DVectorSafe<DString> folders;
    bool mayAsk = true;
    for (DString const &place : places) {
        BDIMoniker const moniker(place, nullptr);
        mayAsk = mayAsk && (moniker.IsUrl() || AnswersSoon(place));
        DString const found = mayAsk ? moniker.FindFile() : DString();
        if (!moniker.IsUrl() && (found.empty() || DFile(found).IsDirectory()))
            folders.push_back(place);
    }
    return folders;
}

BDIMoniker InitialMoniker(DString const &place, int mode) {
    bool const isBareName = place.find('/') == DString::npos;
    bool const isPath = isBareName || (place.starts_with('/') && DFile(DString(ParentPathOf(place))).IsDirectory());
    return mode != 0 && isPath ? BDIMoniker::OfPath(place, "", nullptr) : BDIMoniker(place, nullptr);
}

} // namespace zelvar
