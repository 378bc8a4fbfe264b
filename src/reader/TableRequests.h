#pragma once

#include "zelvar/data/wire/SharedMemory.h"
#include "zelvar/reader/Answers.h"
#include "zelvar/reader/OpenTables.h"

namespace zelvar::reader {

/// Requests about tables and their rows.
class TableRequests {
public:
    using Progress = std::atomic<std::int32_t>;
    /// What is referred to outlives this. `progress` may be null.
    TableRequests(StopSignal const &stop, Progress *progress) : m_stop(&stop), m_progress(progress), m_tables(stop) {}

    [[nodiscard]] Answer Open(wire::OpenTableT const &asked);
    [[nodiscard]] Answer ReadRows(wire::ReadRowsT const &asked);
    [[nodiscard]] Answer CountRows(wire::CountRowsT const &asked);
    [[nodiscard]] Answer PickRows(wire::PickRowsT const &asked);
    /// `memory`: where the order goes; may be null.
    [[nodiscard]] Answer SortRows(wire::SortRowsT const &asked, wire::SharedMemory const *memory);
    void Close(wire::CloseTableT const &asked) { m_tables.Close(asked.id); }

private:
    template <class Asked, class Work>
    [[nodiscard]] Answer WithPlaces(Asked const &asked, Work const &work);

    StopSignal const *m_stop;
    Progress *m_progress;
    OpenTables m_tables;
};

} // namespace zelvar::reader
