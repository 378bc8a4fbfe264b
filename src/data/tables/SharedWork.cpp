#include "zelvar/data/tables/SharedWork.h"

#include "zelvar/data/RequestScope.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace zelvar {

namespace {

constexpr unsigned kMostWorkers = 4;

/// The pieces that nobody has taken yet, and what has come of the others.
class Pieces {
public:
    Pieces(std::size_t count, SharedWork::Body const &body) : m_count(count), m_body(body) {}

    /// Works on the next one; false if there is none or the work has ended.
    bool WorkOnOne(std::size_t worker) {
        std::size_t const piece = m_next.fetch_add(1, std::memory_order_relaxed);
        if (piece >= m_count || m_hasEnded.load(std::memory_order_relaxed))
            return false;
        try {
            if (!m_body(worker, piece))
                End();
        } catch (...) {
            std::lock_guard const lock(m_mutex);
            m_thrown = std::current_exception();
            End();
        }
        return true;
    }
    void End() { m_hasEnded = true; }
    [[nodiscard]] double Share() const {
        return static_cast<double>(std::min(m_next.load(std::memory_order_relaxed), m_count)) /
               static_cast<double>(m_count);
    }
    /// Once all threads have ended.
    [[nodiscard]] bool Conclude() const {
        if (m_thrown)
            std::rethrow_exception(m_thrown);
        return !m_hasEnded;
    }

private:
    std::size_t m_count;
    SharedWork::Body const &m_body;
    std::atomic<std::size_t> m_next{0};
    std::atomic<bool> m_hasEnded{false};
    std::mutex m_mutex;
    std::exception_ptr m_thrown;
};

} // namespace

SharedWork::SharedWork(StopPoll &stop)
    : m_stop(&stop), m_workers(std::clamp(std::thread::hardware_concurrency(), 1U, kMostWorkers)) {}

bool SharedWork::Run(std::size_t pieces, Body const &body) {
    Pieces shared(pieces, body);
    {
        std::vector<std::jthread> helpers;
        try {
            for (std::size_t worker = 1; worker < std::min(m_workers, pieces); ++worker)
                helpers.emplace_back([&shared, worker] {
                    while (shared.WorkOnOne(worker)) {
                    }
                });
        } catch (std::system_error const &) {
            // No thread is to be had: this one does it all.
        }
        while (shared.WorkOnOne(0)) {
            RequestScope::NoteProgress(m_begin + (m_end - m_begin) * shared.Share(), 1);
            if (m_stop->IsStopped())
                shared.End();
        }
    }
    return shared.Conclude();
}

} // namespace zelvar
