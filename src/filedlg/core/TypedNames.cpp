#include "zelvar/filedlg/core/TypedNames.h"

#include "zelvar/base/PathStyle.h"

#include <algorithm>
#include <filesystem>

namespace zelvar {

namespace {

/// Whether the name ends like the files that a mask of the form "*.tif" asks for.
bool HasExtensionOf(std::string_view name, std::string_view masks) {
    std::vector<DString> const single = Split(masks, ';');
    return !name.empty() && std::any_of(single.begin(), single.end(), [name](DString const &entry) {
        std::string_view const mask = Trimmed(entry);
        // A dot at the start of the name begins no extension.
        return mask.starts_with("*.") && mask != "*.*" && PathMatchSpec(name.substr(1), mask);
    });
}

} // namespace

std::vector<DString> SplitTypedNames(std::string_view text) {
    text = Trimmed(text);
    std::vector<DString> names;
    while (text.starts_with('"')) {
        std::size_t const end = text.find('"', 1);
        if (end == std::string_view::npos)
            break;
        if (end > 1)
            names.emplace_back(text.substr(1, end - 1));
        text = Trimmed(text.substr(end + 1));
    }
    if (!text.empty())
        names.emplace_back(text);
    return names;
}

DString WithExtension(DString path, std::string_view extension, std::string_view masks) {
    std::string_view const name = FileNameOf(path);
    bool const isWhole = extension.empty() || name.ends_with('.') || HasExtensionOf(name, masks) ||
                         HasExtensionOf(name, "*." + DString(extension));
    if (!isWhole)
        path.append(".").append(extension);
    return path;
}

DString ForOtherFilter(DString name, std::string_view masks, std::string_view extension) {
    std::string_view const present = ExtensionOf(name);
    bool const isOfFilter =
        !masks.empty() && masks.find("*.*") == std::string_view::npos && PathMatchSpec("." + DString(present), masks);
    if (present.empty() || extension.empty() || !isOfFilter)
        return name;
    name.resize(name.size() - present.size());
    return name.append(extension);
}

DString AbsolutePath(std::string_view folder, std::string_view text) {
    std::filesystem::path const path =
        text.starts_with('/') ? std::filesystem::path(text) : std::filesystem::path(folder) / text;
    DString normal = path.lexically_normal().string();
    while (normal.size() > 1 && normal.ends_with('/'))
        normal.pop_back();
    return normal;
}

bool IsMask(std::string_view text) { return text.find_first_of("*?") != std::string_view::npos; }

} // namespace zelvar
