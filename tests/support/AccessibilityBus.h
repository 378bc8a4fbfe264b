#pragma once

#include "support/Test.h"

#include <csignal>
#include <cstdio>
#include <regex>

#include <gio/gio.h>
#include <sys/prctl.h>

namespace zelvar::test {

/// A screen without a monitor, an accessibility bus as a desktop has it, and a client on that bus which asks and hears
/// as a screen reader does. What runs there ends with the object, and with this process however that goes.
class AccessibilityBus : Pinned {
public:
    /// What a program shows: its name on the bus and a path there, which is empty for nothing.
    using Node = std::pair<std::string, std::string>;

    AccessibilityBus() : m_launcher(g_subprocess_launcher_new(G_SUBPROCESS_FLAGS_NONE)) {
        g_subprocess_launcher_set_child_setup(
            m_launcher, [](gpointer) { prctl(PR_SET_PDEATHSIG, SIGTERM); }, nullptr, nullptr);
        std::string const screen = LineOf(
            Start({"Xvfb", "-displayfd", "1", "-screen", "0", "1280x1000x24", "-nolisten", "tcp", "-noreset"}, true));
        // The rules of the accessibility bus do for the session's as well: no other service of the desktop is started.
        std::string const session =
            LineOf(Start({"dbus-daemon", "--config-file=/usr/share/defaults/at-spi2/accessibility.conf", "--nofork",
                          "--print-address=1", "--address=unix:dir=" + m_folder.Path()},
                         true));
        if (screen.empty() || session.empty()) {
            m_missing = screen.empty() ? "xvfb" : "dbus-daemon, at-spi2-core";
            return;
        }
        for (auto const &[name, value] : {std::pair<char const *, std::string>{"DISPLAY", ":" + screen},
                                          {"DBUS_SESSION_BUS_ADDRESS", session},
                                          {"XDG_RUNTIME_DIR", m_folder.Path()},
                                          {"QT_QPA_PLATFORM", "xcb"},
                                          {"QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1"}})
            g_subprocess_launcher_setenv(m_launcher, name, value.c_str(), TRUE);
        bool const launched = Start({"/usr/libexec/at-spi-bus-launcher"}, true) != nullptr;
        Connect(session);
        std::string address;
        Await([&] { return !launched || !(address = Ask(kBus, kBus.first, "GetAddress")).empty(); });
        Connect(address);
        if (m_connection == nullptr) {
            m_missing = "at-spi2-core";
            return;
        }
        auto const told = [](GDBusConnection *, char const *sender, char const *path, char const *, char const *member,
                             GVariant *event, gpointer self) {
            char const *detail = nullptr;
            int value = 0;
            g_variant_get_child(event, 0, "&s", &detail);
            g_variant_get_child(event, 1, "i", &value);
            static_cast<AccessibilityBus *>(self)->OnEvent({sender, path}, std::string(member) + ":" + detail, value);
        };
        g_dbus_connection_signal_subscribe(m_connection, nullptr, "org.a11y.atspi.Event.Object", nullptr, nullptr,
                                           nullptr, G_DBUS_SIGNAL_FLAGS_NONE, told, this, nullptr);
        Ask(kRegistry, kRegistry.first, "RegisterEvent", g_variant_new("(s)", "object:"));
    }
    ~AccessibilityBus() {
        for (; !m_programs.empty(); m_programs.pop_back()) {
            g_subprocess_send_signal(m_programs.back(), SIGTERM);
            g_subprocess_wait(m_programs.back(), nullptr, nullptr);
            g_object_unref(m_programs.back());
        }
        g_clear_object(&m_connection);
        g_object_unref(m_launcher);
    }
    /// What is not installed or does not start; empty if all runs.
    [[nodiscard]] std::string const &Missing() const { return m_missing; }
    /// Starts a program that shows its windows there and is heard. Null if it is not installed.
    GSubprocess *Start(std::vector<std::string> const &words, bool quietly = false) {
        constexpr unsigned quiet = G_SUBPROCESS_FLAGS_STDOUT_PIPE | G_SUBPROCESS_FLAGS_STDERR_SILENCE;
        g_subprocess_launcher_set_flags(m_launcher, quietly ? static_cast<GSubprocessFlags>(quiet)
                                                            : G_SUBPROCESS_FLAGS_STDOUT_PIPE);
        std::vector<char const *> arguments;
        for (std::string const &word : words)
            arguments.push_back(word.c_str());
        arguments.push_back(nullptr);
        GSubprocess *const program = g_subprocess_launcher_spawnv(m_launcher, arguments.data(), nullptr);
        if (program != nullptr)
            m_programs.push_back(program);
        return program;
    }

    /// The first of this role and name, as "table Samples", from the desktop or `from` on; waits for it.
    [[nodiscard]] Node Find(std::string const &words, Node const &from = kDesktop) {
        Node found;
        Await([&] { return !(found = FindBelow(from, words)).second.empty(); });
        return found;
    }
    [[nodiscard]] std::vector<Node> Children(Node const &node) {
        return NodesIn(Ask(node, "org.a11y.atspi.Accessible", "GetChildren"));
    }
    /// Role and name, as last heard if it is gone.
    [[nodiscard]] std::string Words(Node const &node) {
        std::string const role = Ask(node, "org.a11y.atspi.Accessible", "GetRoleName");
        if (!role.empty())
            m_words[node] = role + " " + Property(node, "Accessible", "Name");
        return m_words[node];
    }
    [[nodiscard]] std::string Description(Node const &node) { return Property(node, "Accessible", "Description"); }
    /// What a label beside it says.
    [[nodiscard]] std::string LabelOf(Node const &node) {
        std::string const relations = Ask(node, "org.a11y.atspi.Accessible", "GetRelationSet");
        std::size_t const at = relations.find("(2, ["); // "labelled by"
        return at == std::string::npos ? "" : Property(NodesIn(relations.substr(at)).at(0), "Accessible", "Name");
    }
    [[nodiscard]] bool IsExpanded(Node const &node) {
        unsigned states = 0;
        std::string const printed = Ask(node, "org.a11y.atspi.Accessible", "GetState");
        return std::sscanf(printed.c_str(), "[%u", &states) == 1 && (states >> 10U & 1U) != 0;
    }

    void Focus(Node const &node) { Ask(node, "org.a11y.atspi.Component", "GrabFocus"); }
    /// Does what it offers first.
    void Act(Node const &node) { Ask(node, "org.a11y.atspi.Action", "DoAction", g_variant_new("(i)", 0)); }
    void Press(int keySymbol) {
        Ask(kKeyboardAndMouse, "org.a11y.atspi.DeviceEventController", "GenerateKeyboardEvent",
            g_variant_new("(isu)", keySymbol, "", 3U /* press and let go */));
    }
    /// In its middle.
    void DoubleClick(Node const &node) {
        std::array<int, 4> at{}; // left, top, width, height
        std::string const place = Ask(node, "org.a11y.atspi.Component", "GetExtents", g_variant_new("(u)", 0));
        std::ignore = std::sscanf(place.c_str(), "(%d, %d, %d, %d", at.data(), &at[1], &at[2], &at[3]);
        Ask(kKeyboardAndMouse, "org.a11y.atspi.DeviceEventController", "GenerateMouseEvent",
            g_variant_new("(iis)", at[0] + at[2] / 2, at[1] + at[3] / 2, "b1d"));
    }

    /// What was told behind the last answer up to `last`, with role and name of what tells it: "focus", "select",
    /// "deselect", "enable", "disable"; "new" and "gone" for what is above it; "value" with the value, "words" with the
    /// description. Only kinds that are listened to are heard.
    [[nodiscard]] std::vector<std::string> HearUntil(std::string const &last) {
        auto at = m_heard.end();
        Await([&] { return (at = std::find(m_heard.begin(), m_heard.end(), last)) != m_heard.end(); });
        std::vector<std::string> const later(at == m_heard.end() ? at : at + 1, m_heard.end());
        m_heard.resize(m_heard.size() - later.size());
        return std::exchange(m_heard, later);
    }
    void ListenTo(std::vector<std::string> kinds) { m_kinds = std::move(kinds); }

private:
    static constexpr std::chrono::seconds kLongest{40}; ///< for what takes a moment on a machine that is not busy
    static inline Node const kBus{"org.a11y.Bus", "/org/a11y/bus"};
    static inline Node const kDesktop{"org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root"};
    static inline Node const kRegistry{"org.a11y.atspi.Registry", "/org/a11y/atspi/registry"};
    static inline Node const kKeyboardAndMouse{kRegistry.first, kRegistry.second + "/deviceeventcontroller"};

    /// Takes over a text of the library.
    static std::string Taken(char *text) {
        std::string copy = text == nullptr ? "" : text;
        g_free(text);
        return copy;
    }

    /// The next line that a program prints; empty if it ends without, or was not started.
    static std::string LineOf(GSubprocess *program) {
        if (program == nullptr)
            return {};
        GDataInputStream *const output = g_data_input_stream_new(g_subprocess_get_stdout_pipe(program));
        std::string line = Taken(g_data_input_stream_read_line(output, nullptr, nullptr, nullptr));
        g_object_unref(output);
        return line;
    }

    /// The nodes in a printed answer.
    static std::vector<Node> NodesIn(std::string const &printed) {
        static std::regex const node("'(:[0-9.]+)', '(/[^']*)'");
        std::vector<Node> nodes;
        for (std::sregex_iterator at(printed.begin(), printed.end(), node), end; at != end; ++at)
            nodes.emplace_back((*at)[1], (*at)[2]);
        return nodes;
    }

    void Connect(std::string const &address) {
        constexpr unsigned flags =
            G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION;
        g_clear_object(&m_connection);
        m_connection = g_dbus_connection_new_for_address_sync(address.c_str(), static_cast<GDBusConnectionFlags>(flags),
                                                              nullptr, nullptr, nullptr);
    }
    /// The answer as it is printed, without its brackets and quotes; empty if there is none.
    std::string Ask(Node const &node, std::string const &interface, char const *method, GVariant *arguments = nullptr) {
        constexpr int longest = std::chrono::milliseconds(kLongest).count();
        GVariant *const answer =
            g_dbus_connection_call_sync(m_connection, node.first.c_str(), node.second.c_str(), interface.c_str(),
                                        method, arguments, nullptr, G_DBUS_CALL_FLAGS_NONE, longest, nullptr, nullptr);
        if (answer == nullptr)
            return {};
        std::string const printed = Taken(g_variant_print(answer, FALSE));
        g_variant_unref(answer);
        static std::regex const wrapping(R"(^\(<?['"]?|['"]?>?,?\)$)");
        return std::regex_replace(printed, wrapping, "");
    }
    [[nodiscard]] std::string Property(Node const &node, std::string const &interface, char const *name) {
        return Ask(node, "org.freedesktop.DBus.Properties", "Get",
                   g_variant_new("(ss)", ("org.a11y.atspi." + interface).c_str(), name));
    }
    [[nodiscard]] Node FindBelow(Node const &node, std::string const &words) {
        if (Words(node) == words)
            return node;
        for (Node const &child : Children(node))
            if (Node found = FindBelow(child, words); !found.second.empty())
                return found;
        return {};
    }
    static bool Await(std::function<bool()> const &condition) {
        auto const end = std::chrono::steady_clock::now() + kLongest;
        // The condition is looked at after each event and, as not all of them are about events, now and then.
        unsigned const pulse = g_timeout_add(
            10, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
        bool met = condition();
        for (; !met && std::chrono::steady_clock::now() < end; met = condition())
            g_main_context_iteration(nullptr, TRUE);
        g_source_remove(pulse);
        return met;
    }
    void OnEvent(Node const &node, std::string const &event, int detail) {
        static std::map<std::string, std::pair<std::string, std::string>> const kinds = {
            {"StateChanged:focused", {"focus", ""}},
            {"StateChanged:selected", {"select", "deselect"}},
            {"StateChanged:sensitive", {"enable", "disable"}},
            {"ChildrenChanged:add", {"new", "new"}},
            {"ChildrenChanged:remove", {"gone", "gone"}},
            {"PropertyChange:accessible-value", {"", "value"}},
            {"PropertyChange:accessible-description", {"", "words"}}};
        auto const known = kinds.find(event);
        bool const isProgram = node.second == kDesktop.second; // its windows come and go
        if (known == kinds.end() || isProgram)
            return;
        std::string const &kind = detail != 0 ? known->second.first : known->second.second;
        if (std::find(m_kinds.begin(), m_kinds.end(), kind) == m_kinds.end())
            return;
        m_heard.push_back(kind + " " +
                          (kind == "value"   ? Property(node, "Value", "CurrentValue")
                           : kind == "words" ? Description(node)
                                             : Words(node)));
    }

    TempFolder m_folder;
    std::string m_missing;
    GSubprocessLauncher *m_launcher; ///< knows the environment
    std::vector<GSubprocess *> m_programs{};
    GDBusConnection *m_connection = nullptr;
    std::vector<std::string> m_kinds{"focus", "select", "deselect", "new", "gone"};
    std::vector<std::string> m_heard{};
    std::map<Node, std::string> m_words{}; ///< as last heard
};

} // namespace zelvar::test
