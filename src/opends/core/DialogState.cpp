#include "zelvar/opends/core/DialogState.h"

#include <algorithm>
#include <cctype>

namespace zelvar {

namespace {

constexpr char const *DirectionText(bool ascending) { return ascending ? "ASC" : "DSC"; }

bool IsLetters(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isalpha(c) != 0; });
}

} // namespace

DString SortingToText(DialogSorting const &sorting) {
    return Format("%s:%s:%d:%s", DirectionText(sorting.foldersAscending), DirectionText(sorting.hierarchyAscending),
                  sorting.column, DirectionText(sorting.mainAscending));
}

std::optional<DialogSorting> SortingFromText(std::string_view text) {
    constexpr std::size_t kLength = 13; // AAA:BBB:0:CCC
    if (text.size() != kLength || text[3] != ':' || text[7] != ':' || text[9] != ':')
        return std::nullopt;
    std::string_view const folders = text.substr(0, 3);
    std::string_view const hierarchy = text.substr(4, 3);
    std::string_view const mainList = text.substr(10, 3);
    if (!IsLetters(folders) || !IsLetters(hierarchy) || !IsLetters(mainList) || text[8] < '0' || text[8] > '2')
        return std::nullopt;
    return DialogSorting{folders != "DSC", hierarchy != "DSC", text[8] - '0', mainList != "DSC"};
}

DString FixTypedPath(std::string_view path, PathStyle style) {
    DString fixed(path.empty() ? path : Trimmed(path));
    for (char &c : fixed) {
        if (c == ':' || c == '?')
            break;
        if (c == '/')
            c = style.separator;
    }
    return fixed;
}

} // namespace zelvar
