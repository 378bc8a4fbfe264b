#include "zelvar/data/DriverProvider.h"

#include <atomic>
#include <mutex>
#include <utility>
#include <vector>

namespace zelvar {

namespace {

struct State {
    std::recursive_mutex mutex; // the provider itself asks the managers
    DriverProvider provider;
    std::vector<std::function<void()>> forget;
    std::atomic<bool> done{false};
    std::atomic<bool> slow{false};
    bool running = false;
};

State &TheState() {
    static auto &state = *new State; // never destroyed: managers outlive static destruction
    return state;
}

} // namespace

void SetDriverProvider(DriverProvider provider, bool isSlow) {
    State &state = TheState();
    std::lock_guard const lock(state.mutex);
    state.provider = std::move(provider);
    state.slow = isSlow;
}

void EnsureDrivers() {
    State &state = TheState();
    if (state.done.load(std::memory_order_acquire))
        return;
    std::lock_guard const lock(state.mutex);
    // Who asks before there is a provider has not used up the one that comes.
    if (state.done.load(std::memory_order_relaxed) || state.running || !state.provider)
        return;
    state.running = true;
    state.provider();
    state.running = false;
    state.done.store(true, std::memory_order_release);
}

bool AreDriversPending() {
    State const &state = TheState();
    return state.slow.load(std::memory_order_relaxed) && !state.done.load(std::memory_order_acquire);
}

void ForgetDrivers() {
    State &state = TheState();
    std::lock_guard const lock(state.mutex);
    for (auto const &forget : state.forget)
        forget();
    state.done.store(false, std::memory_order_release);
}

void OnForgetDrivers(std::function<void()> forget) {
    State &state = TheState();
    std::lock_guard const lock(state.mutex);
    state.forget.push_back(std::move(forget));
}

} // namespace zelvar
