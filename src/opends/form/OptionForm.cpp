#include "zelvar/opends/form/OptionForm.h"

#include "zelvar/base/Translation.h"

#include <algorithm>

namespace zelvar {

namespace {

using Kind = FormNode::Kind;

constexpr int kNumberColumns = 10;

FormNode Node(Kind kind, DString text = {}, bool bold = false) {
    FormNode node;
    node.kind = kind;
    node.text = std::move(text);
    node.bold = bold;
    return node;
}

FormNode Line(std::vector<FormNode> pieces) {
    FormNode line = Node(Kind::Block);
    line.children = std::move(pieces);
    return line;
}

/// Names, and lists of names in descriptions, are long words: they may break behind their signs.
DString Breakable(DString const &text) {
    constexpr char zeroWidthSpace[] = "\xE2\x80\x8B";
    DString breakable;
    for (std::size_t i = 0; i < text.size(); ++i) {
        breakable += text[i];
        bool const isWithin = i + 1 < text.size() && text[i + 1] != ' ';
        if (isWithin && std::string_view("_/,=|").find(text[i]) != DString::npos)
            breakable += zeroWidthSpace;
    }
    return breakable;
}

bool IsNumber(DriverOption const &option) {
    return option.kind == DriverOption::Kind::WholeNumber || option.kind == DriverOption::Kind::Number;
}

DString NumberText(double number) { return Format("%.15g", number); }

DString RangeText(DriverOption const &option) {
    if (!IsNumber(option) || (!option.least && !option.most))
        return {};
    if (!option.most)
        return Format(Translated("%s or more"), NumberText(*option.least).c_str());
    if (!option.least)
        return Format(Translated("%s or less"), NumberText(*option.most).c_str());
    return Format(Translated("%s to %s"), NumberText(*option.least).c_str(), NumberText(*option.most).c_str());
}

/// The choice whose case may be another one.
DString const *FindChoice(DriverOption const &option, DString const &value) {
    auto const at = std::find_if(option.choices.begin(), option.choices.end(),
                                 [&](DString const &choice) { return EqualNoCase(choice, value); });
    return at == option.choices.end() ? nullptr : &*at;
}

/// A switch whose driver does not say how it stands by itself has three states.
bool IsCheckBox(DriverOption const &option) {
    return option.kind == DriverOption::Kind::Switch && !option.usual.empty();
}

std::vector<FormChoice> ChoicesOf(DriverOption const &option) {
    std::vector<FormChoice> choices;
    if (option.kind == DriverOption::Kind::Switch) {
        choices = {{"", Translated("As usual"), true}, {"YES", Translated("Yes")}, {"NO", Translated("No")}};
        return choices;
    }
    if (option.usual.empty())
        choices.push_back({"", Translated("As usual"), true});
    else if (FindChoice(option, option.usual) == nullptr)
        choices.push_back({option.usual, option.usual, true});
    for (DString const &choice : option.choices)
        choices.push_back({choice, choice, EqualNoCase(choice, option.usual)});
    return choices;
}

FormNode ControlOf(DriverOption const &option) {
    bool const isSelect = option.kind == DriverOption::Kind::Choice || option.kind == DriverOption::Kind::Switch;
    FormNode control = Node(IsCheckBox(option) ? Kind::CheckBox : isSelect ? Kind::Select : Kind::TextField);
    control.name = option.name;
    control.disabled = option.isBarred;
    control.hint = option.description;
    control.value = ShownValue(option, {});
    control.checked = IsOn(option.usual);
    control.inputType = option.isSecret ? "password" : "text";
    control.size = IsNumber(option) ? kNumberColumns : 0;
    if (control.kind == Kind::Select)
        control.choices = ChoicesOf(option);
    return control;
}

} // namespace

DString ShownValue(DriverOption const &option, DString const &value) {
    DString const &shown = value.empty() ? option.usual : value;
    if (IsCheckBox(option) || (option.kind == DriverOption::Kind::Switch && !shown.empty()))
        return IsOn(shown) ? "YES" : "NO";
    DString const *const choice = FindChoice(option, shown);
    return choice == nullptr ? shown : *choice;
}

FormNode MakeOptionForm(DString const &title, std::vector<DriverOption> const &options) {
    FormNode reset = Node(Kind::Button, Translated("Reset"));
    reset.id = kResetId;
    FormNode page = Line({Line({Node(Kind::Text, title, true), std::move(reset)})});
    for (DriverOption const &option : options) {
        page.children.push_back(Node(Kind::Rule));
        page.children.push_back(Line({Node(Kind::Text, Breakable(option.name), true), ControlOf(option)}));
        DString about = option.description;
        for (DString const &more :
             {RangeText(option), option.isBarred ? DString(Translated("This cannot be set here.")) : DString()})
            if (!more.empty())
                about += about.empty() ? more : (about.ends_with('.') ? " " : ". ") + more;
        if (!about.empty())
            page.children.push_back(Line({Node(Kind::Text, Breakable(about))}));
    }
    return page;
}

DString FaultText(DriverOption const &option, DString const &value) {
    switch (FaultOf(option, value)) {
    case OptionFault::None:
        return {};
    case OptionFault::NoNumber:
        return option.kind == DriverOption::Kind::WholeNumber ? Translated("This is no whole number.")
                                                              : Translated("This is no number.");
    case OptionFault::TooSmall:
    case OptionFault::TooLarge:
        return RangeText(option);
    case OptionFault::NoChoice:
        return Translated("There is no such choice.");
    case OptionFault::TooLong:
        return Format(Translated("At most %d characters"), option.longest);
    }
    return {};
}

} // namespace zelvar
