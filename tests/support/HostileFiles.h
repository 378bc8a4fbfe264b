#pragma once

#include "support/OpenedImage.h"
#include "support/Stopwatch.h"
#include "support/Test.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/reader/DriverModule.h"

namespace zelvar::test {

/// Tests whose drivers live in real readers and do what their files say: see HostileDriver.cpp.
struct HostileFiles : testing::Test {
    HostileFiles() { Use({}); }
    ~HostileFiles() override {
        EndReaders();
        BDIDrvrMngr::Instance()->Reset();
        RDIDriverMngr::Instance()->Reset();
        UseReaderDrivers();
    }
    static void Use(ReaderSettings settings) {
        EndReaders();
        BDIDrvrMngr::Instance()->Reset();
        RDIDriverMngr::Instance()->Reset();
        settings.program = ZELVAR_READER;
        settings.withInstalledDrivers = false;
        settings.modules = {ZELVAR_HOSTILE};
        UseReaderDrivers(settings);
    }
    [[nodiscard]] std::string Write(std::string_view name, std::string_view text) const {
        return folder.Write(std::string(name) + ".hostile", text);
    }

    using Image = OpenedImage;
    TempFolder folder;
};

} // namespace zelvar::test
