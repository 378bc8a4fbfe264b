#include "zelvar/platform/os/SpecialFolders.h"

#include "zelvar/base/DFile.h"

#include <array>
#include <cstdlib>
#include <vector>

#include <pwd.h>
#include <unistd.h>

namespace zelvar::platform {

namespace {

struct FolderNames {
    char const *key;
    char const *customary; ///< below the home folder
};

FolderNames NamesOf(ShellFolderOf which) {
    switch (which) {
    case ShellFolderOf::Desktop:
        return {"XDG_DESKTOP_DIR", "Desktop"};
    case ShellFolderOf::Documents:
        return {"XDG_DOCUMENTS_DIR", "Documents"};
    case ShellFolderOf::CommonDocuments:
        return {"XDG_PUBLICSHARE_DIR", "Public"};
    case ShellFolderOf::Pictures:
        return {"XDG_PICTURES_DIR", "Pictures"};
    }
    return {"XDG_DOCUMENTS_DIR", "Documents"};
}

DString ConfigFolder(DString const &home) {
    char const *const told = std::getenv("XDG_CONFIG_HOME");
    return told != nullptr && told[0] == '/' ? DString(told) : home + "/.config";
}

DString WithoutSeparatorAtEnd(DString path) {
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

} // namespace

DString HomeFolder() {
    if (char const *const home = std::getenv("HOME"); home != nullptr && home[0] == '/')
        return WithoutSeparatorAtEnd(home);
    std::array<char, 4096> buffer{};
    passwd entry{};
    passwd *found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr ||
        found->pw_dir == nullptr)
        return {};
    return WithoutSeparatorAtEnd(found->pw_dir);
}

DString FindUserDirectory(std::string_view text, std::string_view key, std::string_view home) {
    DString found;
    for (DString const &line : Split(text, '\n')) {
        std::string_view rest = Trimmed(line);
        if (!rest.starts_with(key) || rest.size() <= key.size() + 1 || rest[key.size()] != '=')
            continue;
        rest = Trimmed(rest.substr(key.size() + 1));
        if (rest.size() < 2 || rest.front() != '"' || rest.back() != '"')
            continue;
        rest = rest.substr(1, rest.size() - 2);
        DString path;
        constexpr std::string_view kHome = "$HOME";
        if (rest == kHome || rest.starts_with("$HOME/")) {
            path = home;
            rest.remove_prefix(kHome.size());
        }
        for (std::size_t i = 0; i < rest.size(); ++i) {
            if (rest[i] == '\\' && i + 1 < rest.size())
                ++i;
            path += rest[i];
        }
        if (path.starts_with('/'))
            found = WithoutSeparatorAtEnd(path); // as in a shell script, the last line wins
    }
    return found;
}

std::optional<DString> FindSpecialFolder(ShellFolderOf which) {
    DString const home = HomeFolder();
    if (home.empty())
        return std::nullopt;
    FolderNames const names = NamesOf(which);
    DString text;
    constexpr std::size_t kMaxSize = 1U << 16U;
    if (DFile(ConfigFolder(home) + "/user-dirs.dirs").ReadAll(text, kMaxSize))
        if (DString told = FindUserDirectory(text, names.key, home); DFile(told).IsDirectory())
            return told;
    DString customary = home + "/" + names.customary;
    return DFile(customary).IsDirectory() ? customary : home;
}

} // namespace zelvar::platform
