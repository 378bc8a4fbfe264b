#include "zelvar/tool/CommandLine.h"

#include <algorithm>
#include <charconv>

namespace zelvar::tool {

DString Arguments::Value(DString const &option, DString const &fallback) const {
    auto const at = values.find(option);
    return at == values.end() ? fallback : at->second.back();
}

std::vector<DString> Arguments::All(DString const &option) const {
    auto const at = values.find(option);
    return at == values.end() ? std::vector<DString>{} : at->second;
}

std::optional<Arguments> ParseArguments(CommandSpec const &spec, std::vector<DString> const &words, DString &error) {
    Arguments result;
    DString optional;           // option that may have a value in the word behind it
    std::size_t optionalAt = 0; // of that word, among those that are no options
    bool optionsEnded = false;
    for (std::size_t i = 0; i < words.size(); ++i) {
        DString const &word = words[i];
        if (optionsEnded || !word.starts_with("--")) {
            result.words.push_back(word);
            continue;
        }
        if (word == "--") {
            optionsEnded = true;
            continue;
        }
        std::size_t const equals = word.find('=');
        DString const name = word.substr(0, equals);
        auto const option = std::find_if(spec.options.begin(), spec.options.end(),
                                         [&](OptionSpec const &known) { return known.name == name; });
        if (option != spec.options.end() && option->IsFlag() && equals == DString::npos) {
            result.flags.insert(name);
            if (option->TakesValue() && i + 1 < words.size() && !words[i + 1].starts_with("--")) {
                optional = name;
                optionalAt = result.words.size();
            }
        } else if (option == spec.options.end() || !option->TakesValue()) {
            error = "unknown option " + name;
            return std::nullopt;
        } else if (equals != DString::npos) {
            result.values[name].push_back(word.substr(equals + 1));
        } else if (i + 1 < words.size()) {
            result.values[name].push_back(words[++i]);
        } else {
            error = "option " + name + " needs a value";
            return std::nullopt;
        }
    }
    if (result.words.size() > spec.maxArguments && !optional.empty()) {
        auto const word = result.words.begin() + static_cast<std::ptrdiff_t>(optionalAt);
        result.values[optional].push_back(*word);
        result.words.erase(word);
    }
    if (result.words.size() < spec.minArguments || result.words.size() > spec.maxArguments) {
        error = result.words.size() < spec.minArguments ? "an argument is missing" : "too many arguments";
        return std::nullopt;
    }
    return result;
}

std::optional<WindowSize> ParseSize(DString const &text) {
    constexpr int kMaxSide = 16384;
    WindowSize size;
    char const *const end = text.data() + text.size();
    auto const [behindWidth, widthError] = std::from_chars(text.data(), end, size.width);
    if (widthError != std::errc{} || behindWidth == end || *behindWidth != 'x')
        return std::nullopt;
    auto const [behindHeight, heightError] = std::from_chars(behindWidth + 1, end, size.height);
    if (heightError != std::errc{} || behindHeight != end)
        return std::nullopt;
    if (size.width < 1 || size.height < 1 || size.width > kMaxSide || size.height > kMaxSide)
        return std::nullopt;
    return size;
}

std::optional<int> CountIn(DString const &text, int most) {
    int count = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
    bool const isWhole = error == std::errc{} && end == text.data() + text.size();
    return isWhole && count >= 1 && count <= most ? std::optional(count) : std::nullopt;
}

} // namespace zelvar::tool
