#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/base/Geometry.h"
#include "zelvar/layout/core/LayoutRule.h"

namespace zelvar {

class cdxCDynamicWnd;

/// Dynamic layout info: the snapshot of a window that one layout pass works with.
class ZELVAR_API cdxCDynamicLayoutInfo {
public:
    cdxCDynamicLayoutInfo() = default;
    virtual ~cdxCDynamicLayoutInfo() = default;
    cdxCDynamicLayoutInfo(cdxCDynamicLayoutInfo const &) = default;
    cdxCDynamicLayoutInfo(cdxCDynamicLayoutInfo &&) = default;
    cdxCDynamicLayoutInfo &operator=(cdxCDynamicLayoutInfo const &) = default;
    cdxCDynamicLayoutInfo &operator=(cdxCDynamicLayoutInfo &&) = default;

    /// False for null, without a window, and for a minimised one.
    bool operator=(cdxCDynamicWnd const *wnd); // NOLINT(misc-unconventional-assign-operator): a given operation
    /// The window is as it was at the start: no child has to move.
    [[nodiscard]] bool IsInitial() const;
    [[nodiscard]] LayoutGrowth Growth() const { return {m_szDelta, m_pntScrollPos, m_bUseScrollPos}; }

    Size m_szCurrent;
    Size m_szInitial;
    Size m_szDelta;
    unsigned m_nCtrlCnt = 0;
    Point m_pntScrollPos;
    bool m_bUseScrollPos = false;
};

} // namespace zelvar
