#include "zelvar/platform/os/DesktopNetwork.h"

#include "zelvar/base/LateLibrary.h"
#include "zelvar/platform/os/SmbAddress.h"

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

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
    decltype(&g_file_monitor_directory) monitor = nullptr;
    decltype(&g_signal_connect_data) connect = nullptr;
    decltype(&g_main_context_new) newContext = nullptr;
    decltype(&g_main_context_unref) unrefContext = nullptr;
    decltype(&g_main_context_push_thread_default) pushContext = nullptr;
    decltype(&g_main_context_pop_thread_default) popContext = nullptr;
    decltype(&g_main_context_iteration) iterate = nullptr;
    decltype(&g_main_context_wakeup) wakeUp = nullptr;

    /// False if GIO or one of the functions is missing.
    bool Load() {
        LateLibrary const library("libgio-2.0.so.0");
        auto const find = [&library](char const *name, auto &function) { return library.Find(name, function); };
        return find("g_file_new_for_uri", newForUri) && find("g_file_enumerate_children", enumerateChildren) &&
               find("g_file_enumerator_next_file", nextFile) && find("g_file_info_get_display_name", displayName) &&
               find("g_file_info_get_attribute_string", attributeString) && find("g_object_unref", unref) &&
               find("g_file_monitor_directory", monitor) && find("g_signal_connect_data", connect) &&
               find("g_main_context_new", newContext) && find("g_main_context_unref", unrefContext) &&
               find("g_main_context_push_thread_default", pushContext) &&
               find("g_main_context_pop_thread_default", popContext) && find("g_main_context_iteration", iterate) &&
               find("g_main_context_wakeup", wakeUp);
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

/// The service's monitor and a loop of its own, in which its news arrive.
class DesktopListener final : public NetworkListener {
public:
    explicit DesktopListener(Library const &gio) : m_gio(gio), m_context(gio.newContext()) {
        m_gio.pushContext(m_context);
    }
    ~DesktopListener() override {
        if (m_monitor != nullptr)
            m_gio.unref(m_monitor);
        m_gio.popContext(m_context);
        m_gio.unrefContext(m_context);
    }
    DesktopListener(DesktopListener const &) = delete;
    DesktopListener &operator=(DesktopListener const &) = delete;
    bool Start(char const *place) {
        GFile *const file = m_gio.newForUri(place);
        m_monitor = m_gio.monitor(file, G_FILE_MONITOR_NONE, nullptr, nullptr);
        m_gio.unref(file);
        if (m_monitor == nullptr)
            return false;
        m_gio.connect(m_monitor, "changed", reinterpret_cast<GCallback>(&Hear), this, nullptr, GConnectFlags(0));
        return true;
    }
    bool Wait(std::stop_token const &stop) override {
        std::stop_callback const wake(stop, [this] { m_gio.wakeUp(m_context); });
        while (!m_hasHeard && !stop.stop_requested())
            m_gio.iterate(m_context, TRUE);
        return std::exchange(m_hasHeard, false);
    }

private:
    static void Hear(GFileMonitor *, GFile *, GFile *, GFileMonitorEvent, void *listener) {
        static_cast<DesktopListener *>(listener)->m_hasHeard = true;
    }

    Library m_gio;
    GMainContext *m_context;
    GFileMonitor *m_monitor = nullptr;
    bool m_hasHeard = false;
};

/// Where the asking thread leaves its answer; it may come after the caller has gone.
struct Answer {
    std::mutex mutex;
    std::condition_variable arrived;
    bool done = false;
    std::vector<NetworkPlace> places;
};

} // namespace

bool IsInDesktopSession() {
    char const *const bus = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    return bus != nullptr && *bus != '\0';
}

std::vector<NetworkPlace> ListDesktopNetwork() {
    if (!IsInDesktopSession())
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

std::unique_ptr<NetworkListener> ListenToDesktopNetwork(char const *place) {
    Library gio;
    if (!IsInDesktopSession() || !gio.Load())
        return nullptr;
    auto listener = std::make_unique<DesktopListener>(gio);
    return listener->Start(place) ? std::move(listener) : nullptr;
}

} // namespace zelvar::platform
