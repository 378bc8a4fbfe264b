#pragma once

#include "support/Stopwatch.h"
#include "support/Test.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/RDIDriverMngr.h"
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

    /// An image opened by the manager, closed at the end.
    struct Image : Pinned {
        explicit Image(std::string const &path, StopSignal const *stop = nullptr) {
            RDIDriverMngr::Instance()->OpenFile({path, nullptr}, &driver, &handle, "", &error, "", stop);
        }
        ~Image() {
            if (handle != nullptr)
                driver->CloseFile(handle, true);
        }
        explicit operator bool() const { return handle != nullptr; }
        /// The samples of a channel as they are; empty if they cannot be read.
        [[nodiscard]] std::vector<unsigned char> Read(int channel) const {
            int const width = driver->GetChnlSizeX(handle, channel);
            int const height = driver->GetChnlSizeY(handle, channel);
            std::vector<unsigned char> samples(static_cast<std::size_t>(width * height));
            if (!driver->ReadBlockRsmpl(handle, channel, 0, 0, width, height, samples.data(), width, height,
                                        RDIDriver::Nearest, true, true))
                samples.clear();
            return samples;
        }
        RDIDriver *driver = nullptr;
        void *handle = nullptr;
        DError error;
    };

    TempFolder folder;
};

} // namespace zelvar::test
