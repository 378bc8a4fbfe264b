#pragma once

#include "zelvar/data/tables/TableTexts.h"

#include <cstddef>
#include <functional>

namespace zelvar {

/// Shares work that falls into many pieces among the processors. The thread that asks is one of those that work; it
/// alone looks for a stop, between its pieces, and says how far all of it has come.
class SharedWork {
public:
    /// `stop` outlives this.
    explicit SharedWork(StopPoll &stop);

    /// Threads that work at a time.
    [[nodiscard]] std::size_t Workers() const { return m_workers; }
    /// What share of the whole work lies before the next pieces, and behind them.
    void SetStage(double begin, double end) {
        m_begin = begin;
        m_end = end;
    }
    using Body = std::function<bool(std::size_t worker, std::size_t piece)>;
    /// Works on pieces 0 to `pieces`. False as soon as a piece says so or a stop is asked for. What a piece throws is
    /// thrown here.
    [[nodiscard]] bool Run(std::size_t pieces, Body const &body);
    /// For work that falls into none: whether to stop.
    [[nodiscard]] bool IsStopped() { return m_stop->IsStopped(); }

private:
    StopPoll *m_stop; ///< not owned
    std::size_t m_workers;
    double m_begin = 0;
    double m_end = 1;
};

} // namespace zelvar
