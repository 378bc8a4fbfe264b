#pragma once

#include "support/Test.h"
#include "zelvar/platform/ui/Announce.h"

#include <QtGui/QAccessible>

namespace zelvar::test {

/// The states that hold of a part: "selectable selected focusable".
inline std::string StatesOf(QAccessibleInterface const *part) {
    QAccessible::State const is = part->state();
    std::pair<bool, char const *> const words[] = {
        {is.invalid, " invalid"},       {is.disabled, " disabled"}, {is.selectable, " selectable"},
        {is.extSelectable, " multi"},   {is.selected, " selected"}, {is.focusable, " focusable"},
        {is.focused, " focused"},       {is.active, " active"},     {is.readOnly, " fixed"},
        {is.expandable, " expandable"}, {is.expanded, " expanded"}, {is.offscreen, " offscreen"},
        {is.invisible, " invisible"}};
    std::string states;
    for (auto const &[holds, word] : words)
        states += holds ? word + static_cast<int>(states.empty()) : "";
    return states;
}

/// Hears what our controls tell screen readers while it lives: "focus row 3", "value 10", "words first: x 20".
class ScreenReader : Pinned {
public:
    ScreenReader() {
        m_told.clear();
        platform::AnnounceThrough(Hear);
    }
    ~ScreenReader() { platform::AnnounceThrough(nullptr); }
    static std::vector<std::string> Take() { return std::exchange(m_told, {}); }

private:
    inline static std::vector<std::string> m_told{};
    static void Hear(QAccessibleEvent *event) {
        static std::map<int, std::string> const heard = {
            {QAccessible::Focus, "focus "},         {QAccessible::Selection, "select "},
            {QAccessible::SelectionAdd, "select "}, {QAccessible::SelectionRemove, "deselect "},
            {QAccessible::ObjectCreated, "new "},   {QAccessible::ObjectDestroyed, "gone "},
            {QAccessible::ValueChanged, "value "},  {QAccessible::DescriptionChanged, "words "}};
        auto const what = heard.find(event->type());
        if (what == heard.end())
            return;
        QAccessible::Text const kind =
            event->type() == QAccessible::DescriptionChanged ? QAccessible::Description : QAccessible::Name;
        auto const *const value = dynamic_cast<QAccessibleValueChangeEvent *>(event);
        QString const words = value != nullptr ? value->value().toString() : event->accessibleInterface()->text(kind);
        m_told.push_back(what->second + words.toStdString());
    }
};

} // namespace zelvar::test
