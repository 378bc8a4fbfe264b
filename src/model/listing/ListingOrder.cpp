#include "zelvar/model/listing/ListingOrder.h"

#include "zelvar/base/NaturalOrder.h"

#include <algorithm>
#include <numeric>

namespace zelvar {

namespace {

// Numbers of items outside the file system are all equal and below the others.
constexpr std::uint64_t kForeign = 0;

std::uint64_t SizeKey(ListingFacts const &facts) {
    if (!facts.isFileSystem)
        return kForeign;
    return facts.size < 0 ? 1 : static_cast<std::uint64_t>(facts.size) + 2;
}

/// The seconds take no part: files of one moment's work stay in arrival order.
std::uint64_t DateKey(ListingFacts const &facts) {
    if (!facts.isFileSystem)
        return kForeign;
    if (!facts.hasTime)
        return 1;
    SystemTime const &time = facts.time;
    std::uint64_t key = 1; // above the ones without a time
    key = key << 16U | time.wYear;
    key = key << 4U | time.wMonth;
    key = key << 5U | time.wDay;
    key = key << 5U | time.wHour;
    key = key << 6U | time.wMinute;
    return key << 10U | time.wMilliseconds;
}

std::size_t CommonPrefix(std::string_view a, std::string_view b) {
    return static_cast<std::size_t>(std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first - a.begin());
}

/// Up to eight bytes as a number that orders as they do.
std::uint64_t LeadingBytes(std::string_view bytes) {
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < sizeof number; ++i)
        number = number << 8U | (i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0U);
    return number;
}

struct SortEntry {
    std::uint64_t lead;
    std::uint32_t item;
};

} // namespace

void ListingOrder::Reset(ListingSort sort, bool ascending) {
    m_sort = sort;
    m_ascending = ascending || sort == ListingSort::None; // without a key there is one order, that of arrival
    m_count = 0;
    m_keys.clear();
    m_pool.clear();
    m_order.clear();
}

void ListingOrder::Add(ListingFacts const &facts) {
    ++m_count;
    switch (m_sort) {
    case ListingSort::None:
        return;
    case ListingSort::Name: {
        std::string const key = MakeFileNameKey(facts.name);
        m_keys.push_back({m_pool.size(), static_cast<std::uint32_t>(key.size())});
        m_pool += key;
        return;
    }
    case ListingSort::Size:
        m_keys.push_back({SizeKey(facts), 0});
        return;
    case ListingSort::Date:
        m_keys.push_back({DateKey(facts), 0});
        return;
    }
}

std::string_view ListingOrder::Bytes(std::uint32_t item) const {
    Key const &key = m_keys[item];
    return std::string_view(m_pool).substr(static_cast<std::size_t>(key.number), key.length);
}

bool ListingOrder::Less(std::uint32_t a, std::uint32_t b) const {
    return m_sort == ListingSort::Name ? Bytes(a) < Bytes(b) : m_keys[a].number < m_keys[b].number;
}

void ListingOrder::Place(std::vector<PlacedItem> &out) {
    std::vector<std::uint32_t> arrivals(WaitingCount());
    std::iota(arrivals.begin(), arrivals.end(), static_cast<std::uint32_t>(m_order.size()));
    if (arrivals.empty())
        return;
    SortArrivals(arrivals);
    std::vector<std::uint32_t> const positions = Merge(arrivals);
    out.reserve(out.size() + arrivals.size());
    // The first row first: then no later insertion moves an earlier one.
    auto const last = static_cast<std::int32_t>(m_order.size() - 1);
    for (std::size_t i = 0; i < arrivals.size(); ++i) {
        std::size_t const at = m_ascending ? i : arrivals.size() - 1 - i;
        auto const position = static_cast<std::int32_t>(positions[at]);
        out.push_back({m_ascending ? position : last - position, arrivals[at]});
    }
}

void ListingOrder::SortArrivals(std::vector<std::uint32_t> &arrivals) const {
    if (m_sort == ListingSort::None)
        return;
    if (m_sort == ListingSort::Name) {
        SortByBytes(arrivals);
        return;
    }
    std::vector<SortEntry> entries;
    entries.reserve(arrivals.size());
    for (std::uint32_t const item : arrivals)
        entries.push_back({m_keys[item].number, item});
    std::sort(entries.begin(), entries.end(), [](SortEntry const &a, SortEntry const &b) {
        return a.lead != b.lead ? a.lead < b.lead : a.item < b.item;
    });
    std::transform(entries.begin(), entries.end(), arrivals.begin(), [](SortEntry const &entry) { return entry.item; });
}

void ListingOrder::SortByBytes(std::vector<std::uint32_t> &arrivals) const {
    // Files of one folder often begin alike. What all have in common is passed over, and the eight bytes behind it lie
    // in the entries themselves: few comparisons reach for the pool.
    std::size_t common = Bytes(arrivals.front()).size();
    for (std::uint32_t const item : arrivals)
        common = CommonPrefix(Bytes(arrivals.front()).substr(0, common), Bytes(item));
    std::vector<SortEntry> entries;
    entries.reserve(arrivals.size());
    for (std::uint32_t const item : arrivals)
        entries.push_back({LeadingBytes(Bytes(item).substr(common)), item});
    std::sort(entries.begin(), entries.end(), [&](SortEntry const &a, SortEntry const &b) {
        if (a.lead != b.lead)
            return a.lead < b.lead;
        int const order = Bytes(a.item).substr(common).compare(Bytes(b.item).substr(common));
        return order != 0 ? order < 0 : a.item < b.item;
    });
    std::transform(entries.begin(), entries.end(), arrivals.begin(), [](SortEntry const &entry) { return entry.item; });
}

std::vector<std::uint32_t> ListingOrder::Merge(std::vector<std::uint32_t> const &arrivals) {
    std::vector<std::uint32_t> positions(arrivals.size());
    // Nothing to merge with, or all belongs behind: the common case of a listing that is placed at its end.
    if (m_order.empty() || m_sort == ListingSort::None || !Less(arrivals.front(), m_order.back())) {
        std::iota(positions.begin(), positions.end(), static_cast<std::uint32_t>(m_order.size()));
        m_order.insert(m_order.end(), arrivals.begin(), arrivals.end());
        return positions;
    }
    std::vector<std::uint32_t> merged;
    merged.reserve(m_order.size() + arrivals.size());
    auto const less = [this](std::uint32_t a, std::uint32_t b) { return Less(a, b); };
    auto rest = m_order.cbegin();
    for (std::size_t i = 0; i < arrivals.size(); ++i) {
        // Behind its equals. Few arrivals jump over the many they do not concern, step by widening step.
        auto reach = m_order.cend() - rest;
        std::ptrdiff_t step = 1;
        while (step < reach && !less(arrivals[i], rest[step - 1]))
            step *= 2;
        auto const end = std::upper_bound(rest + step / 2, rest + std::min(step, reach), arrivals[i], less);
        merged.insert(merged.end(), rest, end);
        rest = end;
        positions[i] = static_cast<std::uint32_t>(merged.size());
        merged.push_back(arrivals[i]);
    }
    merged.insert(merged.end(), rest, m_order.cend());
    m_order.swap(merged);
    return positions;
}

std::vector<std::uint32_t> const &ListingOrder::AscendingOrder() {
    std::vector<PlacedItem> unused;
    Place(unused);
    return m_order;
}

} // namespace zelvar
