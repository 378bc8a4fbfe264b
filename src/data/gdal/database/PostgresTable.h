#pragma once

#include "zelvar/data/gdal/database/DatabaseTable.h"
#include "zelvar/data/gdal/database/PostgresSession.h"

namespace zelvar::gdal {

/// A table or view of a PostgreSQL database: its attributes without its places, in the order of its primary key where
/// it has one. Its rows come by a cursor in a session of its own, which ends with the last row.
class PostgresTable : public DatabaseTable {
public:
    /// Null, with the reason in `*error`, which may be null.
    [[nodiscard]] static std::unique_ptr<PostgresTable> Open(DatabaseAddress const &address, StopSignal const *stop,
                                                             DError *error);

protected:
    std::int64_t GoBack(std::int64_t row) override;
    [[nodiscard]] bool Step() override;
    [[nodiscard]] bool Append(ADIRows &rows) const override;

private:
    struct Column {
        DString name{};
        DString expression{}; ///< what is asked for
        bool isFlag = false;  ///< yes or no, shown as 1 and 0
        int key = 0;          ///< its place in the primary key from 1 on; 0 for none
    };
    PostgresTable(DatabaseAddress address, StopSignal const *stop)
        : DatabaseTable(std::move(address), stop), m_stop(stop) {}
    [[nodiscard]] bool DescribeColumns(DError *error);
    [[nodiscard]] DString Statement() const;
    [[nodiscard]] bool BeginReading(DError *error);
    [[nodiscard]] bool Fetch();

    StopSignal const *m_stop; ///< not owned, may be null
    std::vector<Column> m_asked;
    std::unique_ptr<PostgresSession> m_session; ///< with a cursor; null before the first row and behind the last
    PostgresRows m_rows;                        ///< fetched together
    int m_row = -1;                             ///< the one read last, of those
    int m_batch = 0;                            ///< rows to fetch next
};

} // namespace zelvar::gdal
