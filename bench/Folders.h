#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace zelvar::bench {

/// A folder below the temporary one, removed at the end.
class Folder {
public:
    Folder();
    ~Folder();
    Folder(Folder const &) = delete;
    Folder &operator=(Folder const &) = delete;
    [[nodiscard]] std::string const &Path() const { return m_path; }
    [[nodiscard]] std::string operator/(char const *name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};

/// A file of these bytes, or of some hundred to some thousand zeros without any. Names come in an order that no folder
/// gives, sizes and days differ.
void MakeFile(std::string const &folder, unsigned number, char const *extension, std::string_view bytes);
/// That many files with changing extensions.
void Fill(std::string const &folder, unsigned count);
/// The least that a listing with size and time can cost: directory entries and a question for each. Yields something
/// made of the answers.
std::size_t ListBare(std::string const &path);

} // namespace zelvar::bench
