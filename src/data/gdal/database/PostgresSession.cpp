#include "zelvar/data/gdal/database/PostgresSession.h"

#include "zelvar/data/gdal/database/DatabaseAddress.h"
#include "zelvar/data/gdal/database/PostgresCauses.h"

#include <algorithm>
#include <charconv>

#include <libpq-fe.h>
#include <poll.h>

namespace zelvar::gdal {

namespace {

using std::chrono::milliseconds;

constexpr std::chrono::seconds kLoginTime{15}; // of a server that has taken the connection
constexpr milliseconds kLook{20};              // between two looks at the stop signal

DError Because(DString const &subject, char const *why, DError::Cause cause) {
    DError error;
    error.Set("\"" + subject + "\": " + why, cause);
    return error;
}

} // namespace

void PostgresRows::Clear::operator()(pg_result *result) const { PQclear(result); }

int PostgresRows::Count() const { return m_result == nullptr ? 0 : PQntuples(m_result.get()); }
int PostgresRows::Columns() const { return m_result == nullptr ? 0 : PQnfields(m_result.get()); }
bool PostgresRows::IsNull(int row, int column) const { return PQgetisnull(m_result.get(), row, column) != 0; }

std::string_view PostgresRows::Text(int row, int column) const {
    return {PQgetvalue(m_result.get(), row, column),
            static_cast<std::size_t>(PQgetlength(m_result.get(), row, column))};
}

std::int64_t PostgresRows::Number(int row, int column) const {
    std::string_view const text = Text(row, column);
    std::int64_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

void PostgresSession::Finish::operator()(pg_conn *connection) const { PQfinish(connection); }

PostgresSession::~PostgresSession() = default;

bool PostgresSession::IsStopped() const { return m_stop != nullptr && m_stop->load(std::memory_order_relaxed); }

bool PostgresSession::IsAlive() const { return PQstatus(m_connection.get()) == CONNECTION_OK; }

bool PostgresSession::WaitFor(short events, std::optional<Clock::time_point> limit) const {
    while (!IsStopped() && (!limit || Clock::now() < *limit)) {
        pollfd file{.fd = PQsocket(m_connection.get()), .events = events, .revents = 0};
        if (poll(&file, 1, static_cast<int>(kLook.count())) > 0)
            return true;
    }
    return false;
}

std::unique_ptr<PostgresSession> PostgresSession::Open(StopSignal const *stop, DError *error) {
    DError failure;
    std::unique_ptr<PostgresSession> session = OpenDatabase(nullptr, stop, failure);
    if (session == nullptr && error != nullptr) {
        if (failure.Why() == DError::Cause::Missing)
            failure.Set(failure.Text() + DatabasesThere(stop), failure.Why());
        *error = std::move(failure);
    }
    return session;
}

std::unique_ptr<PostgresSession> PostgresSession::OpenDatabase(char const *name, StopSignal const *stop,
                                                               DError &error) {
    char const *const keywords[] = {name == nullptr ? nullptr : "dbname", nullptr};
    char const *const values[] = {name, nullptr};
    constexpr int expandName = 0;
    std::unique_ptr<PostgresSession> session(
        new PostgresSession(PQconnectStartParams(keywords, values, expandName), stop));
    return session->m_connection != nullptr && session->Connect(error) ? std::move(session) : nullptr;
}

/// "; there are a, b": those that the user may connect to, by the one that every server is made with. Empty if that is
/// not to be found out.
DString PostgresSession::DatabasesThere(StopSignal const *stop) {
    DError ignored;
    std::unique_ptr<PostgresSession> const session = OpenDatabase("postgres", stop, ignored);
    if (session == nullptr)
        return {};
    PostgresRows const rows =
        session->Ask({},
                     "select datname from pg_catalog.pg_database where datallowconn and not datistemplate and"
                     " pg_catalog.has_database_privilege(datname, 'CONNECT') order by 1 limit 20",
                     {}, nullptr);
    DString text;
    for (int row = 0; row < rows.Count(); ++row)
        text.append(text.empty() ? "; there are " : ", ").append(rows.Text(row, 0));
    return text;
}

bool PostgresSession::Connect(DError &error) {
    ConnectionTerms const *const terms = OwnDatabase(ConnectionKind::PostgreSql);
    DString const subject = terms == nullptr ? DString() : terms->id;
    pg_conn *const connection = m_connection.get();
    // Of a failed login only the text has what the server's error is in every language.
    PQsetErrorVerbosity(connection, PQERRORS_VERBOSE);
    PQsetNoticeProcessor(
        connection, [](void *, char const *) {}, nullptr);
    auto const limit = Clock::now() + kLoginTime;
    bool isInTime = true;
    auto state = PQstatus(connection) == CONNECTION_BAD ? PGRES_POLLING_FAILED : PGRES_POLLING_WRITING;
    while (isInTime && state != PGRES_POLLING_OK && state != PGRES_POLLING_FAILED) {
        isInTime = WaitFor(state == PGRES_POLLING_READING ? POLLIN : POLLOUT, limit);
        if (isInTime)
            state = PQconnectPoll(connection);
    }
    if (isInTime && state == PGRES_POLLING_OK)
        return true;
    std::string_view const message = PQerrorMessage(connection);
    if (IsStopped())
        error = Because(subject, "stopped", DError::Cause::Unknown);
    else if (!isInTime)
        error = Because(subject, "its server takes the connection and says nothing", DError::Cause::NoAnswer);
    else
        error = ErrorOfPostgres(subject, PostgresStateIn(message), message);
    return false;
}

PostgresRows PostgresSession::Ask(DString const &subject, char const *statement, std::vector<DString> const &parameters,
                                  DError *error) {
    std::vector<char const *> values;
    values.reserve(parameters.size());
    for (DString const &parameter : parameters)
        values.push_back(parameter.c_str());
    constexpr int asText = 0;
    bool const isSent = PQsendQueryParams(m_connection.get(), statement, static_cast<int>(values.size()), nullptr,
                                          values.data(), nullptr, nullptr, asText) == 1;
    return Receive(subject, isSent, error);
}

PostgresRows PostgresSession::AskAll(DString const &subject, DString const &statements, DError *error) {
    return Receive(subject, PQsendQuery(m_connection.get(), statements.c_str()) == 1, error);
}

PostgresRows PostgresSession::Receive(DString const &subject, bool isSent, DError *error) {
    pg_conn *const connection = m_connection.get();
    if (!isSent)
        return Fail(subject, nullptr, error);
    PostgresRows last;
    while (true) {
        while (PQisBusy(connection) != 0) {
            if (!WaitFor(POLLIN, std::nullopt)) { // it was stopped: the server hears of it when the connection ends
                m_connection.reset();
                if (error != nullptr)
                    *error = Because(subject, "stopped", DError::Cause::Unknown);
                return {};
            }
            if (PQconsumeInput(connection) == 0)
                return Fail(subject, nullptr, error);
        }
        pg_result *const result = PQgetResult(connection);
        if (result == nullptr)
            break;
        PostgresRows rows(result);
        ExecStatusType const status = PQresultStatus(result);
        if (status != PGRES_TUPLES_OK && status != PGRES_COMMAND_OK) {
            PostgresRows failed = Fail(subject, result, error);
            while (pg_result *const rest = PQgetResult(connection))
                PQclear(rest);
            return failed;
        }
        last = std::move(rows);
    }
    return last ? std::move(last) : Fail(subject, nullptr, error);
}

PostgresRows PostgresSession::Fail(DString const &subject, pg_result const *result, DError *error) const {
    if (error == nullptr)
        return {};
    auto const field = [&](int code) {
        char const *const text = result == nullptr ? nullptr : PQresultErrorField(result, code);
        return std::string_view(text == nullptr ? "" : text);
    };
    std::string_view const message = field(PG_DIAG_MESSAGE_PRIMARY);
    *error = ErrorOfPostgres(subject, field(PG_DIAG_SQLSTATE),
                             message.empty() ? std::string_view(PQerrorMessage(m_connection.get())) : message);
    return {};
}

DString PostgresSession::Quoted(DString const &name) {
    DString quoted = "\"";
    for (char const c : name)
        quoted.append(c == '"' ? 2 : 1, c);
    return quoted + "\"";
}

PostgresRows AskCatalogue(DString const &subject, char const *statement, std::vector<DString> const &parameters,
                          StopSignal const *stop, DError *error) {
    thread_local std::unique_ptr<PostgresSession> session;
    bool isNew = false;
    if (session == nullptr || !session->IsAlive()) {
        isNew = true;
        session = PostgresSession::Open(stop, error);
    }
    if (session == nullptr)
        return {};
    session->StopBy(stop);
    PostgresRows rows = session->Ask(subject, statement, parameters, error);
    bool const isStopped = stop != nullptr && stop->load(std::memory_order_relaxed);
    // The server may have been started anew since the last question.
    if (rows || isNew || isStopped || session->IsAlive())
        return rows;
    session = PostgresSession::Open(stop, error);
    return session == nullptr ? PostgresRows() : session->Ask(subject, statement, parameters, error);
}

} // namespace zelvar::gdal
