#include "zelvar/data/tables/CsvTableWriter.h"

namespace zelvar {

DString CsvField(std::string_view text) {
    if (text.find_first_of(",\"\r\n") == std::string_view::npos)
        return DString(text);
    DString field = "\"";
    for (char const c : text) {
        if (c == '"')
            field += '"';
        field += c;
    }
    return field += '"';
}

void CsvTableWriter::Begin(std::vector<ADIColumn> const &columns) {
    m_columns = columns.size();
    for (ADIColumn const &column : columns)
        Put(column.name);
}

void CsvTableWriter::AddCell(std::string_view text) { Put(text); }

void CsvTableWriter::Put(std::string_view text) {
    if (m_column > 0)
        m_file.Write(",");
    // The one field of a line must not leave it blank: readers pass over blank lines.
    m_file.Write(m_columns == 1 && text.empty() ? DString("\"\"") : CsvField(text));
    if (++m_column == m_columns) {
        m_file.Write("\r\n");
        m_column = 0;
    }
}

void TransposedCsvTableWriter::Begin(std::vector<ADIColumn> const &columns) {
    for (ADIColumn const &column : columns)
        m_lines.push_back(CsvField(column.name));
}

void TransposedCsvTableWriter::AddCell(std::string_view text) {
    m_lines[m_column].append(",").append(CsvField(text));
    m_column = (m_column + 1) % m_lines.size();
}

bool TransposedCsvTableWriter::Finish() {
    for (DString const &line : m_lines) {
        m_file.Write(line.empty() ? "\"\"" : line);
        m_file.Write("\r\n");
    }
    return m_file.Commit();
}

} // namespace zelvar
