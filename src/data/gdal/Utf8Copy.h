#pragma once

#include "zelvar/data/gdal/Source.h"

#include <memory>

namespace zelvar::gdal {

/// True for a local file of text by its first bytes, with a name that text files have (".txt"); `anyName`: with any.
[[nodiscard]] bool IsPlainText(Source const &source, bool anyName);

/// A text file in UTF-16, which GDAL does not read, as a file in UTF-8 that it finds in memory while this lives.
class Utf8Copy {
public:
    /// Null for a file that does not begin as UTF-16 does, is no table of text by its name, or is too large.
    static std::unique_ptr<Utf8Copy> Of(Source const &source);
    ~Utf8Copy();
    Utf8Copy(Utf8Copy const &) = delete;
    Utf8Copy &operator=(Utf8Copy const &) = delete;

    [[nodiscard]] DString const &Name() const { return m_name; } ///< GDAL's

private:
    explicit Utf8Copy(DString name) : m_name(std::move(name)) {}
    DString m_name;
};

} // namespace zelvar::gdal
