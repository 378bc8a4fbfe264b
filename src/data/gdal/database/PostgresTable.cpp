#include "zelvar/data/gdal/database/PostgresTable.h"

#include "zelvar/data/gdal/database/PostgresCatalogue.h"

#include <algorithm>

namespace zelvar::gdal {

namespace {

constexpr int kFirstBatch = 50;
constexpr int kMostRows = 5000;                              // of a batch
constexpr std::int64_t kBatchBytes = std::int64_t{4} << 20U; // that a batch should have, by those before it
constexpr int kMostBytes = 64 * 1024;                        // that are asked for of a value that is bytes

/// Columns but for those of places and pictures, which are no attributes; types by the names of the catalogue, of
/// domains by those that they are made of.
constexpr char kColumns[] =
    "select a.attname, t.typname, t.typtype,"
    " coalesce((select pg_catalog.array_position(i.indkey::pg_catalog.int2[], a.attnum) from pg_catalog.pg_index i"
    " where i.indrelid = c.oid and i.indisprimary limit 1), -1)"
    " from pg_catalog.pg_class c join pg_catalog.pg_namespace n on n.oid = c.relnamespace"
    " join pg_catalog.pg_attribute a on a.attrelid = c.oid and a.attnum > 0 and not a.attisdropped"
    " join pg_catalog.pg_type o on o.oid = a.atttypid"
    " join pg_catalog.pg_type t on t.oid = case when o.typtype = 'd' then o.typbasetype else o.oid end"
    " where n.nspname = $1 and c.relname = $2 and t.typname not in ('geometry', 'geography', 'raster')"
    " order by a.attnum";

enum Field { kName, kType, kTypeType, kKey };

struct TypeRow {
    std::string_view name;
    ADIColType type;
};
constexpr TypeRow kTypes[] = {
    {"int2", ADICol_Int}, {"int4", ADICol_Int},      {"int8", ADICol_Int},      {"bool", ADICol_Int},
    {"oid", ADICol_Int},  {"float4", ADICol_Double}, {"float8", ADICol_Double}, {"numeric", ADICol_Double},
};

ADIColType TypeOf(std::string_view name) {
    auto const *const at = std::ranges::find(kTypes, name, &TypeRow::name);
    return at == std::end(kTypes) ? ADICol_String : at->type;
}

} // namespace

std::unique_ptr<PostgresTable> PostgresTable::Open(DatabaseAddress const &address, StopSignal const *stop,
                                                   DError *error) {
    DString const subject = address.ToText();
    std::unique_ptr<PostgresTable> table(new PostgresTable(address, stop));
    if (!table->Names(address.table, error) ||
        !PostgresCatalogue(subject, stop).Table(address.schema, address.table, error))
        return nullptr;
    // Whether it can be read at all is found out now, while there is somebody to tell.
    if (!table->DescribeColumns(error) || !table->BeginReading(error))
        return nullptr;
    return table;
}

bool PostgresTable::DescribeColumns(DError *error) {
    DString const subject = m_address.ToText();
    PostgresRows const rows = AskCatalogue(subject, kColumns, {m_address.schema, m_address.table}, m_stop, error);
    if (!rows)
        return false;
    for (int row = 0; row < rows.Count(); ++row) {
        DString const name(rows.Text(row, kName));
        std::string_view const type = rows.Text(row, kType);
        DString const quoted = PostgresSession::Quoted(name);
        ADIColumn shown{.name = {}, .type = TypeOf(type)};
        AppendText(shown.name, name, ADIDriver::kMostCellBytes);
        m_columns.push_back(std::move(shown));
        m_asked.push_back(
            {.name = name,
             .expression = type == "bytea" ? Format("substring(%s from 1 for %d)", quoted.c_str(), kMostBytes) : quoted,
             .isFlag = type == "bool",
             .key = static_cast<int>(rows.Number(row, kKey)) + 1});
    }
    if (!m_columns.empty())
        return true;
    if (error != nullptr)
        error->Set("\"" + subject + "\" has no columns but those of places and pictures", DError::Cause::NotSupported);
    return false;
}

DString PostgresTable::Statement() const {
    DString columns;
    std::vector<Column> keys;
    for (Column const &column : m_asked) {
        columns.append(columns.empty() ? "" : ", ").append(column.expression);
        if (column.key > 0)
            keys.push_back(column);
    }
    std::ranges::sort(keys, {}, &Column::key);
    DString order;
    for (Column const &key : keys)
        order.append(order.empty() ? " order by " : ", ").append(PostgresSession::Quoted(key.name));
    return "select " + columns + " from " + PostgresSession::Quoted(m_address.schema) + "." +
           PostgresSession::Quoted(m_address.table) + order;
}

bool PostgresTable::BeginReading(DError *error) {
    m_rows = {};
    m_row = -1;
    m_batch = kFirstBatch;
    m_isAtEnd = false;
    m_session = PostgresSession::Open(m_stop, error);
    if (m_session == nullptr)
        return false;
    // Without the setting two readings of a large table may begin at different rows.
    DString const begin =
        "begin read only; set local synchronize_seqscans to off; declare zelvar_rows no scroll cursor for ";
    if (m_session->AskAll(m_address.ToText(), begin + Statement(), error))
        return true;
    m_session.reset();
    return false;
}

bool PostgresTable::Fetch() {
    DError error;
    if (m_session == nullptr && !BeginReading(&error)) {
        Report::TraceMessage(Report::kTraceOpen, "%s", error.Text().c_str());
        m_hasFailed = true;
        return false;
    }
    DString const fetch = Format("fetch forward %d from zelvar_rows", m_batch);
    m_rows = m_session->AskAll(m_address.ToText(), fetch, &error);
    m_row = -1;
    m_hasFailed = !m_rows;
    if (m_hasFailed) {
        Report::TraceMessage(Report::kTraceOpen, "%s", error.Text().c_str());
        m_session.reset();
        return false;
    }
    if (m_rows.Count() < m_batch) {
        m_isAtEnd = true;
        m_session.reset();
    }
    if (m_rows.Count() == 0)
        return false;
    std::int64_t bytes = 0;
    for (int row = 0; row < m_rows.Count(); ++row)
        for (int column = 0; column < m_rows.Columns(); ++column)
            bytes += static_cast<std::int64_t>(m_rows.Text(row, column).size());
    std::int64_t const fitting = kBatchBytes * m_rows.Count() / std::max<std::int64_t>(bytes, 1);
    m_batch = static_cast<int>(std::clamp<std::int64_t>(fitting, 1, std::min(2 * m_batch, kMostRows)));
    return true;
}

std::int64_t PostgresTable::GoBack(std::int64_t) {
    m_session.reset();
    m_rows = {};
    m_row = -1;
    m_isAtEnd = false;
    return 0;
}

bool PostgresTable::Step() {
    m_hasFailed = false;
    if (m_row + 1 < m_rows.Count()) {
        ++m_row;
        return true;
    }
    if (m_isAtEnd || !Fetch())
        return false;
    m_row = 0;
    return true;
}

bool PostgresTable::Append(ADIRows &rows) const {
    std::size_t const begin = rows.texts.size();
    for (int i = 0; i < m_rows.Columns(); ++i) {
        std::string_view const text = m_rows.Text(m_row, i);
        if (m_asked[static_cast<std::size_t>(i)].isFlag && !text.empty())
            rows.texts += text == "t" ? '1' : '0';
        else
            AppendText(rows.texts, text, ADIDriver::kMostCellBytes);
        if (rows.texts.size() - begin > ADIDriver::kMostRowBytes)
            return false;
        rows.ends.push_back(static_cast<std::uint32_t>(rows.texts.size()));
    }
    return true;
}

} // namespace zelvar::gdal
