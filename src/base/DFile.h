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
    /// All bytes; false if the file cannot be read, is no regular file, or is larger than `limit` bytes.
    bool ReadAll(DString &bytes, std::size_t limit = std::size_t{256} << 20U) const;
    /// Writes a temporary file beside it, flushes it to disk and renames it over the target. False leaves the target.
    [[nodiscard]] bool WriteAtomically(std::string_view bytes) const;

private:
    DString m_path;
};

} // namespace zelvar
