#include "zelvar/platform/os/DesktopProxy.h"

#include "zelvar/base/LateLibrary.h"

#include <memory>
#include <mutex>
#include <string_view>
#include <system_error>
#include <thread>

#include <gio/gio.h>
#include <poll.h>
#include <sys/eventfd.h>

namespace zelvar::platform {

namespace {

/// Where the asking thread leaves its answer; it may come after the caller has gone.
struct Lookup {
    std::mutex mutex;
    DString proxy;                                                   ///< guarded
    FileDescriptor answered{eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)}; ///< readable once the proxy is there
};

/// Of a list that is GIO's.
DString ChoiceOf(char const *const *proxies) {
    DString first;
    for (; proxies != nullptr && *proxies != nullptr; ++proxies) {
        std::string_view const proxy = *proxies;
        if (proxy.starts_with("http://"))
            return DString(proxy);
        if (proxy.starts_with("direct:"))
            break;
        first = first.empty() ? DString(proxy) : first;
    }
    return first;
}

DString Ask(DString const &address) {
    LateLibrary const library("libgio-2.0.so.0");
    decltype(&g_proxy_resolver_get_default) resolver = nullptr;
    decltype(&g_proxy_resolver_lookup) lookUp = nullptr;
    decltype(&g_strfreev) freeAll = nullptr;
    if (!library.Find("g_proxy_resolver_get_default", resolver) || !library.Find("g_proxy_resolver_lookup", lookUp) ||
        !library.Find("g_strfreev", freeAll))
        return {};
    char **const proxies = lookUp(resolver(), address.c_str(), nullptr, nullptr);
    DString choice = ChoiceOf(proxies);
    freeAll(proxies);
    return choice;
}

} // namespace

DString FindDesktopProxy(DString const &address, Patience const &patience) {
    auto const lookup = std::make_shared<Lookup>();
    try {
        std::thread([address, lookup] {
            DString proxy = Ask(address);
            std::lock_guard const lock(lookup->mutex);
            lookup->proxy = std::move(proxy);
            eventfd_write(lookup->answered.Get(), 1);
        }).detach();
    } catch (std::system_error const &) {
        return {};
    }
    bool const isAnswered = patience.WaitFor(lookup->answered.Get(), POLLIN) == 0;
    std::lock_guard const lock(lookup->mutex);
    return isAnswered ? lookup->proxy : DString();
}

} // namespace zelvar::platform
