#include "zelvar/base/NaturalOrder.h"

#include "zelvar/base/CaseFolding.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

namespace zelvar {

namespace {

constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }
constexpr bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

/// Names end at a NUL, as they do for the system.
std::string_view CutAtNul(std::string_view text) { return text.substr(0, text.find('\0')); }

void SkipBlanks(std::string_view &text) {
    while (!text.empty() && IsBlank(text.front()))
        text.remove_prefix(1);
}

std::string_view TakeDigits(std::string_view &text) {
    std::size_t length = 0;
    while (length < text.size() && IsDigit(text[length]))
        ++length;
    std::string_view const digits = text.substr(0, length);
    text.remove_prefix(length);
    return digits;
}

/// `FoldFirst` in a form in which no character begins another, so that the order of single characters is that of whole
/// keys: a byte that is no valid character has 0xFF, which UTF-8 never uses, before it. `bytes` are then two for one.
FoldedChar OrderedFirst(std::string_view text) {
    FoldedChar c = FoldFirst(text);
    if (c.length == 1 && c.bytes[0] >= 0x80) {
        c.bytes[1] = c.bytes[0];
        c.bytes[0] = 0xFF;
    }
    return c;
}

int Sign(int value) { return value < 0 ? -1 : value > 0 ? 1 : 0; }

/// Numbers by value; as soon as one begins with 0 both are the digits behind a decimal point.
int CompareDigits(std::string_view a, std::string_view b) {
    bool const fractions = a.front() == '0' || b.front() == '0';
    if (!fractions && a.size() != b.size())
        return a.size() < b.size() ? -1 : 1;
    return Sign(a.compare(b));
}

/// The parts of a file name that are compared one after the other.
struct NameParts {
    std::string_view stem;
    std::string_view extension;
    bool hasExtension = false;
};

NameParts SplitName(std::string_view name) {
    std::size_t const dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0)
        return {name, {}, false};
    return {name.substr(0, dot), name.substr(dot + 1), true};
}

// The key of a text is the text in upper case without blanks. A run of digits becomes
//   beginning with 0:   the digits, then kRunEnd, which sorts before any further digit;
//   1 to 8 digits:      '1' to '8' for their number, then the digits;
//   more:               '9', their number as bytes of 255 and a rest, then the digits.
// Each of these begins with a byte among the digits, so a run sorts against other characters as a digit does.
constexpr char kRunEnd = '\x01';
constexpr std::size_t kShortRun = 8;
constexpr std::size_t kCountByte = 255;

/// Writes the key of a run behind `out` and returns its end.
char *PutDigits(std::string_view digits, char *out) {
    if (digits.front() == '0') {
        out = std::copy(digits.begin(), digits.end(), out);
        *out++ = kRunEnd;
        return out;
    }
    if (digits.size() <= kShortRun) {
        *out++ = static_cast<char>('0' + digits.size());
    } else {
        *out++ = '9';
        out = std::fill_n(out, digits.size() / kCountByte, static_cast<char>(kCountByte));
        *out++ = static_cast<char>(digits.size() % kCountByte);
    }
    return std::copy(digits.begin(), digits.end(), out);
}

char *PutText(std::string_view text, char *out) {
    while (!text.empty()) {
        char const c = text.front();
        if (IsDigit(c)) {
            out = PutDigits(TakeDigits(text), out);
        } else if (IsBlank(c)) {
            text.remove_prefix(1);
        } else if (static_cast<unsigned char>(c) < 0x80) {
            *out++ = static_cast<char>(UpperAscii(static_cast<unsigned char>(c)));
            text.remove_prefix(1);
        } else {
            FoldedChar const ordered = OrderedFirst(text);
            std::size_t const count = ordered.bytes[0] == 0xFF ? 2 : ordered.length;
            std::memcpy(out, ordered.bytes, count);
            out += count;
            text.remove_prefix(ordered.length);
        }
    }
    return out;
}

char *PutKey(NameParts const &parts, char *out) {
    out = PutText(parts.stem, out);
    if (!parts.hasExtension)
        return out;
    *out++ = '\0'; // sorts before all that a longer stem could have here
    return PutText(parts.extension, out);
}

/// Room that `PutKey` needs at most: a lone digit takes two bytes, a long run three more than its digits.
constexpr std::size_t LongestKey(std::size_t nameLength) { return 2 * nameLength + 8; }

} // namespace

int NaturalCompare(std::string_view a, std::string_view b) {
    a = CutAtNul(a);
    b = CutAtNul(b);
    for (;;) {
        SkipBlanks(a);
        SkipBlanks(b);
        if (a.empty() || b.empty())
            return static_cast<int>(b.empty()) - static_cast<int>(a.empty());
        if (IsDigit(a.front()) && IsDigit(b.front())) {
            if (int const order = CompareDigits(TakeDigits(a), TakeDigits(b)); order != 0)
                return order;
            continue;
        }
        FoldedChar const first = OrderedFirst(a);
        FoldedChar const second = OrderedFirst(b);
        if (int const order = std::memcmp(first.bytes, second.bytes, sizeof first.bytes); order != 0)
            return Sign(order);
        a.remove_prefix(first.length);
        b.remove_prefix(second.length);
    }
}

int CompareFileNames(std::string_view a, std::string_view b) {
    NameParts const first = SplitName(CutAtNul(a));
    NameParts const second = SplitName(CutAtNul(b));
    if (int const order = NaturalCompare(first.stem, second.stem); order != 0)
        return order;
    if (first.hasExtension != second.hasExtension)
        return first.hasExtension ? 1 : -1;
    return NaturalCompare(first.extension, second.extension);
}

DString MakeFileNameKey(std::string_view name) {
    name = CutAtNul(name);
    NameParts const parts = SplitName(name);
    constexpr std::size_t longestName = 255; // bytes, what file systems allow
    if (name.size() <= longestName) {
        std::array<char, LongestKey(longestName)> buffer; // NOLINT(*-member-init): written before it is read
        return {buffer.data(), PutKey(parts, buffer.data())};
    }
    DString key(LongestKey(name.size()), '\0');
    key.resize(static_cast<std::size_t>(PutKey(parts, key.data()) - key.data()));
    return key;
}

} // namespace zelvar
