#pragma once

#include "zelvar/opends/FolderListingWorker.h"

#include <memory>

namespace zelvar {

/// One listing of places on servers, on a thread of its own, whose rows come as they are found.
///
/// It lives as long as its thread: a list that goes, or lists something else, lets go of it and does not wait. `Run`
/// belongs to the thread, all else to the user-interface thread.
class ServerListing final : public DThread, public std::enable_shared_from_this<ServerListing> {
public:
    using Pending = FolderListingWorker::Pending;
    struct Order {
        FolderListMode mode = FolderListMode::Folders;
        ListingSort sort = ListingSort::None;
        bool ascending = true;
    };
    /// Null if no thread is to be had.
    static std::shared_ptr<ServerListing> Start(FolderListingWorker::Request request, Order const &order);
    ~ServerListing() override = default;
    ServerListing(ServerListing const &) = delete;
    ServerListing &operator=(ServerListing const &) = delete;

    [[nodiscard]] std::vector<Pending> TakePending() { return m_worker.TakePending(); }
    /// False after a stop, though some rows may still come.
    [[nodiscard]] bool IsAtWork() const { return m_isAtWork && !m_stop && !m_isEnough; }
    /// What has been found stays. Does not wait.
    void Stop() { m_stop = true; }
    /// The same, but what is on its way goes on for other lists of the place.
    void Finish() {
        m_isEnough = true;
        m_worker.Finish();
    }
    /// Nobody wants it any more. Does not wait.
    void Release();

    void Run() override;

private:
    ServerListing() = default;

    FolderListingWorker m_worker;
    std::atomic<bool> m_isAtWork{true};
    std::atomic<bool> m_stop{false};
    bool m_isEnough = false;
    std::shared_ptr<ServerListing> m_self; ///< while the thread is at work; its own, once that has begun
};

} // namespace zelvar
