#include "zelvar/props/PropRule.h"

#include "zelvar/base/Translation.h"
#include "zelvar/controls/core/NumberText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>

namespace zelvar {

namespace {

/// The whole text as a number in the C locale; a plus sign may stand before it.
template <class Number>
std::optional<Number> ParseWhole(std::string_view text) {
    text = Trimmed(text);
    if (text.size() > 1 && text.front() == '+' && text[1] != '-')
        text.remove_prefix(1);
    Number number{};
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

/// As few digits as name this number and no other.
DString Shortest(double number) {
    std::array<char, 64> digits{};
    auto const [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    return error == std::errc() ? DString(digits.data(), end) : DString();
}

/// With so many decimals, cut off instead of rounded where rounding would leave the range; whole where the range has no
/// such number.
DString RoundedWithin(double number, int decimals, double least, double most) {
    double const step = std::pow(10.0, -decimals);
    for (double const candidate : {number, number - step / 2, number + step / 2}) {
        DString text = FormatDouble(candidate, decimals);
        double const shown = ParseWhole<double>(text).value_or(number);
        if (shown >= least && shown <= most)
            return text;
    }
    return Shortest(number);
}

bool IsOneOf(std::string_view text, std::initializer_list<char const *> words) {
    return std::ranges::any_of(words, [text](char const *word) { return EqualNoCase(text, word); });
}

std::optional<DString> ReadBool(std::string_view text) {
    if (IsOneOf(text, {"true", "yes", "on", "1", Translated("Yes")}))
        return PropRule::FromBool(true);
    if (IsOneOf(text, {"false", "no", "off", "0", Translated("No")}))
        return PropRule::FromBool(false);
    return std::nullopt;
}

} // namespace

PropRule PropRule::Integer(long long least, long long most) {
    return {.kind = Kind::Integer, .least = static_cast<double>(least), .most = static_cast<double>(most)};
}

PropRule PropRule::Real(double least, double most, int decimals) {
    return {.kind = Kind::Real, .least = least, .most = most, .decimals = decimals};
}

PropRule PropRule::Choice(std::vector<DString> choices) {
    PropRule rule{.kind = Kind::Choice};
    rule.choices = std::move(choices);
    return rule;
}

std::optional<DString> PropRule::Read(DString const &entry) const {
    switch (kind) {
    case Kind::Integer: {
        auto const number = ParseWhole<long long>(entry);
        auto const real = static_cast<double>(number.value_or(0));
        return number && real >= least && real <= most ? std::optional(std::to_string(*number)) : std::nullopt;
    }
    case Kind::Real: {
        auto const [state, number] = ReadNumber(entry);
        if (state != NumberReading::State::Number || number < least || number > most)
            return std::nullopt;
        return decimals < 0 ? Shortest(number) : RoundedWithin(number, decimals, least, most);
    }
    case Kind::Boolean:
        return ReadBool(Trimmed(entry));
    case Kind::Choice:
        for (DString const &choice : choices)
            if (choice == entry)
                return choice;
        for (DString const &choice : choices)
            if (EqualNoCase(choice, Trimmed(entry)))
                return choice;
        return std::nullopt;
    case Kind::Color: {
        auto const color = ToColor(entry);
        return color ? std::optional(FromColor(*color)) : std::nullopt;
    }
    case Kind::Text:
    case Kind::MultiLine:
    case Kind::File:
    case Kind::Folder:
        break;
    }
    return entry;
}

DString PropRule::Show(DString const &value) const {
    if (kind != Kind::Boolean)
        return value;
    auto const read = ReadBool(Trimmed(value));
    return !read ? value : *read == "true" ? Translated("Yes") : Translated("No");
}

DString PropRule::Wanted() const {
    bool const isWhole = kind == Kind::Integer;
    bool const hasLeast = std::isfinite(least) && (kind == Kind::Real || least > -9.2e18);
    bool const hasMost = std::isfinite(most) && (kind == Kind::Real || most < 9.2e18);
    switch (kind) {
    case Kind::Integer:
    case Kind::Real:
        if (hasLeast && hasMost)
            return Format(isWhole ? Translated("A whole number from %s to %s") : Translated("A number from %s to %s"),
                          Shortest(least).c_str(), Shortest(most).c_str());
        if (hasLeast)
            return Format(isWhole ? Translated("A whole number not below %s") : Translated("A number not below %s"),
                          Shortest(least).c_str());
        if (hasMost)
            return Format(isWhole ? Translated("A whole number not above %s") : Translated("A number not above %s"),
                          Shortest(most).c_str());
        return isWhole ? Translated("A whole number") : Translated("A number");
    case Kind::Boolean:
        return Translated("Yes or No");
    case Kind::Choice:
        return Translated("One of the list");
    case Kind::Color:
        return Translated("A colour as #RRGGBB or as red, green, blue");
    case Kind::Text:
    case Kind::MultiLine:
    case Kind::File:
    case Kind::Folder:
        break;
    }
    return {};
}

std::optional<ColorRef> PropRule::ToColor(DString const &value) {
    std::string_view const text = Trimmed(value);
    if (text.starts_with('#')) {
        unsigned number = 0;
        auto const [end, error] = std::from_chars(text.data() + 1, text.data() + text.size(), number, 16);
        if (text.size() != 7 || error != std::errc() || end != text.data() + text.size())
            return std::nullopt;
        return Rgb(number >> 16U, number >> 8U, number);
    }
    std::vector<DString> const parts = Split(text, ',');
    if (parts.size() != 3)
        return std::nullopt;
    std::array<unsigned, 3> channels{};
    for (std::size_t i = 0; i < 3; ++i) {
        auto const channel = ParseWhole<int>(parts[i]);
        if (!channel || *channel < 0 || *channel > 255)
            return std::nullopt;
        channels[i] = static_cast<unsigned>(*channel);
    }
    return Rgb(channels[0], channels[1], channels[2]);
}

DString PropRule::FromColor(ColorRef color) {
    return Format("#%02X%02X%02X", RedOf(color), GreenOf(color), BlueOf(color));
}

} // namespace zelvar
