#pragma once

#include "zelvar/data/RDIDriverMngr.h"

namespace zelvar {

/// An image open for reading with whichever driver reads it, closed at the end of its life. Belongs to one thread.
class OpenImage {
public:
    /// `driverId` may be empty; `stop` and `error` may be null.
    OpenImage(BDIMoniker const &moniker, DString const &driverId, StopSignal const *stop, DError *error = nullptr) {
        if (!RDIDriverMngr::Instance()->OpenFile(moniker, &m_driver, &m_handle, "", error, driverId.c_str(), stop))
            m_handle = nullptr;
    }
    ~OpenImage() {
        if (m_handle != nullptr)
            m_driver->CloseFile(m_handle, true);
    }
    OpenImage(OpenImage const &) = delete;
    OpenImage &operator=(OpenImage const &) = delete;

    [[nodiscard]] bool IsOpen() const { return m_handle != nullptr && m_driver != nullptr; }
    [[nodiscard]] RDIDriver &Driver() const { return *m_driver; }
    [[nodiscard]] void *Handle() const { return m_handle; }

private:
    RDIDriver *m_driver = nullptr; ///< the manager's
    void *m_handle = nullptr;
};

} // namespace zelvar
