#pragma once

#include "zelvar/base/Export.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>

namespace zelvar {

/// What data is asked for; each kind has a budget of its own, see `ReaderSettings`.
enum class RequestKind {
    Probe,      ///< is this file a container, an image
    List,       ///< children of a node
    Properties, ///< figures of an image
    Preview,    ///< pixels
    Thumbnail,  ///< a small picture that nobody waits for, see `RequestScope::IsInBackground`
};
inline constexpr int kRequestKinds = 5;

/// What a probe of a file that somebody has named, selected or opened may take. Only guesses about many files at once
/// have the short budget of the kind.
inline constexpr std::chrono::seconds kNamedProbe{10};

/// Says, while it lives, what the calling thread asks drivers for. Drivers that bound their work take the time budget
/// from here: all calls inside one scope share it, but for a listing without a time of its own, which gives it to each
/// step anew. Scopes may be nested; the inner one counts.
///
/// A scope with a time of its own bounds those inside it too. For calls made in the scope itself that time, like a
/// kind's budget, is what the driver gets: while it waits for a processor it does not pass, see `Readers`. What those
/// around it have left is time on the clock.
///
/// Probes inside a listing (a scope of kind List around them) share a patience besides: once the probes that came late
/// have used it up, further ones are only waited for as long as one that finds its answer ready.
class ZELVAR_API RequestScope {
public:
    using Clock = std::chrono::steady_clock;
    using StopQuestion = std::function<bool()>;

    /// `isStopped` may be empty; it is asked on this thread, every few milliseconds while a driver is waited for.
    /// `time` takes the place of the kind's budget. One that stands alone knows nothing of the scopes around it.
    enum class Nesting { Inside, Alone };
    explicit RequestScope(RequestKind kind, StopQuestion isStopped = {},
                          std::optional<std::chrono::milliseconds> time = {}, Nesting nesting = Nesting::Inside);
    ~RequestScope();
    RequestScope(RequestScope const &) = delete;
    RequestScope &operator=(RequestScope const &) = delete;

    /// The innermost scope of this thread, or null.
    [[nodiscard]] static RequestScope *Current();

    [[nodiscard]] RequestKind Kind() const { return m_kind; }
    /// Whether all that is asked for here is for a thumbnail, whatever its own kind: drivers in processes of their own
    /// then work in some that are kept for that, and nobody who waits has to share with them.
    [[nodiscard]] bool IsInBackground() const;
    [[nodiscard]] Clock::time_point Begin() const { return m_begin; }
    [[nodiscard]] bool HasOwnTime() const { return m_time.has_value(); }
    /// What is left of this scope's own time; nothing if it has none.
    [[nodiscard]] std::optional<std::chrono::milliseconds> OwnTimeLeft() const;
    /// What is left of the times of the scopes around this one; nothing if none has one.
    [[nodiscard]] std::optional<std::chrono::milliseconds> OuterTimeLeft() const;
    /// The less of the two.
    [[nodiscard]] std::optional<std::chrono::milliseconds> TimeLeft() const;
    /// Whether this scope or one around it wants to end.
    [[nodiscard]] bool IsStopped() const;

    /// A driver says that it gave up on a call inside this scope, without an answer.
    void SetUnanswered();
    /// Whether one did, here or in a scope inside: then "no" means "not known".
    [[nodiscard]] bool IsUnanswered() const { return m_unanswered; }

    /// What is under way on this thread says how far it has come, to all scopes that it stands in.
    static void NoteProgress(double done, double all);
    static constexpr int kWhole = 1000;
    /// How far that is, of `kWhole`; below 0 while nothing has been said.
    [[nodiscard]] int Progress() const { return m_progress; }

    /// The listing around this scope, or null.
    [[nodiscard]] RequestScope *Listing();
    /// The number of listings that are made together, as those of two lists which show one folder: what one of them is
    /// told of it is told the others. That of the innermost scope of this thread which has one; 0 for none.
    [[nodiscard]] static std::uint64_t Together();
    std::uint64_t together = 0;
    /// Of a listing: time that its probes have spent for nothing.
    std::chrono::milliseconds wasted{0};
    /// Of a listing: time that was spent on files that only a look into them can tell, or that lie on a server.
    std::chrono::microseconds looked{0};

private:
    RequestScope *m_former; ///< of this thread
    RequestScope *m_outer;  ///< what this one stands in
    RequestKind m_kind;
    StopQuestion m_isStopped;
    std::optional<std::chrono::milliseconds> m_time;
    Clock::time_point m_begin;
    bool m_unanswered = false;
    int m_progress = -1;
};

} // namespace zelvar
