#pragma once

#include "zelvar/data/gdal/database/DatabaseAddress.h"
#include "zelvar/data/gdal/database/OdbcSession.h"
#include "zelvar/data/tables/OpenTable.h"

namespace zelvar::gdal {

/// A table or view of an ODBC data source. Its rows come in the order in which the source gives them.
class OdbcTable : public OpenTable {
public:
    /// Null, with the reason in `*error`, which may be null.
    [[nodiscard]] static std::unique_ptr<OdbcTable> Open(DatabaseAddress const &address, StopSignal const *stop,
                                                         DError *error);

protected:
    std::int64_t GoBack(std::int64_t row) override;
    [[nodiscard]] bool Step() override;
    [[nodiscard]] bool HasFailed() const override { return m_hasFailed; }
    [[nodiscard]] bool Append(ADIRows &rows) const override;

private:
    OdbcTable(DatabaseAddress address, StopSignal const *stop) : OpenTable(stop), m_address(std::move(address)) {}
    [[nodiscard]] bool Begin(DError *error);

    DatabaseAddress m_address;
    std::shared_ptr<OdbcSession> m_session;
    std::unique_ptr<OdbcStatement> m_rows; ///< null before the first row and behind the last
    std::vector<std::size_t> m_most;       ///< bytes of a value, by column
    bool m_isAtEnd = false;
    bool m_hasFailed = false;
};

} // namespace zelvar::gdal
