#pragma once

#include "zelvar/base/PathStyle.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace zelvar {

/// The drivers of one manager: in order, by id and by extension. Any thread may ask; adding is for the start.
template <class Driver>
class DriverTable {
public:
    using List = std::vector<Driver *>;

    void Add(std::unique_ptr<Driver> driver, bool byExtension) {
        std::lock_guard const lock(m_mutex);
        m_byId.try_emplace(FoldCase(driver->GetId()), driver.get());
        if (byExtension)
            for (DString const &mask : Split(driver->GetExtensions(), ';')) {
                List &list = m_byExtension[FoldCase(ExtensionOf(Trimmed(mask)))];
                if (list.empty() || list.back() != driver.get())
                    list.push_back(driver.get());
            }
        m_drivers.push_back(driver.get());
        m_owned.push_back(std::move(driver));
    }
    [[nodiscard]] Driver *Find(char const *id) const {
        if (id == nullptr || *id == '\0')
            return nullptr;
        std::lock_guard const lock(m_mutex);
        auto const at = m_byId.find(FoldCase(id));
        return at == m_byId.end() ? nullptr : at->second;
    }
    [[nodiscard]] List const &Drivers() const { return m_drivers; }
    [[nodiscard]] List const &ByExtensionOf(std::string_view fileName) const {
        std::string_view const extension = ExtensionOf(fileName);
        if (extension.empty() || extension.size() > kLongestExtension)
            return m_none;
        std::lock_guard const lock(m_mutex);
        auto const at = m_byExtension.find(FoldCase(extension));
        return at == m_byExtension.end() ? m_none : at->second;
    }
    void Clear() {
        std::lock_guard const lock(m_mutex);
        m_byId.clear();
        m_byExtension.clear();
        m_drivers.clear();
        m_owned.clear();
    }

    /// Calls `open` for each driver in order until it yields a handle; of a family only for the first.
    template <class Open>
    void *OpenFirst(Open const &open) const {
        std::vector<DString> asked;
        for (Driver *driver : m_drivers) {
            DString family = driver->GetFamily();
            if (!family.empty()) {
                if (std::find(asked.begin(), asked.end(), family) != asked.end())
                    continue;
                asked.push_back(std::move(family));
            }
            if (void *handle = open(*driver); handle != nullptr)
                return handle;
        }
        return nullptr;
    }

private:
    static constexpr std::size_t kLongestExtension = 32;

    mutable std::mutex m_mutex;
    std::unordered_map<DString, Driver *> m_byId;
    std::unordered_map<DString, List> m_byExtension;
    List m_none;
    List m_drivers;
    std::vector<std::unique_ptr<Driver>> m_owned;
};

} // namespace zelvar
