#pragma once

#include "zelvar/base/AtomicFile.h"
#include "zelvar/data/tables/TableWriter.h"

namespace zelvar {

/// A field of a line of comma-separated values.
[[nodiscard]] DString CsvField(std::string_view text);

/// Comma-separated values as RFC 4180 tells them: a line of names, then a line for each row, ended by CR LF. Written as
/// the cells come.
class CsvTableWriter : public TableWriter {
public:
    explicit CsvTableWriter(DString const &path) : m_file(path) {}
    [[nodiscard]] bool IsGood() const override { return m_file.IsGood(); }
    void Begin(std::vector<ADIColumn> const &columns) override;
    void AddCell(std::string_view text) override;
    [[nodiscard]] bool Finish() override { return m_file.Commit(); }

private:
    void Put(std::string_view text);

    AtomicFile m_file;
    std::size_t m_columns = 0;
    std::size_t m_column = 0; ///< of the next field
};

/// The same transposed: each column becomes a line, its name first.
class TransposedCsvTableWriter : public TableWriter {
public:
    explicit TransposedCsvTableWriter(DString const &path) : m_file(path) {}
    [[nodiscard]] bool IsGood() const override { return m_file.IsGood(); }
    void Begin(std::vector<ADIColumn> const &columns) override;
    void AddCell(std::string_view text) override;
    [[nodiscard]] bool Finish() override;

private:
    AtomicFile m_file;
    std::vector<DString> m_lines;
    std::size_t m_column = 0;
};

} // namespace zelvar
