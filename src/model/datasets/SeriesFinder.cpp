#include "zelvar/model/datasets/SeriesFinder.h"

#include "zelvar/model/datasets/HashedPlaces.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <utility>

namespace zelvar {

namespace {

constexpr std::size_t kFewest = 10;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

/// A number in a name.
struct Number {
    std::uint32_t at = 0;
    std::uint32_t digits = 0;
    std::uint64_t value = 0;
};

bool IsZeroLed(Number const &number) {
    std::uint64_t least = 1; // with as many digits
    for (std::uint32_t digit = 1; digit < number.digits; ++digit)
        least *= 10;
    return number.value < least;
}

/// The names that hold numbers, each taken apart once.
class NumberedNames {
public:
    using Names = std::span<std::string_view const>;

    explicit NumberedNames(Names names) : m_names(names) {
        for (std::uint32_t place = 0; place < names.size(); ++place) {
            Entry entry{.place = place, .begin = m_numbers.size()};
            if (Read(names[place], entry.hash) && m_numbers.size() > entry.begin)
                m_entries.push_back(entry);
            else
                m_numbers.resize(entry.begin);
        }
    }
    [[nodiscard]] std::size_t Size() const { return m_entries.size(); }
    [[nodiscard]] std::uint32_t Place(std::size_t i) const { return m_entries[i].place; }
    /// Equal for names that agree in all but their numbers.
    [[nodiscard]] std::uint64_t Hash(std::size_t i) const { return m_entries[i].hash; }
    [[nodiscard]] std::span<Number const> Numbers(std::size_t i) const {
        std::size_t const end = i + 1 < m_entries.size() ? m_entries[i + 1].begin : m_numbers.size();
        return std::span(m_numbers).subspan(m_entries[i].begin, end - m_entries[i].begin);
    }
    [[nodiscard]] bool AgreeInTexts(std::size_t a, std::size_t b) const {
        std::size_t const columns = Numbers(a).size();
        if (Numbers(b).size() != columns)
            return false;
        for (std::size_t column = 0; column <= columns; ++column)
            if (TextBefore(a, column) != TextBefore(b, column))
                return false;
        return true;
    }
    /// What stands before the number of that column, behind the last one for their number.
    [[nodiscard]] std::string_view TextBefore(std::size_t i, std::size_t column) const {
        std::span<Number const> const numbers = Numbers(i);
        std::size_t const begin = column == 0 ? 0 : numbers[column - 1].at + numbers[column - 1].digits;
        std::string_view const name = m_names[m_entries[i].place];
        return name.substr(begin, column < numbers.size() ? numbers[column].at - begin : std::string_view::npos);
    }

private:
    struct Entry {
        std::uint32_t place = 0;
        std::size_t begin = 0; ///< its first number
        std::uint64_t hash = 0;
    };
    /// Adds the numbers of the name; false for one that belongs to no series.
    bool Read(std::string_view name, std::uint64_t &hash) {
        constexpr std::uint64_t kPrime = 1099511628211U; // FNV-1a
        hash = 1469598103934665603U;
        for (std::size_t at = 0; at < name.size();) {
            std::size_t end = at;
            std::uint64_t value = 0;
            for (; end < name.size() && IsDigit(name[end]); ++end)
                value = value * 10 + static_cast<std::uint64_t>(name[end] - '0');
            if (end > at && end - at <= SeriesName::kMostDigits) {
                m_numbers.push_back({static_cast<std::uint32_t>(at), static_cast<std::uint32_t>(end - at), value});
                hash *= kPrime; // as a zero byte would
                at = end;
                continue;
            }
            while (end < name.size() && !IsDigit(name[end]))
                ++end;
            for (; at < end; ++at) {
                if (name[at] == '[' || name[at] == ']')
                    return false;
                hash = (hash ^ static_cast<unsigned char>(name[at])) * kPrime;
            }
        }
        return true;
    }

    Names m_names;
    std::vector<Entry> m_entries;
    std::vector<Number> m_numbers; ///< of all names, one behind the other
};

/// Names that agree in all but their numbers, with these, one row a name.
class Group {
public:
    /// `members` in the order of their numbers.
    Group(NumberedNames const &names, std::vector<std::uint32_t> members)
        : m_names(names), m_members(std::move(members)) {
        m_columns = names.Numbers(m_members.front()).size();
        for (std::size_t column = 0; column <= m_columns; ++column)
            m_texts.emplace_back(names.TextBefore(m_members.front(), column));
        m_digits.assign(m_columns, static_cast<int>(SeriesName::kMostDigits));
        for (std::uint32_t const member : m_members)
            for (std::size_t column = 0; column < m_columns; ++column)
                m_digits[column] = std::min(m_digits[column], static_cast<int>(names.Numbers(member)[column].digits));
        std::erase_if(m_members, [&](std::uint32_t member) { return IsWrittenOtherwise(member); });
        m_values.reserve(m_members.size() * m_columns);
        for (std::uint32_t const member : m_members)
            for (Number const &number : names.Numbers(member))
                m_values.push_back(number.value);
    }

    void AddSeries(std::vector<FoundSeries> &found) const { AddSeries(0, m_members.size(), 0, found); }

private:
    /// A number with leading zeros beyond the shortest one's length is written in another way.
    [[nodiscard]] bool IsWrittenOtherwise(std::uint32_t member) const {
        std::span<Number const> const numbers = m_names.Numbers(member);
        for (std::size_t column = 0; column < m_columns; ++column) {
            auto const most = static_cast<std::uint32_t>(m_digits[column]);
            if (numbers[column].digits > most && IsZeroLed(numbers[column]))
                return true;
        }
        return false;
    }

    [[nodiscard]] std::uint64_t Value(std::size_t row, std::size_t column) const {
        return m_values[row * m_columns + column];
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
            series.members.push_back(m_names.Place(m_members[row]));
            SeriesName::Values values;
            for (std::size_t const column : columns)
                values.push_back(Value(row, column));
            series.slots.push_back(series.name.SlotOf(values));
        }
        return series;
    }

    NumberedNames const &m_names;
    std::vector<std::uint32_t> m_members; ///< among the numbered names
    std::vector<DString> m_texts;         ///< before, between and behind the numbers
    std::size_t m_columns = 0;
    std::vector<int> m_digits;           ///< fewest, by column
    std::vector<std::uint64_t> m_values; ///< row by row
};

} // namespace

struct SeriesFinder::Groups {
    explicit Groups(std::span<std::string_view const> names) : numbered(names) {
        HashedPlaces byHash(numbered.Size());
        std::vector<std::uint64_t> hashes; // of a group
        std::vector<std::uint32_t> counts;
        std::vector<std::uint32_t> groupOf(numbered.Size());
        for (std::uint32_t i = 0; i < numbered.Size(); ++i) {
            std::uint64_t const hash = numbered.Hash(i);
            std::uint32_t &group = byHash.At(hash, [&](std::uint32_t other) { return hashes[other] == hash; });
            if (group == HashedPlaces::kNone) {
                group = static_cast<std::uint32_t>(hashes.size());
                hashes.push_back(hash);
                counts.push_back(0);
            }
            groupOf[i] = group;
            ++counts[group];
        }
        std::vector<std::vector<std::uint32_t>> byGroup(hashes.size());
        for (std::uint32_t i = 0; i < numbered.Size(); ++i)
            if (counts[groupOf[i]] >= kFewest)
                byGroup[groupOf[i]].push_back(i);
        for (std::vector<std::uint32_t> &alike : byGroup)
            if (!alike.empty())
                Add(std::move(alike));
    }

    NumberedNames numbered;
    /// Names that agree in all but their numbers, in the order of these; those with enough names alone.
    std::vector<std::vector<std::uint32_t>> members;

private:
    void Add(std::vector<std::uint32_t> alike) {
        std::uint32_t const first = alike.front();
        // Some may share no more than a hash.
        std::erase_if(alike, [&](std::uint32_t member) { return !numbered.AgreeInTexts(first, member); });
        std::size_t const columns = numbered.Numbers(first).size();
        std::vector<std::uint64_t> values;
        values.reserve(alike.size() * columns);
        for (std::uint32_t const member : alike)
            for (Number const &number : numbered.Numbers(member))
                values.push_back(number.value);
        std::vector<std::uint32_t> order(alike.size());
        std::iota(order.begin(), order.end(), 0U);
        std::sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
            std::uint64_t const *const rowA = &values[a * columns];
            std::uint64_t const *const rowB = &values[b * columns];
            return std::lexicographical_compare(rowA, rowA + columns, rowB, rowB + columns);
        });
        for (std::uint32_t &row : order)
            row = alike[row];
        members.push_back(std::move(order));
    }
};

SeriesFinder::SeriesFinder(std::span<std::string_view const> names) : m_groups(std::make_unique<Groups>(names)) {}

SeriesFinder::~SeriesFinder() = default;

std::vector<FoundSeries> SeriesFinder::Find(std::vector<bool> const &isWanted) const {
    NumberedNames const &numbered = m_groups->numbered;
    std::vector<FoundSeries> found;
    for (std::vector<std::uint32_t> const &alike : m_groups->members) {
        std::vector<std::uint32_t> members;
        members.reserve(alike.size());
        std::copy_if(alike.begin(), alike.end(), std::back_inserter(members),
                     [&](std::uint32_t member) { return isWanted[numbered.Place(member)]; });
        if (members.size() >= kFewest)
            Group(numbered, std::move(members)).AddSeries(found);
    }
    std::sort(found.begin(), found.end(),
              [](FoundSeries const &a, FoundSeries const &b) { return a.members.front() < b.members.front(); });
    return found;
}

} // namespace zelvar
