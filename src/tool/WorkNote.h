#pragma once

#include <chrono>

namespace zelvar::tool {

/// A line on the terminal behind standard error that says how far work has come, once it takes longer than a moment.
/// It goes with this object; where errors go to a file there is none.
class WorkNote {
public:
    WorkNote();
    ~WorkNote();
    WorkNote(WorkNote const &) = delete;
    WorkNote &operator=(WorkNote const &) = delete;

    /// Shows what the innermost request scope says. Always false: what is asked whether to stop may ask this.
    bool Show();

private:
    using Clock = std::chrono::steady_clock;
    bool m_hasTerminal;
    Clock::time_point m_next;
    int m_shown = -1; ///< percent
};

} // namespace zelvar::tool
