#include "zelvar/data/gdal/database/DatabaseTreeDriver.h"

#include "zelvar/data/gdal/database/OdbcTree.h"
#include "zelvar/data/gdal/database/PostgresTree.h"

namespace zelvar::gdal {

DString DatabaseTreeDriver::GetId() const { return DatabaseId(m_kind); }

DString DatabaseTreeDriver::GetInfo() const { return DatabaseInfo(m_kind); }

std::unique_ptr<Tree> DatabaseTreeDriver::OpenTree(DString const &url, DString const &, DError &error) const {
    auto const address = InOwnDatabase(m_kind, url, &error);
    if (!address)
        return nullptr;
    return m_kind == ConnectionKind::Odbc ? OdbcTree::Open(*address, error) : PostgresTree::Open(*address, error);
}

} // namespace zelvar::gdal
