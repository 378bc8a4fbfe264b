#include "zelvar/base/CaseFolding.h"

#include <algorithm>
#include <iterator>

namespace zelvar {

namespace {

constexpr bool In(unsigned code, unsigned first, unsigned last) { return code >= first && code <= last; }

/// Blocks in which capital and small letters alternate.
struct AlternatingBlock {
    unsigned first = 0; ///< a capital letter; the next code is its small one, and so on
    unsigned last = 0;
};
constexpr AlternatingBlock kAlternating[] = {
    {0x100, 0x12F}, {0x132, 0x137}, {0x139, 0x148}, {0x14A, 0x177},   {0x179, 0x17E},   {0x1CD, 0x1DC},
    {0x1DE, 0x1EF}, {0x1F8, 0x21F}, {0x222, 0x233}, {0x246, 0x24F},   {0x3D8, 0x3EF},   {0x460, 0x481},
    {0x48A, 0x4BF}, {0x4C1, 0x4CE}, {0x4D0, 0x52F}, {0x1E00, 0x1E95}, {0x1EA0, 0x1EFF},
};

unsigned UpperCode(unsigned code) {
    if (In(code, 0xE0, 0xFE))
        return code == 0xF7 ? code : code - 0x20;
    if (code == 0xFF)
        return 0x178;
    if (In(code, 0x3B1, 0x3CB))
        return code == 0x3C2 ? 0x3A3 : code - 0x20; // both small sigmas have one capital
    if (In(code, 0x3AD, 0x3AF))
        return code - 0x25;
    if (In(code, 0x430, 0x44F))
        return code - 0x20;
    if (In(code, 0x450, 0x45F))
        return code - 0x50;
    switch (code) {
    case 0x3AC:
        return 0x386;
    case 0x3CC:
        return 0x38C;
    case 0x3CD:
        return 0x38E;
    case 0x3CE:
        return 0x38F;
    case 0x4CF:
        return 0x4C0;
    default:
        break;
    }
    auto const *const block = std::lower_bound(std::begin(kAlternating), std::end(kAlternating), code,
                                               [](AlternatingBlock const &b, unsigned c) { return b.last < c; });
    if (block != std::end(kAlternating) && code >= block->first && code % 2 != block->first % 2)
        return code - 1;
    return code;
}

unsigned ByteAt(std::string_view text, std::size_t at) { return static_cast<unsigned char>(text[at]); }

bool IsContinuation(std::string_view text, std::size_t at) {
    return at < text.size() && (ByteAt(text, at) & 0xC0U) == 0x80U;
}

} // namespace

unsigned Utf8Length(std::string_view text) {
    if (text.empty())
        return 0;
    unsigned const lead = ByteAt(text, 0);
    if (lead < 0x80)
        return 1;
    if (In(lead, 0xC2, 0xDF))
        return IsContinuation(text, 1) ? 2 : 0;
    if (In(lead, 0xE0, 0xEF)) {
        if (!IsContinuation(text, 1) || !IsContinuation(text, 2))
            return 0;
        unsigned const second = ByteAt(text, 1);
        // Overlong forms and surrogates are not valid.
        return (lead == 0xE0 && second < 0xA0) || (lead == 0xED && second >= 0xA0) ? 0 : 3;
    }
    if (In(lead, 0xF0, 0xF4)) {
        if (!IsContinuation(text, 1) || !IsContinuation(text, 2) || !IsContinuation(text, 3))
            return 0;
        unsigned const second = ByteAt(text, 1);
        return (lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second >= 0x90) ? 0 : 4;
    }
    return 0;
}

FoldedChar FoldFirst(std::string_view text) {
    FoldedChar folded;
    if (text.empty())
        return folded;
    unsigned const length = Utf8Length(text);
    folded.length = static_cast<unsigned char>(length == 0 ? 1 : length);
    for (std::size_t i = 0; i < folded.length; ++i)
        folded.bytes[i] = static_cast<unsigned char>(text[i]);
    if (length == 1) {
        folded.bytes[0] = UpperAscii(folded.bytes[0]);
    } else if (length == 2) {
        unsigned const code = UpperCode((ByteAt(text, 0) & 0x1FU) << 6U | (ByteAt(text, 1) & 0x3FU));
        folded.bytes[0] = static_cast<unsigned char>(0xC0U | code >> 6U);
        folded.bytes[1] = static_cast<unsigned char>(0x80U | (code & 0x3FU));
    } else if (length == 3) {
        unsigned const code =
            UpperCode((ByteAt(text, 0) & 0x0FU) << 12U | (ByteAt(text, 1) & 0x3FU) << 6U | (ByteAt(text, 2) & 0x3FU));
        folded.bytes[0] = static_cast<unsigned char>(0xE0U | code >> 12U);
        folded.bytes[1] = static_cast<unsigned char>(0x80U | (code >> 6U & 0x3FU));
        folded.bytes[2] = static_cast<unsigned char>(0x80U | (code & 0x3FU));
    }
    return folded;
}

} // namespace zelvar
