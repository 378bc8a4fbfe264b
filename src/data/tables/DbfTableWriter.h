#pragma once

#include "zelvar/base/AtomicFile.h"
#include "zelvar/data/tables/TableWriter.h"

#include <cstdint>

namespace zelvar {

/// A table of dBASE III, and a ".cpg" beside it that says that its texts are UTF-8.
///
/// Fields are as wide as their data needs, so that all cells are kept until the end. Numbers are written with all their
/// digits, very large and very small ones with an exponent. What the format has no room for is told in the log: names
/// beyond 10 bytes are cut and numbered where they collide, texts are cut at 254 bytes, and a text in a column of
/// numbers leaves its cell empty.
class DbfTableWriter : public TableWriter {
public:
    static constexpr std::size_t kLongestName = 10;
    static constexpr std::size_t kWidestText = 254;

    explicit DbfTableWriter(DString const &path);
    [[nodiscard]] bool IsGood() const override { return m_file.IsGood() && m_codePage.IsGood(); }
    void Begin(std::vector<ADIColumn> const &columns) override;
    void AddCell(std::string_view text) override;
    [[nodiscard]] bool Finish() override;

private:
    struct Field {
        DString name;
        bool isNumber = false;
        std::size_t width = 1;
        std::size_t decimals = 0;
    };
    void ChooseNames(std::vector<ADIColumn> const &columns);
    [[nodiscard]] bool WriteHead();
    void WriteRecords();
    [[nodiscard]] bool Commit();

    DString m_path;
    DString m_codePagePath;
    AtomicFile m_file;
    AtomicFile m_codePage;
    std::vector<Field> m_fields;
    std::size_t m_column = 0;
    DString m_texts; ///< of all cells, one behind the other, as they go into their fields
    std::vector<std::uint64_t> m_ends;
    std::size_t m_cut = 0;  ///< texts that were
    std::size_t m_lost = 0; ///< cells of columns of numbers that hold none
};

} // namespace zelvar
