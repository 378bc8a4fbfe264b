#include "zelvar/platform/os/ShellNamespace.h"

#include "zelvar/platform/os/LinuxShellNamespace.h"

#include <atomic>
#include <mutex>

namespace zelvar::platform {

namespace {

/// The owner and, beside it, the bare pointer that `Current` reads without a lock.
struct Holder {
    std::mutex mutex;
    std::shared_ptr<ShellNamespace> owner;
    std::atomic<ShellNamespace *> current{nullptr};
};

Holder &TheHolder() {
    // Never destroyed: a worker that outlives its window may still ask.
    static Holder &holder = *new Holder;
    return holder;
}

} // namespace

ShellId ShellNamespace::ParseUnseen(DString const &) const { return {}; }

bool ShellNamespace::DoesServerAnswer(DString const &) const { return true; }

std::unique_ptr<NetworkListener> ShellNamespace::ListenToNetwork() const { return nullptr; }

ShellNamespace &ShellNamespace::Current() {
    Holder &holder = TheHolder();
    if (ShellNamespace *const current = holder.current.load(std::memory_order_acquire))
        return *current;
    std::lock_guard const lock(holder.mutex);
    if (!holder.owner)
        holder.owner = std::make_shared<LinuxShellNamespace>();
    holder.current.store(holder.owner.get(), std::memory_order_release);
    return *holder.owner;
}

std::shared_ptr<ShellNamespace> ShellNamespace::SetCurrent(std::shared_ptr<ShellNamespace> shell) {
    Holder &holder = TheHolder();
    std::lock_guard const lock(holder.mutex);
    holder.current.store(shell.get(), std::memory_order_release);
    holder.owner.swap(shell);
    return shell;
}

} // namespace zelvar::platform
