#pragma once

#include "zelvar/base/Export.h"

#include <QtWidgets/QWidget>

namespace zelvar::platform {

/// Control ids: the numbers by which dialogs, layout tables, messages and tests name a window's children.
ZELVAR_API void SetDlgCtrlID(QWidget &child, int id);
/// 0 for a widget that was never given one.
[[nodiscard]] ZELVAR_API int GetDlgCtrlID(QWidget const &child);

/// The direct child of `parent` with that id; null if there is none. The children of a scroll area's viewport count as
/// the scroll area's own.
[[nodiscard]] ZELVAR_API QWidget *GetDlgItem(QWidget const &parent, int id);
/// The same as a `T`; null also if the child is of another class.
template <class T>
[[nodiscard]] T *GetDlgItem(QWidget const &parent, int id) {
    return dynamic_cast<T *>(GetDlgItem(parent, id));
}

} // namespace zelvar::platform
