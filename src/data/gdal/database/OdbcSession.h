#pragma once

#include "zelvar/base/Report.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace zelvar::gdal {

class OdbcStatement;

/// A connection to the ODBC data source that this process, a reader, serves. Its driver comes from the system's lists
/// of drivers and data sources; it is asked to read only, and nothing but questions is sent. It stays on the thread
/// that opened it, and is held by the statements that were made of it.
class OdbcSession : public std::enable_shared_from_this<OdbcSession> {
public:
    /// Null, with the reason in `*error` (may be null).
    [[nodiscard]] static std::shared_ptr<OdbcSession> Open(DError *error);
    ~OdbcSession();
    OdbcSession(OdbcSession const &) = delete;
    OdbcSession &operator=(OdbcSession const &) = delete;

    /// The rows of a statement, or null with the reason in `*error` (may be null); `subject` is what it is about.
    [[nodiscard]] std::unique_ptr<OdbcStatement> Ask(DString const &subject, DString const &statement, DError *error);
    /// Those of the catalogue's list of tables and views: catalog, schema, name, type and remarks. Where there are
    /// catalogs and no schemas, of the catalog that the data source names, if it names one.
    [[nodiscard]] std::unique_ptr<OdbcStatement> Tables(DString const &subject, DError *error);
    /// A name as the data source's statements have it; as it is where they know no quotes.
    [[nodiscard]] DString Quoted(DString const &name) const;
    /// Whether tables are named with their catalog where others have a schema.
    [[nodiscard]] bool HasCatalogsAlone() const;
    /// Whether some of a table's rows can be asked for by "limit", as MySQL and MariaDB have it.
    [[nodiscard]] bool KnowsLimits() const;
    /// The column that is the primary key of a table by itself; empty where there is none.
    [[nodiscard]] DString KeyOf(DString const &catalog, DString const &table);

private:
    friend class OdbcStatement;
    OdbcSession() = default;
    [[nodiscard]] bool Connect(DError *error);
    [[nodiscard]] DString OwnCatalog() const;
    [[nodiscard]] std::unique_ptr<OdbcStatement> NewStatement();

    void *m_environment = nullptr; ///< handles of the library
    void *m_connection = nullptr;
    bool m_isConnected = false;
};

/// How a value is wanted.
enum class OdbcForm {
    Text,
    Digits, ///< bytes, two digits each: some drivers give them as they are where texts are asked for
    Flag,   ///< "1" or "0", for the same reason
};

/// Rows that a data source gives one after the other.
class OdbcStatement {
public:
    struct Column {
        DString name{};
        int type = 0; ///< of the library's numbers
    };
    OdbcStatement(std::shared_ptr<OdbcSession> session, void *statement)
        : m_session(std::move(session)), m_statement(statement) {}
    ~OdbcStatement();
    OdbcStatement(OdbcStatement const &) = delete;
    OdbcStatement &operator=(OdbcStatement const &) = delete;

    [[nodiscard]] std::vector<Column> Columns() const;
    enum class Next { Row, End, Failed };
    [[nodiscard]] Next Step();
    /// A value of the row, by the number of its column from 0 on, in their order; empty for null, cut at `most` bytes
    /// of what is stored.
    [[nodiscard]] DString Value(int column, OdbcForm form, std::size_t most);
    [[nodiscard]] DString Text(int column, std::size_t most) { return Value(column, OdbcForm::Text, most); }

private:
    friend class OdbcSession;
    std::shared_ptr<OdbcSession> m_session;
    void *m_statement;
};

} // namespace zelvar::gdal
