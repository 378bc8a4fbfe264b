#pragma once

#include <cstddef>
#include <list>
#include <map>
#include <utility>
#include <vector>

namespace zelvar {

/// Vector that grows on demand.
template <class T>
using DVector = std::vector<T>;

/// Bounds-checked vector: an index outside reads a default-made element instead of foreign memory.
template <class T>
class DVectorSafe {
public:
    DVectorSafe() = default;
    DVectorSafe(std::initializer_list<T> values) : m_values(values) {}

    [[nodiscard]] std::size_t size() const { return m_values.size(); }
    [[nodiscard]] bool empty() const { return m_values.empty(); }
    void clear() { m_values.clear(); }
    void reserve(std::size_t count) { m_values.reserve(count); }
    void push_back(T value) { m_values.push_back(std::move(value)); }
    void pop_back() { m_values.pop_back(); }

    [[nodiscard]] T &operator[](std::size_t index) {
        return index < m_values.size() ? m_values[index] : (Spare() = T{}, Spare());
    }
    [[nodiscard]] T const &operator[](std::size_t index) const {
        return index < m_values.size() ? m_values[index] : (Spare() = T{}, Spare());
    }

    [[nodiscard]] auto begin() { return m_values.begin(); }
    [[nodiscard]] auto end() { return m_values.end(); }
    [[nodiscard]] auto begin() const { return m_values.begin(); }
    [[nodiscard]] auto end() const { return m_values.end(); }
    template <class Position>
    auto erase(Position at) {
        return m_values.erase(at);
    }
    template <class Position>
    auto insert(Position at, T value) {
        return m_values.insert(at, std::move(value));
    }

private:
    static T &Spare() {
        static thread_local T spare;
        return spare;
    }
    std::vector<T> m_values;
};

/// List with append and walk; the elements lie in one block, since lists of folders hold hundreds of thousands.
template <class T>
using DList = std::vector<T>;

/// Ordered map. It does not own what pointers in it point to.
template <class Key, class Value>
class DMap {
public:
    virtual ~DMap() = default;

    /// The value under `key`, or null if there is none.
    [[nodiscard]] Value *Find(Key const &key) {
        auto const at = m_map.find(key);
        return at == m_map.end() ? nullptr : &at->second;
    }
    [[nodiscard]] Value const *Find(Key const &key) const {
        auto const at = m_map.find(key);
        return at == m_map.end() ? nullptr : &at->second;
    }
    /// The value under `key`, or a default-made one.
    [[nodiscard]] Value Get(Key const &key) const {
        Value const *value = Find(key);
        return value == nullptr ? Value{} : *value;
    }
    void Set(Key const &key, Value value) { m_map.insert_or_assign(key, std::move(value)); }
    bool Rmv(Key const &key) { return m_map.erase(key) != 0; }
    [[nodiscard]] auto Frst() const { return m_map.begin(); }
    [[nodiscard]] bool IsEmpty() const { return m_map.empty(); }
    [[nodiscard]] std::size_t Size() const { return m_map.size(); }
    void Destroy() { m_map.clear(); }
    Value &operator[](Key const &key) { return m_map[key]; }

    [[nodiscard]] auto begin() const { return m_map.begin(); }
    [[nodiscard]] auto end() const { return m_map.end(); }

private:
    std::map<Key, Value> m_map;
};

} // namespace zelvar
