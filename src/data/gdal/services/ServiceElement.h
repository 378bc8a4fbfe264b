#pragma once

#include "zelvar/xml/XMLNode.h"

namespace zelvar::services {

// Elements of documents whose name spaces are written in many ways: names without what stands before ":".

[[nodiscard]] DString LocalName(XMLNode const &element);
/// The first child of that name, or null. `parent` may be null.
[[nodiscard]] XMLNode const *ChildOf(XMLNode const *parent, std::string_view name);
/// The same, going down one name after the other.
[[nodiscard]] XMLNode const *ChildOf(XMLNode const *parent, std::initializer_list<std::string_view> path);
/// Its text without blanks at the ends, as valid UTF-8; empty for null, and for one that is longer than any name is.
[[nodiscard]] DString TextOf(XMLNode const *element);
/// The text of the first child of that name.
[[nodiscard]] DString TextIn(XMLNode const *parent, std::string_view name);
/// A number, finite; nothing for another text.
[[nodiscard]] std::optional<double> NumberOf(std::string_view text);

/// Calls `visit` with each child of that name.
template <class Visit>
void ForEachChild(XMLNode const *parent, std::string_view name, Visit &&visit) {
    for (XMLNode const *child = parent == nullptr ? nullptr : parent->GetFirstChild(); child != nullptr;
         child = child->GetNext())
        if (LocalName(*child) == name)
            visit(*child);
}

} // namespace zelvar::services
