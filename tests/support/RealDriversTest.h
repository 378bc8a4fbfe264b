#pragma once

#include "support/RealDrivers.h"
#include "support/Test.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/RDIDriverMngr.h"

namespace zelvar::test {

/// The real drivers for one test, see `UseRealDrivers`, and a folder.
struct RealDriversTest : testing::Test {
    RealDriversTest() {
        Forget();
        UseRealDrivers();
    }
    ~RealDriversTest() override { Forget(); }
    static void Forget() {
        BDIDrvrMngr::Instance()->Reset();
        RDIDriverMngr::Instance()->Reset();
    }
    TempFolder m_folder;
};

} // namespace zelvar::test
