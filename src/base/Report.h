#pragma once

#include "zelvar/base/DString.h"

#include <functional>

namespace zelvar {

/// The product's log and its words to the user.
///
/// Trace lines go to the file named by ZELVAR_LOG (or nowhere) when their level is at most ZELVAR_LOG_LEVEL, default 2.
/// Any thread. What the user must see goes through a handler that the library's user interface installs; without one it
/// is written to stderr.
class ZELVAR_API Report {
public:
    enum Level {
        kTraceOpen = 2,   ///< a data source is created or opened
        kTraceDriver = 3, ///< driver details
    };
    enum class Severity { Notification, Warning };
    using UserHandler = std::function<void(Severity, DString const &)>;
    using TraceHandler = std::function<void(int level, DString const &)>;

    static void TraceMessage(int level, char const *format, ...) __attribute__((format(printf, 2, 3)));

    static void UserNotification(char const *format, ...) __attribute__((format(printf, 1, 2)));
    /// A message that must be seen even where others are switched off.
    static void UserNotificationEnforced(char const *format, ...) __attribute__((format(printf, 1, 2)));
    static void UserWarning(char const *format, ...) __attribute__((format(printf, 1, 2)));

    /// Replaces the handler and returns the former one. A null handler restores the default.
    static UserHandler SetUserHandler(UserHandler handler);
    static TraceHandler SetTraceHandler(TraceHandler handler);
};

/// Receives why a call failed: a short text for the log, empty while nothing failed.
class DError {
public:
    void Set(DString text) { m_text = std::move(text); }
    void Clear() { m_text.clear(); }
    [[nodiscard]] bool IsSet() const { return !m_text.empty(); }
    [[nodiscard]] DString const &Text() const { return m_text; }

private:
    DString m_text;
};

} // namespace zelvar
