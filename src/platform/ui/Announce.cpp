#include "zelvar/platform/ui/Announce.h"

#include <QtGui/QAccessible>

namespace zelvar::platform {

namespace {
void (*announceTo)(QAccessibleEvent *) = &QAccessible::updateAccessibility;
}

void Announce(QAccessibleEvent &event) { announceTo(&event); }

void AnnounceThrough(void (*sink)(QAccessibleEvent *)) {
    announceTo = sink == nullptr ? &QAccessible::updateAccessibility : sink;
}

} // namespace zelvar::platform
