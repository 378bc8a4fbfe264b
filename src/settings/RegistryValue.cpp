#include "zelvar/settings/RegistryValue.h"

#include <algorithm>
#include <bit>
#include <optional>
#include <string_view>

namespace zelvar {

namespace {

using Bytes = SettingsStore::Bytes;
using Value = SettingsStore::Value;

constexpr std::size_t kWord = 8; // bytes

void Put(Bytes &bytes, std::uint64_t number) {
    for (unsigned shift = 0; shift < 64; shift += 8)
        bytes.push_back(static_cast<std::uint8_t>(number >> shift & 0xFFU));
}

std::uint64_t NumberAt(Bytes const &bytes, std::size_t at) {
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < kWord; ++i)
        number |= std::uint64_t{bytes[at + i]} << 8U * i;
    return number;
}

bool HoldsZero(DString const &text) { return text.find('\0') != DString::npos; }

RegistryValue OfTexts(std::vector<DString> const &texts) {
    bool const plain = std::ranges::none_of(texts, HoldsZero);
    RegistryValue value{plain ? kRegMultiText : kRegTextList, {}};
    for (DString const &text : texts) {
        if (!plain)
            Put(value.data, text.size());
        value.data.insert(value.data.end(), text.begin(), text.end());
        if (plain)
            value.data.push_back(0);
    }
    if (plain)
        value.data.push_back(0);
    return value;
}

std::optional<Value> MultiText(Bytes const &data) {
    if (data.empty() || data.back() != 0)
        return std::nullopt;
    std::vector<DString> texts;
    for (auto at = data.begin(); at != data.end() - 1;) {
        auto const end = std::find(at, data.end() - 1, std::uint8_t{0});
        if (end == data.end() - 1)
            return std::nullopt;
        texts.emplace_back(at, end);
        at = end + 1;
    }
    return texts;
}

std::optional<Value> TextList(Bytes const &data) {
    std::vector<DString> texts;
    for (std::size_t at = 0; at < data.size();) {
        if (data.size() - at < kWord)
            return std::nullopt;
        std::uint64_t const length = NumberAt(data, at);
        at += kWord;
        if (length > data.size() - at)
            return std::nullopt;
        auto const begin = data.begin() + static_cast<std::ptrdiff_t>(at);
        texts.emplace_back(begin, begin + static_cast<std::ptrdiff_t>(length));
        at += length;
    }
    return texts;
}

/// The store's own value that could be meant; whether it says just the same is another question.
std::optional<Value> Plain(RegistryValue const &value) {
    Bytes const &data = value.data;
    switch (value.type) {
    case kRegBinary:
        return data;
    case kRegMultiText:
        return MultiText(data);
    case kRegTextList:
        return TextList(data);
    case kRegQword:
        return data.size() == kWord ? std::optional<Value>(std::bit_cast<std::int64_t>(NumberAt(data, 0)))
                                    : std::nullopt;
    case kRegDouble: {
        // The store knows one "not a number" only.
        auto const number = data.size() == kWord ? std::bit_cast<double>(NumberAt(data, 0)) : __builtin_nan("");
        return number == number ? std::optional<Value>(number) : std::nullopt;
    }
    default:
        return std::nullopt;
    }
}

} // namespace

RegistryValue ToRegistry(Value const &value) {
    if (auto const *const typed = std::get_if<SettingsStore::Typed>(&value))
        return {typed->type, typed->data};
    if (auto const *const text = std::get_if<DString>(&value)) {
        RegistryValue result{kRegText, Bytes(text->begin(), text->end())};
        result.data.push_back(0);
        return result;
    }
    if (auto const *const texts = std::get_if<std::vector<DString>>(&value))
        return OfTexts(*texts);
    if (auto const *const bytes = std::get_if<Bytes>(&value))
        return {kRegBinary, *bytes};
    auto const *const number = std::get_if<double>(&value);
    RegistryValue result{number == nullptr ? kRegQword : kRegDouble, {}};
    Put(result.data, number == nullptr ? std::bit_cast<std::uint64_t>(std::get<std::int64_t>(value))
                                       : std::bit_cast<std::uint64_t>(*number));
    return result;
}

Value ToStore(RegistryValue const &value) {
    if (value.type == kRegText && !value.data.empty() && value.data.back() == 0) // nearly all
        return DString(value.data.begin(), value.data.end() - 1);
    std::optional<Value> plain = Plain(value);
    return plain && ToRegistry(*plain) == value ? *std::move(plain) : SettingsStore::Typed{value.type, value.data};
}

} // namespace zelvar
