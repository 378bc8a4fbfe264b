#pragma once

#include "zelvar/data/gdal/database/DatabaseTable.h"
#include "zelvar/data/gdal/database/OdbcSession.h"

namespace zelvar::gdal {

/// A table or view of an ODBC data source. Its rows come in the order in which the source gives them.
///
/// The drivers of MySQL and MariaDB take all rows of an answer before they give the first. A table there whose key is a
/// whole number is therefore asked for by pages, in the order of the key.
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
    [[nodiscard]] bool TakeColumns();
    [[nodiscard]] bool TurnPage();

    std::shared_ptr<OdbcSession> m_session;
    std::unique_ptr<OdbcStatement> m_rows;   ///< null before the first row and behind the last
    std::vector<OdbcForm> m_forms;           ///< by column
    DString m_key;                           ///< as statements have it; empty where all rows are asked for at once
    std::vector<DString> m_pages{DString()}; ///< the key before each page that was come to; none before the first
    std::size_t m_page = 0;
    int m_inPage = 0; ///< rows of this page so far
};

} // namespace zelvar::gdal
