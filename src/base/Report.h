#pragma once

#include "zelvar/base/DString.h"

#include <cstdint>
#include <functional>

namespace zelvar {

/// The product's log and its words to the user.
///
/// Trace lines go to the file named by ZELVAR_LOG (or nowhere) when their level is at most ZELVAR_LOG_LEVEL, default 2.
/// Any thread. What the user must see goes through a handler that the library's user interface installs; without one it
/// is written to stderr. Neither ever holds a secret: all lines pass `Redacted`.
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

/// Receives why a call failed: a short text for the log, empty while nothing failed, and its cause as far as it is
/// known.
class DError {
public:
    /// What kept data from being opened or read. The detail is stated where a cause has one.
    enum class Cause {
        Unknown,
        Missing,       ///< nothing is there (any more)
        NotPermitted,  ///< the user may not read it
        NotSupported,  ///< no driver knows the data, or the driver cannot read this kind of them
        Damaged,       ///< a driver knows the data and cannot read them; detail: the byte, where the library says it
        NeedsPassword, ///< nobody has told one; detail: the status code of a server
        Refused,       ///< a driver knows the data and must not open them
        Server,        ///< a server answered with an error; detail: its status code
        Late,          ///< longer than its budget; detail: milliseconds
        TooLarge,      ///< more memory than a reader may take; detail: bytes
        Crashed,       ///< the data end the process that reads them
        NoAnswer,      ///< the reader or the place does not answer
        Untrusted,     ///< nobody known vouches for a server's certificate
        /// It lies behind a connection that nobody has made.
        NoConnection,
    };
    static constexpr Cause kLastCause = Cause::NoConnection;

    /// A detail of -1 means that none is known. The text is kept without secrets, see `Redacted`.
    ZELVAR_API void Set(DString const &text, Cause cause = Cause::Unknown, std::int64_t detail = -1);
    void Clear() { *this = DError(); }
    [[nodiscard]] bool IsSet() const { return !m_text.empty(); }
    [[nodiscard]] DString const &Text() const { return m_text; }
    [[nodiscard]] Cause Why() const { return m_cause; }
    [[nodiscard]] std::int64_t Detail() const { return m_detail; }

private:
    DString m_text;
    Cause m_cause = Cause::Unknown;
    std::int64_t m_detail = -1;
};

} // namespace zelvar
