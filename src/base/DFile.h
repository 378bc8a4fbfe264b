#pragma once

#include "zelvar/base/PathStyle.h"

namespace zelvar {

/// A path as an object. Nothing is touched on disk until a question is asked.
class ZELVAR_API DFile {
public:
    DFile() = default;
    explicit DFile(char const *path) : m_path(path == nullptr ? "" : path) {}
    explicit DFile(DString path) : m_path(std::move(path)) {}

    /// The text that it was made from.
    [[nodiscard]] DString const &GetMoniker() const { return m_path; }
    [[nodiscard]] bool Exist() const;
    [[nodiscard]] bool IsDirectory() const;
    /// Absolute and without "." and ".."; links stay as they are. Empty for an empty path; a URL stays as it is.
    [[nodiscard]] DString GetAbsolutePath() const;
    [[nodiscard]] DString GetPhysicalPath() const { return GetAbsolutePath(); }
    [[nodiscard]] DString GetName() const { return DString(FileNameOf(m_path)); }

    // The parts of the text, without a look at the disk: what ends in a separator is a folder and has no name.
    /// The folder with the separator behind it; empty for a bare name.
    [[nodiscard]] DString GetPhysFilePath() const { return m_path.substr(0, m_path.size() - GetName().size()); }
    [[nodiscard]] DString GetPhysFileName() const { return GetName(); }
    /// The extension without its dot.
    [[nodiscard]] DString GetPhysFileExtn() const { return DString(ExtensionOf(m_path)); }
    /// The same name in another folder.
    void ChngDir(DString const &folder);

    /// All bytes; false if the file cannot be read, is no regular file, or is larger than `limit` bytes.
    bool ReadAll(DString &bytes, std::size_t limit = std::size_t{256} << 20U) const;
    /// Writes a temporary file beside it, flushes it to disk and renames it over the target. False leaves the target.
    [[nodiscard]] bool WriteAtomically(std::string_view bytes) const;

private:
    DString m_path;
};

/// "*.tif" for "/a/b.tif": what a file name has in common with the mask of its format. Empty for a name without an
/// extension.
[[nodiscard]] ZELVAR_API DString StripExtn(DString const &fileName);

} // namespace zelvar
