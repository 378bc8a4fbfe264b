#include "zelvar/model/datasets/SeriesName.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace zelvar {

namespace {

constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

/// Takes digits from the front of `text`; nothing if there are none, or too many.
std::optional<std::uint64_t> TakeNumber(std::string_view &text) {
    std::size_t length = 0;
    while (length < text.size() && IsDigit(text[length]))
        ++length;
    if (length == 0 || length > SeriesName::kMostDigits)
        return std::nullopt;
    std::uint64_t value = 0;
    std::from_chars(text.data(), text.data() + length, value);
    text.remove_prefix(length);
    return value;
}

bool Take(std::string_view &text, std::string_view what) {
    if (!text.starts_with(what))
        return false;
    text.remove_prefix(what.size());
    return true;
}

DString Written(std::uint64_t value, int digits) {
    DString const text = std::to_string(value);
    auto const width = static_cast<std::size_t>(digits);
    return DString(width - std::min(width, text.size()), '0') + text;
}

/// "[001-120]" or "[0-90:10]".
std::optional<SeriesName::Range> TakeRange(std::string_view &text) {
    SeriesName::Range range;
    if (!Take(text, "["))
        return std::nullopt;
    std::size_t const before = text.size();
    auto const first = TakeNumber(text);
    range.digits = static_cast<int>(before - text.size());
    auto const last = first && Take(text, "-") ? TakeNumber(text) : std::nullopt;
    auto const step = last && Take(text, ":") ? TakeNumber(text) : std::optional<std::uint64_t>(1);
    if (!last || !step || *step == 0 || !Take(text, "]"))
        return std::nullopt;
    range.first = *first;
    range.last = *last;
    range.step = *step;
    if (range.last < range.first || (range.last - range.first) % range.step != 0)
        return std::nullopt;
    return range;
}

DString Shown(SeriesName const &name, std::uint64_t slot) {
    DString text;
    for (std::uint64_t const value : name.ValuesAt(slot))
        text.append(text.empty() ? "" : "/").append(std::to_string(value));
    return text;
}

} // namespace

SeriesName::SeriesName(std::vector<DString> texts, std::vector<Range> ranges)
    : m_texts(std::move(texts)), m_ranges(std::move(ranges)) {}

std::optional<SeriesName> SeriesName::Parse(std::string_view text) {
    std::vector<DString> texts;
    std::vector<Range> ranges;
    for (;;) {
        std::size_t const bracket = text.find_first_of("[]");
        texts.emplace_back(text.substr(0, bracket));
        if (bracket == std::string_view::npos)
            break;
        text.remove_prefix(bracket);
        std::optional<Range> const range = TakeRange(text);
        // A number that touches another one could be cut in two ways.
        if (!range || (!ranges.empty() && texts.back().empty()) ||
            (!texts.back().empty() && IsDigit(texts.back().back())) || (!text.empty() && IsDigit(text.front())))
            return std::nullopt;
        ranges.push_back(*range);
    }
    return ranges.empty() ? std::nullopt : std::optional(SeriesName(std::move(texts), std::move(ranges)));
}

DString SeriesName::Text() const {
    DString text = m_texts.front();
    for (std::size_t i = 0; i < m_ranges.size(); ++i) {
        Range const &range = m_ranges[i];
        text.append("[").append(Written(range.first, range.digits));
        text.append("-").append(Written(range.last, range.digits));
        if (range.step != 1)
            text.append(":").append(std::to_string(range.step));
        text.append("]").append(m_texts[i + 1]);
    }
    return text;
}

std::uint64_t SeriesName::Slots() const {
    std::uint64_t slots = 1;
    for (Range const &range : m_ranges)
        slots = range.Count() > kMost / slots ? kMost : slots * range.Count();
    return slots;
}

std::optional<SeriesName::Values> SeriesName::ValuesOf(std::string_view name) const {
    Values values;
    if (!Take(name, m_texts.front()))
        return std::nullopt;
    for (std::size_t i = 0; i < m_ranges.size(); ++i) {
        Range const &range = m_ranges[i];
        std::string_view const digits = name;
        std::optional<std::uint64_t> const value = TakeNumber(name);
        auto const length = static_cast<int>(digits.size() - name.size());
        bool const isWritten = length == range.digits || (length > range.digits && digits.front() != '0');
        if (!value || !isWritten || *value < range.first || *value > range.last ||
            (*value - range.first) % range.step != 0 || !Take(name, m_texts[i + 1]))
            return std::nullopt;
        values.push_back(*value);
    }
    return name.empty() ? std::optional(std::move(values)) : std::nullopt;
}

DString SeriesName::MemberName(Values const &values) const {
    DString name = m_texts.front();
    for (std::size_t i = 0; i < m_ranges.size(); ++i)
        name.append(Written(values[i], m_ranges[i].digits)).append(m_texts[i + 1]);
    return name;
}

SeriesName::Values SeriesName::ValuesAt(std::uint64_t slot) const {
    Values values(m_ranges.size());
    for (std::size_t i = m_ranges.size(); i-- > 0; slot /= m_ranges[i].Count())
        values[i] = m_ranges[i].first + slot % m_ranges[i].Count() * m_ranges[i].step;
    return values;
}

std::uint64_t SeriesName::SlotOf(Values const &values) const {
    std::uint64_t slot = 0;
    for (std::size_t i = 0; i < m_ranges.size(); ++i)
        slot = slot * m_ranges[i].Count() + (values[i] - m_ranges[i].first) / m_ranges[i].step;
    return slot;
}

DString MissingOf(SeriesName const &name, std::vector<std::uint64_t> const &slots) {
    constexpr std::size_t kMostTold = 6;
    DString text;
    std::size_t told = 0;
    auto const tell = [&](std::uint64_t first, std::uint64_t end) {
        while (first < end && told <= kMostTold) {
            text.append(told == 0 ? "" : ", ");
            std::uint64_t const next = end - first > 2 ? end : first + 1;
            text += told == kMostTold ? "..." : Shown(name, first);
            if (told++ < kMostTold && next - first > 1)
                text.append("-").append(Shown(name, next - 1));
            first = next;
        }
    };
    std::uint64_t expected = 0;
    for (std::uint64_t const slot : slots) {
        tell(expected, slot);
        expected = slot + 1;
    }
    tell(expected, name.Slots());
    return text;
}

DString SeriesSummary(SeriesName const &name, std::vector<std::uint64_t> const &slots) {
    DString const count = std::to_string(slots.size());
    return slots.size() == name.Slots()
               ? count
               : count + " of " + std::to_string(name.Slots()) + ", missing " + MissingOf(name, slots);
}

} // namespace zelvar
