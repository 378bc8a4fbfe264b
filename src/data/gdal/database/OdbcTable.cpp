#include "zelvar/data/gdal/database/OdbcTable.h"

#include <algorithm>

#include <sql.h>
#include <sqlext.h>

namespace zelvar::gdal {

namespace {

constexpr std::size_t kMostBytes = std::size_t{64} * 1024; // of a value that is bytes
constexpr int kOfPage = 2000;                              // rows

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
    if (table->m_session == nullptr)
        return nullptr;
    if (!address.table.empty() && table->m_session->KnowsLimits())
        if (DString const key = table->m_session->KeyOf(address.schema, address.table); !key.empty())
            table->m_key = table->m_session->Quoted(key);
    if (!table->Begin(error))
        return nullptr;
    if (!table->TakeColumns()) {
        table->m_key.clear();
        if (!table->Begin(error) || !table->TakeColumns())
            return nullptr;
    }
    if (!table->m_columns.empty())
        return table;
    if (error != nullptr)
        error->Set("\"" + address.ToText() + "\" has no columns", DError::Cause::NotSupported);
    return nullptr;
}

/// False if the key is none that pages can go by.
bool OdbcTable::TakeColumns() {
    std::vector<OdbcStatement::Column> columns = m_rows->Columns();
    if (!m_key.empty()) { // it stands behind the others once more
        if (columns.empty() || TypeOf(columns.back().type) != ADICol_Int || columns.back().type == SQL_BIT)
            return false;
        columns.pop_back();
    }
    for (OdbcStatement::Column const &column : columns) {
        ADIColumn shown{.name = {}, .type = TypeOf(column.type)};
        AppendText(shown.name, column.name, ADIDriver::kMostCellBytes);
        m_columns.push_back(std::move(shown));
        m_forms.push_back(FormOf(column.type));
    }
    return true;
}

bool OdbcTable::Begin(DError *error) {
    // What has no schemas has its tables where those would be.
    DString name = m_session->Quoted(m_address.schema);
    if (!m_address.table.empty())
        name.append(".").append(m_session->Quoted(m_address.table));
    DString statement = m_key.empty() ? "select * from " + name : "select *, " + m_key + " from " + name;
    if (m_page > 0)
        statement += " where " + m_key + " > " + m_pages[m_page];
    if (!m_key.empty())
        statement += " order by " + m_key + " limit " + std::to_string(kOfPage);
    m_rows = m_session->Ask(m_address.ToText(), statement, error);
    m_isAtEnd = false;
    m_inPage = 0;
    return m_rows != nullptr;
}

/// The statement still stands on the page's last row.
bool OdbcTable::TurnPage() {
    constexpr std::size_t mostDigits = 32;
    DString key = m_rows->Text(static_cast<int>(m_columns.size()), mostDigits);
    m_rows.reset();
    if (key.empty() || key.find_first_not_of("-0123456789") != DString::npos)
        return false;
    m_pages.resize(++m_page);
    m_pages.push_back(std::move(key));
    return true;
}

std::int64_t OdbcTable::GoBack(std::int64_t row) {
    m_rows.reset();
    m_isAtEnd = false;
    m_page = std::min(m_pages.size() - 1, static_cast<std::size_t>(row / kOfPage));
    return static_cast<std::int64_t>(m_page) * kOfPage;
}

bool OdbcTable::Step() {
    m_hasFailed = false;
    if (m_isAtEnd)
        return false;
    bool const isPageDone = m_rows != nullptr && !m_key.empty() && m_inPage == kOfPage;
    if (isPageDone && !TurnPage()) {
        m_hasFailed = true;
        return false;
    }
    DError error;
    if (m_rows == nullptr && !Begin(&error)) {
        Report::TraceMessage(Report::kTraceOpen, "%s", error.Text().c_str());
        m_hasFailed = true;
        return false;
    }
    OdbcStatement::Next const next = m_rows->Step();
    m_hasFailed = next == OdbcStatement::Next::Failed;
    m_isAtEnd = next == OdbcStatement::Next::End;
    ++m_inPage;
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
