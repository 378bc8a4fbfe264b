#include "zelvar/layout/cdxCDynamicLayoutInfo.h"

#include "zelvar/layout/cdxCDynamicWnd.h"

#include <QtWidgets/QAbstractScrollArea>
#include <QtWidgets/QScrollBar>

namespace zelvar {

bool cdxCDynamicLayoutInfo::operator=(cdxCDynamicWnd const *wnd) { // NOLINT(misc-unconventional-assign-operator)
    if (wnd == nullptr || !wnd->IsUp())
        return false;
    m_szCurrent = wnd->GetCurrentClientSize();
    m_szInitial = wnd->InitialSize();
    m_szDelta = {m_szCurrent.cx - m_szInitial.cx, m_szCurrent.cy - m_szInitial.cy};
    m_nCtrlCnt = wnd->GetCtrlCount();
    m_bUseScrollPos = wnd->UsesScrollPos();
    if (auto const *area = qobject_cast<QAbstractScrollArea *>(wnd->Window()); m_bUseScrollPos && area != nullptr)
        m_pntScrollPos = {area->horizontalScrollBar()->value(), area->verticalScrollBar()->value()};
    return true;
}

bool cdxCDynamicLayoutInfo::IsInitial() const {
    return m_szDelta == Size{} && (!m_bUseScrollPos || m_pntScrollPos == Point{});
}

} // namespace zelvar
