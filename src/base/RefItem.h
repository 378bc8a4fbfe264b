#pragma once

#include "zelvar/base/Export.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace zelvar {

/// Reference-counted item: base class of everything that panes, iterators and workers share by count.
///
/// A factory returns a raw pointer with a count of 0; wrap it in a `RefItemPtr` in the same expression, or it leaks.
/// The count alone is safe to change from several threads.
class ZELVAR_API RefItem {
public:
    RefItem() = default;
    virtual ~RefItem() = default;

    /// References now held; for tests and traces.
    [[nodiscard]] std::int32_t RefCount() const { return m_refCount.load(std::memory_order_relaxed); }

protected:
    /// Copies take the count along with all other fields. `Clone` of the concrete classes is the way to duplicate.
    RefItem(RefItem const &other) : m_refCount(other.RefCount()) {}
    RefItem &operator=(RefItem const &other) {
        m_refCount.store(other.RefCount(), std::memory_order_relaxed);
        return *this;
    }

private:
    template <class T>
    friend class RefItemPtr;

    void AddRef() const { m_refCount.fetch_add(1, std::memory_order_relaxed); }
    /// True when the last reference went.
    [[nodiscard]] bool Release() const { return m_refCount.fetch_sub(1, std::memory_order_acq_rel) <= 1; }

    mutable std::atomic<std::int32_t> m_refCount{0};
};

/// Counted pointer to a `RefItem`. Assignment takes the new reference before it releases the old one.
template <class T>
class RefItemPtr {
public:
    RefItemPtr() = default;
    RefItemPtr(std::nullptr_t) {}        // NOLINT(google-explicit-constructor): null is passed for "none"
    RefItemPtr(T *item) : m_item(item) { // NOLINT(google-explicit-constructor): factories return raw pointers
        if (m_item != nullptr)
            m_item->AddRef();
    }
    RefItemPtr(RefItemPtr const &other) : RefItemPtr(other.m_item) {}
    RefItemPtr(RefItemPtr &&other) noexcept : m_item(std::exchange(other.m_item, nullptr)) {}
    template <class U>
    RefItemPtr(RefItemPtr<U> const &other) : RefItemPtr(other.get()) {} // NOLINT(google-explicit-constructor): upcast
    ~RefItemPtr() { Drop(m_item); }

    RefItemPtr &operator=(RefItemPtr const &other) {
        if (this != &other)
            RefItemPtr(other).swap(*this);
        return *this;
    }
    RefItemPtr &operator=(RefItemPtr &&other) noexcept {
        RefItemPtr(std::move(other)).swap(*this);
        return *this;
    }

    void swap(RefItemPtr &other) noexcept { std::swap(m_item, other.m_item); }
    void reset() { RefItemPtr().swap(*this); }

    [[nodiscard]] T *get() const { return m_item; }
    T *operator->() const { return m_item; }
    T &operator*() const { return *m_item; }
    explicit operator bool() const { return m_item != nullptr; }

    friend bool operator==(RefItemPtr const &a, RefItemPtr const &b) { return a.m_item == b.m_item; }
    friend bool operator==(RefItemPtr const &a, std::nullptr_t) { return a.m_item == nullptr; }

private:
    static void Drop(T *item) {
        if (item != nullptr && item->Release())
            delete item;
    }

    T *m_item = nullptr;
};

} // namespace zelvar
