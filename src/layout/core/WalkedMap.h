#pragma once

#include <unordered_map>
#include <utility>

namespace zelvar {

/// Hash map whose keys are asked for in much the same order again and again: each entry knows which one was asked for
/// behind it, so that a walk over thousands finds nearly all of them without a look at the table. Operations are those
/// of the standard's map, but entries are changed by `insert_or_assign` alone. One thread at a time.
template <class Key, class Value>
class WalkedMap {
    struct Entry : Value {
        // Mutable, as they say nothing of the value.
        mutable std::pair<Key const, Entry> const *next = nullptr; ///< the one asked for behind this
        mutable unsigned age = 0;                                  ///< `next` holds while nothing is erased
    };
    using Node = std::pair<Key const, Entry>;

public:
    WalkedMap() = default;
    WalkedMap(WalkedMap const &) = delete;
    WalkedMap &operator=(WalkedMap const &) = delete;

    /// The key with its value, or null.
    [[nodiscard]] Node const *find(Key const &key) const {
        if (m_last != nullptr && m_last->first == key)
            return m_last;
        if (m_last != nullptr && m_last->second.age == m_age && m_last->second.next->first == key)
            return m_last = m_last->second.next;
        auto const at = m_entries.find(key);
        if (at == m_entries.end())
            return nullptr;
        if (m_last != nullptr) {
            m_last->second.next = &*at;
            m_last->second.age = m_age;
        }
        return m_last = &*at;
    }
    [[nodiscard]] bool contains(Key const &key) const { return m_entries.contains(key); }
    [[nodiscard]] std::size_t size() const { return m_entries.size(); }
    /// True if the key is new.
    bool insert_or_assign(Key const &key, Value value) {
        auto const [at, isNew] = m_entries.try_emplace(key);
        static_cast<Value &>(at->second) = std::move(value);
        return isNew;
    }
    std::size_t erase(Key const &key) {
        Forget();
        return m_entries.erase(key);
    }
    void clear() {
        Forget();
        m_entries.clear();
    }
    [[nodiscard]] auto begin() const { return m_entries.begin(); }
    [[nodiscard]] auto end() const { return m_entries.end(); }

private:
    void Forget() {
        m_last = nullptr;
        ++m_age;
    }

    std::unordered_map<Key, Entry> m_entries{};
    mutable Node const *m_last = nullptr; ///< the one asked for last
    unsigned m_age = 1;                   ///< counts what was erased
};

} // namespace zelvar
