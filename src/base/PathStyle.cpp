#include "zelvar/base/PathStyle.h"

#include "zelvar/base/CaseFolding.h"

#include <algorithm>
#include <cstring>

namespace zelvar {

namespace {

constexpr std::size_t kNone = std::string_view::npos;

std::size_t LastSeparator(std::string_view path, PathStyle style) {
    for (std::size_t i = path.size(); i > 0; --i) {
        if (style.IsSeparator(path[i - 1]))
            return i - 1;
    }
    return kNone;
}

bool IsDriveRoot(std::string_view path, PathStyle style) {
    return style.driveLetters && path.size() == 3 && path[1] == ':' && style.IsSeparator(path[2]);
}

/// True if the first characters of both are the same; both are cut by theirs then.
bool CutEqualChar(std::string_view &name, std::string_view &mask) {
    FoldedChar const a = FoldFirst(name);
    FoldedChar const b = FoldFirst(mask);
    if (a.length != b.length || std::memcmp(a.bytes, b.bytes, a.length) != 0)
        return false;
    name.remove_prefix(a.length);
    mask.remove_prefix(b.length);
    return true;
}

void CutChar(std::string_view &text) { text.remove_prefix(std::max(1U, Utf8Length(text))); }

FoldedChar CutFolded(std::string_view &text) {
    FoldedChar const c = FoldFirst(text);
    text.remove_prefix(c.length);
    return c;
}

std::string_view BytesOf(FoldedChar const &c) { return {reinterpret_cast<char const *>(c.bytes), c.length}; }

/// True if `mask` begins with a set, as "[tT]", "[0-9]" or "[!a-c]", that holds the first character of `name`; both are
/// cut then. A bracket that nothing closes is a character like others.
bool CutCharOfSet(std::string_view &name, std::string_view &mask) {
    std::size_t const close = mask.front() == '[' ? mask.find(']', 2) : kNone;
    if (close == kNone)
        return false;
    std::string_view set = mask.substr(1, close - 1);
    bool const isNegated = set.size() > 1 && (set.front() == '!' || set.front() == '^');
    if (isNegated)
        set.remove_prefix(1);
    FoldedChar const c = FoldFirst(name);
    bool isIn = false;
    while (!set.empty()) {
        FoldedChar const low = CutFolded(set);
        FoldedChar high = low;
        if (set.size() > 1 && set.front() == '-') {
            set.remove_prefix(1);
            high = CutFolded(set);
        }
        isIn = isIn || (BytesOf(low) <= BytesOf(c) && BytesOf(c) <= BytesOf(high));
    }
    if (isIn == isNegated)
        return false;
    name.remove_prefix(c.length);
    mask.remove_prefix(close + 1);
    return true;
}

/// A failure goes back to the last "*" only, so the time is bounded by the product of the lengths.
bool MatchesMask(std::string_view name, std::string_view mask) {
    if (mask == "*.*")
        return true;
    bool starSeen = false;
    std::string_view maskBehindStar;
    std::string_view nameAtStar;
    while (!name.empty()) {
        if (!mask.empty() && mask.front() == '*') {
            mask.remove_prefix(1);
            if (mask.empty())
                return true;
            starSeen = true;
            maskBehindStar = mask;
            nameAtStar = name;
        } else if (!mask.empty() && mask.front() == '?') {
            mask.remove_prefix(1);
            CutChar(name);
        } else if (mask.empty() || (!CutCharOfSet(name, mask) && !CutEqualChar(name, mask))) {
            if (!starSeen)
                return false;
            CutChar(nameAtStar);
            name = nameAtStar;
            mask = maskBehindStar;
        }
    }
    return mask.find_first_not_of('*') == kNone;
}

} // namespace

DString AppendPath(std::string_view directory, std::string_view name, PathStyle style) {
    if (directory.empty() || name.empty())
        return DString(directory.empty() ? name : directory);
    DString path(directory);
    while (!path.empty() && style.IsSeparator(path.back()))
        path.pop_back();
    path += style.separator;
    while (!name.empty() && style.IsSeparator(name.front()))
        name.remove_prefix(1);
    return path.append(name);
}

std::string_view FileNameOf(std::string_view path, PathStyle style) {
    std::size_t const separator = LastSeparator(path, style);
    return separator == kNone ? path : path.substr(separator + 1);
}

std::string_view ExtensionOf(std::string_view path, PathStyle style) {
    std::string_view const name = FileNameOf(path, style);
    std::size_t const dot = name.rfind('.');
    return dot == kNone || dot == 0 ? std::string_view{} : name.substr(dot + 1);
}

std::string_view ParentPathOf(std::string_view path, PathStyle style) {
    std::size_t const separator = LastSeparator(path, style);
    if (separator == kNone)
        return {};
    // The root of a file system keeps its separator.
    if (separator == 0 || IsDriveRoot(path.substr(0, separator + 1), style))
        return path.substr(0, separator + 1);
    return path.substr(0, separator);
}

bool IsUrl(std::string_view path) {
    std::size_t const colon = path.find("://");
    if (colon == kNone || colon < 2)
        return false;
    return std::all_of(path.begin(), path.begin() + static_cast<std::ptrdiff_t>(colon), [](char c) {
        unsigned char const upper = UpperAscii(static_cast<unsigned char>(c));
        return (upper >= 'A' && upper <= 'Z') || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
    });
}

bool PathMatchSpec(std::string_view name, std::string_view masks) {
    while (!masks.empty()) {
        std::size_t const end = std::min(masks.find(';'), masks.size());
        std::string_view mask = masks.substr(0, end);
        mask.remove_prefix(std::min(mask.find_first_not_of(' '), mask.size()));
        if (MatchesMask(name, mask))
            return true;
        masks.remove_prefix(std::min(end + 1, masks.size()));
    }
    return false;
}

} // namespace zelvar
