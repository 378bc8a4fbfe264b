#include "zelvar/base/Report.h"

#include "zelvar/base/ProcessMoments.h"
#include "zelvar/base/Redaction.h"
#include "zelvar/base/SystemTime.h"
#include "zelvar/base/Translation.h"

#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace zelvar {

namespace {

constexpr int kDefaultLevel = 2;

/// The file named by ZELVAR_LOG. The environment is read once.
class LogFile {
public:
    LogFile() {
        if (char const *level = std::getenv("ZELVAR_LOG_LEVEL"); level != nullptr && *level != '\0')
            m_level = static_cast<int>(std::strtol(level, nullptr, 10));
        if (char const *name = std::getenv("ZELVAR_LOG"); name != nullptr && *name != '\0')
            m_file = open(name, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    }
    [[nodiscard]] bool Wants(int level) const { return m_file >= 0 && level <= m_level; }

    /// One write call a line, so that lines of several processes do not mix.
    void Write(int level, DString const &text) const {
        auto const now = std::chrono::system_clock::now().time_since_epoch();
        SystemTime const time = ToLocalTime(std::chrono::duration_cast<std::chrono::nanoseconds>(now).count());
        DString const line = Format("%04d-%02d-%02dT%02d:%02d:%02d.%03d [%d] ", time.wYear, time.wMonth, time.wDay,
                                    time.wHour, time.wMinute, time.wSecond, time.wMilliseconds, level) +
                             EscapeControlBytes(text) + "\n";
        [[maybe_unused]] auto const written = write(m_file, line.data(), line.size()); // a full disk costs the line
    }

private:
    int m_level = kDefaultLevel;
    int m_file = -1;
};

struct Handlers final : ProcessMoments {
    void BeforeFork() override { mutex.lock(); }
    void AfterFork(Side) override { mutex.unlock(); }

    std::mutex mutex;
    Report::UserHandler user;
    Report::TraceHandler trace;
    Known known{*this, Locks::Inner}; // others report while they hold their locks
};

// Never destroyed: static objects of applications may report while the process ends.
Handlers &TheHandlers() {
    static auto &handlers = *new Handlers;
    return handlers;
}

LogFile const &TheLogFile() {
    static LogFile const &file = *new LogFile;
    return file;
}

void TellUser(Report::Severity severity, DString const &told) {
    DString const text = Redacted(told);
    Report::UserHandler handler;
    {
        std::lock_guard const lock(TheHandlers().mutex);
        handler = TheHandlers().user;
    }
    if (handler)
        handler(severity, text);
    else
        std::fprintf(stderr, "%s\n", text.c_str());
}

} // namespace

void DError::Set(DString const &text, Cause cause, std::int64_t detail) {
    m_text = Redacted(text);
    m_cause = cause;
    m_detail = detail;
}

void Report::TraceMessage(int level, char const *format, ...) {
    TraceHandler handler;
    {
        std::lock_guard const lock(TheHandlers().mutex);
        handler = TheHandlers().trace;
    }
    bool const logged = TheLogFile().Wants(level);
    if (!handler && !logged)
        return;
    std::va_list arguments;
    va_start(arguments, format);
    DString const text = Redacted(FormatV(format, arguments));
    va_end(arguments);
    if (logged)
        TheLogFile().Write(level, text);
    if (handler)
        handler(level, text);
}

void Report::UserNotification(char const *format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    DString const text = FormatV(Translated(format), arguments);
    va_end(arguments);
    TellUser(Severity::Notification, text);
}

void Report::UserNotificationEnforced(char const *format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    DString const text = FormatV(Translated(format), arguments);
    va_end(arguments);
    TellUser(Severity::Notification, text);
}

void Report::UserWarning(char const *format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    DString const text = FormatV(Translated(format), arguments);
    va_end(arguments);
    TellUser(Severity::Warning, text);
}

Report::UserHandler Report::SetUserHandler(UserHandler handler) {
    std::lock_guard const lock(TheHandlers().mutex);
    return std::exchange(TheHandlers().user, std::move(handler));
}

Report::TraceHandler Report::SetTraceHandler(TraceHandler handler) {
    std::lock_guard const lock(TheHandlers().mutex);
    return std::exchange(TheHandlers().trace, std::move(handler));
}

} // namespace zelvar
