#pragma once

#include "zelvar/base/DFile.h"
#include "zelvar/base/Report.h"
#include "zelvar/data/DIOPlugin.h"
#include "zelvar/data/IAttrData.h"

#include <memory>

namespace zelvar {

/// What a table is opened for.
enum tdFormatAccessType {
    tdFormatAccess_Read = 0,
    tdFormatAccess_Write = 1,
};

/// Attribute data interface file: a table in a file, a database, or behind an address.
///
/// Reading: what any driver of `ADIDriverMngr` reads, in batches as rows are asked for. Who asks may bound it by a
/// `RequestScope`; a batch that is stopped or comes late gives no row, and
/// `HasFailed` says so.
///
/// Writing: "CSV", also for an empty format and "TXT" (RFC 4180, UTF-8, with a line of names); "TCSV", the same with a
/// line for each column; "DBF" (dBASE III with a ".cpg" beside it that says UTF-8). A table takes its place when it is
/// whole, by `Finish`; without it nothing is left.
class ZELVAR_API ADIFile : public IAttrData {
public:
    /// `file`: a moniker; options behind "?" choose a layer ("LAYER=name") and go to the driver. `format`: for reading
    /// the id of a driver, which is tried before the others, or one of those
    /// that are written; may be empty. A `plugin`, if any, names the format by its
    /// id where `format` is empty. `options`, may be null: more of the moniker's.
    ADIFile(DFile const &file, char const *format, tdFormatAccessType access, DIOPlugin *plugin, char const *options);
    ~ADIFile() override;

    /// Whether the table can be read, or written; why not stands in the log and in `GetError`.
    [[nodiscard]] bool IsOpen() const;
    [[nodiscard]] DString const &GetError() const { return m_error.Text(); }
    /// The same with its cause.
    [[nodiscard]] DError const &GetFailure() const { return m_error; }
    /// Whether `Finish` can write a format of that id.
    [[nodiscard]] static bool CanWrite(DString const &format);
    /// The format that a table of that name is written in: `format`, unless the name ends like another one.
    [[nodiscard]] static DString WriteFormatOf(DString const &path, DString const &format);

    [[nodiscard]] int GetNumCols() const override;
    [[nodiscard]] DString GetColName(int col) const override;
    [[nodiscard]] ADIColType GetColType(int col) const override;
    /// As `ADIDriver::GetEncoding`.
    [[nodiscard]] DString GetEncoding() const;
    [[nodiscard]] bool SetRow(int row) override;
    [[nodiscard]] bool HasFailed() const override;
    [[nodiscard]] DString GetText(int col) const override;
    [[nodiscard]] std::shared_ptr<IRowStore> GetRowStore() override;

    void InitTable(int rows, int cols) override;
    void AddCol(char const *name, ADIColType type) override;
    void AddRow() override;
    void WriteString(char const *text) override;
    void WriteInt(std::int64_t value) override;
    void WriteDouble(double value) override;
    bool Finish() override;

private:
    class Reading;
    class Writing;
    std::shared_ptr<Reading> m_reading; ///< its rows may outlive this
    std::unique_ptr<Writing> m_writing;
    DError m_error;
};

} // namespace zelvar
