#include "zelvar/settings/RegistryText.h"

#include "zelvar/base/Hex.h"

#include <algorithm>
#include <bit>
#include <charconv>

namespace zelvar {

namespace {

constexpr char kHexMark[] = "0x";

/// Bytes of a number's type; 0 for types that are no numbers.
std::size_t WidthOf(std::uint32_t type) { return type == kRegDword ? 4 : type == kRegQword ? 8 : 0; }

bool IsText(std::uint32_t type) { return type == kRegText || type == kRegExpandText; }

std::string_view View(SettingsStore::Bytes const &bytes) {
    return {reinterpret_cast<char const *>(bytes.data()), bytes.size()};
}

DString Decimal(SettingsStore::Bytes const &data) {
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < data.size(); ++i)
        number |= std::uint64_t{data[i]} << 8U * i;
    return std::to_string(data.size() == 4 ? std::bit_cast<std::int32_t>(static_cast<std::uint32_t>(number))
                                           : std::bit_cast<std::int64_t>(number));
}

/// False if the text is no number that fits.
bool TakeDecimal(std::string_view text, std::size_t width, SettingsStore::Bytes &data) {
    text = Trimmed(text);
    std::int64_t number = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    bool isWhole = error == std::errc{} && end == text.data() + text.size();
    // What others wrote may be unsigned.
    if (width == 4 && (number < INT32_MIN || number > INT64_C(0xFFFFFFFF)))
        isWhole = false;
    for (std::size_t i = 0; isWhole && i < std::min(width, data.size()); ++i)
        data[i] = static_cast<std::uint8_t>(std::bit_cast<std::uint64_t>(number) >> 8U * i & 0xFFU);
    return isWhole;
}

} // namespace

DString RegistryTextOf(RegistryValue const &value) {
    std::string_view const bytes = View(value.data);
    if (IsText(value.type))
        return DString(bytes.substr(0, bytes.find_last_not_of('\0') + 1));
    std::size_t const width = WidthOf(value.type);
    if (width > 0 && width == value.data.size())
        return Decimal(value.data);
    if (bytes.empty())
        return {};
    return (width > 0 ? kHexMark : "") + HexEncode(bytes);
}

std::optional<RegistryValue> RegistryValueOf(std::uint32_t type, long long size, DString const &text, bool strict) {
    if (size < 0 || static_cast<unsigned long long>(size) > kMostRegistryBytes)
        return std::nullopt;
    RegistryValue value{type, SettingsStore::Bytes(static_cast<std::size_t>(size))};
    std::string_view written = text;
    std::size_t const width = WidthOf(type);
    bool isExact = true;
    if (IsText(type)) {
        isExact = written.size() <= value.data.size();
        std::ranges::copy(written.substr(0, value.data.size()), value.data.begin());
    } else if (width > 0 && !written.starts_with(kHexMark)) {
        isExact = (value.data.empty() && written.empty()) ||
                  (TakeDecimal(written, width, value.data) && value.data.size() == width);
    } else {
        if (width > 0)
            written.remove_prefix(std::size(kHexMark) - 1);
        std::optional<DString> const decoded = HexDecode(Trimmed(written));
        if (!decoded)
            return std::nullopt;
        isExact = decoded->size() == value.data.size();
        std::copy_n(decoded->begin(), std::min(decoded->size(), value.data.size()), value.data.begin());
    }
    return isExact || !strict ? std::optional(std::move(value)) : std::nullopt;
}

} // namespace zelvar
