#pragma once

#include "zelvar/data/tables/TextRecoder.h"

#include <string_view>

namespace zelvar {

/// How the bytes of a file of comma-separated values become UTF-8. A file does not say what it is written in: one that
/// is no UTF-8 is taken for windows-1252, which spreadsheets write. A few wrong bytes among many right ones are damage.
class ZELVAR_API CsvEncoding {
public:
    static constexpr std::size_t kHead = std::size_t{256} << 10U; ///< bytes that are looked at

    CsvEncoding() = default; ///< UTF-8
    /// By the beginning of the text, as much as `kHead` of it. One of ASCII alone leaves it open: then each text speaks
    /// for itself.
    static CsvEncoding Guess(std::string_view head);
    /// As GDAL names it; UTF-8 for one that is not known.
    static CsvEncoding Stated(DString const &name);

    /// For the user; empty for UTF-8, and where it was not needed to guess.
    [[nodiscard]] DString const &Name() const { return m_name; }
    /// Whether several threads may use it at a time.
    [[nodiscard]] bool IsForAnyThread() const { return m_recoder == nullptr; }
    /// As `AppendText`.
    void Append(DString &out, std::string_view text, std::size_t most) const;

private:
    std::unique_ptr<TextRecoder> m_recoder; ///< null for UTF-8
    bool m_isOpen = false;                  ///< a text that is UTF-8 stays as it is
    DString m_name;
};

} // namespace zelvar
