#pragma once

#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/RDIDriverMngr.h"
#include "zelvar/data/reader/DriverModule.h"

#include <cstdlib>

namespace zelvar::bench {

/// Where drivers work.
enum class Way { Reader, OwnProcess };

/// The drivers that live there, none asked for yet.
inline void Choose(Way way) {
    BDIDrvrMngr::Instance()->Reset();
    RDIDriverMngr::Instance()->Reset();
    if (way == Way::Reader)
        UseReaderDrivers();
    else
        UseOwnProcessDrivers();
}

/// The same, asked for.
inline void Use(Way way) {
    Choose(way);
    if (BDIDrvrMngr::Instance()->Drivers().empty())
        std::abort();
}

} // namespace zelvar::bench
