#include "zelvar/opends/form/OptionForm.h"

#include "support/Test.h"

namespace zelvar {
namespace {

using Kind = DriverOption::Kind;

/// The control of the option: its kind, what it holds, "!" if it cannot be changed; a select's choices, the selected
/// one in brackets.
DString ControlOf(FormNode const &node) {
    for (FormNode const &child : node.children)
        if (DString const found = ControlOf(child); !found.empty())
            return found;
    DString text = node.disabled ? "!" : "";
    if (node.kind == FormNode::Kind::CheckBox)
        return text + (node.checked ? "[x]" : "[ ]");
    if (node.kind == FormNode::Kind::TextField)
        return text + node.inputType + ":" + node.value;
    if (node.kind != FormNode::Kind::Select)
        return {};
    for (FormChoice const &choice : node.choices)
        text += choice.selected ? "(" + choice.text + ")" : choice.text + "|";
    return text;
}

TEST(OptionForm, AnOptionIsAskedForAsItsKindAndUsualValueHaveIt) {
    for (auto const &[option, control, about] : test::Rows<DriverOption, char const *, char const *>{
             {{.name = "A", .kind = Kind::Switch, .usual = "TRUE", .description = "D"}, "[x]", "D"},
             {{.name = "A", .kind = Kind::Switch, .usual = "NO"}, "[ ]", ""},
             {{.name = "A", .kind = Kind::Switch}, "(As usual)Yes|No|", ""},
             {{.name = "A", .kind = Kind::Choice, .usual = "b", .choices = {"A", "B"}}, "A|(B)", ""},
             {{.name = "A", .kind = Kind::Choice, .usual = "C", .choices = {"A"}}, "(C)A|", ""},
             {{.name = "A", .kind = Kind::Choice, .choices = {"A"}}, "(As usual)A|", ""},
             {{.name = "A", .kind = Kind::Number, .usual = "1.5", .least = 0, .most = 9, .description = "D."},
              "text:1.5",
              "D. 0 to 9"},
             {{.name = "A", .kind = Kind::WholeNumber, .least = 1, .description = "D"}, "text:", "D. 1 or more"},
             {{.name = "A", .usual = "x", .isSecret = true}, "password:x", ""},
             {{.name = "A", .description = "D", .isBarred = true}, "!text:", "D. This cannot be set here."}}) {
        FormNode const page = MakeOptionForm("Driver", {option});
        EXPECT_EQ(ControlOf(page), control);
        DString const told = page.children.back().children.front().text; // the description, or the name
        EXPECT_EQ(told, DString(about).empty() ? "A" : about);
    }
    EXPECT_EQ(ShownValue({.kind = Kind::Switch, .usual = "ON"}, "false"), "NO");
    EXPECT_EQ(ShownValue({.kind = Kind::Choice, .choices = {"Deflate"}}, "DEFLATE"), "Deflate");
    EXPECT_EQ(FaultText({.kind = Kind::WholeNumber, .least = 1, .most = 9}, "10"), "1 to 9");
    EXPECT_EQ(FaultText({.kind = Kind::WholeNumber}, "x"), "This is no whole number.");
}

} // namespace
} // namespace zelvar
