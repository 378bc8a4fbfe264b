#pragma once

#include "support/RealDrivers.h"
#include "support/TableFiles.h"
#include "support/TestFiles.h"
#include "zelvar/data/ADIFile.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/RDIDriverMngr.h"

#include <gtest/gtest.h>

#include <vector>

namespace zelvar::test {

/// Tables in a folder of a test's own, and the real drivers, see `UseRealDrivers`.
class TablesTest : public testing::Test {
protected:
    TablesTest() {
        Forget();
        UseRealDrivers();
    }
    ~TablesTest() override { Forget(); }
    static void Forget() {
        BDIDrvrMngr::Instance()->Reset();
        RDIDriverMngr::Instance()->Reset();
    }
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
    TempFolder m_folder;
};

} // namespace zelvar::test
