#pragma once

#include "zelvar/base/PathStyle.h"
#include "zelvar/base/Report.h"
#include "zelvar/data/DriverProvider.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>
#include <vector>

namespace zelvar {

/// The drivers of one manager: in order, by id and by extension. Any thread may ask; adding is for the start. It lives
/// as long as the process, and is empty again when the provider is to add its drivers anew.
template <class Driver>
class DriverTable {
public:
    using List = std::vector<Driver *>;

    DriverTable() {
        OnForgetDrivers([this] { Clear(); });
    }

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

    /// With `id` of a known driver what `openNamed` yields for that one and no other: who names a driver does not want
    /// what another makes of the data. Else the first handle that `open` yields.
    template <class OpenNamed, class Open>
    void *OpenNamedOrFirst(char const *id, OpenNamed const &openNamed, Open const &open) const {
        Driver *const named = Find(id);
        return named == nullptr ? OpenFirst(open) : openNamed(*named);
    }

private:
    void Clear() {
        std::lock_guard const lock(m_mutex);
        m_byId.clear();
        m_byExtension.clear();
        m_drivers.clear();
        m_owned.clear();
    }

    static constexpr std::size_t kLongestExtension = 32;

    mutable std::mutex m_mutex;
    std::unordered_map<DString, Driver *> m_byId;
    std::unordered_map<DString, List> m_byExtension;
    List m_none;
    List m_drivers;
    std::vector<std::unique_ptr<Driver>> m_owned;
};

/// What `open` yields, which is given where to say why it opens nothing. Of what several drivers say so of the same
/// data, `kept` keeps what tells most: a cause before "I know no such data", that before a mere text, the first of
/// equals.
template <class Open>
void *OpenNoting(DError &kept, Open const &open) {
    DError failure;
    void *const opened = open(&failure);
    auto const weightOf = [](DError const &error) {
        using enum DError::Cause;
        return !error.IsSet() ? 0 : error.Why() == Unknown ? 1 : error.Why() == NotSupported ? 2 : 3;
    };
    if (weightOf(failure) > weightOf(kept))
        kept = std::move(failure);
    return opened;
}

/// The end of an attempt to open: true for a handle. Else the reason, `nothing` if there is none yet, goes to the trace
/// and to `error`, which may be null.
inline bool IsOpened(void const *handle, DError &reason, DString const &nothing, DError *error) {
    if (handle != nullptr)
        return true;
    if (!reason.IsSet())
        reason.Set(nothing, DError::Cause::NotSupported);
    Report::TraceMessage(Report::kTraceDriver, "%s", reason.Text().c_str());
    if (error != nullptr)
        *error = reason;
    return false;
}

} // namespace zelvar
