#pragma once

#include "zelvar/platform/ui/Announce.h"

#include <QtGui/QAccessible>

#include <string>
#include <vector>

namespace zelvar::test {

/// Hears what our controls tell screen readers while it lives: "focus row 3", "value 10", "words first: x 20".
class ScreenReader {
public:
    ScreenReader() {
        Told().clear();
        platform::AnnounceThrough(Hear);
    }
    ~ScreenReader() { platform::AnnounceThrough(nullptr); }
    ScreenReader(ScreenReader const &) = delete;
    ScreenReader &operator=(ScreenReader const &) = delete;
    static std::vector<std::string> Take() { return std::exchange(Told(), {}); }

private:
    static std::vector<std::string> &Told() {
        static std::vector<std::string> told;
        return told;
    }
    static void Hear(QAccessibleEvent *event) {
        QAccessibleInterface *const about = event->accessibleInterface();
        auto const add = [about](char const *what, QAccessible::Text kind = QAccessible::Name) {
            Told().push_back(what + (about == nullptr ? "nothing" : about->text(kind).toStdString()));
        };
        switch (event->type()) {
        case QAccessible::Focus:
            return add("focus ");
        case QAccessible::Selection:
        case QAccessible::SelectionAdd:
            return add("select ");
        case QAccessible::SelectionRemove:
            return add("deselect ");
        case QAccessible::ObjectCreated:
            return add("new ");
        case QAccessible::ObjectDestroyed:
            return add("gone ");
        case QAccessible::DescriptionChanged:
            return add("words ", QAccessible::Description);
        case QAccessible::ValueChanged:
            return Told().push_back(
                "value " + static_cast<QAccessibleValueChangeEvent *>(event)->value().toString().toStdString());
        default:
            return;
        }
    }
};

} // namespace zelvar::test
