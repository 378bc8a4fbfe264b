#pragma once

#include "zelvar/store/SettingsStore.h"

#include <array>
#include <cstdint>
#include <optional>
#include <unordered_map>

struct sqlite3;

namespace zelvar {

/// What one connection has read, valid until anybody commits to the file.
///
/// Where the database has a write-ahead log, the head of the log's index lies in memory that all processes share, and
/// each commit changes it (SQLite's "WAL-mode file format", section 2.1). So a look at 48 bytes takes the place of a
/// query, which costs some ten system calls.
class SettingsMemory {
public:
    using Value = SettingsStore::Value;
    using Mark = std::array<std::uint32_t, 12>;

    /// The head as it is now. Nothing inside a transaction, which sees what others do not.
    [[nodiscard]] static std::optional<Mark> MarkOf(sqlite3 *connection);

    /// Null if it is not known what has stood there since that mark; an empty value for a row that is not there.
    [[nodiscard]] std::optional<Value> const *Find(Mark const &mark, std::string_view key, std::string_view name);
    /// Takes down what stood there all the time while the mark was that one.
    void Keep(Mark const &mark, std::string_view key, std::string_view name, std::optional<Value> value);
    void Clear() { m_values.clear(); }

private:
    [[nodiscard]] DString const &PlaceOf(std::string_view key, std::string_view name);

    Mark m_mark{};
    std::unordered_map<DString, std::optional<Value>> m_values;
    DString m_place; ///< keeps its memory from call to call
};

} // namespace zelvar
