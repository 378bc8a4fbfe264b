#include "zelvar/base/Directories.h"

#include "zelvar/base/PathStyle.h"

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <system_error>

#include <dlfcn.h>
#include <unistd.h>

namespace zelvar {

namespace {

constexpr int kDeepestLibrary = 4; // "lib/<architecture>/<folder>/<library>"

std::optional<DString> Variable(char const *name) {
    char const *value = std::getenv(name);
    return value == nullptr ? std::nullopt : std::optional<DString>(value);
}

bool IsThere(DString const &path) { return access(path.c_str(), F_OK) == 0; }

/// The file that holds this code: the shared library, or the program that it was linked into.
DString OwnFile() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void const *>(&GetInstallDir), &info) != 0 && info.dli_fname != nullptr &&
        info.dli_fname[0] == '/')
        return info.dli_fname;
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

/// The folder above the file that holds the shared data; empty if none does.
DString FolderOfData(DString const &file) {
    std::string_view above = ParentPathOf(file);
    for (int level = 0; level < kDeepestLibrary && above.size() > 1; ++level) {
        if (IsThere(AppendPath(above, "share/zelvar")))
            return DString(above);
        above = ParentPathOf(above);
    }
    return {};
}

DString FindInstallDir() {
    DString const file = OwnFile();
    DString found = FolderOfData(file);
    // "/lib" is a link to "/usr/lib", and the loader goes through it.
    if (std::unique_ptr<char, decltype(&std::free)> const real(realpath(file.c_str(), nullptr), &std::free);
        found.empty() && real)
        found = FolderOfData(real.get());
    return found.empty() ? DString(ParentPathOf(ParentPathOf(file))) : found;
}

/// Directory of the user's configuration; empty if there is no user's home.
DString ConfigurationDir() {
    // A relative value is to be ignored.
    if (auto const xdg = Variable("XDG_CONFIG_HOME"); xdg && xdg->starts_with('/'))
        return *xdg;
    auto const home = Variable("HOME");
    return home && !home->empty() ? AppendPath(*home, ".config") : DString();
}

DString BelowConfiguration(std::string_view path) {
    DString const configuration = ConfigurationDir();
    return configuration.empty() ? DString() : AppendPath(configuration, path);
}

} // namespace

DString GetInstallDir() {
    if (auto const told = Variable("ZELVAR_INSTALL_DIR"); told && !told->empty())
        return *told;
    static auto const &found = *new DString(FindInstallDir());
    return found;
}

DString GetInstallBinDir() { return AppendPath(GetInstallDir(), "bin") + PathStyle::Native().separator; }

DString GetDataSourceDefinitionsDir() {
    auto const told = Variable("ZELVAR_DEFINITIONS_DIR");
    return told ? *told : BelowConfiguration("zelvar/definitions");
}

DString GetDataSourceTemplatesDir() {
    auto const told = Variable("ZELVAR_TEMPLATES_DIR");
    return told ? *told : AppendPath(GetInstallDir(), "share/zelvar/templates");
}

DString GetSettingsFile() {
    auto const told = Variable("ZELVAR_SETTINGS");
    return told && !told->empty() ? *told : BelowConfiguration("zelvar/settings.db");
}

DString GetMachineSettingsFile() {
    auto const told = Variable("ZELVAR_MACHINE_SETTINGS");
    return told && !told->empty() ? *told : "/etc/xdg/zelvar/settings.db";
}

} // namespace zelvar
