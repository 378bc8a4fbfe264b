#include "zelvar/filedlg/core/FilterText.h"

#include <algorithm>

namespace zelvar {

namespace {

/// Takes the text up to `separator` off the front of `rest`.
std::string_view TakeField(std::string_view &rest, char separator) {
    std::string_view const field = rest.substr(0, rest.find(separator));
    rest.remove_prefix(std::min(field.size() + 1, rest.size()));
    return field;
}

bool LetsAllPass(std::string_view mask) { return mask == "*" || mask == "*.*"; }

} // namespace

std::vector<FileFilter> ParseFilterText(std::string_view text) {
    std::vector<FileFilter> filters;
    while (!text.empty()) {
        std::string_view const description = TakeField(text, '|');
        std::string_view const masks = TakeField(text, '|');
        if (description.empty() && masks.empty())
            break;
        filters.push_back({.description = DString(description), .masks = DString(masks)});
    }
    return filters;
}

DString ShownFilter(FileFilter const &filter) {
    if (filter.description.empty() || filter.masks.empty())
        return filter.description + filter.masks;
    bool const isNamed = filter.description.find(filter.masks) != DString::npos;
    return isNamed ? filter.description : filter.description + " (" + filter.masks + ")";
}

std::vector<DString> SingleMasks(std::string_view masks) {
    std::vector<DString> single;
    while (!masks.empty()) {
        std::string_view const mask = Trimmed(TakeField(masks, ';'));
        if (LetsAllPass(mask))
            return {};
        if (!mask.empty())
            single.emplace_back(mask);
    }
    return single;
}

DString ConcreteExtension(std::string_view masks) {
    for (DString const &mask : SingleMasks(masks)) {
        std::string_view const rest = std::string_view(mask).substr(mask.starts_with("*.") ? 2 : 0);
        if (rest.size() < mask.size() && !rest.empty() && rest.find_first_of("*?[") == std::string_view::npos)
            return DString(rest);
    }
    return {};
}

DString DefaultExtension(std::string_view masks, std::string_view given) {
    DString chosen = ConcreteExtension(masks);
    if (!chosen.empty() || (!masks.empty() && SingleMasks(masks).empty()))
        return chosen;
    if (given.find('*') != std::string_view::npos)
        return ConcreteExtension(given);
    return DString(given.substr(given.starts_with('.') ? 1 : 0));
}

} // namespace zelvar
