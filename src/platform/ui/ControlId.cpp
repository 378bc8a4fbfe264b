#include "zelvar/platform/ui/ControlId.h"

#include <QtCore/QVariant>
#include <QtWidgets/QAbstractScrollArea>

namespace zelvar::platform {

namespace {
constexpr char kProperty[] = "zelvarControlId";
}

void SetDlgCtrlID(QWidget &child, int id) { child.setProperty(kProperty, id); }

int GetDlgCtrlID(QWidget const &child) { return child.property(kProperty).toInt(); }

QWidget *GetDlgItem(QWidget const &parent, int id) {
    for (QObject *const object : parent.children()) {
        auto *const child = qobject_cast<QWidget *>(object);
        if (child != nullptr && GetDlgCtrlID(*child) == id && child->property(kProperty).isValid())
            return child;
    }
    auto const *const area = qobject_cast<QAbstractScrollArea const *>(&parent);
    return area == nullptr || area->viewport() == nullptr ? nullptr : GetDlgItem(*area->viewport(), id);
}

} // namespace zelvar::platform
