#include "zelvar/data/gdal/database/OdbcSession.h"

#include "zelvar/data/gdal/database/DatabaseAddress.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include <sql.h>
#include <sqlext.h>

namespace zelvar::gdal {

namespace {

using Cause = DError::Cause;

constexpr SQLUINTEGER kLoginTime = 15;     // seconds
constexpr SQLUINTEGER kStatementTime = 60; // seconds

/// What the states of the standard stand for: the first that fits counts.
struct StateCause {
    std::string_view beginning;
    Cause cause;
};
constexpr StateCause kStates[] = {
    {"IM002", Cause::Missing},      // no such data source
    {"IM003", Cause::NotSupported}, // its driver cannot be loaded
    {"01000", Cause::NotSupported}, // nor found, which is told as a warning
    {"IM", Cause::NotSupported},    {"28", Cause::NotPermitted}, {"42S02", Cause::Missing},
    {"42S22", Cause::Missing},      {"HYT", Cause::Late},        {"08", Cause::NoAnswer},
    {"HYC00", Cause::NotSupported}, {"HY001", Cause::TooLarge},
};

bool IsGood(SQLRETURN result) { return result == SQL_SUCCESS || result == SQL_SUCCESS_WITH_INFO; }

SQLCHAR *Chars(DString const &text) {
    return reinterpret_cast<SQLCHAR *>(
        const_cast<char *>(text.c_str())); // NOLINT(cppcoreguidelines-pro-type-const-cast): only read
}

/// The library takes numbers as pointers.
SQLPOINTER Number(SQLUINTEGER value) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): it is its interface
    return reinterpret_cast<SQLPOINTER>(std::uintptr_t{value});
}

void Tell(DString const &subject, SQLSMALLINT kind, SQLHANDLE handle, DError *error) {
    std::array<SQLCHAR, SQL_SQLSTATE_SIZE + 1> state{};
    std::array<SQLCHAR, 1024> message{};
    SQLSMALLINT size = 0;
    constexpr SQLSMALLINT first = 1;
    bool const isTold = IsGood(SQLGetDiagRec(kind, handle, first, state.data(), nullptr, message.data(),
                                             static_cast<SQLSMALLINT>(message.size()), &size));
    std::string_view const code = isTold ? reinterpret_cast<char const *>(state.data()) : "";
    DString const words(Trimmed(isTold ? reinterpret_cast<char const *>(message.data()) : ""));
    auto const *const known =
        std::ranges::find_if(kStates, [&](StateCause const &row) { return code.starts_with(row.beginning); });
    if (error != nullptr)
        error->Set("\"" + subject + "\": " + (words.empty() ? DString("the data source does not say why") : words),
                   known == std::end(kStates) ? Cause::Server : known->cause);
}

DString ValueOf(std::map<DString, DString> const &texts, char const *name) {
    auto const at = texts.find(name);
    return at == texts.end() ? DString() : at->second;
}

/// As connection texts have it: between braces where it holds their marks.
DString Value(DString const &value) {
    if (value.find_first_of(";{}=[]()?*!@ ") == DString::npos)
        return value;
    DString text = "{";
    for (char const c : value)
        text.append(c == '}' ? 2 : 1, c);
    return text + "}";
}

DString HexOf(std::string_view bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    DString text;
    text.reserve(2 * bytes.size());
    for (char const c : bytes) {
        auto const byte = static_cast<unsigned char>(c);
        text.append(1, digits[byte >> 4U]).append(1, digits[byte & 0xFU]);
    }
    return text;
}

/// What the list of data sources says of ours; empty if nothing.
DString TextOf(ConnectionTerms const &terms) {
    constexpr std::string_view prefix = "odbc.";
    DString text;
    for (auto const &[key, value] : terms.options)
        if (key.starts_with(prefix) && !value.empty())
            text.append(key.substr(prefix.size())).append("=").append(Value(value)).append(";");
    return text;
}

} // namespace

std::shared_ptr<OdbcSession> OdbcSession::Open(DError *error) {
    std::shared_ptr<OdbcSession> session(new OdbcSession);
    return session->Connect(error) ? session : nullptr;
}

bool OdbcSession::Connect(DError *error) {
    ConnectionTerms const *const terms = OwnDatabase(ConnectionKind::Odbc);
    if (terms == nullptr)
        return false;
    if (!IsGood(SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &m_environment)))
        return false;
    SQLSetEnvAttr(m_environment, SQL_ATTR_ODBC_VERSION, Number(SQL_OV_ODBC3), 0);
    if (!IsGood(SQLAllocHandle(SQL_HANDLE_DBC, m_environment, &m_connection))) {
        Tell(terms->id, SQL_HANDLE_ENV, m_environment, error);
        return false;
    }
    SQLSetConnectAttr(m_connection, SQL_ATTR_LOGIN_TIMEOUT, Number(kLoginTime), 0);
    SQLSetConnectAttr(m_connection, SQL_ATTR_ACCESS_MODE, Number(SQL_MODE_READ_ONLY), 0);
    DString const source = ValueOf(terms->options, "dsn");
    DString const user = ValueOf(terms->options, "user");
    DString const password = ValueOf(terms->secrets, "password");
    DString text = TextOf(*terms);
    if (text.empty()) {
        m_isConnected = IsGood(SQLConnect(m_connection, Chars(source), SQL_NTS, user.empty() ? nullptr : Chars(user),
                                          SQL_NTS, password.empty() ? nullptr : Chars(password), SQL_NTS));
    } else {
        for (auto const &[key, value] : {std::pair{"UID", user}, {"PWD", password}})
            if (!value.empty())
                text.append(key).append("=").append(Value(value)).append(";");
        SQLSMALLINT size = 0;
        m_isConnected = IsGood(
            SQLDriverConnect(m_connection, nullptr, Chars(text), SQL_NTS, nullptr, 0, &size, SQL_DRIVER_NOPROMPT));
        explicit_bzero(text.data(), text.size());
    }
    if (m_isConnected)
        return true;
    Tell(terms->id, SQL_HANDLE_DBC, m_connection, error);
    if (error != nullptr && error->Why() == Cause::NotPermitted && password.empty())
        error->Set(DString(error->Text()), Cause::NeedsPassword); // whoever is refused without one
    return m_isConnected;
}

OdbcSession::~OdbcSession() {
    if (m_isConnected)
        SQLDisconnect(m_connection);
    if (m_connection != nullptr)
        SQLFreeHandle(SQL_HANDLE_DBC, m_connection);
    if (m_environment != nullptr)
        SQLFreeHandle(SQL_HANDLE_ENV, m_environment);
}

std::unique_ptr<OdbcStatement> OdbcSession::NewStatement() {
    SQLHANDLE statement = nullptr;
    if (!IsGood(SQLAllocHandle(SQL_HANDLE_STMT, m_connection, &statement)))
        return nullptr;
    SQLSetStmtAttr(statement, SQL_ATTR_QUERY_TIMEOUT, Number(kStatementTime), 0);
    return std::make_unique<OdbcStatement>(shared_from_this(), statement);
}

std::unique_ptr<OdbcStatement> OdbcSession::Ask(DString const &subject, DString const &statement, DError *error) {
    auto asked = NewStatement();
    if (asked != nullptr && IsGood(SQLExecDirect(asked->m_statement, Chars(statement), SQL_NTS)))
        return asked;
    Tell(subject, asked == nullptr ? SQL_HANDLE_DBC : SQL_HANDLE_STMT,
         asked == nullptr ? m_connection : asked->m_statement, error);
    return nullptr;
}

std::unique_ptr<OdbcStatement> OdbcSession::Tables(DString const &subject, DError *error) {
    auto asked = NewStatement();
    DString const any = "%";
    DString const types = "TABLE,VIEW";
    DString const catalog = HasCatalogsAlone() ? OwnCatalog() : DString();
    if (asked != nullptr && IsGood(SQLTables(asked->m_statement, catalog.empty() ? nullptr : Chars(catalog),
                                             static_cast<SQLSMALLINT>(catalog.size()), nullptr, 0, Chars(any), SQL_NTS,
                                             Chars(types), SQL_NTS)))
        return asked;
    Tell(subject, asked == nullptr ? SQL_HANDLE_DBC : SQL_HANDLE_STMT,
         asked == nullptr ? m_connection : asked->m_statement, error);
    return nullptr;
}

DString OdbcSession::Quoted(DString const &name) const {
    std::array<char, 8> mark{};
    SQLSMALLINT size = 0;
    bool const isTold = IsGood(
        SQLGetInfo(m_connection, SQL_IDENTIFIER_QUOTE_CHAR, mark.data(), static_cast<SQLSMALLINT>(mark.size()), &size));
    char const quote = isTold ? mark.front() : '"';
    if (quote == ' ' || quote == '\0')
        return name;
    DString quoted(1, quote);
    for (char const c : name)
        quoted.append(c == quote ? 2 : 1, c);
    return quoted + quote;
}

bool OdbcSession::HasCatalogsAlone() const {
    SQLUINTEGER schemas = 0;
    SQLUINTEGER catalogs = 0;
    SQLGetInfo(m_connection, SQL_SCHEMA_USAGE, &schemas, sizeof schemas, nullptr);
    SQLGetInfo(m_connection, SQL_CATALOG_USAGE, &catalogs, sizeof catalogs, nullptr);
    return schemas == 0 && (catalogs & SQL_CU_DML_STATEMENTS) != 0;
}

bool OdbcSession::KnowsLimits() const {
    std::array<char, 64> name{};
    SQLSMALLINT size = 0;
    bool const isTold =
        IsGood(SQLGetInfo(m_connection, SQL_DBMS_NAME, name.data(), static_cast<SQLSMALLINT>(name.size()), &size));
    return isTold && (EqualNoCase(name.data(), "MariaDB") || EqualNoCase(name.data(), "MySQL"));
}

DString OdbcSession::KeyOf(DString const &catalog, DString const &table) {
    auto const asked = NewStatement();
    if (asked == nullptr ||
        !IsGood(SQLPrimaryKeys(asked->m_statement, Chars(catalog), static_cast<SQLSMALLINT>(catalog.size()), nullptr, 0,
                               Chars(table), static_cast<SQLSMALLINT>(table.size()))))
        return {};
    constexpr int column = 3;
    constexpr std::size_t longest = 1024;
    if (asked->Step() != OdbcStatement::Next::Row)
        return {};
    DString key = asked->Text(column, longest);
    return asked->Step() == OdbcStatement::Next::End ? key : DString();
}

DString OdbcSession::OwnCatalog() const {
    std::array<char, 256> name{};
    SQLINTEGER size = 0;
    bool const isTold = IsGood(SQLGetConnectAttr(m_connection, SQL_ATTR_CURRENT_CATALOG, name.data(),
                                                 static_cast<SQLINTEGER>(name.size() - 1), &size));
    return isTold && DString(name.data()) != "null" ? DString(name.data()) : DString(); // some say so for none
}

OdbcStatement::~OdbcStatement() { SQLFreeHandle(SQL_HANDLE_STMT, m_statement); }

std::vector<OdbcStatement::Column> OdbcStatement::Columns() const {
    SQLSMALLINT count = 0;
    std::vector<Column> columns;
    if (!IsGood(SQLNumResultCols(m_statement, &count)))
        return columns;
    for (SQLUSMALLINT i = 1; i <= static_cast<SQLUSMALLINT>(std::max<SQLSMALLINT>(count, 0)); ++i) {
        std::array<SQLCHAR, 1024> name{};
        SQLSMALLINT size = 0;
        SQLSMALLINT type = 0;
        SQLULEN precision = 0;
        SQLSMALLINT digits = 0;
        SQLSMALLINT nullable = 0;
        SQLDescribeCol(m_statement, i, name.data(), static_cast<SQLSMALLINT>(name.size()), &size, &type, &precision,
                       &digits, &nullable);
        columns.push_back({.name = reinterpret_cast<char const *>(name.data()), .type = type});
    }
    return columns;
}

OdbcStatement::Next OdbcStatement::Step() {
    SQLRETURN const result = SQLFetch(m_statement);
    return result == SQL_NO_DATA ? Next::End : IsGood(result) ? Next::Row : Next::Failed;
}

DString OdbcStatement::Value(int column, OdbcForm form, std::size_t most) {
    DString text;
    std::array<char, 4096> piece{};
    SQLLEN size = 0;
    int const wanted = form == OdbcForm::Text ? SQL_C_CHAR : form == OdbcForm::Digits ? SQL_C_BINARY : SQL_C_BIT;
    std::size_t const room = piece.size() - (form == OdbcForm::Text ? 1 : 0); // texts come with a zero
    while (text.size() < most) {
        SQLRETURN const result =
            SQLGetData(m_statement, static_cast<SQLUSMALLINT>(column + 1), static_cast<SQLSMALLINT>(wanted),
                       piece.data(), static_cast<SQLLEN>(piece.size()), &size);
        if (!IsGood(result) || size == SQL_NULL_DATA)
            break;
        bool const isCut = size == SQL_NO_TOTAL || size > static_cast<SQLLEN>(room);
        text.append(piece.data(), isCut ? room : static_cast<std::size_t>(std::max<SQLLEN>(size, 0)));
        if (!isCut)
            break;
    }
    text.resize(std::min(text.size(), most));
    if (form == OdbcForm::Flag)
        return text.empty() ? text : DString(text.front() == 0 ? "0" : "1");
    return form == OdbcForm::Digits ? HexOf(text) : text;
}

} // namespace zelvar::gdal
