#include "zelvar/base/ImageList.h"

#include <atomic>
#include <deque>
#include <functional>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>

namespace zelvar {

namespace {

unsigned NextId() {
    static std::atomic<unsigned> last{0};
    return ++last;
}

struct DescriptionHash {
    std::size_t operator()(ImageDescription const *description) const {
        std::size_t hash = std::hash<DString>{}(description->name);
        hash = hash * 31 + std::hash<DString>{}(description->fallback);
        hash = hash * 31 + static_cast<std::size_t>(description->index);
        hash = (hash * 31 + description->fill) * 31 + description->border;
        hash = hash * 31 + static_cast<std::size_t>(description->shape);
        return hash * 31 + static_cast<std::size_t>(description->kind) * 2 +
               static_cast<std::size_t>(description->linkOverlay);
    }
};

struct DescriptionEqual {
    bool operator()(ImageDescription const *a, ImageDescription const *b) const { return *a == *b; }
};

} // namespace

struct ImageList::Impl {
    unsigned id = NextId();
    mutable std::shared_mutex mutex;
    std::deque<ImageDescription> entries; ///< never move, so that the index can point into it
    std::unordered_map<ImageDescription const *, int, DescriptionHash, DescriptionEqual> indexOf;
};

ImageList::ImageList() : m_impl(std::make_unique<Impl>()) {}

ImageList::ImageList(ImageList const &other) : ImageList() {
    std::shared_lock const lock(other.m_impl->mutex);
    for (ImageDescription const &description : other.m_impl->entries)
        Add(description);
}

ImageList::~ImageList() = default;

int ImageList::Add(ImageDescription const &description) {
    {
        std::shared_lock const lock(m_impl->mutex); // nearly always it is there already
        if (auto const at = m_impl->indexOf.find(&description); at != m_impl->indexOf.end())
            return at->second;
    }
    std::unique_lock const lock(m_impl->mutex);
    if (auto const at = m_impl->indexOf.find(&description); at != m_impl->indexOf.end())
        return at->second;
    int const index = static_cast<int>(m_impl->entries.size());
    m_impl->indexOf.emplace(&m_impl->entries.emplace_back(description), index);
    return index;
}

int ImageList::GetCount() const {
    std::shared_lock const lock(m_impl->mutex);
    return static_cast<int>(m_impl->entries.size());
}

ImageDescription ImageList::Get(int index) const {
    std::shared_lock const lock(m_impl->mutex);
    if (index < 0 || static_cast<std::size_t>(index) >= m_impl->entries.size())
        return {};
    return m_impl->entries[static_cast<std::size_t>(index)];
}

unsigned ImageList::Id() const { return m_impl->id; }

} // namespace zelvar
