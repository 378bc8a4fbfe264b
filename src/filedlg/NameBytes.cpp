#include "zelvar/filedlg/NameBytes.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/filedlg/core/TypedNames.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QUtf8StringView>

#include <memory>
#include <optional>

#include <dirent.h>

namespace zelvar {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD"; // U+FFFD

struct Closer {
    void operator()(DIR *directory) const { closedir(directory); }
};

} // namespace

bool IsUtf8(std::string_view text) {
    return QUtf8StringView(text.data(), static_cast<qsizetype>(text.size())).isValidUtf8();
}

DString NameBytes(DString const &folder, QString const &name) {
    DString text = platform::ToDString(name);
    if (text.find(kReplacement) == DString::npos)
        return text;
    std::optional<DString> found;
    std::unique_ptr<DIR, Closer> const directory(opendir(folder.c_str()));
    for (dirent const *entry = nullptr; directory != nullptr && (entry = readdir(directory.get())) != nullptr;) {
        std::string_view const bytes(entry->d_name);
        if (bytes == text)
            return text; // the sign itself stands in the name
        if (!IsUtf8(bytes) && platform::ToQString(bytes) == name && (!found || bytes < *found))
            found = DString(bytes);
    }
    return found.value_or(text);
}

DString PathBytes(DString const &folder, DString const &text) {
    DString path = AbsolutePath(folder, text);
    if (path.find(kReplacement) == DString::npos || path == "/")
        return path;
    DString const parent = PathBytes("/", DString(ParentPathOf(path)));
    return AppendPath(parent, NameBytes(parent, platform::ToQString(FileNameOf(path))));
}

} // namespace zelvar
