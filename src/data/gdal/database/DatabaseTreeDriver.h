#pragma once

#include "zelvar/data/Connection.h"
#include "zelvar/data/gdal/Tree.h"

namespace zelvar::gdal {

/// Tree drivers "PostgreSQL" and "ODBC". Each opens addresses in readers of a connection of its kind alone.
class DatabaseTreeDriver : public TreeDriver {
public:
    explicit DatabaseTreeDriver(ConnectionKind kind) : m_kind(kind) {}
    [[nodiscard]] DString GetId() const override;
    [[nodiscard]] DString GetInfo() const override;
    [[nodiscard]] DString GetExtensions() const override { return {}; }
    [[nodiscard]] bool CanReadPath(DString const &) const override { return false; }

protected:
    [[nodiscard]] std::unique_ptr<Tree> OpenTree(DString const &url, DString const &filter,
                                                 DError &error) const override;
    [[nodiscard]] bool HoldsMultipleImages() const override { return false; }

private:
    ConnectionKind m_kind;
};

} // namespace zelvar::gdal
