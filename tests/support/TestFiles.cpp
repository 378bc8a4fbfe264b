#include "support/TestFiles.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <tuple>
#include <utility>

#include <fcntl.h>
#include <linux/limits.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zelvar::test {

TempFolder::TempFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "zelvar-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("no temporary folder");
    m_path = pattern;
}

TempFolder::~TempFolder() {
    std::error_code ignored; // a test may have removed it itself
    std::filesystem::remove_all(m_path, ignored);
}

std::string TempFolder::Write(std::string_view name, std::string_view bytes) const {
    std::string path = *this / name;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return path;
}

std::string TempFolder::Folder(std::string_view name) const {
    std::string path = *this / name;
    std::filesystem::create_directories(path);
    return path;
}

std::string TempFolder::TooDeepFolders() const {
    std::string name(200, 'd');
    int at = open(m_path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    for (std::size_t length = 0; length < PATH_MAX; length += name.size() + 1) {
        std::ignore = mkdirat(at, name.c_str(), 0700);
        int const below = openat(at, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        close(std::exchange(at, below));
    }
    close(at);
    return name;
}

Environment::Environment(Values const &values) {
    for (auto const &[name, value] : values) {
        char const *const former = std::getenv(name.c_str());
        m_former[name] = former == nullptr ? std::nullopt : std::optional<std::string>(former);
    }
    Set(values);
}

void Environment::Set(Values const &values) {
    for (auto const &[name, value] : values) {
        if (value)
            setenv(name.c_str(), value->c_str(), 1);
        else
            unsetenv(name.c_str());
    }
}

SandboxEnvironment::SandboxEnvironment() {
    for (char const *place : {"definitions", "templates", "home", "run"})
        std::ignore = m_folder.Folder(place);
    std::filesystem::permissions(m_folder / "run", std::filesystem::perms::owner_all);
    setenv("ZELVAR_SETTINGS", (m_folder / "settings.db").c_str(), 1);
    setenv("ZELVAR_MACHINE_SETTINGS", (m_folder / "machine.db").c_str(), 1);
    setenv("ZELVAR_DEFINITIONS_DIR", (m_folder / "definitions").c_str(), 1);
    setenv("ZELVAR_TEMPLATES_DIR", (m_folder / "templates").c_str(), 1);
    setenv("HOME", (m_folder / "home").c_str(), 1);
    setenv("XDG_RUNTIME_DIR", (m_folder / "run").c_str(), 1);
    for (char const *name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"})
        unsetenv(name);
}

std::string ReadFile(std::string const &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace zelvar::test
