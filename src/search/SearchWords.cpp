#include "zelvar/search/SearchWords.h"

#include <charconv>
#include <ctime>

namespace zelvar {

namespace {

constexpr std::int64_t kSecond = 1'000'000'000; // ns

} // namespace

std::optional<std::int64_t> WholeNumberFrom(std::string_view text) {
    std::int64_t number = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    bool const isWhole = error == std::errc() && end == text.data() + text.size() && number >= 0;
    return isWhole ? std::optional(number) : std::nullopt;
}

std::optional<std::int64_t> BytesFrom(std::string_view text) {
    constexpr std::string_view units = "KMGTkmgt";
    constexpr unsigned kUnits = 4;
    std::size_t const unit = text.empty() ? std::string_view::npos : units.find(text.back());
    if (unit == std::string_view::npos)
        return WholeNumberFrom(text);
    text.remove_suffix(1);
    std::optional<std::int64_t> const number = WholeNumberFrom(text);
    unsigned const shift = 10 * (static_cast<unsigned>(unit) % kUnits + 1);
    return number && *number <= (INT64_MAX >> shift) ? std::optional(*number << shift) : std::nullopt;
}

std::optional<std::int64_t> MomentFrom(DString text) {
    if (!text.empty() && (text.back() == 'd' || text.back() == 'h')) {
        std::optional<std::int64_t> const count = WholeNumberFrom(std::string_view(text).substr(0, text.size() - 1));
        std::int64_t const each = text.back() == 'd' ? 86'400 : 3'600;
        std::int64_t const now = std::time(nullptr);
        return count && *count <= now / each ? std::optional((now - *count * each) * kSecond) : std::nullopt;
    }
    constexpr std::size_t kDate = 10; // "2026-11-16"
    if (text.size() > kDate && text[kDate] == ' ')
        text[kDate] = 'T';
    for (char const *const form : {"%Y-%m-%dT%H:%M:%S", "%Y-%m-%dT%H:%M", "%Y-%m-%d"}) {
        std::tm parts{};
        parts.tm_isdst = -1;
        char const *const end = strptime(text.c_str(), form, &parts);
        if (end != nullptr && *end == '\0')
            return static_cast<std::int64_t>(std::mktime(&parts)) * kSecond;
    }
    return std::nullopt;
}

} // namespace zelvar
