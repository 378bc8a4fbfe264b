#include "zelvar/model/DefinitionsLock.h"

#include "zelvar/base/Directories.h"
#include "zelvar/base/PathStyle.h"

#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>

namespace zelvar {

namespace {

int OpenLockFile() {
    DString const directory = GetDataSourceDefinitionsDir();
    if (directory.empty())
        return -1;
    std::error_code failure;
    std::filesystem::create_directories(directory, failure);
    return open(AppendPath(directory, ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
}

} // namespace

DefinitionsLock::DefinitionsLock() : m_file(OpenLockFile()) {
    constexpr int kTries = 200;
    constexpr int kPauseMs = 20;
    for (int i = 0; i < kTries && m_file.IsOpen() && !m_isHeld; ++i) {
        m_isHeld = flock(m_file.Get(), LOCK_EX | LOCK_NB) == 0;
        if (!m_isHeld)
            poll(nullptr, 0, kPauseMs);
    }
}

} // namespace zelvar
