#include "zelvar/layout/DynamicWndWatch.h"
#include "zelvar/layout/HostScrollBars.h"
#include "zelvar/layout/cdxCDynamicWnd.h"
#include "zelvar/platform/ui/ControlId.h"

// Registration of children: one form does the work, the others find out child, rectangle and percentages.

namespace zelvar {

bool cdxCDynamicWnd::AddSzControl(QWidget *child, Position const &position, bool repos) {
    if (!IsWindow() || child == nullptr)
        return false;
    if (m_map.insert_or_assign(child, Entry{position, platform::GetDlgCtrlID(*child)}))
        m_watch->Over(*child);
    if (repos)
        UpdateControlPosition(child);
    return true;
}

bool cdxCDynamicWnd::AddAt(QWidget *child, EdgePercents x, EdgePercents y, Size min, bool repos) {
    if (child == nullptr)
        return false;
    QRect const at = child->geometry();
    Position const position{at.x(), at.y(), at.x() + at.width(), at.y() + at.height(), x.near, y.near, x.far, y.far,
                            min.cx, min.cy};
    return AddSzControl(child, position, repos);
}

bool cdxCDynamicWnd::AddSzControl(QWidget *child, Bytes const &bytes, Size min, bool repos) {
    return AddAt(child, {bytes[0], bytes[2]}, {bytes[1], bytes[3]}, min, repos);
}

bool cdxCDynamicWnd::AddSzControl(QWidget *child, signed char x1, signed char y1, signed char x2, signed char y2,
                                  Size min, bool repos) {
    return AddAt(child, {x1, x2}, {y1, y2}, min, repos);
}

bool cdxCDynamicWnd::AddSzControl(QWidget *child, Mode x, Mode y, Size min, bool repos) {
    return AddAt(child, _translate(x), _translate(y), min, repos);
}

bool cdxCDynamicWnd::AddSzControl(int id, Position const &position, bool repos) {
    return AddSzControl(GetSafeChildHWND(id), position, repos);
}

bool cdxCDynamicWnd::AddSzControl(int id, Bytes const &bytes, Size min, bool repos) {
    return AddSzControl(GetSafeChildHWND(id), bytes, min, repos);
}

bool cdxCDynamicWnd::AddSzControl(int id, signed char x1, signed char y1, signed char x2, signed char y2, Size min,
                                  bool repos) {
    return AddSzControl(GetSafeChildHWND(id), x1, y1, x2, y2, min, repos);
}

bool cdxCDynamicWnd::AddSzControl(int id, Mode x, Mode y, Size min, bool repos) {
    return AddSzControl(GetSafeChildHWND(id), x, y, min, repos);
}

bool cdxCDynamicWnd::AddSzControl(QWidget *child, QWidget *likeThis, bool /*repos*/) {
    Position position;
    return GetControlPosition(likeThis, position) && AddSzControl(child, position, true);
}

bool cdxCDynamicWnd::AddSzControl(int id, QWidget *likeThis, bool repos) {
    return AddSzControl(GetSafeChildHWND(id), likeThis, repos);
}

bool cdxCDynamicWnd::AddSzXControl(QWidget *child, signed char x1, signed char x2, Size min, bool repos) {
    return AddAt(child, {x1, x2}, {}, min, repos);
}

bool cdxCDynamicWnd::AddSzXControl(QWidget *child, Mode x, Size min, bool repos) {
    return AddAt(child, _translate(x), {}, min, repos);
}

bool cdxCDynamicWnd::AddSzXControl(int id, signed char x1, signed char x2, Size min, bool repos) {
    return AddSzXControl(GetSafeChildHWND(id), x1, x2, min, repos);
}

bool cdxCDynamicWnd::AddSzXControl(int id, Mode x, Size min, bool repos) {
    return AddSzXControl(GetSafeChildHWND(id), x, min, repos);
}

bool cdxCDynamicWnd::AddSzYControl(QWidget *child, signed char y1, signed char y2, Size min, bool repos) {
    return AddAt(child, {}, {y1, y2}, min, repos);
}

bool cdxCDynamicWnd::AddSzYControl(QWidget *child, Mode y, Size min, bool repos) {
    return AddAt(child, {}, _translate(y), min, repos);
}

bool cdxCDynamicWnd::AddSzYControl(int id, signed char y1, signed char y2, Size min, bool repos) {
    return AddSzYControl(GetSafeChildHWND(id), y1, y2, min, repos);
}

bool cdxCDynamicWnd::AddSzYControl(int id, Mode y, Size min, bool repos) {
    return AddSzYControl(GetSafeChildHWND(id), y, min, repos);
}

void cdxCDynamicWnd::AllControls(Bytes const &bytes, bool overwrite, bool repos) {
    if (AddAllControls({bytes[0], bytes[2]}, {bytes[1], bytes[3]}, overwrite) && repos)
        Layout();
}

void cdxCDynamicWnd::AllControls(signed char x1, signed char y1, signed char x2, signed char y2, bool overwrite,
                                 bool repos) {
    if (AddAllControls({x1, x2}, {y1, y2}, overwrite) && repos)
        Layout();
}

void cdxCDynamicWnd::AllControls(Mode x, Mode y, bool overwrite, bool repos) {
    if (AddAllControls(_translate(x), _translate(y), overwrite) && repos)
        Layout();
}

/// True if at least one child was added.
bool cdxCDynamicWnd::AddAllControls(EdgePercents x, EdgePercents y, bool overwrite) {
    bool added = false;
    if (!IsWindow())
        return added;
    for (QObject *const object : QObjectList(Client()->children())) {
        auto *const child = qobject_cast<QWidget *>(object);
        if (child == nullptr || child->isWindow() || (!overwrite && m_map.contains(child)) ||
            (m_scrollBars && m_scrollBars->Owns(child)))
            continue;
        added = AddAt(child, x, y, {}, true) || added;
    }
    return added;
}

bool cdxCDynamicWnd::RemSzControl(QWidget *child, bool moveToInitial) {
    Position position;
    if (!GetControlPosition(child, position))
        return false;
    if (moveToInitial)
        child->setGeometry(position.left, position.top, position.right - position.left, position.bottom - position.top);
    m_watch->NoMoreOver(*child);
    return m_map.erase(child) != 0;
}

} // namespace zelvar
