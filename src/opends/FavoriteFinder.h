#pragma once

#include "zelvar/base/DThread.h"
#include "zelvar/model/DataSourceItem.h"

#include <atomic>
#include <list>
#include <memory>
#include <vector>

namespace zelvar {

/// Looks at favourites that may take their time, on a thread of its own: those on servers, and files.
///
/// `Run` belongs to the worker's thread, all else to the user-interface thread. It lives as long as its thread: a
/// window that closes while a server does not answer lets go of it and does not wait.
class FavoriteFinder final : public DThread, public std::enable_shared_from_this<FavoriteFinder> {
public:
    /// Null if no thread is to be had.
    static std::shared_ptr<FavoriteFinder> Start(std::vector<DString> paths);
    ~FavoriteFinder() override = default;
    FavoriteFinder(FavoriteFinder const &) = delete;
    FavoriteFinder &operator=(FavoriteFinder const &) = delete;

    /// Appends what was found since the last call.
    void TakeItems(std::list<RefItemPtr<DataSourceItem>> &items);
    [[nodiscard]] bool IsLooking() const { return m_running; }
    /// The window goes. Does not wait.
    void Release();

    void Run() override;

private:
    explicit FavoriteFinder(std::vector<DString> paths) : m_paths(std::move(paths)) {}

    std::vector<DString> m_paths;
    std::atomic<bool> m_running{true};
    std::atomic<bool> m_stop{false};
    std::shared_ptr<FavoriteFinder> m_self; ///< while the thread is at work; its own, once that has begun
    DMutex m_lock;                          ///< guards `m_found`
    std::list<RefItemPtr<DataSourceItem>> m_found;
};

} // namespace zelvar
