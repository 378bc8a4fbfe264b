#include "zelvar/dialogs/core/CDialogTmpl.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>

namespace zelvar {

namespace {

constexpr std::size_t kAlignment = 4;
constexpr std::uint16_t kAtomFollows = 0xFFFF;

constexpr std::size_t RoundedUp(std::size_t bytes) { return (bytes + kAlignment - 1) / kAlignment * kAlignment; }

std::u16string ToUtf16(std::string_view text) {
    DString const valid = ToValidUtf8(text);
    std::u16string result;
    for (std::size_t at = 0; at < valid.size();) {
        auto const lead = static_cast<unsigned char>(valid[at]);
        std::size_t const length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        char32_t sign = length == 1 ? lead : lead & (0xFFU >> (length + 1));
        for (std::size_t i = 1; i < length; ++i)
            sign = sign << 6U | (static_cast<unsigned char>(valid[at + i]) & 0x3FU);
        at += length;
        if (sign < 0x10000) {
            result += static_cast<char16_t>(sign);
        } else {
            result += static_cast<char16_t>(0xD800 + ((sign - 0x10000) >> 10U));
            result += static_cast<char16_t>(0xDC00 + ((sign - 0x10000) & 0x3FFU));
        }
    }
    return result;
}

/// Writes values one behind the other.
class BlockWriter {
public:
    explicit BlockWriter(CDialogTmpl::Bytes &bytes) : m_bytes(bytes) {}

    template <class... Values>
    void Put(Values const &...values) {
        (PutOne(values), ...);
    }
    void PutText(std::u16string const &text) {
        std::memcpy(m_bytes.data() + m_at, text.c_str(), (text.size() + 1) * 2); // with its end
        m_at += (text.size() + 1) * 2;
    }
    void Align() { m_at = RoundedUp(m_at); }

private:
    template <class Value>
    void PutOne(Value const &value) {
        std::memcpy(m_bytes.data() + m_at, &value, sizeof value);
        m_at += sizeof value;
    }

    CDialogTmpl::Bytes &m_bytes;
    std::size_t m_at = 0;
};

std::int16_t ToUnits(int pixels, int perBase, int base) {
    constexpr long long most = std::numeric_limits<std::int16_t>::max();
    long long const units = static_cast<long long>(pixels) * perBase / std::max(base, 1);
    return static_cast<std::int16_t>(std::clamp(units, -most, most));
}

std::uint32_t StyleOf(CDialogTmpl::ControlType type, bool isDefault) {
    switch (type) {
    case CDialogTmpl::kPicture:
        return 0x50000003;
    case CDialogTmpl::kButton:
        return isDefault ? 0x50010001 : 0x50010000;
    case CDialogTmpl::kEdit:
        return 0x50010004;
    case CDialogTmpl::kCheckBox:
        return 0x50010003;
    case CDialogTmpl::kStatic:
        break;
    }
    return 0x50000000;
}

} // namespace

std::string_view CutText(std::string_view text, std::size_t mostBytes) {
    if (text.size() <= mostBytes)
        return text;
    auto const isContinued = [&](std::size_t at) { return (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80; };
    constexpr std::size_t longest = 4; // bytes of a character; more that continue one are none
    std::size_t end = mostBytes;
    while (end > 0 && mostBytes - end < longest - 1 && isContinued(end))
        --end;
    return text.substr(0, isContinued(end) ? mostBytes : end);
}

CDialogTmpl::CDialogTmpl(Size baseUnits) : m_baseUnits(baseUnits) {}

CDialogTmpl::~CDialogTmpl() = default;

void CDialogTmpl::SetCaption(std::string_view caption) { m_caption = CutText(caption, DlgItem::kMostBytes); }

void CDialogTmpl::SetSize(Size pixels) {
    m_header.cx = UnitsX(pixels.cx);
    m_header.cy = UnitsY(pixels.cy);
}

bool CDialogTmpl::AddItem(ControlType type, std::uint16_t id, std::string_view title, std::optional<Rect> const &pixels,
                          bool isDefault) {
    if (m_header.count == kMostItems)
        return false;
    auto item = std::make_unique<DlgItem>();
    item->style = StyleOf(type, isDefault);
    item->classAtom = static_cast<std::uint16_t>(type == kCheckBox ? kButton : type);
    item->id = id;
    item->cx = item->cy = 10;
    if (pixels) {
        item->x = UnitsX(pixels->left);
        item->y = UnitsY(pixels->top);
        item->cx = UnitsX(pixels->Width());
        item->cy = UnitsY(pixels->Height());
    }
    std::string_view const cut = CutText(title, DlgItem::kMostBytes);
    cut.copy(item->title, cut.size());
    m_items[m_header.count++] = std::move(item);
    return true;
}

CDialogTmpl::Bytes CDialogTmpl::Block(std::pmr::memory_resource &resource) const {
    std::u16string const caption = ToUtf16(m_caption);
    std::vector<std::u16string> titles;
    std::size_t size = (2 * caption.size() + 27) / kAlignment * kAlignment;
    for (std::size_t i = 0; i < m_header.count; ++i) {
        titles.push_back(ToUtf16(m_items[i]->title));
        std::size_t const bytes = 2 * (titles.back().size() + 1) + 24;
        size += i + 1 < m_header.count ? RoundedUp(bytes) : bytes;
    }

    Bytes block(size, std::byte{0}, &resource);
    BlockWriter writer(block);
    constexpr std::uint16_t none = 0;
    writer.Put(m_header.style, m_header.exStyle, m_header.count, m_header.x, m_header.y, m_header.cx, m_header.cy);
    writer.Put(none, none); // no menu, the default class
    writer.PutText(caption);
    for (std::size_t i = 0; i < m_header.count; ++i) {
        DlgItem const &item = *m_items[i];
        writer.Align();
        writer.Put(item.style, item.exStyle, item.x, item.y, item.cx, item.cy, item.id, kAtomFollows, item.classAtom);
        writer.PutText(titles[i]);
        writer.Put(none); // no creation data
    }
    return block;
}

std::int16_t CDialogTmpl::UnitsX(int pixels) const { return ToUnits(pixels, 4, m_baseUnits.cx); }

std::int16_t CDialogTmpl::UnitsY(int pixels) const { return ToUnits(pixels, 8, m_baseUnits.cy); }

} // namespace zelvar
