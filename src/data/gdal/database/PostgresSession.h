#pragma once

#include "zelvar/base/Report.h"
#include "zelvar/data/StopSignal.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

struct pg_conn;
struct pg_result;

namespace zelvar::gdal {

/// The rows that a statement has brought, as texts of the database.
class PostgresRows {
public:
    PostgresRows() = default;
    explicit PostgresRows(pg_result *result) : m_result(result) {}
    [[nodiscard]] explicit operator bool() const { return m_result != nullptr; }

    [[nodiscard]] int Count() const;
    [[nodiscard]] int Columns() const;
    [[nodiscard]] bool IsNull(int row, int column) const;
    [[nodiscard]] std::string_view Text(int row, int column) const; ///< empty for null
    [[nodiscard]] std::int64_t Number(int row, int column) const;   ///< 0 for what is none
    [[nodiscard]] bool Yes(int row, int column) const { return Text(row, column) == "t"; }

private:
    struct Clear {
        void operator()(pg_result *result) const;
    };
    std::unique_ptr<pg_result, Clear> m_result;
};

/// A connection to the PostgreSQL server that this process, a reader, serves: where it is, who logs in and with what
/// stands in the environment (`reader/DatabaseEnvironment`), and so does that the session only reads and how long a
/// statement may take. It stays on the thread that opened it.
class PostgresSession {
public:
    /// Null, with the reason in `*error` (may be null). `stop` may be null and must outlive the session.
    [[nodiscard]] static std::unique_ptr<PostgresSession> Open(StopSignal const *stop, DError *error);
    ~PostgresSession();
    PostgresSession(PostgresSession const &) = delete;
    PostgresSession &operator=(PostgresSession const &) = delete;

    /// One statement with its parameters; `subject` is what the reason is about. Without rows if it fails or is
    /// stopped; then the session may be of no more use.
    [[nodiscard]] PostgresRows Ask(DString const &subject, char const *statement,
                                   std::vector<DString> const &parameters, DError *error);
    /// Statements without parameters, as one message; the rows are those of the last.
    [[nodiscard]] PostgresRows AskAll(DString const &subject, DString const &statements, DError *error);
    /// Whether the server can still be asked, as far as is known.
    [[nodiscard]] bool IsAlive() const;
    /// From now on another signal stops it.
    void StopBy(StopSignal const *stop) { m_stop = stop; }
    /// A name as statements have it.
    [[nodiscard]] static DString Quoted(DString const &name);

private:
    using Clock = std::chrono::steady_clock;
    PostgresSession(pg_conn *connection, StopSignal const *stop) : m_connection(connection), m_stop(stop) {}
    [[nodiscard]] static std::unique_ptr<PostgresSession> OpenDatabase(char const *name, StopSignal const *stop,
                                                                       DError &error);
    [[nodiscard]] static DString DatabasesThere(StopSignal const *stop);
    [[nodiscard]] bool Connect(DError &error);
    /// False if the time is over or it was stopped.
    [[nodiscard]] bool WaitFor(short events, std::optional<Clock::time_point> limit) const;
    [[nodiscard]] PostgresRows Receive(DString const &subject, bool isSent, DError *error);
    [[nodiscard]] PostgresRows Fail(DString const &subject, pg_result const *result, DError *error) const;
    [[nodiscard]] bool IsStopped() const;

    struct Finish {
        void operator()(pg_conn *connection) const;
    };
    std::unique_ptr<pg_conn, Finish> m_connection;
    StopSignal const *m_stop; ///< not owned, may be null
};

/// One statement about what is in the catalogue, by a session that this thread keeps: opened when it is needed, and
/// again when it was lost meanwhile. Without rows, with the reason in `*error`, if it fails or is stopped.
[[nodiscard]] PostgresRows AskCatalogue(DString const &subject, char const *statement,
                                        std::vector<DString> const &parameters, StopSignal const *stop, DError *error);

} // namespace zelvar::gdal
