#include "zelvar/data/gdal/database/OdbcTable.h"

#include <sql.h>
#include <sqlext.h>

namespace zelvar::gdal {

namespace {

constexpr std::size_t kMostBytes = std::size_t{64} * 1024; // of a value that is bytes

ADIColType TypeOf(int type) {
    switch (type) {
    case SQL_BIT:
    case SQL_TINYINT:
    case SQL_SMALLINT:
    case SQL_INTEGER:
    case SQL_BIGINT:
        return ADICol_Int;
    case SQL_REAL:
    case SQL_FLOAT:
    case SQL_DOUBLE:
    case SQL_DECIMAL:
    case SQL_NUMERIC:
        return ADICol_Double;
    default:
        return ADICol_String;
    }
}

OdbcForm FormOf(int type) {
    if (type == SQL_BINARY || type == SQL_VARBINARY || type == SQL_LONGVARBINARY)
        return OdbcForm::Digits;
    return type == SQL_BIT ? OdbcForm::Flag : OdbcForm::Text;
}

} // namespace

std::unique_ptr<OdbcTable> OdbcTable::Open(DatabaseAddress const &address, StopSignal const *stop, DError *error) {
    std::unique_ptr<OdbcTable> table(new OdbcTable(address, stop));
    if (!table->Names(address.schema, error))
        return nullptr;
    table->m_session = OdbcSession::Open(error);
    if (table->m_session == nullptr || !table->Begin(error))
        return nullptr;
    for (OdbcStatement::Column const &column : table->m_rows->Columns()) {
        ADIColumn shown{.name = {}, .type = TypeOf(column.type)};
        AppendText(shown.name, column.name, ADIDriver::kMostCellBytes);
        table->m_columns.push_back(std::move(shown));
        table->m_forms.push_back(FormOf(column.type));
    }
    if (!table->m_columns.empty())
        return table;
    if (error != nullptr)
        error->Set("\"" + address.ToText() + "\" has no columns", DError::Cause::NotSupported);
    return nullptr;
}

bool OdbcTable::Begin(DError *error) {
    // What has no schemas has its tables where those would be.
    DString name = m_session->Quoted(m_address.schema);
    if (!m_address.table.empty())
        name.append(".").append(m_session->Quoted(m_address.table));
    m_rows = m_session->Ask(m_address.ToText(), "select * from " + name, error);
    m_isAtEnd = false;
    return m_rows != nullptr;
}

std::int64_t OdbcTable::GoBack(std::int64_t) {
    m_rows.reset();
    m_isAtEnd = false;
    return 0;
}

bool OdbcTable::Step() {
    m_hasFailed = false;
    if (m_isAtEnd)
        return false;
    DError error;
    if (m_rows == nullptr && !Begin(&error)) {
        Report::TraceMessage(Report::kTraceOpen, "%s", error.Text().c_str());
        m_hasFailed = true;
        return false;
    }
    OdbcStatement::Next const next = m_rows->Step();
    m_hasFailed = next == OdbcStatement::Next::Failed;
    m_isAtEnd = next == OdbcStatement::Next::End;
    if (next != OdbcStatement::Next::Row)
        m_rows.reset();
    return next == OdbcStatement::Next::Row;
}

bool OdbcTable::Append(ADIRows &rows) const {
    std::size_t const begin = rows.texts.size();
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        std::size_t const most = m_forms[i] == OdbcForm::Digits ? kMostBytes : ADIDriver::kMostCellBytes;
        AppendText(rows.texts, m_rows->Value(static_cast<int>(i), m_forms[i], most), 2 * most);
        if (rows.texts.size() - begin > ADIDriver::kMostRowBytes)
            return false;
        rows.ends.push_back(static_cast<std::uint32_t>(rows.texts.size()));
    }
    return true;
}

} // namespace zelvar::gdal
