#include "zelvar/data/gdal/services/ServiceElement.h"

#include <charconv>
#include <cmath>

namespace zelvar::services {

namespace {

constexpr std::size_t kLongestText = 8192; // bytes; of what is a name, a title or an address

} // namespace

DString LocalName(XMLNode const &element) {
    DString name = element.GetName();
    if (std::size_t const colon = name.find(':'); colon != DString::npos)
        name.erase(0, colon + 1);
    return name;
}

XMLNode const *ChildOf(XMLNode const *parent, std::string_view name) {
    XMLNode const *child = parent == nullptr ? nullptr : parent->GetFirstChild();
    while (child != nullptr && LocalName(*child) != name)
        child = child->GetNext();
    return child;
}

XMLNode const *ChildOf(XMLNode const *parent, std::initializer_list<std::string_view> path) {
    for (std::string_view const name : path)
        parent = ChildOf(parent, name);
    return parent;
}

DString TextOf(XMLNode const *element) {
    if (element == nullptr)
        return {};
    DString const text = element->GetText();
    std::string_view const trimmed = Trimmed(text);
    return trimmed.size() > kLongestText ? DString() : ToValidUtf8(trimmed);
}

DString TextIn(XMLNode const *parent, std::string_view name) { return TextOf(ChildOf(parent, name)); }

std::optional<double> NumberOf(std::string_view text) {
    double number = 0;
    text = Trimmed(text);
    if (text.starts_with('+'))
        text.remove_prefix(1);
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    bool const isNumber = error == std::errc{} && end == text.data() + text.size() && std::isfinite(number);
    return isNumber ? std::optional(number) : std::nullopt;
}

} // namespace zelvar::services
