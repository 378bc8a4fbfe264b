#include "zelvar/opends/basket/Basket.h"

#include "zelvar/base/Translation.h"
#include "zelvar/model/listing/ListingTexts.h"
#include "zelvar/opends/basket/MonikerFile.h"

#include <algorithm>
#include <numeric>

namespace zelvar {

namespace {

/// No path holds a zero.
DString KeyOf(BasketEntry const &entry) {
    DString key;
    for (BDIMoniker const &moniker : entry.monikers)
        key.append(moniker.GetText()).push_back('\0');
    return key;
}

/// What lies inside a file, by a moniker whose path begins at `root`: no disk is asked what the driver says of it.
void NameInside(BasketEntry &entry, DString const &text, std::size_t root) {
    bool const isQuoted = text[root - 1] == '"';
    std::size_t const slash = text.rfind('/', isQuoted ? text.find('"', root) : DString::npos);
    entry.name = text.substr(slash + 1);
    std::erase(entry.name, '"');
    std::size_t const inside = text.find(':') + 1; // a page stands before the path
    if (std::size_t const end = text.rfind(':', root); inside < end)
        entry.name += " (" + text.substr(inside, end - inside) + ")";
    entry.place = text.substr(root, std::max<std::size_t>(slash - root, 1));
}

} // namespace

BasketEntry EntryOf(DString const &moniker) {
    BasketEntry entry{.monikers = {BDIMoniker(moniker, nullptr)}};
    DString const text = entry.monikers.front().GetText();
    if (std::size_t const root = PathBehindDriver(text); root > 0) {
        NameInside(entry, text, root);
        return entry;
    }
    bool const isAddress = text.find("://") != DString::npos;
    std::size_t const slash = text.rfind('/', isAddress ? text.find('?') : DString::npos);
    entry.name = isAddress ? entry.monikers.front().GetDisplayName() : text.substr(slash + 1);
    entry.place = slash == DString::npos ? DString() : text.substr(0, std::max<std::size_t>(slash, 1));
    return entry;
}

void Basket::Changed() const {
    if (m_onChange)
        m_onChange();
}

std::size_t Basket::Add(Entries entries) {
    std::size_t const before = m_entries.size();
    for (BasketEntry &entry : entries)
        if (m_keys.insert(KeyOf(entry)).second)
            m_entries.push_back(std::move(entry));
    if (m_entries.size() != before)
        Changed();
    return m_entries.size() - before;
}

bool Basket::Load(DString const &file) {
    std::optional<std::vector<DString>> const monikers = ReadMonikers(file);
    if (!monikers)
        return false;
    Entries entries;
    for (DString const &moniker : *monikers)
        entries.push_back(EntryOf(moniker));
    Add(std::move(entries));
    return true;
}

bool Basket::Save(DString const &file) const {
    std::vector<DString> monikers;
    for (BasketEntry const &entry : m_entries)
        for (BDIMoniker const &moniker : entry.monikers)
            monikers.push_back(moniker.GetText());
    return WriteMonikers(file, monikers);
}

void Basket::Remove(std::set<int> const &rows) {
    Entries left;
    left.reserve(m_entries.size());
    for (std::size_t row = 0; row < m_entries.size(); ++row) {
        if (rows.contains(static_cast<int>(row)))
            m_keys.erase(KeyOf(m_entries[row]));
        else
            left.push_back(std::move(m_entries[row]));
    }
    m_entries = std::move(left);
    Changed();
}

void Basket::Clear() {
    m_entries.clear();
    m_keys.clear();
    Changed();
}

std::set<int> Basket::Move(std::set<int> const &rows, bool down) {
    std::set<int> moved;
    int const count = static_cast<int>(m_entries.size());
    int edge = down ? count - 1 : 0; // as far as the next one can go
    auto const step = [&](int row) {
        int const to = row == edge ? row : row + (down ? 1 : -1);
        if (to != row)
            std::swap(m_entries[static_cast<std::size_t>(row)], m_entries[static_cast<std::size_t>(to)]);
        else
            edge += down ? -1 : 1;
        moved.insert(to);
    };
    if (down)
        std::for_each(rows.rbegin(), rows.rend(), step);
    else
        std::for_each(rows.begin(), rows.end(), step);
    Changed();
    return moved;
}

int Basket::MoveBefore(int row, int next) {
    auto const from = m_entries.begin() + row;
    auto const to = m_entries.begin() + next;
    if (from < to)
        std::rotate(from, from + 1, to);
    else
        std::rotate(to, from, from + 1);
    Changed();
    return from < to ? next - 1 : next;
}

DString Basket::Summary() const {
    auto const count = static_cast<long long>(m_entries.size());
    DString const items = Format(Translated("%lld item", "%lld items", count), count);
    bool const isKnown =
        std::all_of(m_entries.begin(), m_entries.end(), [](BasketEntry const &entry) { return entry.bytes >= 0; });
    if (!isKnown || m_entries.empty())
        return items;
    std::int64_t const bytes =
        std::accumulate(m_entries.begin(), m_entries.end(), std::int64_t{0},
                        [](std::int64_t sum, BasketEntry const &entry) { return sum + entry.bytes; });
    return items + ", " + FormatFileSize(bytes);
}

} // namespace zelvar
