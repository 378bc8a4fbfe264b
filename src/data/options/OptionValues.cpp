#include "zelvar/data/options/OptionValues.h"

#include "zelvar/base/Hex.h"
#include "zelvar/base/Percent.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace zelvar {

namespace {

using Kind = DriverOption::Kind;

std::optional<double> ToNumber(std::string_view text, bool isWhole) {
    if (text.starts_with('+'))
        text.remove_prefix(1);
    double number = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (text.empty() || error != std::errc() || end != text.data() + text.size() || std::isnan(number) ||
        (isWhole && std::trunc(number) != number))
        return std::nullopt;
    return number;
}

OptionFault NumberFault(DriverOption const &option, DString const &value) {
    std::optional<double> const number = ToNumber(Trimmed(value), option.kind == Kind::WholeNumber);
    if (!number)
        return OptionFault::NoNumber;
    if (option.least && *number < *option.least)
        return OptionFault::TooSmall;
    return option.most && *number > *option.most ? OptionFault::TooLarge : OptionFault::None;
}

} // namespace

char const *ToText(Kind kind) {
    switch (kind) {
    case Kind::Switch:
        return "switch";
    case Kind::WholeNumber:
        return "whole number";
    case Kind::Number:
        return "number";
    case Kind::Choice:
        return "choice";
    case Kind::Text:
        break;
    }
    return "text";
}

bool IsOn(std::string_view value) {
    return EqualNoCase(value, "YES") || EqualNoCase(value, "TRUE") || EqualNoCase(value, "ON") || value == "1";
}

OptionFault FaultOf(DriverOption const &option, DString const &value) {
    if (value.empty() || value == option.usual)
        return OptionFault::None;
    switch (option.kind) {
    case Kind::WholeNumber:
    case Kind::Number:
        return NumberFault(option, value);
    case Kind::Choice: {
        bool const isOne = std::any_of(option.choices.begin(), option.choices.end(),
                                       [&](DString const &choice) { return EqualNoCase(choice, value); });
        return isOne ? OptionFault::None : OptionFault::NoChoice;
    }
    case Kind::Switch: {
        bool const isOff =
            EqualNoCase(value, "NO") || EqualNoCase(value, "FALSE") || EqualNoCase(value, "OFF") || value == "0";
        return isOff || IsOn(value) ? OptionFault::None : OptionFault::NoChoice;
    }
    case Kind::Text:
        break;
    }
    bool const isTooLong = option.longest > 0 && value.size() > static_cast<std::size_t>(option.longest);
    return isTooLong ? OptionFault::TooLong : OptionFault::None;
}

bool IsUsual(DriverOption const &option, DString const &value) {
    if (value.empty() || value == option.usual)
        return true;
    if (option.usual.empty())
        return false;
    switch (option.kind) {
    case Kind::Switch:
        return IsOn(value) == IsOn(option.usual);
    case Kind::Choice:
        return EqualNoCase(value, option.usual);
    case Kind::WholeNumber:
    case Kind::Number: {
        auto const number = ToNumber(Trimmed(value), false);
        return number && number == ToNumber(option.usual, false);
    }
    case Kind::Text:
        break;
    }
    return false;
}

DString OptionPiece(DString const &name, DString const &value) {
    DString piece = name + "=";
    for (char const c : value) {
        auto const byte = static_cast<unsigned char>(c);
        bool const wouldEnd = byte <= 0x20 || byte == 0x7F || std::string_view("%&?#").find(c) != DString::npos;
        piece += wouldEnd ? "%" + HexEncode({&c, 1}) : DString(1, c);
    }
    return piece;
}

DString ToOptionText(std::vector<DriverOption> const &options, OptionValues const &values, Secrets secrets) {
    DString text;
    for (DriverOption const &option : options) {
        auto const value = values.find(option.name);
        bool const isLeft = option.isBarred || (option.isSecret && secrets == Secrets::Leave);
        if (isLeft || value == values.end() || IsUsual(option, value->second) ||
            FaultOf(option, value->second) != OptionFault::None)
            continue;
        text += (text.empty() ? "" : "&") + OptionPiece(option.name, value->second);
    }
    return text;
}

OptionValues FromOptionText(std::string_view text) {
    OptionValues values;
    for (DString const &piece : Split(text, '&')) {
        std::size_t const equals = piece.find('=');
        if (equals != DString::npos && equals > 0)
            values[piece.substr(0, equals)] = PercentDecoded(std::string_view(piece).substr(equals + 1));
    }
    return values;
}

OptionValues ValuesOf(std::vector<DriverOption> const &options, OptionValues const &values) {
    OptionValues own;
    for (auto const &[name, value] : values)
        for (DriverOption const &option : options)
            if (EqualNoCase(option.name, name))
                own[option.name] = value;
    return own;
}

} // namespace zelvar
