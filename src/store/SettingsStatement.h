#pragma once

#include "zelvar/store/SettingsDatabase.h"

#include <sqlite3.h>

namespace zelvar {

/// One execution of a prepared statement: bound, stepped, and reset at the end of its scope.
class SettingsDatabase::Statement {
public:
    /// Texts must live as long as this.
    Statement(SettingsDatabase &database, Sql sql);
    Statement(Statement const &) = delete;
    Statement &operator=(Statement const &) = delete;
    ~Statement();

    Statement &Bind(std::string_view text);
    /// The end of a range of texts; an empty one means that there is none.
    Statement &BindEnd(std::string_view text);
    Statement &BindValue(Value const &value);

    /// Done with a row to read, Nothing at the end.
    [[nodiscard]] Outcome Step();
    [[nodiscard]] DString Text(int column) const;
    /// False if the columns, a kind and its value, make no value: somebody else wrote them.
    [[nodiscard]] bool ReadValue(int kindColumn, Value &value) const;

private:
    sqlite3_stmt *m_statement = nullptr;
    int m_next = 1; ///< parameter to be bound next
    SettingsStore::Bytes m_packed;
};

/// The outcome that a result code of SQLite stands for.
[[nodiscard]] SettingsDatabase::Outcome OutcomeOf(int code);

} // namespace zelvar
