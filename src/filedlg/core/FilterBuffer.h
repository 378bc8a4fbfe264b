#pragma once

#include "zelvar/base/DFileFrmt.h"

#include <array>

namespace zelvar {

/// The text of a file dialog's type box, "description|pattern|description|pattern||", put together format by format in
/// room of a fixed size, which is part of what dialogs of this kind expect. What does not fit is left out whole.
class ZELVAR_API FilterBuffer {
public:
    static constexpr std::size_t kSize = 8192; ///< bytes, with the zero at the end

    void InitFilter();
    /// False, and nothing appended, if the format does not fit. From then on none does, so that those offered are the
    /// first ones of a list.
    [[nodiscard]] bool Add(DFileFrmt const &format);
    void FinishFilter();
    [[nodiscard]] char const *Text() const { return m_text.data(); }

private:
    std::array<char, kSize> m_text{};
    bool m_full = false;
};

/// Counted from 0, the entry of a type box whose pattern is the first to contain `extension`; the number of entries if
/// none does. Every pattern but an empty one contains the empty text.
[[nodiscard]] ZELVAR_API int IndexOfPattern(std::string_view filter, std::string_view extension);

} // namespace zelvar
