#pragma once

#include <algorithm>
#include <cstdint>
#include <list>
#include <memory>
#include <utility>

namespace zelvar::reader {

/// The things used last, by number; the one that was not used for longest makes room for a new one.
template <class Thing>
class RecentlyUsed {
public:
    static constexpr std::size_t kMost = 64;

    /// Null if there is none of that number.
    Thing *Find(std::uint64_t id) {
        auto const at = std::ranges::find(m_things, id, &Entry::first);
        if (at == m_things.end())
            return nullptr;
        m_things.splice(m_things.begin(), m_things, at);
        return at->second.get();
    }
    Thing *Add(std::uint64_t id, std::unique_ptr<Thing> thing) {
        if (m_things.size() == kMost)
            m_things.pop_back();
        return m_things.emplace_front(id, std::move(thing)).second.get();
    }
    void Remove(std::uint64_t id) {
        std::erase_if(m_things, [id](Entry const &entry) { return entry.first == id; });
    }

private:
    using Entry = std::pair<std::uint64_t, std::unique_ptr<Thing>>;
    std::list<Entry> m_things; ///< last used first
};

} // namespace zelvar::reader
