#include "zelvar/filedlg/TypedPaths.h"

#include "zelvar/base/NormalPath.h"
#include "zelvar/base/PathStyle.h"
#include "zelvar/base/Report.h"
#include "zelvar/data/PlaceCheck.h"
#include "zelvar/filedlg/NameBytes.h"
#include "zelvar/filedlg/PathQuestions.h"
#include "zelvar/filedlg/core/TypedNames.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QDir>

#include <algorithm>
#include <climits>
#include <iterator>

namespace zelvar {

std::vector<DString> TypedPaths::Read(DString const &typed) const {
    std::vector<DString> const names = SplitTypedNames(typed);
    bool const isOneName = names.size() > 1 && !m_setup.multiple;
    std::vector<DString> paths;
    if (isOneName || IsThere(PathOf(typed))) // such a file may have quotes or blanks about its name
        paths.push_back(PathOf(typed));
    else
        std::transform(names.begin(), names.end(), std::back_inserter(paths),
                       [this](DString const &name) { return PathOf(name); });
    return paths;
}

DString TypedPaths::PathOf(DString const &typed) const {
    bool const ofHome = typed == "~" || typed.starts_with("~/");
    DString const text = ofHome ? platform::ToDString(QDir::homePath()) + typed.substr(1) : typed;
    DString const path = NormalPath(text.starts_with('/') ? text : AppendPath(m_folder, text), &DoesPlaceAnswer);
    return DoesPlaceAnswer(path) ? PathBytes("/", path) : path;
}

DString TypedPaths::Complete(DString path) const {
    return WithExtension(std::move(path), ExtensionToAdd(), OfferedMasks());
}

bool TypedPaths::IsReadyForLoading(DString &path) const {
    if (IsThere(path))
        return true;
    DString extended = PathBytes("/", Complete(path));
    if (IsThere(extended)) {
        path = std::move(extended);
        return true;
    }
    Report::UserWarning("File '%s' not found", path.c_str());
    return false;
}

bool TypedPaths::IsReadyForSaving(DString const &path) const {
    DString const folder(ParentPathOf(path));
    if (!IsFolder(folder)) {
        Report::UserNotificationEnforced("Folder '%s' not found", folder.c_str());
        return false;
    }
    if (FileNameOf(path).size() > NAME_MAX) {
        Report::UserWarning("The name is too long");
        return false;
    }
    if (IsThere(path)) {
        if (IsWritable(path))
            return true;
        Report::UserWarning("File '%s' is read-only", path.c_str());
        return false;
    }
    if (IsWritable(folder))
        return true;
    Report::UserWarning("Nothing can be saved in the folder '%s'", folder.c_str());
    return false;
}

DString TypedPaths::OfferedMasks() const {
    std::vector<DString> masks{m_setup.defaultExtension.find('*') != DString::npos ? m_setup.defaultExtension : ""};
    for (FileFilter const &filter : m_setup.filters)
        masks.push_back(filter.masks);
    return JoinNotEmpty(masks, ';');
}

DString TypedPaths::ExtensionToAdd() const {
    auto const chosen = static_cast<std::size_t>(std::max(0, m_typeIndex));
    return DefaultExtension(chosen < m_setup.filters.size() ? m_setup.filters[chosen].masks : DString(),
                            m_setup.defaultExtension);
}

} // namespace zelvar
