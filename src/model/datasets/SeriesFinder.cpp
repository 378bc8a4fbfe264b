#include "zelvar/model/datasets/SeriesFinder.h"

#include <algorithm>
#include <charconv>
#include <numeric>
#include <unordered_map>
#include <utility>

namespace zelvar {

namespace {

constexpr std::size_t kFewest = 10;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

/// One stretch of a name: a number, or text up to the next one.
struct Stretch {
    std::string_view text{};
    bool isNumber = false;
};

Stretch NextStretch(std::string_view name, std::size_t at) {
    std::size_t end = at;
    while (end < name.size() && IsDigit(name[end]))
        ++end;
    if (end > at && end - at <= SeriesName::kMostDigits)
        return {name.substr(at, end - at), true};
    while (end < name.size() && !IsDigit(name[end]))
        ++end;
    return {name.substr(at, end - at)};
}

/// Equal for names that agree in all but their numbers; false for one that belongs to no series.
bool HashOfTexts(std::string_view name, std::uint64_t &hash) {
    bool hasNumber = false;
    hash = 1469598103934665603U; // FNV-1a
    for (std::size_t at = 0; at < name.size();) {
        Stretch const next = NextStretch(name, at);
        hasNumber = hasNumber || next.isNumber;
        for (char const c : next.isNumber ? std::string_view("\0", 1) : next.text) {
            if (c == '[' || c == ']')
                return false;
            hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211U;
        }
        at += next.text.size();
    }
    return hasNumber;
}

bool AgreeInTexts(std::string_view a, std::string_view b) {
    std::size_t atA = 0;
    std::size_t atB = 0;
    while (atA < a.size() && atB < b.size()) {
        Stretch const nextA = NextStretch(a, atA);
        Stretch const nextB = NextStretch(b, atB);
        if (nextA.isNumber != nextB.isNumber || (!nextA.isNumber && nextA.text != nextB.text))
            return false;
        atA += nextA.text.size();
        atB += nextB.text.size();
    }
    return atA == a.size() && atB == b.size();
}

/// Names that agree in all but their numbers, with these, one row a name.
class Group {
public:
    Group(std::span<std::string_view const> names, std::vector<std::uint32_t> members) : m_members(std::move(members)) {
        ReadTexts(names[m_members.front()]);
        m_digits.assign(m_columns, static_cast<int>(SeriesName::kMostDigits));
        for (std::uint32_t const member : m_members)
            ForEachNumber(names[member], [&](std::size_t column, std::string_view digits) {
                m_digits[column] = std::min(m_digits[column], static_cast<int>(digits.size()));
            });
        // A number with leading zeros beyond the shortest one's length is written in another way.
        std::erase_if(m_members, [&](std::uint32_t member) {
            bool isOther = false;
            ForEachNumber(names[member], [&](std::size_t column, std::string_view digits) {
                isOther = isOther || (digits.front() == '0' && static_cast<int>(digits.size()) > m_digits[column]);
            });
            return isOther;
        });
        m_values.reserve(m_members.size() * m_columns);
        for (std::uint32_t const member : m_members)
            ForEachNumber(names[member], [&](std::size_t, std::string_view digits) {
                std::uint64_t value = 0;
                std::from_chars(digits.data(), digits.data() + digits.size(), value);
                m_values.push_back(value);
            });
        m_order.resize(m_members.size());
        std::iota(m_order.begin(), m_order.end(), 0U);
        std::sort(m_order.begin(), m_order.end(), [&](std::uint32_t a, std::uint32_t b) {
            auto const rowA = m_values.begin() + static_cast<std::ptrdiff_t>(a * m_columns);
            auto const rowB = m_values.begin() + static_cast<std::ptrdiff_t>(b * m_columns);
            auto const width = static_cast<std::ptrdiff_t>(m_columns);
            return std::lexicographical_compare(rowA, rowA + width, rowB, rowB + width);
        });
    }

    void AddSeries(std::vector<FoundSeries> &found) const { AddSeries(0, m_order.size(), 0, found); }

private:
    template <class Visit>
    static void ForEachNumber(std::string_view name, Visit const &visit) {
        std::size_t column = 0;
        for (std::size_t at = 0; at < name.size();) {
            Stretch const next = NextStretch(name, at);
            if (next.isNumber)
                visit(column++, next.text);
            at += next.text.size();
        }
    }
    void ReadTexts(std::string_view name) {
        m_texts.emplace_back();
        for (std::size_t at = 0; at < name.size();) {
            Stretch const next = NextStretch(name, at);
            if (next.isNumber)
                m_texts.emplace_back();
            else
                m_texts.back().append(next.text);
            at += next.text.size();
        }
        m_columns = m_texts.size() - 1;
    }

    [[nodiscard]] std::uint64_t Value(std::size_t row, std::size_t column) const {
        return m_values[m_order[row] * m_columns + column];
    }

    /// What a column runs through in these rows.
    [[nodiscard]] SeriesName::Range RangeOf(std::size_t begin, std::size_t end, std::size_t column) const {
        SeriesName::Range range{.digits = m_digits[column]};
        range.first = range.last = Value(begin, column);
        for (std::size_t row = begin; row < end; ++row) {
            range.first = std::min(range.first, Value(row, column));
            range.last = std::max(range.last, Value(row, column));
        }
        std::uint64_t step = 0;
        for (std::size_t row = begin; row < end && step != 1; ++row)
            step = std::gcd(step, Value(row, column) - range.first);
        range.step = std::max<std::uint64_t>(step, 1);
        // No shorter one is among these.
        range.digits = std::max(range.digits, static_cast<int>(std::to_string(range.first).size()));
        return range;
    }

    /// Adds the series in the rows of that order, which agree in the columns before `column`.
    void AddSeries(std::size_t begin, std::size_t end, std::size_t column, std::vector<FoundSeries> &found) const {
        if (end - begin < kFewest || column >= m_columns)
            return;
        std::optional<FoundSeries> series = SeriesOf(begin, end);
        if (series) {
            found.push_back(std::move(*series));
            return;
        }
        if (IsLastThatDiffers(begin, end, column)) {
            AddStretches(begin, end, column, found);
            return;
        }
        for (std::size_t first = begin, row = begin + 1; row <= end; ++row)
            if (row == end || Value(row, column) != Value(first, column)) {
                AddSeries(first, row, column + 1, found);
                first = row;
            }
    }
    [[nodiscard]] bool IsLastThatDiffers(std::size_t begin, std::size_t end, std::size_t column) const {
        for (std::size_t later = column + 1; later < m_columns; ++later)
            if (RangeOf(begin, end, later).Count() > 1)
                return false;
        return true;
    }
    /// Numbers with large holes between them: what lies between two holes may be a series.
    void AddStretches(std::size_t begin, std::size_t end, std::size_t column, std::vector<FoundSeries> &found) const {
        auto const hole = [&](std::size_t row) { return Value(row, column) - Value(row - 1, column); };
        std::vector<std::uint64_t> holes;
        for (std::size_t row = begin + 1; row < end; ++row)
            holes.push_back(hole(row));
        auto const middle = holes.begin() + static_cast<std::ptrdiff_t>(holes.size() / 2);
        std::nth_element(holes.begin(), middle, holes.end());
        constexpr std::uint64_t kLarge = 10; // usual holes
        for (std::size_t first = begin, row = begin + 1; row <= end; ++row)
            if (row == end || hole(row) / kLarge > *middle) {
                if (row - first >= kFewest)
                    if (std::optional<FoundSeries> series = SeriesOf(first, row))
                        found.push_back(std::move(*series));
                first = row;
            }
    }
    /// Nothing if too many are missing.
    [[nodiscard]] std::optional<FoundSeries> SeriesOf(std::size_t begin, std::size_t end) const {
        std::vector<DString> texts{m_texts.front()};
        std::vector<SeriesName::Range> ranges;
        std::vector<std::size_t> columns;
        for (std::size_t column = 0; column < m_columns; ++column) {
            SeriesName::Range const range = RangeOf(begin, end, column);
            if (range.first == range.last) { // all have it: text
                SeriesName::Range const single{range.first, range.first, 1, range.digits};
                texts.back() += SeriesName({"", ""}, {single}).MemberName({range.first}) + m_texts[column + 1];
                continue;
            }
            ranges.push_back(range);
            columns.push_back(column);
            texts.push_back(m_texts[column + 1]);
        }
        FoundSeries series{.name = SeriesName(std::move(texts), std::move(ranges)), .members = {}, .slots = {}};
        if (series.name.Ranges().empty() || series.name.Slots() / 2 > end - begin)
            return std::nullopt;
        for (std::size_t row = begin; row < end; ++row) {
            series.members.push_back(m_members[m_order[row]]);
            SeriesName::Values values;
            for (std::size_t const column : columns)
                values.push_back(Value(row, column));
            series.slots.push_back(series.name.SlotOf(values));
        }
        return series;
    }

    std::vector<std::uint32_t> m_members;
    std::vector<DString> m_texts; ///< before, between and behind the numbers
    std::size_t m_columns = 0;
    std::vector<int> m_digits; ///< fewest, by column
    std::vector<std::uint64_t> m_values;
    std::vector<std::uint32_t> m_order; ///< rows in the order of their numbers
};

} // namespace

std::vector<FoundSeries> FindSeries(std::span<std::string_view const> names) {
    // By the hash of what they agree in; what only shares it with others is told apart below.
    struct Like {
        std::uint32_t count = 0;
        std::vector<std::uint32_t> members{};
    };
    std::unordered_map<std::uint64_t, Like> alike;
    std::vector<std::uint64_t> hashes(names.size());
    std::vector<bool> isNumbered(names.size());
    for (std::size_t i = 0; i < names.size(); ++i)
        if (isNumbered[i] = HashOfTexts(names[i], hashes[i]); isNumbered[i])
            ++alike[hashes[i]].count;
    for (std::uint32_t i = 0; i < names.size(); ++i)
        if (isNumbered[i])
            if (Like &like = alike[hashes[i]]; like.count >= kFewest)
                like.members.push_back(i);
    std::vector<FoundSeries> found;
    for (auto &[hash, like] : alike) {
        if (like.members.empty())
            continue;
        std::string_view const first = names[like.members.front()];
        std::erase_if(like.members, [&](std::uint32_t member) { return !AgreeInTexts(first, names[member]); });
        Group(names, std::move(like.members)).AddSeries(found);
    }
    std::sort(found.begin(), found.end(),
              [](FoundSeries const &a, FoundSeries const &b) { return a.members.front() < b.members.front(); });
    return found;
}

} // namespace zelvar
