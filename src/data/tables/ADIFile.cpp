#include "zelvar/data/tables/ADIFile.h"

#include "zelvar/data/IRowStore.h"
#include "zelvar/data/tables/ADIDriverMngr.h"
#include "zelvar/data/tables/TableWriter.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace zelvar {

/// A table that is read: the batch of rows that the current one lies in.
class ADIFile::Reading : public IRowStore {
public:
    Reading(BDIMoniker const &moniker, char const *driverId, DError &error) {
        std::ignore = ADIDriverMngr::Instance()->OpenTable(moniker, &m_driver, &m_handle, &error, driverId);
    }
    ~Reading() override {
        if (m_handle != nullptr)
            m_driver->CloseTable(m_handle);
    }

    [[nodiscard]] bool IsOpen() const { return m_handle != nullptr; }
    [[nodiscard]] std::vector<ADIColumn> const &Columns() const {
        static std::vector<ADIColumn> const none;
        return IsOpen() ? m_driver->GetColumns(m_handle) : none;
    }
    [[nodiscard]] DString Encoding() const { return IsOpen() ? m_driver->GetEncoding(m_handle) : DString(); }
    bool SetRow(std::int64_t row) {
        m_row = -1;
        m_hasFailed = false;
        if (!IsOpen() || row < 0)
            return false;
        if (!IsHere(row) && !Fetch(row))
            return false;
        m_row = row;
        return true;
    }
    [[nodiscard]] bool HasFailed() const { return m_hasFailed; }
    [[nodiscard]] DString Text(std::size_t column) const {
        if (m_row < 0)
            return {};
        return DString(m_rows.Cell(static_cast<std::size_t>(m_row - m_rows.first) * Columns().size() + column));
    }

    [[nodiscard]] bool KeepsPlaces() const { return IsOpen() && m_driver->KeepsPlaces(m_handle); }
    [[nodiscard]] TableExtent const &Known() const override { return m_known; }
    [[nodiscard]] bool CountOn(std::int64_t rows, DError *error) override {
        return m_known.isEnd || m_driver->CountRows(m_handle, rows, m_known, error);
    }
    [[nodiscard]] bool Read(std::vector<std::int64_t> const &wanted, ADIRows &rows, DError *error) override {
        return m_driver->PickRows(m_handle, m_known, wanted, rows, error);
    }
    [[nodiscard]] bool Sort(int col, bool ascending, RowOrder &order, DError *error) override {
        return m_driver->SortRows(m_handle, m_known, col, ascending, order, error);
    }

private:
    // The first batch fills a page of a list; who reads on and on needs fewer calls.
    static constexpr int kFirstBatch = 256;
    static constexpr int kMostRows = 4096;

    [[nodiscard]] bool IsHere(std::int64_t row) const {
        return row >= m_rows.first && row < m_rows.first + m_rows.count;
    }
    bool Fetch(std::int64_t row) {
        std::int64_t const behind = m_rows.first + m_rows.count;
        if (m_rows.isEnd && row >= behind)
            return false;
        m_batch = m_rows.count > 0 && row == behind ? std::min(m_batch * 2, kMostRows) : kFirstBatch;
        m_rows = {};
        m_hasFailed = !m_driver->ReadRows(m_handle, row, m_batch, m_rows);
        if (m_hasFailed)
            m_rows = {}; // of a batch that was given up nothing counts
        return IsHere(row);
    }

    ADIDriver *m_driver = nullptr; ///< the manager's
    void *m_handle = nullptr;
    ADIRows m_rows;
    TableExtent m_known;
    int m_batch = kFirstBatch;
    bool m_hasFailed = false;
    std::int64_t m_row = -1; ///< the current one
};

/// A table that is written, cell by cell.
class ADIFile::Writing {
public:
    explicit Writing(std::unique_ptr<TableWriter> writer) : m_writer(std::move(writer)) {}

    [[nodiscard]] bool IsGood() const { return m_writer->IsGood(); }
    [[nodiscard]] std::vector<ADIColumn> const &Columns() const { return m_columns; }
    void Reserve(int columns) { m_columns.reserve(static_cast<std::size_t>(std::clamp(columns, 0, 4096))); }
    void AddColumn(ADIColumn column) {
        if (!m_hasBegun)
            m_columns.push_back(std::move(column));
    }
    void AddRow() {
        EndRow();
        m_written = 0;
        m_hasRow = true;
    }
    void Add(std::string_view text) {
        if (!m_hasRow || m_written == m_columns.size())
            return;
        m_writer->AddCell(text);
        ++m_written;
    }
    bool Finish() {
        EndRow();
        m_hasRow = false;
        return !std::exchange(m_isFinished, true) && m_writer->Finish();
    }

private:
    /// The head of the table, or the empty cells behind those written.
    void EndRow() {
        if (!std::exchange(m_hasBegun, true))
            m_writer->Begin(m_columns);
        while (m_hasRow && m_written < m_columns.size())
            Add({});
    }

    std::unique_ptr<TableWriter> m_writer;
    std::vector<ADIColumn> m_columns;
    std::size_t m_written = 0; ///< cells of the row
    bool m_hasBegun = false;
    bool m_hasRow = false;
    bool m_isFinished = false;
};

ADIFile::ADIFile(DFile const &file, char const *format, tdFormatAccessType access, DIOPlugin *plugin,
                 char const *options) {
    DString id = format == nullptr ? "" : format;
    if (id.empty() && plugin != nullptr)
        id = plugin->GetId();
    DError error;
    if (access == tdFormatAccess_Write) {
        if (std::unique_ptr<TableWriter> writer = TableWriter::Create(id, file.GetMoniker()))
            m_writing = std::make_unique<Writing>(std::move(writer));
        if (m_writing == nullptr)
            error.Set("no table is written as \"" + id + "\"");
        else if (!m_writing->IsGood())
            error.Set("\"" + file.GetMoniker() + "\" cannot be written");
        if (error.IsSet())
            Report::TraceMessage(Report::kTraceOpen, "%s", error.Text().c_str());
    } else {
        BDIMoniker moniker = BDIMoniker(file.GetMoniker(), nullptr).WithOptions(options == nullptr ? "" : options);
        if (EqualNoCase(id, "TCSV"))
            moniker = moniker.WithOptions("TRANSPOSED=YES");
        if (EqualNoCase(id, "TCSV") || EqualNoCase(id, "TXT"))
            id = "CSV";
        m_reading = std::make_shared<Reading>(moniker, id.c_str(), error);
    }
    m_error = std::move(error);
}

ADIFile::~ADIFile() = default;

bool ADIFile::IsOpen() const {
    return m_reading != nullptr ? m_reading->IsOpen() : m_writing != nullptr && m_writing->IsGood();
}

bool ADIFile::CanWrite(DString const &format) { return TableWriter::IsWritten(format); }

DString ADIFile::WriteFormatOf(DString const &path, DString const &format) {
    DString const extension(ExtensionOf(path));
    return !extension.empty() && CanWrite(extension) ? extension : format; // their ids are their extensions
}

namespace {

ADIColumn const *ColumnAt(std::vector<ADIColumn> const &columns, int col) {
    return col >= 0 && static_cast<std::size_t>(col) < columns.size() ? &columns[static_cast<std::size_t>(col)]
                                                                      : nullptr;
}

template <class Number>
std::string_view TextOf(Number value, std::array<char, 64> &digits) {
    auto const end = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    return {digits.data(), static_cast<std::size_t>(end.ptr - digits.data())};
}

} // namespace

int ADIFile::GetNumCols() const {
    return static_cast<int>(m_reading != nullptr   ? m_reading->Columns().size()
                            : m_writing != nullptr ? m_writing->Columns().size()
                                                   : 0);
}

DString ADIFile::GetColName(int col) const {
    ADIColumn const *const column = m_reading != nullptr
                                        ? ColumnAt(m_reading->Columns(), col)
                                        : (m_writing != nullptr ? ColumnAt(m_writing->Columns(), col) : nullptr);
    return column == nullptr ? DString() : column->name;
}

ADIColType ADIFile::GetColType(int col) const {
    ADIColumn const *const column = m_reading != nullptr
                                        ? ColumnAt(m_reading->Columns(), col)
                                        : (m_writing != nullptr ? ColumnAt(m_writing->Columns(), col) : nullptr);
    return column == nullptr ? ADICol_String : column->type;
}

DString ADIFile::GetEncoding() const { return m_reading == nullptr ? DString() : m_reading->Encoding(); }

bool ADIFile::SetRow(int row) { return m_reading != nullptr && m_reading->SetRow(row); }

bool ADIFile::HasFailed() const { return m_reading != nullptr && m_reading->HasFailed(); }

DString ADIFile::GetText(int col) const {
    bool const isThere = m_reading != nullptr && ColumnAt(m_reading->Columns(), col) != nullptr;
    return isThere ? m_reading->Text(static_cast<std::size_t>(col)) : DString();
}

std::shared_ptr<IRowStore> ADIFile::GetRowStore() {
    return m_reading != nullptr && m_reading->KeepsPlaces() ? m_reading : nullptr;
}

void ADIFile::InitTable(int, int cols) {
    if (m_writing != nullptr)
        m_writing->Reserve(cols);
}

void ADIFile::AddCol(char const *name, ADIColType type) {
    if (m_writing != nullptr)
        m_writing->AddColumn({.name = ToValidUtf8(name == nullptr ? "" : name), .type = type});
}

void ADIFile::AddRow() {
    if (m_writing != nullptr)
        m_writing->AddRow();
}

void ADIFile::WriteString(char const *text) {
    if (m_writing != nullptr)
        m_writing->Add(ToValidUtf8(text == nullptr ? "" : text));
}

void ADIFile::WriteInt(std::int64_t value) {
    std::array<char, 64> digits{};
    if (m_writing != nullptr)
        m_writing->Add(TextOf(value, digits));
}

void ADIFile::WriteDouble(double value) {
    std::array<char, 64> digits{};
    if (m_writing != nullptr)
        m_writing->Add(TextOf(value, digits));
}

bool ADIFile::Finish() {
    if (m_writing != nullptr && m_writing->Finish())
        return true;
    Report::TraceMessage(Report::kTraceOpen, "a table could not be written%s%s", m_error.IsSet() ? ": " : "",
                         m_error.Text().c_str());
    return false;
}

} // namespace zelvar
