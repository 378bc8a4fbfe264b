#include "zelvar/platform/os/DesktopNetwork.h"

#include "zelvar/platform/os/SmbAddress.h"

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <thread>

#include <dlfcn.h>
#include <gio/gio.h>

namespace zelvar::platform {

namespace {

constexpr std::chrono::seconds kPatience{5};

/// The functions of GIO that are used.
struct Library {
    decltype(&g_file_new_for_uri) newForUri = nullptr;
    decltype(&g_file_enumerate_children) enumerateChildren = nullptr;
    decltype(&g_file_enumerator_next_file) nextFile = nullptr;
    decltype(&g_file_info_get_display_name) displayName = nullptr;
    decltype(&g_file_info_get_attribute_string) attributeString = nullptr;
    decltype(&g_object_unref) unref = nullptr;

    /// False if GIO or one of the functions is missing.
    bool Load() {
        void *const handle = dlopen("libgio-2.0.so.0", RTLD_NOW | RTLD_LOCAL); // stays loaded
        if (handle == nullptr)
            return false;
        auto const find = [handle](char const *name, auto &function) {
            function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(dlsym(handle, name));
            return function != nullptr;
        };
        return find("g_file_new_for_uri", newForUri) && find("g_file_enumerate_children", enumerateChildren) &&
               find("g_file_enumerator_next_file", nextFile) && find("g_file_info_get_display_name", displayName) &&
               find("g_file_info_get_attribute_string", attributeString) && find("g_object_unref", unref);
    }
};

/// Places that lead to one server; the entry for the whole workgroup would make the service search the network.
void AddPlace(char const *name, char const *target, std::vector<NetworkPlace> &out) {
    if (name == nullptr || target == nullptr)
        return;
    if (std::optional<SmbAddress> const address = ParseSmbAddress(target))
        out.push_back({.name = name, .authority = address->authority});
}

std::vector<NetworkPlace> Ask() {
    std::vector<NetworkPlace> places;
    Library gio;
    if (!gio.Load())
        return places;
    GFile *const network = gio.newForUri("network:///");
    GFileEnumerator *const children = gio.enumerateChildren(network, "standard::display-name,standard::target-uri",
                                                            G_FILE_QUERY_INFO_NONE, nullptr, nullptr);
    if (children != nullptr) {
        while (GFileInfo *const info = gio.nextFile(children, nullptr, nullptr)) {
            AddPlace(gio.displayName(info), gio.attributeString(info, "standard::target-uri"), places);
            gio.unref(info);
        }
        gio.unref(children);
    }
    gio.unref(network);
    return places;
}

/// Where the asking thread leaves its answer; it may come after the caller has gone.
struct Answer {
    std::mutex mutex;
    std::condition_variable arrived;
    bool done = false;
    std::vector<NetworkPlace> places;
};

} // namespace

std::vector<NetworkPlace> ListDesktopNetwork() {
    char const *const bus = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    if (bus == nullptr || *bus == '\0')
        return {};
    auto const answer = std::make_shared<Answer>();
    std::thread([answer] {
        std::vector<NetworkPlace> places = Ask();
        std::lock_guard const lock(answer->mutex);
        answer->places = std::move(places);
        answer->done = true;
        answer->arrived.notify_all();
    }).detach();
    std::unique_lock lock(answer->mutex);
    answer->arrived.wait_for(lock, kPatience, [&] { return answer->done; });
    return answer->places;
}

} // namespace zelvar::platform
