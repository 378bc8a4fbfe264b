#pragma once

#include "support/RealDriversTest.h"
#include "support/TableFiles.h"
#include "support/Test.h"
#include "zelvar/data/tables/ADIFile.h"

namespace zelvar::test {

/// Tables in a folder of a test's own, and the real drivers, see `UseRealDrivers`.
struct TablesTest : RealDriversTest {
    static ADIFile Open(DString const &moniker, char const *format = "") {
        return {DFile(moniker), format, tdFormatAccess_Read, nullptr, nullptr};
    }
    static ADIFile Writer(DString const &path, char const *format) {
        return {DFile(path), format, tdFormatAccess_Write, nullptr, ""};
    }
    static std::vector<DString> Read(DString const &moniker, char const *format = "") {
        ADIFile table = Open(moniker, format);
        return ContentOf(table);
    }
    /// Rows "0,", "1,", ... below "n,m".
    static DString Numbered(int rows) {
        DString text = "n,m\n";
        for (int row = 0; row < rows; ++row)
            text += std::to_string(row) + ",\n";
        return text;
    }
};

} // namespace zelvar::test
