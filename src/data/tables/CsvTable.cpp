#include "zelvar/data/tables/CsvTable.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/data/tables/CsvScan.h"
#include "zelvar/data/tables/CsvSort.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <optional>
#include <tuple>
#include <utility>

namespace zelvar {

namespace {

constexpr std::size_t kRowsThatSuggest = 100; // the types of columns
constexpr std::size_t kLongestName = 1024;
constexpr std::size_t kHead = 4096;                          // bytes that tell text from other things
constexpr std::size_t kLongestLine = std::size_t{64} << 10U; // of those whose separators are counted
constexpr std::int64_t kRowsPerPlace = 1024;
constexpr std::size_t kMostTransposed = std::uint64_t{256} << 20U;
constexpr std::uint64_t kBytesPerCount = std::uint64_t{256} << 20U; // that one request looks at
constexpr std::size_t kRowsPerPiece = 128;                          // that a thread picks
constexpr std::int64_t kMostSorted = 0x7FFFFFFF;
constexpr char const *kStopped = "stopped";
constexpr char const *kChanged = "the file has changed since it was opened";
constexpr char const *kTransposedOption = "TRANSPOSED";
constexpr char const *kEncodingOption = "ENCODING";

DString OptionOf(CsvSource const &source, std::string_view wanted) {
    auto const at = std::find_if(source.options.begin(), source.options.end(),
                                 [&](auto const &option) { return EqualNoCase(option.first, wanted); });
    return at == source.options.end() ? DString() : at->second;
}

bool IsTransposed(CsvSource const &source) {
    return EqualNoCase(source.extension, "tcsv") || EqualNoCase(OptionOf(source, kTransposedOption), "YES");
}

void Refuse(DError *error, DString reason) {
    if (error != nullptr)
        error->Set(std::move(reason));
}

char SeparatorFor(CsvSource const &source, CsvReader &reader) {
    constexpr std::array<std::pair<std::string_view, char>, 5> named{
        {{"COMMA", ','}, {"SEMICOLON", ';'}, {"TAB", '\t'}, {"PIPE", '|'}, {"SPACE", ' '}}};
    DString const wanted = OptionOf(source, "SEPARATOR");
    for (auto const &[name, separator] : named)
        if (EqualNoCase(name, wanted))
            return separator;
    if (EqualNoCase(source.extension, "tsv"))
        return '\t';
    return EqualNoCase(source.extension, "psv") ? '|' : GuessSeparator(reader.Peek(kLongestLine));
}

bool LooksLikeNames(CsvRecord const &record) {
    for (std::size_t i = 0; i < record.Count(); ++i)
        if (SuggestedType(record.Field(i)) != ADICol_String)
            return false;
    return true;
}

/// Nothing if that is too much.
std::optional<std::vector<CsvRecord>> AllRecords(CsvReader &reader) {
    std::vector<CsvRecord> records;
    std::size_t bytes = 0;
    while (true) {
        CsvRecord record;
        CsvReader::Result const result = reader.Next(record, kMostTransposed);
        bytes += record.texts.size() + record.ends.size() * sizeof record.ends[0];
        if (result == CsvReader::Result::TooLong || bytes > kMostTransposed)
            return std::nullopt;
        if (result == CsvReader::Result::End)
            return records;
        records.push_back(std::move(record));
    }
}

CsvEncoding EncodingFor(CsvSource const &source, CsvReader &reader) {
    if (reader.IsMarked())
        return {};
    DString const stated = OptionOf(source, kEncodingOption);
    return stated.empty() ? CsvEncoding::Guess(reader.Peek(CsvEncoding::kHead)) : CsvEncoding::Stated(stated);
}

DString NameOf(CsvRecord const &record, std::size_t column, CsvEncoding const &encoding) {
    DString name;
    if (column < record.Count())
        encoding.Append(name, record.Field(column), kLongestName);
    return name.empty() ? "field_" + std::to_string(column + 1) : name;
}

} // namespace

CsvTable::CsvTable(CsvReader::Read read, StopSignal const *stop) : OpenTable(stop), m_reader(std::move(read)) {}

bool CsvTable::IsNameOne(std::string_view extension) {
    constexpr std::array<std::string_view, 5> known{"csv", "tsv", "psv", "tcsv", "txt"};
    return std::any_of(known.begin(), known.end(), [&](std::string_view one) { return EqualNoCase(one, extension); });
}

std::unique_ptr<OpenTable> CsvTable::Open(CsvSource source, StopSignal const *stop, DError *error) {
    std::unique_ptr<CsvTable> table(new CsvTable(source.read, stop));
    std::string_view const head = table->m_reader.Peek(kHead);
    if (head.empty() || head.find('\0') != std::string_view::npos) {
        Refuse(error, "\"" + source.text + "\" holds no text");
        return nullptr;
    }
    table->m_reader.SetSeparator(SeparatorFor(source, table->m_reader));
    table->m_encoding = EncodingFor(source, table->m_reader);
    table->m_encodingName = table->m_encoding.Name();
    std::unique_ptr<OpenTable> opened;
    if (IsTransposed(source)) {
        if (auto lines = AllRecords(table->m_reader))
            opened = std::make_unique<TransposedCsvTable>(std::move(*lines), std::move(table->m_encoding), stop);
    } else {
        table->Describe(OptionOf(source, "HEADERS"));
        if (std::int64_t const begin = table->m_places.front(); begin >= 0 && source.bytes > 0)
            table->m_index = std::make_unique<CsvIndex>(std::move(source.read), table->m_reader.Separator(),
                                                        static_cast<std::uint64_t>(begin), source.bytes);
        opened = std::move(table);
    }
    if (opened != nullptr && opened->Columns().size() <= ADIDriver::kMostColumns)
        return opened;
    Refuse(error, "the table \"" + source.text + "\" is too large");
    return nullptr;
}

bool CsvTable::Read(CsvRecord &record) {
    return m_reader.Next(record, ADIDriver::kMostRowBytes) == CsvReader::Result::Record;
}

void CsvTable::Describe(DString const &headers) {
    std::int64_t const beginning = m_reader.Position();
    CsvRecord names;
    std::ignore = Read(names);
    m_hasNames = EqualNoCase(headers, "YES") || (!EqualNoCase(headers, "NO") && LooksLikeNames(names));
    m_places = {m_hasNames ? m_reader.Position() : beginning};

    std::vector<CsvRecord> first;
    std::size_t columns = names.Count();
    std::size_t bytes = 0;
    std::ignore = GoBack(0);
    while (first.size() < kRowsThatSuggest && bytes < ADIDriver::kBatchBytes && !IsStopped()) {
        CsvRecord record;
        if (!Read(record))
            break;
        columns = std::max(columns, record.Count());
        bytes += record.texts.size() + record.ends.size();
        first.push_back(std::move(record));
    }
    std::ignore = GoBack(0);
    if (!m_hasNames)
        names = {};
    TypeSuggestion types(columns);
    for (CsvRecord const &record : first)
        for (std::size_t i = 0; i < record.Count(); ++i)
            types.Look(i, record.Field(i));
    for (std::size_t i = 0; i < columns; ++i)
        m_columns.push_back({.name = NameOf(names, i, m_encoding), .type = types.Of(i)});
}

std::int64_t CsvTable::GoBack(std::int64_t row) {
    // A text in another encoding has no places: it is read from its beginning.
    auto const place = std::min(static_cast<std::size_t>(row / kRowsPerPlace), m_places.size() - 1);
    m_reader.GoTo(m_places[place]);
    if (m_places[place] < 0 && m_hasNames)
        std::ignore = Read(m_record);
    return static_cast<std::int64_t>(place) * kRowsPerPlace;
}

bool CsvTable::Step() {
    std::int64_t const place = m_reader.Position();
    if (NextRow() == static_cast<std::int64_t>(m_places.size()) * kRowsPerPlace && place >= 0)
        m_places.push_back(place);
    return Read(m_record);
}

bool CsvTable::Append(ADIRows &rows) const {
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        if (i < m_record.Count())
            m_encoding.Append(rows.texts, m_record.Field(i), ADIDriver::kMostCellBytes);
        rows.ends.push_back(static_cast<std::uint32_t>(rows.texts.size()));
    }
    return true; // a record is no longer than a row may be
}

bool CsvTable::CountRows(std::int64_t rows, TableExtent &known, DError *error) {
    if (!IsKnown(known, error))
        return false;
    std::uint64_t const before = m_index->Bytes();
    if (!m_index->Extend(rows, kBytesPerCount, Stop()) && m_index->Bytes() == before) {
        Refuse(error, kStopped);
        return false;
    }
    m_proved = {.rows = m_index->Rows(),
                .bytes = static_cast<std::int64_t>(m_index->Bytes()),
                .isEnd = m_index->IsEnd(),
                .digest = m_index->DigestOf(m_index->Rows())};
    known = m_proved;
    return true;
}

/// Whether the file is the one that was looked at, maybe by another reader, as far as that went.
bool CsvTable::IsKnown(TableExtent const &known, DError *error) {
    std::uint64_t const inAll = known.isEnd ? static_cast<std::uint64_t>(known.bytes) : CsvWindow::kToTheEnd;
    if (known.rows > m_index->Rows() && !m_index->Extend(known.rows, ~std::uint64_t{0}, Stop(), inAll)) {
        Refuse(error, kStopped);
        return false;
    }
    if (known.rows == 0 || (known.rows == m_proved.rows && known.digest == m_proved.digest))
        return true;
    if (known.rows < 0 || known.rows > m_index->Rows() || known.digest != m_index->DigestOf(known.rows)) {
        Refuse(error, kChanged);
        return false;
    }
    m_proved = known;
    return true;
}

/// The first of these rows, as many as one call yields. False if the file has changed.
bool CsvTable::PickPart(std::span<std::int64_t const> wanted, ADIRows &rows) const {
    CsvIndex::RunReader runs(*m_index);
    for (auto at = wanted.begin(); at != wanted.end() && rows.texts.size() < ADIDriver::kBatchBytes &&
                                   rows.ends.size() < ADIDriver::kBatchCells;) {
        auto const run = static_cast<std::size_t>(*at / CsvIndex::kRowsPerRun);
        bool const isAsItWas = runs.ForEach(run, run + 1, [&](std::int64_t row, CsvScan &scan) {
            if (at == wanted.end() || *at != row)
                return;
            for (std::size_t i = 0; i < m_columns.size(); ++i) {
                m_encoding.Append(rows.texts, scan.Field(), ADIDriver::kMostCellBytes);
                rows.ends.push_back(static_cast<std::uint32_t>(rows.texts.size()));
            }
            ++rows.count;
            ++at;
        });
        if (!isAsItWas)
            return false;
    }
    return true;
}

bool CsvTable::PickRows(TableExtent const &known, std::vector<std::int64_t> const &wanted, ADIRows &rows,
                        DError *error) {
    rows = {};
    if (!IsKnown(known, error))
        return false;
    if (!std::ranges::all_of(wanted, [this](std::int64_t row) { return row >= 0 && row < m_index->Rows(); })) {
        Refuse(error, "no such rows");
        return false;
    }
    // Rows far from each other take their time, each of them.
    std::size_t const each = m_encoding.IsForAnyThread() ? kRowsPerPiece : std::max<std::size_t>(wanted.size(), 1);
    std::vector<ADIRows> parts((wanted.size() + each - 1) / each);
    std::atomic<bool> hasChanged{false};
    bool const isDone = SharedWork(Stop()).Run(parts.size(), [&](std::size_t, std::size_t piece) {
        std::size_t const begin = piece * each;
        if (!PickPart(std::span(wanted).subspan(begin, std::min(each, wanted.size() - begin)), parts[piece]))
            hasChanged = true;
        return !hasChanged;
    });
    if (!isDone) {
        Refuse(error, hasChanged ? kChanged : kStopped);
        return false;
    }
    for (std::size_t piece = 0; piece < parts.size(); ++piece) {
        ADIRows const &part = parts[piece];
        auto const before = static_cast<std::uint32_t>(rows.texts.size());
        rows.texts += part.texts;
        for (std::uint32_t const end : part.ends)
            rows.ends.push_back(before + end);
        rows.count += part.count;
        // A part that is not whole is the last one.
        bool const isWhole = static_cast<std::size_t>(part.count) == std::min(each, wanted.size() - piece * each);
        if (!isWhole || rows.texts.size() >= ADIDriver::kBatchBytes || rows.ends.size() >= ADIDriver::kBatchCells)
            break;
    }
    return true;
}

bool CsvTable::SortRows(TableExtent const &known, int column, bool ascending, RowOrder &order, DError *error) {
    if (!IsKnown(known, error))
        return false;
    if (column < 0 || static_cast<std::size_t>(column) >= m_columns.size() || known.rows > kMostSorted) {
        Refuse(error, "the table cannot be sorted so");
        return false;
    }
    order = RowOrder(static_cast<std::size_t>(known.rows));
    CsvSort sort(*m_index, m_encoding, static_cast<std::size_t>(column), ascending, Stop());
    CsvSort::Result const result = sort.Run(order);
    if (result == CsvSort::Result::Done)
        return true;
    Refuse(error, result == CsvSort::Result::Changed ? kChanged : kStopped);
    return false;
}

TransposedCsvTable::TransposedCsvTable(std::vector<CsvRecord> lines, CsvEncoding encoding, StopSignal const *stop)
    : OpenTable(stop), m_lines(std::move(lines)), m_encoding(std::move(encoding)) {
    m_encodingName = m_encoding.Name();
    TypeSuggestion types(m_lines.size());
    for (std::size_t line = 0; line < m_lines.size(); ++line) {
        std::size_t const count = m_lines[line].Count();
        for (std::size_t i = 1; i < std::min(count, kRowsThatSuggest + 1); ++i)
            types.Look(line, m_lines[line].Field(i));
        m_rows = std::max(m_rows, static_cast<std::int64_t>(count) - 1);
        DString name;
        m_encoding.Append(name, m_lines[line].Field(0), kLongestName);
        m_columns.push_back({.name = std::move(name), .type = types.Of(line)});
    }
}

bool TransposedCsvTable::Step() { return m_row < m_rows && ++m_row > 0; }

bool TransposedCsvTable::Append(ADIRows &rows) const {
    auto const field = static_cast<std::size_t>(m_row); // behind the name
    for (CsvRecord const &line : m_lines) {
        if (field < line.Count())
            m_encoding.Append(rows.texts, line.Field(field), ADIDriver::kMostCellBytes);
        rows.ends.push_back(static_cast<std::uint32_t>(rows.texts.size()));
    }
    return rows.texts.size() <= ADIDriver::kMostRowBytes;
}

} // namespace zelvar
