#pragma once

#include "zelvar/data/gdal/database/DatabaseTable.h"
#include "zelvar/data/gdal/database/OdbcSession.h"

namespace zelvar::gdal {

/// A table or view of an ODBC data source. Its rows come in the order in which the source gives them.
class OdbcTable : public DatabaseTable {
public:
    /// Null, with the reason in `*error`, which may be null.
    [[nodiscard]] static std::unique_ptr<OdbcTable> Open(DatabaseAddress const &address, StopSignal const *stop,
                                                         DError *error);

protected:
    std::int64_t GoBack(std::int64_t row) override;
    [[nodiscard]] bool Step() override;
    [[nodiscard]] bool Append(ADIRows &rows) const override;

private:
    using DatabaseTable::DatabaseTable;
    [[nodiscard]] bool Begin(DError *error);

    std::shared_ptr<OdbcSession> m_session;
    std::unique_ptr<OdbcStatement> m_rows; ///< null before the first row and behind the last
    std::vector<OdbcForm> m_forms;         ///< by column
};

} // namespace zelvar::gdal
