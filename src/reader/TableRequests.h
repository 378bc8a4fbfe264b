#pragma once

#include "zelvar/reader/Answers.h"
#include "zelvar/reader/OpenTables.h"

namespace zelvar::reader {

/// Requests about tables and their rows.
class TableRequests {
public:
    explicit TableRequests(StopSignal const &stop) : m_stop(&stop), m_tables(stop) {}

    [[nodiscard]] Answer Open(wire::OpenTableT const &asked);
    [[nodiscard]] Answer ReadRows(wire::ReadRowsT const &asked);
    void Close(wire::CloseTableT const &asked) { m_tables.Close(asked.id); }

private:
    StopSignal const *m_stop;
    OpenTables m_tables;
};

} // namespace zelvar::reader
