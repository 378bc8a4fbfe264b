#pragma once

#include <cstdint>
#include <vector>

#include <linux/filter.h>

namespace zelvar::reader {

/// Whom a reader may speak to.
enum class Reach {
    Local,      ///< nobody but its application
    Network,    ///< whomever it connects to
    Connection, ///< whom its application connects it to
};

/// The calls that the kernel refuses to a reader: new processes, others' processes, what changes files without opening
/// them and what outlives a process; for local readers sockets as well, and for those of a connection all but sockets
/// of TCP that nothing connects: they are the places for those that the application hands over.
///
/// Refused calls fail with an error that callers know; nothing is ended for trying.
class SyscallFilter {
public:
    /// For this process: its own number is part of the filter.
    explicit SyscallFilter(Reach reach);
    /// Puts the filter on all threads, for good. False where the kernel has no filters or this is no known processor.
    [[nodiscard]] bool Apply() const;

private:
    void CheckArchitecture();
    void Refuse(long call, int error);
    /// Refused unless the argument has one of `bits`.
    void RefuseWithout(long call, unsigned argument, std::uint32_t bits, int error);
    /// Refused unless the argument is `value`, or `other`.
    void RefuseUnless(long call, unsigned argument, std::uint32_t value, std::uint32_t other, int error);
    void RefuseIf(long call, unsigned argument, std::uint32_t value, int error);
    /// What an argument must be, as far as `mask` shows it.
    struct Demand {
        unsigned argument = 0;
        std::uint32_t mask = 0;
        std::vector<std::uint32_t> values{};
        bool ofUpperHalf = false;
    };
    /// Refused unless each demand is met.
    void Demands(long call, std::vector<Demand> const &demands, int error);
    void AllowHandedSocketsAlone();

    std::vector<sock_filter> m_program;
};

} // namespace zelvar::reader
