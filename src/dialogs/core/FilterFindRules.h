#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/Geometry.h"

#include <optional>

namespace zelvar {

/// Finds a text in others, letter case not regarded: that of ASCII, other signs are compared as they are.
class ZELVAR_API AsciiCaseFinder {
public:
    explicit AsciiCaseFinder(std::string_view wanted);
    /// The empty text is in all.
    [[nodiscard]] bool IsIn(std::string_view text) const;

private:
    DString m_wanted; ///< in lower case
};

/// A list above a description inside a frame, in one window's pixels.
struct ListAndDescription {
    Rect list{};
    Rect text{};
    Rect frame{};

    friend bool operator==(ListAndDescription const &, ListAndDescription const &) = default;
};
/// Where they stand when the list's lower edge is drawn to `y`; nothing if that is where it is, or one of them would
/// become too low.
[[nodiscard]] ZELVAR_API std::optional<ListAndDescription> DragBoundary(ListAndDescription const &places, int y);

/// Whether the mouse at `y` takes hold of the lower edge of a list that is so high.
[[nodiscard]] ZELVAR_API bool IsOnBoundary(int y, int listHeight);

} // namespace zelvar
