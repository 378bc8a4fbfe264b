#pragma once

#include "zelvar/base/DThread.h"
#include "zelvar/model/DataSourceItem.h"
#include "zelvar/platform/os/ShellNamespace.h"

#include <atomic>
#include <list>
#include <set>
#include <stop_token>

namespace zelvar {

/// Looks for servers and shares in the network place on a thread of its own.
///
/// `TakeItems` belongs to the user-interface thread. Between two passes the thread sleeps until the network place tells
/// of news; where nobody tells any it ends after 30 passes that find nothing new. It ends soon after `RequestStop`,
/// too; it touches no window, so a window that goes away first leaves it to end by itself.
class ZELVAR_API NetworkScanner final : public DThread {
public:
    NetworkScanner() = default;
    ~NetworkScanner() override;
    NetworkScanner(NetworkScanner const &) = delete;
    NetworkScanner &operator=(NetworkScanner const &) = delete;

    /// Appends what was found since the last call.
    void TakeItems(std::list<RefItemPtr<DataSourceItem>> &items);
    void RequestStop() { m_stop.request_stop(); }
    /// From before the thread starts until its body has ended.
    [[nodiscard]] bool IsScanning() const { return m_running; }
    /// Starts the thread; false if there is none.
    bool StartScanning();

    void Run() override;

    static constexpr int kEmptyPasses = 30;

private:
    [[nodiscard]] bool IsStopped() const { return m_stop.stop_requested(); }
    /// True if something was found.
    bool ScanNetwork();
    bool ScanFolder(platform::ShellId const &folder);
    bool TakeChild(platform::ShellChild const &child);

    DMutex m_lock; ///< guards `m_found`
    std::list<RefItemPtr<DataSourceItem>> m_found;
    std::atomic<bool> m_running{false};
    std::stop_source m_stop;
    std::set<DString> m_seen; ///< names taken, in whatever domain they stand; the thread's own
};

} // namespace zelvar
