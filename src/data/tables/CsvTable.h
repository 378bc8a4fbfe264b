#pragma once

#include "zelvar/data/tables/CsvEncoding.h"
#include "zelvar/data/tables/CsvIndex.h"
#include "zelvar/data/tables/CsvReader.h"
#include "zelvar/data/tables/OpenTable.h"

#include <memory>
#include <span>

namespace zelvar {

/// What is to be read as comma-separated values, wherever its bytes come from.
struct CsvSource {
    DString text;         ///< its name in messages
    DString extension;    ///< of its name, without a dot
    CsvReader::Read read; ///< reads its bytes; owns what it reads from. Called on the thread of the table's operations.
    std::vector<std::pair<DString, DString>> options;
    /// Of a file where each place is as near as the next, and which any thread may read: its bytes. 0 for others.
    std::uint64_t bytes = 0;
};

/// A file of comma-separated values as a table. GDAL's own reader of them knows no table of one column, no UTF-16 and
/// no place but the next row.
///
/// Texts stay as they are written, so that no zero in front of a number gets lost; the types of columns are those that
/// the first rows suggest. The separator is the one that the first line has most of (",", ";", tab or "|"); the first
/// line holds names unless one of its fields is a number; texts are UTF-8, or UTF-16 with a mark, or windows-1252. The
/// options SEPARATOR (COMMA, SEMICOLON, TAB, PIPE, SPACE), HEADERS (YES, NO) and ENCODING say otherwise;
/// TRANSPOSED=YES, or a name that ends in ".tcsv", makes lines columns. Places in the file are remembered every so many
/// rows: a step back is short.
class ZELVAR_API CsvTable : public OpenTable {
public:
    /// Whether the extension is one of such files.
    [[nodiscard]] static bool IsNameOne(std::string_view extension);
    /// Null, with the reason in `*error` (may be null), for one that holds no text or is too large.
    static std::unique_ptr<OpenTable> Open(CsvSource source, StopSignal const *stop, DError *error);

    [[nodiscard]] bool KeepsPlaces() const override { return m_index != nullptr; }
    bool CountRows(std::int64_t rows, TableExtent &known, DError *error) override;
    bool PickRows(TableExtent const &known, std::vector<std::int64_t> const &wanted, ADIRows &rows,
                  DError *error) override;
    bool SortRows(TableExtent const &known, int column, bool ascending, RowOrder &order, DError *error) override;

protected:
    std::int64_t GoBack(std::int64_t row) override;
    [[nodiscard]] bool Step() override;
    [[nodiscard]] bool Append(ADIRows &rows) const override;

private:
    CsvTable(CsvReader::Read read, StopSignal const *stop);
    void Describe(DString const &headers);
    [[nodiscard]] bool Read(CsvRecord &record);
    [[nodiscard]] bool PickPart(std::span<std::int64_t const> wanted, ADIRows &rows) const;
    [[nodiscard]] bool IsKnown(TableExtent const &known, DError *error);

    CsvReader m_reader;
    CsvEncoding m_encoding;
    CsvRecord m_record; ///< the one read last
    bool m_hasNames = false;
    std::vector<std::int64_t> m_places; ///< of rows 0, 1024, ... in the file
    std::unique_ptr<CsvIndex> m_index;  ///< null where rows are read in order alone
    TableExtent m_proved;               ///< what the index was found to agree with
};

/// The same with lines that are columns, their names first. All of it is kept in memory.
class TransposedCsvTable : public OpenTable {
public:
    TransposedCsvTable(std::vector<CsvRecord> lines, CsvEncoding encoding, StopSignal const *stop);

protected:
    std::int64_t GoBack(std::int64_t row) override { return m_row = row; }
    [[nodiscard]] bool Step() override;
    [[nodiscard]] bool Append(ADIRows &rows) const override;

private:
    std::vector<CsvRecord> m_lines;
    CsvEncoding m_encoding;
    std::int64_t m_row = 0;  ///< the next one
    std::int64_t m_rows = 0; ///< in all
};

} // namespace zelvar
