#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/layout/core/LayoutRule.h"

namespace zelvar {

class cdxCDynamicWnd;

/// Dynamic layout information: what one layout pass knows of the window.
class ZELVAR_API cdxCDynamicLayoutInfo {
public:
    cdxCDynamicLayoutInfo() = default;
    cdxCDynamicLayoutInfo(cdxCDynamicLayoutInfo const &) = default;
    cdxCDynamicLayoutInfo &operator=(cdxCDynamicLayoutInfo const &) = default;
    virtual ~cdxCDynamicLayoutInfo() = default;

    /// Takes the state of the window that `wnd` serves. False, and nothing taken, if there is none or it is minimised.
    bool operator=(cdxCDynamicWnd const *wnd); // NOLINT(misc-unconventional-assign-operator): it tells whether it did

    /// Every child stands where it was registered.
    [[nodiscard]] bool IsInitial() const { return Growth().IsInitial(); }
    /// The same for the rule.
    [[nodiscard]] LayoutGrowth Growth() const { return {m_szDelta, m_pntScrollPos, m_bUseScrollPos}; }

    Size m_szCurrent;
    Size m_szInitial;
    Size m_szDelta; ///< current less initial
    unsigned m_nCtrlCnt = 0;
    Point m_pntScrollPos;
    bool m_bUseScrollPos = false;
};

} // namespace zelvar
