#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace zelvar::test {

/// Neither copied nor moved: what undoes something at its end.
class Pinned {
public:
    Pinned(Pinned const &) = delete;
    Pinned &operator=(Pinned const &) = delete;

protected:
    Pinned() = default;
    ~Pinned() = default;
};

/// A folder of its own for one test, removed with all in it at the end. Its path is absolute, without separator at its
/// end.
class TempFolder : Pinned {
public:
    TempFolder();
    ~TempFolder();

    [[nodiscard]] std::string const &Path() const { return m_path; }
    /// "<folder>/<name>"; `name` is bytes and need not be UTF-8.
    [[nodiscard]] std::string operator/(std::string_view name) const { return m_path + "/" + std::string(name); }
    /// Writes a file with these bytes, making folders on the way, and yields its path.
    // NOLINTNEXTLINE(modernize-use-nodiscard): who writes a file often knows its path
    std::string Write(std::string_view name, std::string_view bytes = {}) const;
    /// Makes a folder below this one and yields its path.
    // NOLINTNEXTLINE(modernize-use-nodiscard): as above
    std::string Folder(std::string_view name) const;
    /// Makes folders in each other until the path is longer than the system takes one, and yields the name of the
    /// first.
    // NOLINTNEXTLINE(modernize-use-nodiscard): as above
    std::string TooDeepFolders() const;

private:
    std::string m_path;
};

/// Variables of the environment with these values, or without those that have none, for as long as this lives.
class Environment : Pinned {
public:
    using Values = std::map<std::string, std::optional<std::string>>;
    explicit Environment(Values const &values);
    ~Environment() { Set(m_former); }

private:
    static void Set(Values const &values);
    Values m_former;
};

/// Points every place that the library would read or write of the user's (settings, definitions, templates, home) to a
/// temporary folder, for the life of a test program. Made by the test mains.
class SandboxEnvironment : Pinned {
public:
    SandboxEnvironment();
    ~SandboxEnvironment() = default;

private:
    TempFolder m_folder;
};

/// All bytes of a file; empty if it cannot be read.
[[nodiscard]] std::string ReadFile(std::string const &path);

} // namespace zelvar::test
