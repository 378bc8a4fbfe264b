#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/lists/core/CellCache.h"

#include <cstdint>
#include <list>
#include <memory>
#include <unordered_map>
#include <vector>

namespace zelvar {

class IRowStore;
struct ADIRows;
struct RowOrder;

/// The rows of a list that it does not keep: they are counted, sorted where they are, and read again as they are seen.
/// The rows read last are at hand. A row's number is its id.
class StoredRows {
public:
    /// `columns` of the table, one for each that is shown.
    StoredRows(std::shared_ptr<IRowStore> store, std::vector<int> columns, int tableColumns)
        : m_store(std::move(store)), m_columns(std::move(columns)), m_tableColumns(tableColumns) {}

    enum class Found { Yes, No, NotKnown };
    /// Whether there is such a row; counts on as far as `wanted` where that is not known yet. `NotKnown` where that
    /// fails.
    [[nodiscard]] Found Find(int row, std::int64_t wanted);
    /// A cell that is at hand; null for others. Valid until more are fetched.
    [[nodiscard]] DString const *Text(int row, int col);
    /// Reads those of the rows that are not at hand. False if any could not be read.
    [[nodiscard]] bool Fetch(std::vector<int> const &rows);
    /// The entry of a cell that the caller may make to point elsewhere, kept from now on; null if it cannot be read.
    [[nodiscard]] char const **HandOut(int row, int col);
    /// The entries of a row that were handed out; null for none.
    [[nodiscard]] std::vector<char const *> *HandedOut(int row);
    /// Whether an entry points elsewhere by now: the order of the table is not that of the list then.
    [[nodiscard]] bool IsAltered() const;
    /// Sorts all rows that are known by a shown column. False if it is stopped or fails.
    [[nodiscard]] bool Sort(int col, bool ascending, RowOrder &order);

private:
    struct Row {
        int number = 0;
        std::size_t bytes = 0;
        std::vector<DString> cells; ///< as in a `TextArena`: no NUL
    };
    struct Entries {
        std::vector<char const *> now;
        std::vector<char const *> before;
    };
    void Keep(int number, ADIRows const &rows, std::size_t row);

    std::shared_ptr<IRowStore> m_store;
    std::vector<int> m_columns;
    int m_tableColumns;
    std::list<Row> m_rows; ///< used last first
    std::unordered_map<int, std::list<Row>::iterator> m_byNumber;
    std::size_t m_bytes = 0; ///< of all rows at hand
    TextArena m_texts;       ///< of entries
    std::unordered_map<int, Entries> m_entries;
};

} // namespace zelvar
